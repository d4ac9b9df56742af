// Includes of effects that come from a package: only on the search paths.
#include "CgFXShader.h"
#include "QorShaderParameters.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

const char* const kTechnique = "\nfloat4 main() : COLOR { return float4(1, 0, 0, 1); }\n"
                               "technique t { pass p { FragmentProgram = compile arbfp1 main(); } }\n";

// Un-streams a package that carries `source` as the effect "package.cgfx", and gives the
// shader's effect back.
QorShaderEffect& FromPackage(CgFXShader& shader, const std::string& source)
{
    QorResourceZPKContainer container;
    QorStreamer written;
    written.SetResourceZPKContainer(&container);
    QorShaderParameters().Stream(written);
    container.AddResource(written, "package.cgfx", source.c_str());
    QorStreamer read(written.GetBytes());
    read.SetResourceZPKContainer(&container);
    shader.UnStream(read);
    return *static_cast<QorShaderEffect*>(shader.GetIShaderEffect());
}

} // namespace

TEST(QorShaderIncludeSessionTest, IncludesOfPackageEffectsResolveOnlyOnTheSearchPaths)
{
    QorTempDir root;
    // A file outside the search paths whose words would show in the compile errors.
    const std::string secret = root.Write("secret.cgh", "#error secretword of the host's file\n");
    root.Write("paths/shaders/ok.cgh", "float okValue = 1;\n");
    // The compiler reads a name it is handed no text for from the working folder itself:
    // from here "../secret.cgh" would be a file too.
    root.Write("paths/secret.cgh", "#error secretword of the working folder\n");
    const std::filesystem::path workingFolder = std::filesystem::current_path();
    std::filesystem::current_path(root.File("paths/shaders"));
    QorScopedEnv startup("QorStartupPath", nullptr);
    QorScopedEnv graphic("QorGraphicPath", root.File("paths").c_str());
    QorCapturingSink quiet;
    const struct
    {
        std::string include;
        const char* says; ///< empty: compiles
    } cases[] = {
        {secret, "is not on the search paths"},
        {"../secret.cgh", "\"../secret.cgh\" leaves the search paths"},
        {"sub/../../../secret.cgh", "leaves the search paths"},
        {"/etc/passwd", "\"etc/passwd\" is not on the search paths"},
        {"ok.cgh", ""},
        {"sub/../ok.cgh", ""},
    };
    for (const auto& c : cases) {
        CgFXShader shader;
        QorShaderEffect& effect = FromPackage(shader, "#include \"" + c.include + "\"" + kTechnique);
        const std::string errors = effect.GetCompileErrors().c_str();
        EXPECT_EQ(effect.Generated() != 0, *c.says == '\0') << c.include << "\n" << errors;
        EXPECT_NE(errors.find(c.says), std::string::npos) << c.include << "\n" << errors;
        EXPECT_EQ(errors.find("secretword"), std::string::npos) << c.include;
        EXPECT_EQ(errors.find("root"), std::string::npos) << c.include;
    }

    // An effect the user opens keeps reading includes as it names them.
    QorShaderEffect* own = QorShaderEffect::AddShaderEffect(nullptr);
    own->setBuffer(("#include \"" + secret + "\"" + kTechnique).c_str());
    EXPECT_EQ(own->GenerateShader(), nullptr);
    EXPECT_NE(std::string(own->GetCompileErrors().c_str()).find("secretword"), std::string::npos);
    own->Release();
    std::filesystem::current_path(workingFolder);
}

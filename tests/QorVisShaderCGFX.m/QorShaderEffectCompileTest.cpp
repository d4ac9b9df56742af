// Finding sources and includes, compile errors and the error file.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorShaderParameters.h"
#include "QorSystem/QorFiles.h"
#include "QorTestSupport.h"
#include "QorVisShaders/QorShaderIncludeManager.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const char* const kUsesCommon = R"(
#include "common.cgh"
float4 main2() : COLOR { return Common(); }
technique t { pass p { FragmentProgram = compile arbfp1 main2(); } }
)";

struct CompiledEffect
{
    CompiledEffect() : effect(QorShaderEffect::AddShaderEffect(nullptr)) {}
    ~CompiledEffect() { effect->Release(); }
    QorShaderParameters* FromBuffer(const char* source)
    {
        effect->setBuffer(source);
        return effect->GenerateShader();
    }
    QorShaderParameters* FromFile(const std::string& file)
    {
        effect->setFileName(QorString(file.c_str()));
        return effect->GenerateShader();
    }
    QorShaderEffect* effect;
};

class QorShaderEffectCompileTest : public testing::Test
{
protected:
    QorScopedEnv startup{"QorStartupPath", nullptr};
    QorScopedEnv graphic{"QorGraphicPath", nullptr};
    QorScopedEnv temp{"QorTemp", nullptr};
};

} // namespace

TEST_F(QorShaderEffectCompileTest, CompilesItsFileAndItsFileIncludesFromTheSearchPaths)
{
    QorTempDir startupDir, graphicDir;
    startupDir.Write("materials/shaders/startup.cgfx", "technique fromStartup { pass p {} }");
    startupDir.Write("shaders/common.cgh", "float4 Common() { return float4(1, 0, 0, 1); }");
    QorScopedEnv startupPath("QorStartupPath", startupDir.Path().c_str());
    QorScopedEnv graphicPath("QorGraphicPath", graphicDir.Path().c_str());

    CompiledEffect fromFile;
    ASSERT_NE(fromFile.FromFile("startup.cgfx"), nullptr);
    EXPECT_STREQ(cgGetTechniqueName(fromFile.effect->GetCurrentTechnique()), "fromStartup");
    CompiledEffect missing;
    EXPECT_EQ(missing.FromFile("nowhere.cgfx"), nullptr);
    EXPECT_EQ(missing.effect->Generated(), 0);

    CompiledEffect including;
    EXPECT_NE(including.FromBuffer(kUsesCommon), nullptr) << "\"common.cgh\" under the startup folder";
    QorScopedEnv noStartup("QorStartupPath", nullptr);
    QorCapturingSink sink;
    CompiledEffect missingInclude;
    EXPECT_EQ(missingInclude.FromBuffer(kUsesCommon), nullptr);
    ASSERT_FALSE(sink.Records().empty());
    EXPECT_EQ(sink.Records()[0].message, "Impossible to read shader file");
    EXPECT_EQ(sink.Records()[0].line, 162);
}

TEST_F(QorShaderEffectCompileTest, CompileErrorsGoToTheErrorFile)
{
    QorTempDir temp;
    const std::string tempWithPercent = temp.Path() + "/100%s";
    ASSERT_EQ(QorCreateDirectory(tempWithPercent.c_str()), 0);
    QorScopedEnv tempPath("QorTemp", tempWithPercent.c_str());

    testing::internal::CaptureStdout();
    CompiledEffect broken;
    EXPECT_EQ(broken.FromFile(std::string(QOR_SAMPLES_DIR) + "/effects/broken.cgfx"), nullptr);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, tempWithPercent + "\\QorCGFX_Errors.txt") << "printed as it is, without a newline";
    const std::string errors = QorReadFile(tempWithPercent + "/QorCGFX_Errors.txt");
    EXPECT_NE(errors.find("undefined variable \"undefinedScale\""), std::string::npos) << errors;
    EXPECT_EQ(errors.back(), '\n');
    EXPECT_EQ(broken.effect->Generated(), 0);

    // Without "QorTemp" nothing is written or printed.
    QorScopedEnv noTemp("QorTemp", nullptr);
    std::remove((tempWithPercent + "/QorCGFX_Errors.txt").c_str());
    testing::internal::CaptureStdout();
    CompiledEffect silent;
    EXPECT_EQ(silent.FromBuffer("technique t { pass p { FragmentProgram = compile arbfp1 nothing(); } }"), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(QorReadFile(tempWithPercent + "/QorCGFX_Errors.txt"), "");
}

TEST_F(QorShaderEffectCompileTest, IncludeCyclesFailInsteadOfRecursing)
{
    QorTempDir temp;
    QorScopedEnv tempPath("QorTemp", temp.Path().c_str());
    QorShaderIncludeManager& includes = QorShaderIncludeManager::Instance();
    includes.AddInclude(QorString("self.fxh"), "#include \"self.fxh\"\nfloat4 Self() { return 1; }\n");
    includes.AddInclude(QorString("ping.fxh"), "#include \"pong.fxh\"\n");
    includes.AddInclude(QorString("pong.fxh"), "#include \"ping.fxh\"\n");
    includes.AddInclude(QorString("leaf.fxh"), "#ifndef LEAF\n#define LEAF\nfloat4 Leaf() { return 1; }\n#endif\n");
    includes.AddInclude(QorString("twice.fxh"), "#include \"leaf.fxh\"\n");

    testing::internal::CaptureStdout();
    CompiledEffect self;
    EXPECT_EQ(self.FromBuffer("#include \"self.fxh\"\ntechnique t { pass p {} }"), nullptr);
    CompiledEffect pingPong;
    EXPECT_EQ(pingPong.FromBuffer("#include \"ping.fxh\"\ntechnique t { pass p {} }"), nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(QorReadFile(temp.File("QorCGFX_Errors.txt")).find("include cycle"), std::string::npos);

    CompiledEffect diamond; // the same include reached twice is no cycle
    EXPECT_NE(diamond.FromBuffer("#include \"twice.fxh\"\n#include \"leaf.fxh\"\ntechnique t { pass p {} }"),
              nullptr);
    for (const char* name : {"self.fxh", "ping.fxh", "pong.fxh", "leaf.fxh", "twice.fxh"})
        includes.RemoveInclude(QorString(name));
}

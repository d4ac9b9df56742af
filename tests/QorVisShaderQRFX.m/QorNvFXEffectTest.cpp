// GLSL effects: the registry, loading with includes, techniques, the light mask, and the
// binding of uniforms by semantic, by name and into the default parameter set.
#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include "NvFXTestSupport.h"
#include "QorNvFXCallbacks.h"
#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <nvFX/IContainer.h>
#include <nvFX/IUniform.h>

#include <gtest/gtest.h>

#include <string>

namespace {

// A loaded effect, what its load printed, and its release.
struct LoadedEffect
{
    explicit LoadedEffect(const char* text) : effect(QorNvFXEffect::AddShaderEffect(nullptr))
    {
        effect->setBuffer(text);
        NvFXTest::MessageCapture capture;
        testing::internal::CaptureStdout();
        parameters = effect->Load();
        printed = testing::internal::GetCapturedStdout();
        messages = capture.text();
    }
    ~LoadedEffect() { effect->Release(); }
    LoadedEffect(const LoadedEffect&) = delete;
    LoadedEffect& operator=(const LoadedEffect&) = delete;

    const char* UniformName(nvFX::IUniform* uniform) const { return uniform ? uniform->getName() : "(none)"; }

    QorNvFXEffect* effect;
    QorNvFXShaderParameters* parameters = nullptr;
    std::string printed;  ///< standard output
    std::string messages; ///< through nvFX::printf
};

int Occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace

TEST(QorNvFXEffectTest, SemanticsBindHandlesAndTheRestBecomesUserValues)
{
    QorRegistryGuard guard; // the test effect registers its texture
    LoadedEffect loaded(kQorNvFXTestEffect);
    ASSERT_NE(loaded.parameters, nullptr) << loaded.messages;
    QorNvFXEffect& effect = *loaded.effect;
    EXPECT_TRUE(effect.HasDefaults());
    // WORLDINVERSE binds nothing; only WORLDI does.
    const std::pair<QorFeed, const char*> feeds[] = {{QorFeedWorldViewProjection, "WorldViewProj"},
        {QorFeedWorldInverse, "WorldI"}, {QorFeedEyePosition, "Eye"}, {QorFeedDiffuse, "Tint"}, {QorFeedWorld, "(none)"}};
    for (const auto& [feed, name] : feeds)
        EXPECT_STREQ(loaded.UniformName(effect.GetFeedUniform(feed)), name) << feed;
    const std::pair<QorNvFXNamedUniform, const char*> named[] = {{QorNvFXLightPosition, "lightData_LightPos"},
        {QorNvFXLightCount, "numLights"}, {QorNvFXClipPlaneEquations, "(none)"}};
    for (const auto& [which, name] : named)
        EXPECT_STREQ(loaded.UniformName(effect.GetNamedUniform(which)), name) << which;

    // 19 warnings, one note: lightData_LightPos is declared but read by no code.
    EXPECT_EQ(Occurrences(loaded.printed, " might be overidden during runtime\n"), 19);
    EXPECT_NE(loaded.printed.find("'''Note''' : lightData_LightPos not connected to any target (shader)\n"),
              std::string::npos);
    EXPECT_EQ(effect.GetLoadWarnings().size(), 20u);

    // User values in declaration order, with their codes; "WORLDINVERSE", ints, hidden
    // names, matrices and 3D samplers are not among them.
    const std::pair<const char*, int> expected[] = {{"Gloss", 1}, {"Scale", 5}, {"tint", 6},
                                                    {"Base", 2},  {"ColorMap", 4}, {"Sky", 4}};
    QorNvFXShaderParameters& set = *loaded.parameters;
    ASSERT_EQ(set.GetNbParameters(), 7);
    for (int i = 0; i < 6; ++i) {
        EXPECT_STREQ(set.GetParameterName(i + 1), expected[i].first);
        EXPECT_EQ(set.GetParameterType(i + 1), expected[i].second) << expected[i].first;
    }
    EXPECT_EQ(set.ValueAt(1)->Components()[0], 8.0f) << "the uniform's default";
    EXPECT_STREQ(set.ValueAt(5)->File(), "wood.tif") << "from \"defaultFile\"";
    EXPECT_STREQ(set.ValueAt(6)->File(), "") << "no annotation: the empty text";

    // What the others are, in the words a migration report uses.
    const std::pair<const char*, const char*> notUser[] = {{"WorldInverse", "semantic \"WORLDINVERSE\""},
        {"description", "from the user's values"}, {"Bands", "int uniform: GLSL int and bool"}, {"Extra", "matrix"},
        {"Volume", "3D sampler"}};
    for (const auto& [name, why] : notUser)
        EXPECT_NE(effect.WhyNotUserParameter(name).find(why), std::string::npos) << name;
    EXPECT_EQ(effect.WhyNotUserParameter("Unknown"), "");
}

TEST(QorNvFXEffectTest, TheErrorCallbackWritesTheMessageAsItStands)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    myErrorCb("100% of the effect\n");
    myErrorCb(nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100% of the effect\n") << "the debugger channel";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "100% of the effect\n");
}

TEST(QorNvFXEffectTest, TechniquesAndTheLightMask)
{
    QorRegistryGuard guard; // the test effect registers its texture
    LoadedEffect loaded(kQorNvFXTestEffect);
    QorNvFXEffect& effect = *loaded.effect;
    int technique[2] = {5, 5};
    effect.getTechnique(technique);
    EXPECT_EQ(technique[0], 0);
    EXPECT_EQ(technique[1], 5) << "a current technique leaves the second integer alone";
    effect.setTechnique(1);
    EXPECT_EQ(effect.GetCurrentTechnique(), effect.GetContainer()->findTechnique(1));
    effect.setTechnique(7);
    effect.setTechniqueByName("nothing");
    EXPECT_EQ(effect.GetCurrentTechnique(), effect.GetContainer()->findTechnique(1)) << "unknown: unchanged";
    effect.setTechniqueByName("First");
    EXPECT_EQ(effect.GetCurrentTechnique(), effect.GetContainer()->findTechnique(0));

    const std::pair<unsigned int, int> masks[] = {{0x31, 1}, {0x0D, 2}, {0xFFFF, 8}, {0xFFFFFFFF, 8}, {0, 0}};
    for (const auto& [mask, lights] : masks) {
        EXPECT_TRUE(effect.updateLightModel(mask));
        EXPECT_EQ(effect.GetLightCount(), lights) << std::hex << mask;
    }

    // A load again forgets the selected set: its values mirror the retired uniforms.
    QorNvFXShaderParameters selected;
    effect.SelectParameters(&selected);
    testing::internal::CaptureStdout();
    ASSERT_NE(effect.Load(), nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(effect.GetIShaderParameters(), nullptr);

    LoadedEffect unloaded("not an effect");
    technique[0] = 3;
    unloaded.effect->Init();
    unloaded.effect->getTechnique(technique);
    EXPECT_EQ(technique[0], 3) << "no container: nothing written";
}

TEST(QorNvFXEffectTest, FailedLoadsAnswerNullAndSay)
{
    QorRegistryGuard guard; // the test effect registers its texture
    LoadedEffect broken("Technique {");
    EXPECT_EQ(broken.parameters, nullptr);
    EXPECT_EQ(broken.effect->Generated(), 0);
    EXPECT_NE(broken.printed.find("Error>> failed to load the effect\n"), std::string::npos);
    EXPECT_NE(broken.messages.find("error"), std::string::npos) << "the runtime says what is wrong";

    // Messages name the effect's file, not the container ("Test") the load went into.
    QorNvFXEffect* named = QorNvFXEffect::AddShaderEffect("materials/broken.glslfx");
    named->setBuffer("uniform float a\nuniform float b;");
    NvFXTest::MessageCapture capture;
    testing::internal::CaptureStdout();
    EXPECT_EQ(named->Load(), nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(capture.text().rfind("materials/broken.glslfx(2): error: expected ';'", 0), 0u) << capture.text();
    named->Release();

    // An effect given only a file name loads its buffer, which it does not have.
    QorTempDir dir;
    const std::string path = dir.Write("only_file.glslfx", kQorNvFXTestEffect);
    QorNvFXEffect* effect = QorNvFXEffect::AddShaderEffect(nullptr);
    effect->setFileName(QorString(path.c_str()));
    testing::internal::CaptureStdout();
    EXPECT_EQ(effect->Load(), nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string(effect->GetSource().c_str()).find("Technique First"), std::string::npos)
        << "the file was read all the same";
    effect->Release();
}

TEST(QorNvFXEffectTest, ASamplersTextureResourceNamesItsDefaultFile)
{
    QorRegistryGuard guard; // the texture value registers its file
    LoadedEffect loaded(R"(
uniform sampler2D Albedo;
TextureResource2D Wood < defaultFile = "wood.tif"; >;
SamplerState Tiled { TEXTURE_WRAP_S = REPEAT; TEXTURE_WRAP_T = REPEAT; }
GLSLShader FS { void main() { gl_FragColor = texture(Albedo, vec2(0.5)); } }
Technique T { Pass p { FragmentProgram = FS; SamplerResource(Albedo) = { Wood, Tiled }; } }
)");
    ASSERT_NE(loaded.parameters, nullptr) << loaded.messages;
    ASSERT_EQ(loaded.parameters->GetParameterIndex("Albedo"), 1);
    EXPECT_STREQ(loaded.parameters->ValueAt(1)->File(), "wood.tif") << "a user parameter whose default file is the texture resource's";
}

TEST(QorNvFXEffectTest, IncludesComeFromTheShadersFoldersOfTheSearchPaths)
{
    QorTempDir graphic;
    graphic.Write("shaders/common.glslfxh", "uniform float Shared = 2;\n");
    QorScopedEnv graphicPath("QorGraphicPath", graphic.Path().c_str());
    QorScopedEnv startupPath("QorStartupPath", nullptr);
    const std::string body =
        "GLSLShader FS { void main() { gl_FragColor = vec4(1.0); } }\nTechnique T { Pass p { FragmentProgram = FS; } }\n";

    LoadedEffect found(("#include \"common.glslfxh\"\n" + body).c_str());
    ASSERT_NE(found.parameters, nullptr) << found.messages;
    EXPECT_EQ(Occurrences(found.messages, "Including file common.glslfxh...\n"), 1);
    EXPECT_EQ(found.parameters->GetParameterIndex("Shared"), 1);

    LoadedEffect notAFile(("#include \"x.glsl\"\n" + body).c_str());
    EXPECT_EQ(notAFile.parameters, nullptr) << "not an include file: left to the runtime, which misses it";
    EXPECT_EQ(notAFile.messages.find("Including"), std::string::npos);

    QorScopedEnv noPaths("QorGraphicPath", nullptr);
    LoadedEffect missing(("#include \"gone.glslfxh\"\n" + body).c_str());
    EXPECT_EQ(missing.parameters, nullptr);
    EXPECT_EQ(missing.messages.rfind("gone.glslfxh", 0), 0u) << "the name itself, as the last path tried: "
                                                            << missing.messages;
}

// Finding sources and includes, compile errors and the error file.
#include "QorVisShaderCGFX/QorShaderEffect.h"

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

TEST_F(QorShaderEffectCompileTest, OnlyIncludeCyclesThePreprocessorReachesAreRefusedAndIncludeErrorsNameTheirFile)
{
    QorTempDir temp, shaders;
    QorScopedEnv tempPath("QorTemp", temp.Path().c_str());
    QorScopedEnv graphicPath("QorGraphicPath", shaders.Path().c_str());
    // Guarded headers that include each other, and a self-include in skipped code.
    shaders.Write("shaders/a.cgh", "#ifndef A_CGH\n#define A_CGH\n#include \"b.cgh\"\nfloat4 A() { return B(); }\n#endif\n");
    shaders.Write("shaders/b.cgh", "#ifndef B_CGH\n#define B_CGH\n#include \"a.cgh\"\nfloat4 B() { return 1; }\n#endif\n");
    shaders.Write("shaders/dead.cgh", "#if 0\n#include \"dead.cgh\"\n#endif\nfloat4 Dead() { return 1; }\n");
    // A 20-level lattice of guarded headers, each including the next two, and a chain of
    // 200 distinct headers: both only deep, neither a cycle.
    for (int level = 0; level < 20; ++level) {
        std::string text = "#ifndef L" + std::to_string(level) + "\n#define L" + std::to_string(level) + "\n";
        for (int next = level + 1; next <= level + 2 && next < 20; ++next)
            text += "#include \"l" + std::to_string(next) + ".cgh\"\n";
        shaders.Write("shaders/l" + std::to_string(level) + ".cgh", text + "#endif\n");
    }
    for (int link = 0; link < 200; ++link)
        shaders.Write("shaders/c" + std::to_string(link) + ".cgh",
                      link + 1 < 200 ? "#include \"c" + std::to_string(link + 1) + ".cgh\"\n" : "float4 End() { return 1; }\n");
    QorShaderIncludeManager& includes = QorShaderIncludeManager::Instance();
    includes.AddInclude(QorString("ping.fxh"), "#include \"pong.fxh\"\n");
    includes.AddInclude(QorString("pong.fxh"), "#include \"ping.fxh\"\n");

    for (const char* source : {"#include \"a.cgh\"\ntechnique t { pass p {} }",
                               "#include \"dead.cgh\"\ntechnique t { pass p {} }",
                               "#include \"l0.cgh\"\n#include \"l0.cgh\"\ntechnique t { pass p {} }",
                               "#include \"c0.cgh\"\ntechnique t { pass p {} }"}) {
        CompiledEffect effect;
        EXPECT_NE(effect.FromBuffer(source), nullptr) << source << "\n" << effect.effect->GetCompileErrors().c_str();
    }

    testing::internal::CaptureStdout();
    CompiledEffect pingPong;
    EXPECT_EQ(pingPong.FromBuffer("#include \"ping.fxh\"\ntechnique t { pass p {} }"), nullptr);
    testing::internal::GetCapturedStdout();
    const std::string errors = pingPong.effect->GetCompileErrors().c_str();
    EXPECT_NE(errors.find("include cycle: /ping.fxh -> /pong.fxh -> /ping.fxh"), std::string::npos) << errors;
    EXPECT_EQ(QorReadFile(temp.File("QorCGFX_Errors.txt")), errors) << "the error file says the same";

    // Compile errors in an include name it and its line.
    includes.AddInclude(QorString("faulty.fxh"), "float ok;\nfloat4 Faulty() { return 1 +; }\n");
    CompiledEffect faulty;
    testing::internal::CaptureStdout();
    EXPECT_EQ(faulty.FromBuffer("#include \"faulty.fxh\"\ntechnique t { pass p {} }"), nullptr);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string(faulty.effect->GetCompileErrors().c_str()).find("/faulty.fxh(2)"), std::string::npos)
        << faulty.effect->GetCompileErrors().c_str();
    for (const char* name : {"ping.fxh", "pong.fxh", "faulty.fxh"})
        includes.RemoveInclude(QorString(name));
}

TEST_F(QorShaderEffectCompileTest, TokensLongerThanTheCgRuntimeTakesAreRefusedBeforeItSeesThem)
{
    // The runtime writes past its own buffer from about 264,870 characters on.
    const std::string tooLong(300000, 'a');
    QorTempDir graphicDir;
    graphicDir.Write("shaders/long.cgh", "float f <string s = \"" + tooLong + "\";> = 1;\n");
    QorScopedEnv graphicPath("QorGraphicPath", graphicDir.Path().c_str());
    const std::string technique = "\ntechnique t { pass p {} }\n";
    const struct
    {
        std::string source;
        std::string says;
    } cases[] = {
        {"float x <string UIName = \"" + tooLong + "\";> = 1;" + technique,
         "(1) : error: a token or literal of 300000 characters is longer than the Cg runtime takes (262144)"},
        {"// first\n/* second */\nfloat " + tooLong + " = 1;" + technique, "(3) : error: a token or literal of 300000"},
        {"#if 0\n'" + tooLong + "'\n#endif" + technique, "(2) : error: a token or literal of 300000"},
        {"#include \"long.cgh\"" + technique, "a token of 300000 characters on line 1 is longer than the Cg runtime takes"},
    };
    for (const auto& c : cases) {
        CompiledEffect effect;
        EXPECT_EQ(effect.FromBuffer(c.source.c_str()), nullptr) << c.says;
        EXPECT_NE(std::string(effect.effect->GetCompileErrors().c_str()).find(c.says), std::string::npos)
            << effect.effect->GetCompileErrors().c_str();
    }
    CompiledEffect atTheLimit;
    const std::string longest = "float x <string UIName = \"" + std::string(262144, 'a') + "\";> = 1;" + technique;
    EXPECT_NE(atTheLimit.FromBuffer(longest.c_str()), nullptr) << atTheLimit.effect->GetCompileErrors().c_str();
}

// #include through the host's callback: real files from a temporary folder or texts,
// nested includes, cycles, missing includes, and messages naming the include's lines.
#include "NvFXTestSupport.h"

#include "nvFX/IUniformEx.h"

#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

using NvFXTest::Load;

namespace {

// What the callback answers: files under the folder, else the texts; names it was asked.
struct IncludeWorld
{
    std::string folder;
    std::map<std::string, std::string> texts;
    std::vector<std::string> asked;
};

IncludeWorld* g_world = nullptr;

void AnswerInclude(const char* name, FILE*& file, const char*& text)
{
    g_world->asked.push_back(name);
    if (!g_world->folder.empty())
        file = std::fopen((g_world->folder + "/" + name).c_str(), "rb");
    const auto found = g_world->texts.find(name);
    if (!file && found != g_world->texts.end())
        text = found->second.c_str();
}

// Installs the callback over `world` while alive; no callback after.
class ScopedIncludes
{
public:
    explicit ScopedIncludes(IncludeWorld& world)
    {
        g_world = &world;
        nvFX::setIncludeCallback(AnswerInclude);
    }
    ~ScopedIncludes()
    {
        nvFX::setIncludeCallback(nullptr);
        g_world = nullptr;
    }
    ScopedIncludes(const ScopedIncludes&) = delete;
    ScopedIncludes& operator=(const ScopedIncludes&) = delete;
};

std::vector<std::string> UniformNames(nvFX::IContainer& effect)
{
    std::vector<std::string> names;
    for (int i = 0; nvFX::IUniform* uniform = effect.findUniform(i); ++i)
        names.push_back(uniform->getName());
    return names;
}

} // namespace

TEST(IncludeTest, NestedFilesSpliceTheirUniformsWhereTheyStand)
{
    QorTempDir folder;
    folder.Write("lighting.glslfxh", "// lights\n#include \"common.glslfxh\"\nuniform vec3 LightPos;\n"
                                     "GLSLShader Light { vec3 toLight(vec3 p) { return LightPos - p; } }\n");
    folder.Write("common.glslfxh", "uniform mat4 World : WORLD;\nuniform vec3 LightPos;\n");
    IncludeWorld world{folder.Path(), {}, {}};
    ScopedIncludes includes(world);
    const NvFXTest::Loaded loaded = Load(R"(
uniform vec4 Colour;
#include "lighting.glslfxh"
uniform float Gain;
#include "common.glslfxh"
GLSLShader VS { void main() { gl_Position = World * gl_Vertex + vec4(toLight(vec3(0.0)), 0.0); } }
Technique T { Pass P { VertexProgram = { Light, VS }; } }
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    EXPECT_EQ(UniformNames(*loaded.container), (std::vector<std::string>{"Colour", "World", "LightPos", "Gain"}));
    EXPECT_EQ(world.asked,
              (std::vector<std::string>{"lighting.glslfxh", "common.glslfxh", "common.glslfxh"}));
    EXPECT_STREQ(loaded.container->findUniform("World")->getSemantic(), "WORLD");
    EXPECT_TRUE(loaded.container->findUniform("LightPos")->isUsedBy(nvFX::IUniform::TargetAny));
}

TEST(IncludeTest, TextAnswersWorkAndMacrosCrossIncludes)
{
    IncludeWorld world{"", {{"good.glslfxh", "uniform float A;\n"},
                            {"options.glslfxh", "#define SHADOWS 2\n#ifndef QUALITY\n#define QUALITY 1\n#endif\n"}},
                       {}};
    ScopedIncludes includes(world);
    const NvFXTest::Loaded good = Load("#include \"good.glslfxh\"");
    ASSERT_TRUE(good.ok) << good.messages;
    EXPECT_NE(good.container->findUniform("A"), nullptr);

    const NvFXTest::Loaded shared = Load("#define QUALITY 3\n#include \"options.glslfxh\"\n"
                                         "#if SHADOWS == 2 && QUALITY == 3\nuniform float Both;\n#endif\n");
    ASSERT_TRUE(shared.ok) << shared.messages;
    EXPECT_NE(shared.container->findUniform("Both"), nullptr) << "the include's macros and ours are one table";
}

// Errors in an include name its lines; conditions close where they open; missing, cyclic,
// endless or countless includes fail the load, and nothing of a failed load stays.
TEST(IncludeTest, FailedIncludesNameTheirLinesAndLeaveNothing)
{
    IncludeWorld world{"", {{"broken.glslfxh", "uniform float B;\n\nuniform vec2 C = {1};\n"},
                            {"badcode.glslfxh", "GLSLShader {\n  float f() { return nothing; }\n}\n"},
                            {"open.glslfxh", "#if 1\nuniform float A;\n"},
                            {"close.glslfxh", "\n#endif\n"},
                            {"a.glslfxh", "uniform float A;\n#include \"b.glslfxh\"\n"},
                            {"b.glslfxh", "\n\n#include \"a.glslfxh\"\n"},
                            {"self.glslfxh", "#include \"self.glslfxh\""},
                            {"leaf", "// nothing\n"}},
                       {}};
    for (int i = 0; i < 40; ++i)
        world.texts["level" + std::to_string(i)] = "#include \"level" + std::to_string(i + 1) + "\"\n";
    std::string many;
    for (int i = 0; i < 300; ++i)
        many += "#include \"leaf\"\n";
    {
        ScopedIncludes includes(world);
        const struct
        {
            std::string text;
            std::string message; // the whole output, or its first line where it has no '\n'
        } cases[] = {
            {"uniform float X;\n#include \"broken.glslfxh\"",
             "broken.glslfxh(3): error: uniform 'C' (vec2) takes 2 values, 1 given\n"},
            {"#include \"badcode.glslfxh\"\nGLSLShader VS { void main() { gl_Position = vec4(f()); } }\n"
             "Technique T { Pass P { VertexProgram = VS; } }",
             "badcode.glslfxh(2): error: pass 'P' of technique 'T', vertex stage: 'nothing' : undeclared identifier"},
            {"#include \"open.glslfxh\"\n#endif\n", "open.glslfxh(1): error: '#if' is not closed by '#endif'\n"},
            {"#if 1\n#include \"close.glslfxh\"\n", "close.glslfxh(2): error: '#endif' without '#if'\n"},
            {"\n#include \"nowhere.glslfxh\"", "effect(2): error: include 'nowhere.glslfxh' not found\n"},
            {"#include \"a.glslfxh\"", "b.glslfxh(3): error: include cycle: a.glslfxh -> b.glslfxh -> a.glslfxh\n"},
            {"#include \"self.glslfxh\"", "self.glslfxh(1): error: include cycle: self.glslfxh -> self.glslfxh\n"},
            {"#include nowhere", "effect(1): error: expected a quoted name after #include\n"},
            {"#include \"level0\"", "level15(1): error: includes nest deeper than 16 levels\n"},
            {many, "effect(257): error: more than 256 includes\n"},
        };
        for (const auto& c : cases) {
            const NvFXTest::Loaded loaded = Load(c.text);
            EXPECT_FALSE(loaded.ok) << c.text;
            const bool whole = c.message.back() == '\n';
            EXPECT_EQ(whole ? loaded.messages : loaded.messages.substr(0, loaded.messages.find('\n')), c.message);
            EXPECT_EQ(loaded.container->findUniform(0), nullptr) << "nothing of a failed load stays";
        }
    }
    const NvFXTest::Loaded noCallback = Load("#include \"a.glslfxh\"");
    EXPECT_FALSE(noCallback.ok);
    EXPECT_EQ(noCallback.messages, "effect(1): error: include 'a.glslfxh' not found\n");
}

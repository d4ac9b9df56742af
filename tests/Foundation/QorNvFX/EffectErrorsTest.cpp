// Refused effects: each message names the effect's own line and what is wrong, and the
// container stays empty. Hostile texts are refused the same way.
#include "NvFXTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using NvFXTest::Load;

namespace {

const char* const kStages = "GLSLShader VS { void main() { gl_Position = gl_Vertex; } }\n";

struct RefusedCase
{
    const char* what;
    std::string text;
    std::string message; // the whole first line printed
};

void ExpectRefused(const RefusedCase& c)
{
    SCOPED_TRACE(c.what);
    const NvFXTest::Loaded loaded = Load(c.text);
    EXPECT_FALSE(loaded.ok);
    EXPECT_EQ(loaded.messages.substr(0, loaded.messages.find('\n')), c.message) << loaded.messages;
    EXPECT_EQ(loaded.container->findTechnique(0), nullptr);
    EXPECT_EQ(loaded.container->findUniform(0), nullptr);
}

} // namespace

TEST(EffectErrorsTest, SyntaxAndStructureErrorsNameTheirLine)
{
    const RefusedCase cases[] = {
        {"missing semicolon", "uniform float a\nuniform float b;",
         "effect(2): error: expected ';' after the declaration of 'a', found 'uniform'"},
        {"unknown block", "\n\nShader S { }", "effect(3): error: unknown block 'Shader'"},
        {"unknown type", "uniform half d;", "effect(1): error: unknown uniform type 'half'"},
        {"stray symbol", "uniform float a;\n}", "effect(2): error: unexpected '}' at effect scope"},
        {"unclosed code", "\nGLSLShader VS {\n void main() {}\n", "effect(2): error: GLSLShader 'VS': block not closed: '}' missing"},
        {"unclosed string", "uniform float a < UIName = \"open\n; >;", "effect(1): error: string not closed on its line"},
        {"unclosed technique", std::string(kStages) + "Technique T {\n Pass P { VertexProgram = VS; }\n",
         "effect(3): error: expected 'Pass' or '}' in technique 'T', found the end of the text"},
        {"unopened pass", std::string(kStages) + "Technique T { Pass P\n VertexProgram = VS; }",
         "effect(3): error: expected '{' to open pass 'P', found 'VertexProgram'"},
        {"bad character", "uniform float a;\n@", "effect(2): error: unexpected character '@'"},
        {"bad byte", "uniform float a;\n\x01", "effect(2): error: unexpected byte 0x01"},
        {"other directive", "#line 4", "effect(1): error: unsupported directive '#line'"},
        {"bad number", "uniform float a = 1.2.3;", "effect(1): error: bad number '1.2.3'"},
        {"array size", "uniform vec4 a[0];", "effect(1): error: array size of 'a' must be a whole number from 1 to 4096"},
        {"annotation with a type", "uniform float a < string UIName = \"x\"; >;",
         "effect(1): error: expected '=' after annotation 'string', found 'UIName'"},
        {"code declared twice", "GLSLShader A { }\n\nGLSLShader A { }",
         "effect(3): error: code 'A' declared again (first at effect(1))"},
        {"technique declared twice", std::string(kStages) + "Technique T { }\nTechnique T { }",
         "effect(3): error: technique 'T' declared again (first at effect(2))"},
        {"sampler in a buffer", "ConstantBuffer B {\n uniform sampler2D s;\n}",
         "effect(2): error: sampler 's' cannot be a member of a constant buffer"},
        {"versions differ", "GLSLShader {\n#version 150\n}\nGLSLShader {\n#version 330\n}",
         "effect(5): error: '#version 330' differs from '#version 150' at effect(2)"},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);
}

TEST(EffectErrorsTest, MessagesNameTheSourceTheHostGivesAndTheContainerKeepsItsName)
{
    NvFXTest::MessageCapture capture;
    const NvFXTest::Container container(nvFX::IContainer::create("Test"));
    EXPECT_FALSE(nvFX::loadEffect(container.get(), "\n\nShader S { }", "shaders/glow.glslfx"));
    EXPECT_EQ(capture.text(), "shaders/glow.glslfx(3): error: unknown block 'Shader'\n");
    EXPECT_STREQ(container->getName(), "Test");
    EXPECT_FALSE(nvFX::loadEffect(container.get(), "Shader S { }", ""));
    EXPECT_NE(capture.text().find("Test(1): error: unknown block 'Shader'"), std::string::npos)
        << "no source name: the container's";
}

TEST(EffectErrorsTest, UniformDeclarationsAreChecked)
{
    const RefusedCase cases[] = {
        {"too few values", "uniform vec4 a =\n {1, 2};", "effect(1): error: uniform 'a' (vec4) takes 4 values, 2 given"},
        {"too many values", "uniform vec2 a[2] = {1, 2, 3, 4,\n 5};",
         "effect(2): error: uniform 'a' (vec2[]) takes 4 values, more are given"},
        {"values without commas", "uniform vec2 a = {1 2};",
         "effect(1): error: expected ',' or '}' in the value of uniform 'a' (vec2), found '2'"},
        {"scalar for a vector", "uniform vec3 a = 1;", "effect(1): error: uniform 'a' (vec3) takes 3 values, 1 given"},
        {"fraction for an int", "uniform ivec2 a = {1, 2.5};",
         "effect(1): error: uniform 'a' (ivec2) takes whole numbers from -2147483648 to 2147483647"},
        {"value for a sampler", "uniform sampler2D s = 0;",
         "effect(1): error: uniform 's' (sampler2D): a sampler takes no value"},
        {"another type", "uniform vec3 Tint;\n\nuniform vec4 Tint;",
         "effect(3): error: uniform 'Tint' declared again with another type (first at effect(1))"},
        {"another array size", "uniform vec3 Tint[2];\nuniform vec3 Tint[3];",
         "effect(2): error: uniform 'Tint' declared again with another type (first at effect(1))"},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);

    const NvFXTest::Loaded same = Load("uniform vec3 Tint;\nuniform vec3 Tint;");
    EXPECT_TRUE(same.ok) << "the same declaration twice is one uniform: " << same.messages;
    EXPECT_EQ(same.container->findUniform(1), nullptr);

    // The uniforms of one effect are bounded: the compiler's work grows with their square.
    std::string many;
    for (int i = 0; i <= 4096; ++i)
        many += "uniform float u" + std::to_string(i) + ";\n";
    ExpectRefused({"too many uniforms", many, "effect(4097): error: more than 4096 uniforms in one effect"});
}

TEST(EffectErrorsTest, PassesAndStateBlocksAreChecked)
{
    const std::string stages = kStages; // line 1
    const RefusedCase cases[] = {
        {"missing code", stages + "Technique T {\n Pass P {\n  VertexProgram = VS;\n  FragmentProgram = { VS, FS };\n }\n}",
         "effect(5): error: pass 'P' of technique 'T' names code 'FS', which is not declared"},
        {"no program", stages + "Technique T {\n Pass P { DEPTH_TEST = true; }\n}",
         "effect(3): error: pass 'P' of technique 'T' assigns no program"},
        {"stage twice", stages + "Technique T { Pass P {\n VertexProgram = VS;\n VertexProgram = VS; } }",
         "effect(4): error: 'VertexProgram' assigned twice in pass 'P'"},
        {"unknown state", stages + "Technique T { Pass P {\n VertexProgram = VS;\n DEPTH_TEST_ENABLE = true; } }",
         "effect(4): error: unknown pass state 'DEPTH_TEST_ENABLE'"},
        {"bad state value", stages + "Technique T { Pass P { VertexProgram = VS;\n DEPTH_FUNC = GL_BLEND; } }",
         "effect(3): error: 'GL_BLEND' is not a value of 'DEPTH_FUNC' (GL_NEVER, GL_LESS, GL_EQUAL, GL_LEQUAL, "
         "GL_GREATER, GL_NOTEQUAL, GL_GEQUAL, GL_ALWAYS)"},
        {"offset with one number", stages + "Technique T { Pass P { VertexProgram = VS;\n POLYGON_OFFSET = { 1 }; } }",
         "effect(3): error: expected ',' between the two numbers of 'POLYGON_OFFSET', found '}'"},
        {"list without commas", stages + "Technique T { Pass P {\n FragmentProgram = { VS VS }; } }",
         "effect(3): error: expected ',' or '}' in the code list of 'FragmentProgram', found 'VS'"},
        {"pass twice", stages + "Technique T {\n Pass P { VertexProgram = VS; }\n Pass P { VertexProgram = VS; } }",
         "effect(4): error: pass 'P' declared again (first at effect(3))"},
        {"no patch vertices", stages + "Technique T { Pass P { VertexProgram = VS;\n PATCH_VERTICES = 0; } }",
         "effect(3): error: 'PATCH_VERTICES' takes a whole number from 1 to 32"},
        {"patch vertices in a block", "RasterizationState R {\n PATCH_VERTICES = 3; }",
         "effect(2): error: 'PATCH_VERTICES' does not belong in 'R' (CULL_FACE, CULL_FACE_MODE, FRONT_FACE, "
         "POLYGON_MODE, POLYGON_OFFSET)"},
        // State blocks are checked where they are written and where a pass names them.
        {"unknown state", "ColorSampleState C { WIREFRAME = true; }",
         "effect(1): error: unknown state 'WIREFRAME' in 'C' (BLEND, BLEND_SRC, BLEND_DST, BLEND_EQUATION)"},
        {"missing value", "DepthStencilState D { DEPTH_TEST; }", "effect(1): error: expected '=' after 'DEPTH_TEST', found ';'"},
        {"scene state in a block", "DepthStencilState D { ClearMode = all; }",
         "effect(1): error: D: scene-level block 'ClearMode' is not supported by a material effect"},
        {"block declared twice", "DepthStencilState D { }\nColorSampleState D { }",
         "effect(2): error: state block 'D' declared again (first at effect(1))"},
        {"undeclared block", stages + "Technique T { Pass P { VertexProgram = VS;\n DepthStencilState = Later; } }",
         "effect(3): error: pass 'P' names DepthStencilState 'Later', which is not declared before it"},
        {"block of another family", "DepthStencilState D { }\n" + stages +
                                        "Technique T { Pass P {\n ColorSampleState = D; } }",
         "effect(4): error: state block 'D' (declared at effect(1)) is not a ColorSampleState"},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);
    std::string many;
    for (int i = 0; i < 10000; ++i)
        many += "RasterizationState R" + std::to_string(i) + " { CULL_FACE = true; }\n";
    ExpectRefused({"ten thousand blocks", many, "effect(1025): error: more than 1024 state blocks in one effect"});
}

// Constructs of the wider format are refused by name: one case per way they are met.
TEST(EffectErrorsTest, ConstructsOfTheWiderFormatAndSceneLevelBlocksAreRefusedByName)
{
    const std::string stages = kStages; // line 1
    const auto scene = [](const char* where, const char* block) {
        return std::string("effect(") + where + " scene-level block '" + block + "' is not supported by a material effect";
    };
    const RefusedCase cases[] = {
        {"CgFX sampler state", "\nsampler_state Linear { }",
         "effect(2): error: sampler states are not supported: 'sampler_state'"},
        {"texture array", "TextureResource2DArray Tex { }",
         "effect(1): error: texture resources are not supported: 'TextureResource2DArray'"},
        {"image", "ImageResource2D Img { }", "effect(1): error: texture resources are not supported: 'ImageResource2D'"},
        {"HLSL", "HLSL11Shader S { }", "effect(1): error: HLSL programs are not supported: 'HLSL11Shader'"},
        {"render texture", "uniform float a;\n\nRenderTexture colourTex\n{ MSAA = {0,0}; }",
         scene("3): error: colourTex:", "RenderTexture")},
        {"CUDA without a name", "CUDACode { }", scene("1): error: CUDACode:", "CUDACode")},
        {"render buffer", "RenderBuffer depth { }", scene("1): error: depth:", "RenderBuffer")},
        {"frame buffer", "FBO target { }", scene("1): error: target:", "FBO")},
        {"OptiX", "OptixProgram trace { }", scene("1): error: trace:", "OptixProgram")},
        {"path rendering", "PathShader outline { }", scene("1): error: outline:", "PathShader")},
        {"pass clear", stages + "Technique T { Pass Shadow {\n ClearMode = all; } }", scene("3): error: Shadow:", "ClearMode")},
        {"pass compute", stages + "Technique T { Pass P {\n ComputeProgram = VS; } }", scene("3): error: P:", "ComputeProgram")},
        {"pass target", stages + "Technique T { Pass P {\n CurrentTarget = fbo; } }", scene("3): error: P:", "CurrentTarget")},
        {"pass blit", stages + "Technique T { Pass P {\n BlitFBOToActiveTarget = fbo; } }",
         scene("3): error: P:", "BlitFBOToActiveTarget")},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);
}

TEST(EffectErrorsTest, GlslangMessagesNameTheEffectsLines)
{
    const RefusedCase cases[] = {
        {"named code",
         "uniform vec4 Colour;\n"
         "GLSLShader VS {\n"
         "  void main() {\n"
         "    gl_Position = gl_Vertex * undeclared;\n"
         "  }\n"
         "}\n"
         "Technique T { Pass P { VertexProgram = VS; } }",
         "effect(4): error: pass 'P' of technique 'T', vertex stage: 'undeclared' : undeclared identifier"},
        {"shared code before 3.30, where #line counts from the next line",
         "GLSLShader {\n#version 120\nvec4 helper() {\n return missing; }\n}\n"
         "GLSLShader VS { void main() { gl_Position = helper(); } }\n"
         "Technique T { Pass P { VertexProgram = VS; } }",
         "effect(4): error: pass 'P' of technique 'T', vertex stage: 'missing' : undeclared identifier"},
        {"unknown version", "GLSLShader {\n\n #version 999\n}\nGLSLShader VS { void main() {} }\n"
                            "Technique T { Pass P { VertexProgram = VS; } }",
         "effect(3): error: pass 'P' of technique 'T', vertex stage: version not supported"},
        {"declaration the code contradicts",
         "uniform vec3 Tint;\nGLSLShader FS {\n vec3 Tint;\n void main() { gl_FragColor = vec4(1.0); } }\n"
         "Technique T { Pass P { FragmentProgram = FS; } }",
         "effect(3): error: pass 'P' of technique 'T', fragment stage: 'Tint' : redefinition"},
        {"stages that do not link",
         "GLSLShader VS { out vec3 v; void main() { v = vec3(0.0); gl_Position = gl_Vertex; } }\n"
         "GLSLShader FS { in vec4 v; void main() { gl_FragColor = v; } }\n"
         "Technique T {\n Pass P { VertexProgram = VS; FragmentProgram = FS; } }",
         "effect(4): error: pass 'P' of technique 'T' does not link: Linking vertex and fragment stages: "
         "Types must match:"},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);
}

TEST(EffectErrorsTest, HostileTextsAreRefusedCleanly)
{
    std::mt19937 random(13);
    std::string garbage(10u << 20, '\0');
    for (char& c : garbage)
        c = static_cast<char>(random() % 255 + 1);
    const RefusedCase cases[] = {
        {"huge name", "uniform float " + std::string(10u << 20, 'x') + ";",
         "effect(1): error: name longer than 256 characters"},
        {"huge number", "uniform float a = " + std::string(1u << 20, '1') + ";",
         "effect(1): error: number longer than 64 characters"},
        {"huge string", "uniform float a < Note = \"" + std::string(1u << 20, 's') + "\"; >;",
         "effect(1): error: string longer than 65536 characters"},
        {"deep nesting at effect scope", std::string(1u << 20, '{'), "effect(1): error: unexpected '{' at effect scope"},
        {"deep nesting in code", "GLSLShader S " + std::string(1u << 20, '{'),
         "effect(1): error: GLSLShader 'S': block not closed: '}' missing"},
        {"deep nesting in a value", "uniform vec4 a = {" + std::string(1u << 20, '{'),
         "effect(1): error: expected a number, found '{'"},
    };
    for (const RefusedCase& c : cases)
        ExpectRefused(c);
    const NvFXTest::Loaded loaded = Load(garbage);
    EXPECT_FALSE(loaded.ok);
    EXPECT_NE(loaded.messages.find("effect(1): error: "), std::string::npos) << loaded.messages.substr(0, 200);
}

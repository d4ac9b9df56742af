// Namespaces (their names flattened for GLSL, their code reached as NAME::Code from
// passes) and arrays sized by their value.
#include "NvFXTestSupport.h"

#include "nvFX/IPassEx.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniformEx.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using NvFXTest::ExpectFirstError;
using NvFXTest::Load;

TEST(DeclarationsTest, NamespacesPrefixWhatTheyHoldAndPassesReachTheirCode)
{
    const NvFXTest::Loaded loaded = Load(R"(
namespace lightData
{
    uniform vec3 LightPos[2] : LIGHTPOS;
    namespace lightData { uniform float LightAxialFalloffStart[2] = {1, 2}; }
    ConstantBuffer Material { uniform vec4 Tint = {1, 0, 0, 1}; };
    GLSLShader Shade { vec4 shade() { return lightData_Tint * lightData_lightData_LightAxialFalloffStart[1] + vec4(lightData_LightPos[0], 0.0); } }
};
namespace Outline { GLSLShader Shade { vec4 shade() { return vec4(1.0); } } }
GLSLShader FS { void main() { gl_FragColor = shade(); } }
Technique T
{
    Pass Lit { FragmentProgram = { lightData::Shade, FS }; }
    Pass Edge { FragmentProgram = { Outline :: Shade, FS }; }
}
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IUniform* position = loaded.container->findUniform("lightData_LightPos");
    ASSERT_NE(position, nullptr) << "the name the library looks light positions up by";
    EXPECT_STREQ(position->getSemantic(), "LIGHTPOS");
    nvFX::IUniform* start = loaded.container->findUniform("lightData_lightData_LightAxialFalloffStart");
    ASSERT_NE(start, nullptr) << "nested namespaces prefix in order";
    EXPECT_TRUE(start->isUsedBy(nvFX::IUniform::TargetGLSL));
    EXPECT_NE(loaded.container->findBufferUniform("lightData_Material.lightData_Tint"), nullptr);
    const std::string lit = loaded.container->findTechnique(0)->getPass(0)->getExInterface()->getStageSource(
        nvFX::IPassEx::FragmentStage);
    EXPECT_NE(lit.find("uniform lightData_Material {"), std::string::npos) << lit;
    EXPECT_NE(lit.find("lightData_Tint * lightData_lightData"), std::string::npos) << "code is GLSL's, as written";
    const std::string edge = loaded.container->findTechnique(0)->getPass(1)->getExInterface()->getStageSource(
        nvFX::IPassEx::FragmentStage);
    EXPECT_NE(edge.find("return vec4(1.0);"), std::string::npos) << "the other namespace's piece of the same name";

    ExpectFirstError("namespace A { uniform float x;\n", "effect(1): error: expected '}' to close namespace 'A', found the end of the text");
    ExpectFirstError("namespace A {\n Technique T { } }", "effect(2): error: techniques are declared outside namespaces, not in namespace 'A'");
    ExpectFirstError("namespace A { uniform float x; }\nnamespace A { uniform vec2 x; }",
                     "effect(2): error: uniform 'A_x' declared again with another type (first at effect(1))");
    ExpectFirstError("GLSLShader VS { void main() {} }\nTechnique T { Pass P {\n VertexProgram = A::VS; } }",
                     "effect(3): error: pass 'P' of technique 'T' names code 'A::VS', which is not declared");
    ExpectFirstError("GLSLShader VS { }\nTechnique T { Pass P { VertexProgram = A:VS; } }",
                     "effect(2): error: expected ':' after ':' in 'A:', found 'VS'");
    std::string deep;
    for (int i = 0; i <= 16; ++i)
        deep += "namespace N" + std::to_string(i) + " {\n";
    ExpectFirstError(deep, "effect(17): error: namespaces nest deeper than 16 levels");
}

TEST(DeclarationsTest, ArraysWithoutASizeTakeTheirValuesLength)
{
    const NvFXTest::Loaded loaded = Load("uniform vec3 lightPos[] : LIGHTPOS = { 1, 2, 3,  4, 5, 6,  7, 8, 9 };\n"
                                         "uniform mat2 turns[] = { 1, 0, 0, 1 };\n"
                                         "GLSLShader FS { void main() { gl_FragColor = vec4(lightPos[2] * turns[0][0][0], 1.0); } }\n"
                                         "Technique T { Pass P { FragmentProgram = FS; } }");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IUniform* lights = loaded.container->findUniform("lightPos");
    EXPECT_EQ(lights->getArraySize(), 3);
    std::vector<float> values(9);
    EXPECT_TRUE(lights->getValuefv(values.data(), 9));
    EXPECT_EQ(values[8], 9.0f);
    EXPECT_EQ(loaded.container->findUniform("turns")->getArraySize(), 1);
    const std::string stage = loaded.container->findTechnique(0)->getPass(0)->getExInterface()->getStageSource(
        nvFX::IPassEx::FragmentStage);
    EXPECT_NE(stage.find("uniform vec3 lightPos[3];"), std::string::npos) << stage;

    ExpectFirstError("uniform vec3 a[] = {1, 2, 3, 4};", "effect(1): error: uniform 'a' (vec3[]) takes whole elements of 3 values, 4 given");
    ExpectFirstError("uniform vec3 a[] = {};", "effect(1): error: uniform 'a' (vec3[]) takes whole elements of 3 values, 0 given");
    ExpectFirstError("\nuniform float a[];", "effect(2): error: array 'a' has neither a size nor a value to size it");
    ExpectFirstError("uniform sampler2D s[];", "effect(1): error: array 's' has neither a size nor a value to size it");
    std::string huge = "uniform float a[] = {0";
    for (int i = 0; i < 4096; ++i)
        huge += ", 1";
    ExpectFirstError(huge + "};", "effect(1): error: uniform 'a' (float[]) has more than 4096 elements");
}

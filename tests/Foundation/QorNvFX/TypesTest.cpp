// Every uniform type GLSL 4.x has: declared, compiled, reflected as used, answering its
// code and components, and taking defaults as written, in its range.
#include "NvFXTestSupport.h"

#include "nvFX/IUniformEx.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using nvFX::IUniform;
using NvFXTest::Load;

namespace {

struct TypeCase
{
    const char* keyword;
    IUniform::Type code;
    int components;
    const char* read; // a float expression of the uniform, written "$", so that the code uses it
};

const TypeCase kTypes[] = {
    {"int", IUniform::TInt, 1, "float($)"},           {"ivec2", IUniform::TInt2, 2, "float($.y)"},
    {"ivec3", IUniform::TInt3, 3, "float($.z)"},      {"ivec4", IUniform::TInt4, 4, "float($.w)"},
    {"bool", IUniform::TBool, 1, "float($)"},         {"bvec2", IUniform::TBool2, 2, "float($.y)"},
    {"bvec3", IUniform::TBool3, 3, "float($.z)"},     {"bvec4", IUniform::TBool4, 4, "float($.w)"},
    {"float", IUniform::TFloat, 1, "$"},              {"vec2", IUniform::TVec2, 2, "$.y"},
    {"vec3", IUniform::TVec3, 3, "$.z"},              {"vec4", IUniform::TVec4, 4, "$.w"},
    {"mat2", IUniform::TMat2, 4, "$[1][1]"},          {"mat3", IUniform::TMat3, 9, "$[2][2]"},
    {"mat4", IUniform::TMat4, 16, "$[3][3]"},         {"sampler1D", IUniform::TSampler1D, 1, "float(textureSize($, 0))"},
    {"sampler2D", IUniform::TSampler2D, 1, "float(textureSize($, 0).x)"},
    {"sampler2DRect", IUniform::TSampler2DRect, 1, "float(textureSize($).x)"},
    {"sampler3D", IUniform::TSampler3D, 1, "float(textureSize($, 0).x)"},
    {"samplerCube", IUniform::TSamplerCube, 1, "float(textureSize($, 0).x)"},
    {"uint", IUniform::TUInt, 1, "float($)"},
    {"uvec2", IUniform::TUInt2, 2, "float($.y)"},
    {"uvec3", IUniform::TUInt3, 3, "float($.z)"},
    {"uvec4", IUniform::TUInt4, 4, "float($.w)"},
    {"double", IUniform::TDouble, 1, "float($)"},
    {"dvec2", IUniform::TDVec2, 2, "float($.y)"},
    {"dvec3", IUniform::TDVec3, 3, "float($.z)"},
    {"dvec4", IUniform::TDVec4, 4, "float($.w)"},
    {"mat2x3", IUniform::TMat2x3, 6, "$[1][2]"},
    {"mat2x4", IUniform::TMat2x4, 8, "$[1][3]"},
    {"mat3x2", IUniform::TMat3x2, 6, "$[2][1]"},
    {"mat3x4", IUniform::TMat3x4, 12, "$[2][3]"},
    {"mat4x2", IUniform::TMat4x2, 8, "$[3][1]"},
    {"mat4x3", IUniform::TMat4x3, 12, "$[3][2]"},
    {"mat3x3", IUniform::TMat3, 9, "$[2][2]"},
    {"dmat2", IUniform::TDMat2, 4, "float($[1][1])"},
    {"dmat3", IUniform::TDMat3, 9, "float($[2][2])"},
    {"dmat4", IUniform::TDMat4, 16, "float($[3][3])"},
    {"dmat2x3", IUniform::TDMat2x3, 6, "float($[1][2])"},
    {"dmat2x4", IUniform::TDMat2x4, 8, "float($[1][3])"},
    {"dmat3x2", IUniform::TDMat3x2, 6, "float($[2][1])"},
    {"dmat3x4", IUniform::TDMat3x4, 12, "float($[2][3])"},
    {"dmat4x2", IUniform::TDMat4x2, 8, "float($[3][1])"},
    {"dmat4x3", IUniform::TDMat4x3, 12, "float($[3][2])"},
    {"dmat4x4", IUniform::TDMat4, 16, "float($[3][3])"},
    {"sampler1DArray", IUniform::TSampler1DArray, 1, "float(textureSize($, 0).x)"},
    {"sampler2DArray", IUniform::TSampler2DArray, 1, "float(textureSize($, 0).x)"},
    {"samplerCubeArray", IUniform::TSamplerCubeArray, 1, "float(textureSize($, 0).x)"},
    {"sampler2DMS", IUniform::TSampler2DMS, 1, "float(textureSize($).x)"},
    {"sampler2DMSArray", IUniform::TSampler2DMSArray, 1, "float(textureSize($).x)"},
    {"samplerBuffer", IUniform::TSamplerBuffer, 1, "float(textureSize($))"},
    {"sampler1DShadow", IUniform::TSampler1DShadow, 1, "float(textureSize($, 0))"},
    {"sampler2DShadow", IUniform::TSampler2DShadow, 1, "float(textureSize($, 0).x)"},
    {"sampler2DRectShadow", IUniform::TSampler2DRectShadow, 1, "float(textureSize($).x)"},
    {"sampler1DArrayShadow", IUniform::TSampler1DArrayShadow, 1, "float(textureSize($, 0).x)"},
    {"sampler2DArrayShadow", IUniform::TSampler2DArrayShadow, 1, "float(textureSize($, 0).x)"},
    {"samplerCubeShadow", IUniform::TSamplerCubeShadow, 1, "float(textureSize($, 0).x)"},
    {"samplerCubeArrayShadow", IUniform::TSamplerCubeArrayShadow, 1, "float(textureSize($, 0).x)"},
    {"isampler1D", IUniform::TISampler1D, 1, "float(textureSize($, 0))"},
    {"isampler2D", IUniform::TISampler2D, 1, "float(texelFetch($, ivec2(0), 0).x)"},
    {"isampler2DRect", IUniform::TISampler2DRect, 1, "float(textureSize($).x)"},
    {"isampler3D", IUniform::TISampler3D, 1, "float(textureSize($, 0).x)"},
    {"isamplerCube", IUniform::TISamplerCube, 1, "float(textureSize($, 0).x)"},
    {"isampler1DArray", IUniform::TISampler1DArray, 1, "float(textureSize($, 0).x)"},
    {"isampler2DArray", IUniform::TISampler2DArray, 1, "float(textureSize($, 0).x)"},
    {"isamplerCubeArray", IUniform::TISamplerCubeArray, 1, "float(textureSize($, 0).x)"},
    {"isampler2DMS", IUniform::TISampler2DMS, 1, "float(textureSize($).x)"},
    {"isampler2DMSArray", IUniform::TISampler2DMSArray, 1, "float(textureSize($).x)"},
    {"isamplerBuffer", IUniform::TISamplerBuffer, 1, "float(textureSize($))"},
    {"usampler1D", IUniform::TUSampler1D, 1, "float(textureSize($, 0))"},
    {"usampler2D", IUniform::TUSampler2D, 1, "float(texelFetch($, ivec2(0), 0).x)"},
    {"usampler2DRect", IUniform::TUSampler2DRect, 1, "float(textureSize($).x)"},
    {"usampler3D", IUniform::TUSampler3D, 1, "float(textureSize($, 0).x)"},
    {"usamplerCube", IUniform::TUSamplerCube, 1, "float(textureSize($, 0).x)"},
    {"usampler1DArray", IUniform::TUSampler1DArray, 1, "float(textureSize($, 0).x)"},
    {"usampler2DArray", IUniform::TUSampler2DArray, 1, "float(textureSize($, 0).x)"},
    {"usamplerCubeArray", IUniform::TUSamplerCubeArray, 1, "float(textureSize($, 0).x)"},
    {"usampler2DMS", IUniform::TUSampler2DMS, 1, "float(textureSize($).x)"},
    {"usampler2DMSArray", IUniform::TUSampler2DMSArray, 1, "float(textureSize($).x)"},
    {"usamplerBuffer", IUniform::TUSamplerBuffer, 1, "float(textureSize($))"},
};

std::string Replace(std::string text, const std::string& name)
{
    for (std::size_t at = text.find('$'); at != std::string::npos; at = text.find('$', at))
        text.replace(at, 1, name);
    return text;
}

} // namespace

TEST(TypesTest, EveryGlsl4TypeIsDeclaredUsedAndAnswersItsCode)
{
    std::string effect = "GLSLShader {\n#version 450 compatibility\n}\n";
    std::string sum = "0.0";
    for (const TypeCase& type : kTypes) {
        const std::string name = std::string("u_") + type.keyword;
        effect += "uniform " + std::string(type.keyword) + " " + name + ";\n";
        sum += " + " + Replace(type.read, name);
    }
    effect += "GLSLShader FS { void main() { gl_FragColor = vec4(" + sum + "); } }\n"
              "Technique T { Pass P { FragmentProgram = FS; } }\n";
    const NvFXTest::Loaded loaded = Load(effect);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    for (const TypeCase& type : kTypes) {
        SCOPED_TRACE(type.keyword);
        IUniform* uniform = loaded.container->findUniform((std::string("u_") + type.keyword).c_str());
        ASSERT_NE(uniform, nullptr);
        EXPECT_EQ(uniform->getType(), type.code);
        EXPECT_EQ(uniform->getExInterface()->getComponentCount(), type.components);
        EXPECT_TRUE(uniform->isUsedBy(IUniform::TargetGLSL)) << "glslang's reflection lists it";
        EXPECT_EQ(uniform->getArraySize(), 0);
        EXPECT_STREQ(uniform->getSemantic(), "");
    }
}

TEST(TypesTest, DefaultsAreKeptInTheirTypesRange)
{
    const NvFXTest::Loaded loaded = Load("uniform uvec2 big = {4294967295, 7};\n"
                                         "uniform dvec2 precise = {0.25, -1e30};\n"
                                         "uniform mat2x3 skew = {1, 2, 3, 4, 5, 6};\n"
                                         "uniform int low = -2147483648;\n"
                                         "uniform ivec4 four = {1, 2, 3, 4};\n"
                                         "uniform bool yes = true;\n"
                                         "uniform bvec2 pair = {false, true};\n"
                                         "uniform float gain = 2.5f;\n"
                                         "uniform vec2 signs = {-1.5e1, +.5};\n"
                                         "uniform vec3 none;\n");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    const struct
    {
        const char* name;
        std::vector<float> expected;
    } defaults[] = {{"big", {4294967295.0f, 7}}, {"precise", {0.25f, -1e30f}}, {"skew", {1, 2, 3, 4, 5, 6}},
                    {"low", {-2147483648.0f}},   {"four", {1, 2, 3, 4}},       {"yes", {1}},
                    {"pair", {0, 1}},            {"gain", {2.5f}},             {"signs", {-15.0f, 0.5f}},
                    {"none", {0, 0, 0}}};
    for (const auto& d : defaults) {
        std::vector<float> values(d.expected.size(), 99.0f);
        EXPECT_TRUE(loaded.container->findUniform(d.name)->getValuefv(values.data(), static_cast<int>(values.size())));
        EXPECT_EQ(values, d.expected) << d.name;
    }
    std::vector<float> values(2);
    const int ints[] = {1, 2};
    EXPECT_TRUE(loaded.container->findUniform("big")->setValueiv(ints, 2)) << "unsigned ints are set as ints";
    EXPECT_TRUE(loaded.container->findUniform("precise")->setValuefv(values.data(), 2)) << "doubles as floats";

    const struct
    {
        const char* text;
        const char* message;
    } refused[] = {
        {"uniform uint a = -1;", "effect(1): error: uniform 'a' (uint) takes whole numbers from 0 to 4294967295"},
        {"uniform uvec2 a = {1, 4294967296};", "effect(1): error: uniform 'a' (uvec2) takes whole numbers from 0 to 4294967295"},
        {"uniform int a = 2147483648;", "effect(1): error: uniform 'a' (int) takes whole numbers from -2147483648 to 2147483647"},
        {"uniform image2D a;", "effect(1): error: unknown uniform type 'image2D'"},
    };
    for (const auto& c : refused) {
        const NvFXTest::Loaded bad = Load(c.text);
        EXPECT_FALSE(bad.ok);
        EXPECT_EQ(bad.messages, std::string(c.message) + "\n");
    }
}

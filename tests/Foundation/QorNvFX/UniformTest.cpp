// Values through the uniform interface, without a display: which setter fits which
// type, counts, conversions, and what a refusal says.
#include "NvFXTestSupport.h"

#include "nvFX/IPass.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniformEx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using NvFXTest::Load;

namespace {

const char* const kUniforms = R"(
uniform float f = 1;
uniform vec3 v3;
uniform vec4 v4[2];
uniform mat4 m4;
uniform mat3 m3;
uniform int i;
uniform bvec2 b2;
uniform sampler2D s2;
uniform samplerCube sc[2];
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
Technique T { Pass P { VertexProgram = VS; } }
)";

// Each setter with a value of the count it takes.
const float kFloats[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
const int kInts[2] = {5, 0};
const std::pair<const char*, bool (*)(nvFX::IUniform&)> kSetters[] = {
    {"setValue1f", [](nvFX::IUniform& u) { return u.setValue1f(1.5f); }},
    {"setValue3f", [](nvFX::IUniform& u) { return u.setValue3f(1, 2, 3); }},
    {"setValue4f", [](nvFX::IUniform& u) { return u.setValue4f(1, 2, 3, 4); }},
    {"setValuefv", [](nvFX::IUniform& u) { return u.setValuefv(kFloats, 3); }},
    {"setMatrix4f", [](nvFX::IUniform& u) { return u.setMatrix4f(kFloats); }},
    {"setValueiv", [](nvFX::IUniform& u) { return u.setValueiv(kInts, 2); }},
    {"setSamplerUnit", [](nvFX::IUniform& u) { return u.setSamplerUnit(3); }},
};

} // namespace

TEST(UniformTest, EachSetterTakesOnlyTheTypesItFits)
{
    const NvFXTest::Loaded loaded = Load(kUniforms);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    const struct
    {
        const char* uniform;
        std::vector<std::string> accepted;
    } cases[] = {
        {"f", {"setValue1f"}},
        {"v3", {"setValue3f", "setValuefv"}},
        {"v4", {"setValue4f", "setValuefv"}},
        {"m4", {"setValuefv", "setMatrix4f"}},
        {"m3", {"setValuefv"}},
        {"i", {}},
        {"b2", {"setValueiv"}},
        {"s2", {"setSamplerUnit"}},
        {"sc", {"setSamplerUnit"}},
    };
    for (const auto& c : cases) {
        nvFX::IUniform* uniform = loaded.container->findUniform(c.uniform);
        ASSERT_NE(uniform, nullptr) << c.uniform;
        for (const auto& [name, apply] : kSetters) {
            const bool expected = std::find(c.accepted.begin(), c.accepted.end(), name) != c.accepted.end();
            NvFXTest::MessageCapture capture;
            EXPECT_EQ(apply(*uniform), expected) << c.uniform << ", " << name;
            EXPECT_EQ(capture.text().empty(), expected) << capture.text();
        }
    }
}

TEST(UniformTest, ValuesRoundTripWithCountsAndConversions)
{
    const NvFXTest::Loaded loaded = Load(kUniforms);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IContainer& effect = *loaded.container;

    nvFX::IUniform& v4 = *effect.findUniform("v4");
    const float eight[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_TRUE(v4.setValuefv(eight, 8));
    EXPECT_TRUE(v4.setValue4f(9, 9, 9, 9));
    float read[8] = {};
    EXPECT_TRUE(v4.getValuefv(read, 8));
    EXPECT_EQ(std::vector<float>(read, read + 8), (std::vector<float>{9, 9, 9, 9, 5, 6, 7, 8}));

    nvFX::IUniform& b2 = *effect.findUniform("b2");
    const int bools[2] = {7, 0};
    EXPECT_TRUE(b2.setValueiv(bools, 2));
    EXPECT_TRUE(b2.getValuefv(read, 2));
    EXPECT_EQ(read[0], 1.0f) << "any non-zero is true";
    EXPECT_EQ(read[1], 0.0f);

    nvFX::IUniform& i = *effect.findUniform("i");
    const int minusTwo = -2;
    EXPECT_TRUE(i.setValueiv(&minusTwo, 1));
    EXPECT_TRUE(i.getValuefv(read, 1));
    EXPECT_EQ(read[0], -2.0f);

    NvFXTest::MessageCapture capture;
    EXPECT_FALSE(v4.setValuefv(eight, 9)) << "more than the uniform holds";
    EXPECT_FALSE(v4.setValuefv(eight, 0));
    EXPECT_FALSE(v4.setValuefv(nullptr, 1));
    EXPECT_FALSE(v4.getValuefv(read, 9));
    EXPECT_FALSE(effect.findUniform("s2")->getValuefv(read, 1));
    EXPECT_FALSE(effect.findUniform("s2")->setSamplerResource(1, 80));
    EXPECT_FALSE(effect.findUniform("sc")->setSamplerUnit(79)) << "its second element would need unit 80";
    EXPECT_TRUE(v4.getValuefv(read, 8));
    EXPECT_EQ(read[4], 5.0f) << "refused calls change nothing";
    EXPECT_NE(capture.text().find("nvFX: uniform 'v4' (vec4[]): setValuefv: no values, or more than the uniform holds\n"),
              std::string::npos)
        << capture.text();
}

TEST(UniformTest, PassesNeedAGLContextToValidate)
{
    const NvFXTest::Loaded loaded = Load(kUniforms);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::ITechnique* technique = loaded.container->findTechnique(0);
    NvFXTest::MessageCapture capture;
    EXPECT_FALSE(technique->validate());
    EXPECT_FALSE(technique->getPass(0)->setup());
    EXPECT_FALSE(technique->getPass(0)->restore());
    EXPECT_NE(capture.text().find("nvFX: pass 'P' of technique 'T': no GL context is current\n"), std::string::npos)
        << capture.text();
}

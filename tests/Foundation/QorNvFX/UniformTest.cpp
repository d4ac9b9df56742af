// Values through the uniform interface, without a display: which setter fits which
// type, counts, conversions, and what a refusal says.
#include "NvFXTestSupport.h"

#include "nvFX/IPass.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniformEx.h"

#include <gtest/gtest.h>

#include <string>
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

enum Setter
{
    One,
    Three,
    Four,
    FloatsOf3,
    Matrix,
    IntsOf2,
    Unit,
};

bool Apply(nvFX::IUniform& uniform, Setter setter)
{
    static const float floats[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    static const int ints[2] = {5, 0};
    switch (setter) {
    case One:
        return uniform.setValue1f(1.5f);
    case Three:
        return uniform.setValue3f(1, 2, 3);
    case Four:
        return uniform.setValue4f(1, 2, 3, 4);
    case FloatsOf3:
        return uniform.setValuefv(floats, 3);
    case Matrix:
        return uniform.setMatrix4f(floats);
    case IntsOf2:
        return uniform.setValueiv(ints, 2);
    case Unit:
        return uniform.setSamplerUnit(3);
    }
    return false;
}

} // namespace

TEST(UniformTest, EachSetterTakesOnlyTheTypesItFits)
{
    const NvFXTest::Loaded loaded = Load(kUniforms);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    const struct
    {
        const char* uniform;
        std::vector<Setter> accepted;
    } cases[] = {
        {"f", {One}},
        {"v3", {Three, FloatsOf3}},
        {"v4", {Four, FloatsOf3}},
        {"m4", {FloatsOf3, Matrix}},
        {"m3", {FloatsOf3}},
        {"i", {}},
        {"b2", {IntsOf2}},
        {"s2", {Unit}},
        {"sc", {Unit}},
    };
    for (const auto& c : cases) {
        nvFX::IUniform* uniform = loaded.container->findUniform(c.uniform);
        ASSERT_NE(uniform, nullptr) << c.uniform;
        for (Setter setter : {One, Three, Four, FloatsOf3, Matrix, IntsOf2, Unit}) {
            bool expected = false;
            for (Setter accepted : c.accepted)
                expected = expected || accepted == setter;
            NvFXTest::MessageCapture capture;
            EXPECT_EQ(Apply(*uniform, setter), expected) << c.uniform << ", setter " << setter;
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

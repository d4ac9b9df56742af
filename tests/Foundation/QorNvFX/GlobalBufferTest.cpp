// Constant buffers declared `global`: one per name for every effect that declares it
// the same way, alive while one of them is; another declaration of the name is refused
// while the first lives, naming both places.
#include "NvFXTestSupport.h"

#include "nvFX/IUniformEx.h"

#include <gtest/gtest.h>

#include <string>

using NvFXTest::Load;

namespace {

const char* const kShared = "\n"
                            "global ConstantBuffer Frame {\n"
                            "    uniform vec4 Fog = {0, 0, 0, 1};\n"
                            "    uniform float Time;\n"
                            "};\n"
                            "ConstantBuffer Own { uniform float Gain = 1; };\n";

} // namespace

TEST(GlobalBufferTest, EffectsShareOneBufferWhileOneHoldsIt)
{
    NvFXTest::Loaded first = Load(kShared, "first.glslfx");
    ASSERT_TRUE(first.ok) << first.messages;
    NvFXTest::Loaded second = Load(std::string("// another effect\n") + kShared, "second.glslfx");
    ASSERT_TRUE(second.ok) << second.messages;
    nvFX::IUniform* fog = first.container->findBufferUniform("Frame.Fog");
    ASSERT_NE(fog, nullptr);
    EXPECT_EQ(second.container->findBufferUniform("Fog"), fog) << "one member, so one value and one upload";
    EXPECT_NE(second.container->findBufferUniform("Gain"), first.container->findBufferUniform("Gain"))
        << "each effect's own buffers stay its own";
    ASSERT_TRUE(fog->setValue4f(0.5f, 0.25f, 0.0f, 1.0f));

    const NvFXTest::Loaded other =
        Load("uniform float x;\nglobal ConstantBuffer Frame { uniform vec3 Fog; };", "other.glslfx");
    EXPECT_FALSE(other.ok);
    EXPECT_EQ(other.messages, "other.glslfx(2): error: global constant buffer 'Frame' is declared with other members "
                              "at first.glslfx(2), which an effect still holds\n");

    first.container.reset();
    float value[4] = {};
    EXPECT_TRUE(second.container->findBufferUniform("Fog")->getValuefv(value, 4)) << "the first effect's going leaves it";
    EXPECT_EQ(value[0], 0.5f);
    second.container.reset();
    const NvFXTest::Loaded after = Load("global ConstantBuffer Frame { uniform vec3 Fog; };", "after.glslfx");
    EXPECT_TRUE(after.ok) << "the last holder gone, the name is free: " << after.messages;

    NvFXTest::ExpectFirstError("global uniform float Time;",
                               "effect(1): error: 'global' uniforms are not supported: a global ConstantBuffer shares its members");
    NvFXTest::ExpectFirstError("global Technique T { }", "effect(1): error: expected 'ConstantBuffer' after 'global', found 'Technique'");
    std::string many;
    for (int i = 0; i <= 24; ++i)
        many += "ConstantBuffer B" + std::to_string(i) + " { uniform float x" + std::to_string(i) + "; }\n";
    NvFXTest::ExpectFirstError(many, "effect(25): error: more than 24 constant buffers in one effect");
}

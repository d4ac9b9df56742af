// The GLSL-effect parameter set's own part: values made from uniforms and the operations
// it does not take. What every set does is checked on both roads in the shared suite.
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include "NvFXTestSupport.h"
#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorShaderManager.h"

#include <nvFX/IUniform.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

struct TestUniforms
{
    NvFXTest::Loaded loaded = NvFXTest::Load(kQorNvFXTestEffect);
    nvFX::IUniform* Named(const char* name) const { return loaded.container->findUniform(name); }
};

} // namespace

TEST(QorNvFXShaderParametersTest, ValuesMirrorUniformsAndEmptyTextsNameNoTexture)
{
    QorRegistryGuard guard;
    TestUniforms uniforms;
    ASSERT_TRUE(uniforms.loaded.ok) << uniforms.loaded.messages;
    QorNvFXShaderParameters set;
    nvFX::IUniform* gloss = uniforms.Named("Gloss");
    set.AddFloat(gloss, 1.0f);
    set.AddFloat(gloss, 2.0f);
    set.AddString(uniforms.Named("Sky"), "");
    set.AddFloat(nullptr, 3.0f);
    EXPECT_EQ(set.GetNbParameters(), 4) << "the same uniform twice keeps both values and names";
    EXPECT_EQ(set.GetParameterIndex("Sky"), 3);
    EXPECT_EQ(set.GetUniform(2), gloss);
    EXPECT_EQ(set.GetParameterType(4), 0) << "no uniform: no value";
    EXPECT_EQ(QorShaderManager::GetShaderTexture(""), nullptr) << "an empty name names no texture";
}

TEST(QorNvFXShaderParametersTest, InterfaceOperationsAndStreamingReport)
{
    QorNvFXShaderParameters set;
    float number = 0;
    float* numbers = &number;
    char* text = nullptr;
    int count = 0;
    const std::pair<int, std::function<int()>> guarded[] = {
        {859, [&] { return set.SetInterfaceTexture("i", "m", "f", 0); }},
        {854, [&] { return set.SetInterfaceColor("i", "m", &number); }},
        {849, [&] { return set.SetInterfaceFloat("i", "m", 1); }},
        {874, [&] { return set.GetInterfaceTexture("i", "m", &text); }},
        {869, [&] { return set.GetInterfaceColor("i", "m", &numbers); }},
        {864, [&] { return set.GetInterfaceFloat("i", "m", &number); }},
        {879, [&] { return set.GetNbInterfaceMembers(0, &count); }},
        {904, [&] { return set.GetInterfaceMemberName(0, 0) ? 1 : 0; }},
        {884, [&] { return set.GetInterfaceParameterName(0, 0) ? 1 : 0; }},
        {889, [&] { return set.FindInterface("i", &count); }},
        {894, [&] { return set.FindInterfaceMember(0, "m", &count); }},
        {899, [&] { return set.GetInterfaceMemberType(0, 0, &count); }},
        {919, [&] { return set.SetInterfaceTextureAt(0, 0, "f", 0); }},
        {914, [&] { return set.SetInterfaceColorAt(0, 0, &number); }},
        {909, [&] { return set.SetInterfaceFloatAt(0, 0, 1); }},
        {934, [&] { return set.GetInterfaceTextureAt(0, 0, &text); }},
        {929, [&] { return set.GetInterfaceColorAt(0, 0, &numbers); }},
        {924, [&] { return set.GetInterfaceFloatAt(0, 0, &number); }},
    };
    for (const auto& [line, call] : guarded) {
        QorCapturingSink sink;
        EXPECT_EQ(call(), 0) << line;
        ASSERT_EQ(sink.Records().size(), 1u) << line;
        EXPECT_EQ(sink.Records()[0].message, "This method is not supposed to be called when using nvfx");
        EXPECT_EQ(sink.Records()[0].line, line);
    }

    QorCapturingSink sink;
    QorStreamer stream;
    set.Stream(stream);
    EXPECT_TRUE(stream.GetBytes().empty());
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "Not implemented");
    EXPECT_EQ(sink.Records()[0].line, 616);
}

// The GLSL-effect parameter set: indexing, the guarded operations, texture references
// and reading the parameter stream CgFX sets write.
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include "NvFXTestSupport.h"
#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXShaderValue.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <nvFX/IUniform.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

unsigned TextureCount(const char* name)
{
    const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(name);
    return texture ? texture->GetRefCount() : 0;
}

struct TestUniforms
{
    NvFXTest::Loaded loaded = NvFXTest::Load(kQorNvFXTestEffect);
    nvFX::IUniform* Named(const char* name) const { return loaded.container->findUniform(name); }
};

} // namespace

TEST(QorNvFXShaderParametersTest, IndexesValuesAndNamesFromOne)
{
    QorNvFXShaderParameters fresh;
    EXPECT_EQ(fresh.GetNbParameters(), 1);
    EXPECT_EQ(fresh.GetParameterType(0), 1) << "the technique";
    EXPECT_STREQ(fresh.GetParameterName(0), "Technique");

    TestUniforms uniforms;
    ASSERT_TRUE(uniforms.loaded.ok) << uniforms.loaded.messages;
    QorNvFXShaderParameters set;
    nvFX::IUniform* gloss = uniforms.Named("Gloss");
    set.AddFloat(gloss, 1.0f);
    set.AddFloat(gloss, 2.0f);
    const float rgb[3] = {0.5f, 0.6f, 0.7f};
    set.AddColor(uniforms.Named("tint"), rgb, 3);
    set.AddFloat(nullptr, 3.0f);
    EXPECT_EQ(set.GetNbParameters(), 4) << "the same uniform twice keeps both values and names";
    EXPECT_EQ(set.GetParameterIndex("Gloss"), 1);
    EXPECT_EQ(set.GetParameterIndex("tint"), 3);
    EXPECT_EQ(set.GetUniform(2), gloss);
    EXPECT_EQ(set.GetParameterType(3), 6);
    EXPECT_EQ(set.GetParameterType(4), 0);

    float value = 0;
    EXPECT_EQ(set.SetFloatValue(2, 5.0f), 0);
    EXPECT_EQ(set.GetFloatValue(2, &value, 0), 1);
    EXPECT_EQ(value, 5.0f);
    EXPECT_EQ(set.SetFloatValue(3, 1.0f), -1) << "a colour is no float";
    EXPECT_EQ(set.SetColorValue(1, rgb), -1);
    EXPECT_EQ(set.SetColorValue(9, rgb), -1);
    EXPECT_EQ(set.GetColorValue(1, nullptr, 0), 0);
    set.ResetModified(2);
    EXPECT_EQ(set.GetFloatValue(2, &value, 0), 0) << "cleared";

    QorCapturingSink sink;
    EXPECT_NE(set.GetValue(1), nullptr);
    EXPECT_EQ(set.GetValue(3), nullptr) << "past the names";
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "Overlapping memory");
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderQRFX.m/src/QorNvFXShaderParameters");
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

TEST(QorNvFXShaderParametersTest, ReadsTheStreamCgFXSetsWrite)
{
    QorStreamer stream;
    stream.WriteInt(2, 0);
    stream.WriteString("Gloss");
    stream.WriteString("Base");
    stream.WriteInt(2, 0);
    stream.WriteInt(1, 0); // float
    stream.WriteInt(0x1234, 0);
    stream.WriteFloat(0.5f);
    stream.WriteInt(6, 0); // colour of three
    stream.WriteInt(0x1234, 0);
    const float rgb[4] = {0.1f, 0.2f, 0.3f, 0};
    stream.WriteFloat(rgb, 4);

    QorNvFXShaderParameters set;
    set.UnStream(stream);
    EXPECT_FALSE(stream.IsFailed());
    ASSERT_EQ(set.GetNbParameters(), 3);
    EXPECT_STREQ(set.GetParameterName(2), "Base");
    EXPECT_EQ(set.GetParameterType(2), 6);
    float components[4] = {};
    set.GetColorValue(2, components, 0);
    EXPECT_FLOAT_EQ(components[2], 0.3f);
    EXPECT_EQ(set.GetUniform(1), nullptr) << "read values mirror no uniform";

    QorStreamer namesOnly;
    namesOnly.WriteInt(1, 0);
    namesOnly.WriteString("Only");
    namesOnly.WriteInt(0, 0);
    QorNvFXShaderParameters named;
    named.UnStream(namesOnly);
    EXPECT_EQ(named.GetNbParameters(), 2);
    EXPECT_TRUE(named.GetValueList()->empty());
}

TEST(QorNvFXShaderParametersTest, TextureValuesHoldOneRegistryReferenceEach)
{
    QorRegistryGuard guard;
    TestUniforms uniforms;
    {
        QorNvFXShaderParameters set;
        set.AddString(uniforms.Named("ColorMap"), "wood.tif");
        set.AddString(uniforms.Named("Sky"), "");
        EXPECT_EQ(TextureCount("wood.tif"), 2u) << "the registry's and the value's";
        EXPECT_EQ(QorShaderManager::GetShaderTexture(""), nullptr) << "an empty name names no texture";
        {
            QorNvFXShaderParameters copy(set);
            EXPECT_EQ(TextureCount("wood.tif"), 3u);
        }
        QorShaderManager::CleanShaderTextureToDestroyList();
        EXPECT_EQ(TextureCount("wood.tif"), 2u) << "the copy handed its reference back";
        EXPECT_EQ(set.SetTextureValue(1, "wood.tif", 0), 0);
        EXPECT_EQ(TextureCount("wood.tif"), 2u) << "the same file again takes no reference more";
        EXPECT_EQ(set.SetTextureValue(1, "oak.tif", 0), 0);
        QorShaderManager::CleanShaderTextureToDestroyList();
        EXPECT_EQ(TextureCount("wood.tif"), 0u);
        EXPECT_EQ(TextureCount("oak.tif"), 2u);
        EXPECT_EQ(set.SetTextureValue(2, nullptr, 0), 0);
        EXPECT_EQ(set.SetTextureValue(3, "x", 0), -1);

        char* file = nullptr;
        EXPECT_EQ(set.GetDefaultTexture(&file), -1) << "no shared texture yet";
        EXPECT_EQ(set.SetDefaultTexture("sky.png", 0), 0);
        EXPECT_EQ(set.GetDefaultTexture(&file), 0);
        EXPECT_STREQ(file, "sky.png");
        EXPECT_EQ(TextureCount("sky.png"), 2u);
    }
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(TextureCount("oak.tif"), 0u) << "a set going hands every reference back";
    EXPECT_EQ(TextureCount("sky.png"), 0u);
}

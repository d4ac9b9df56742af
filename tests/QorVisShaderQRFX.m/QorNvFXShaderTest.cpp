// The GLSL-effect shader object: its file name, sharing, parameters and what it refuses.
#include "QorNvFXShader.h"

#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaders/QorIShaderValue.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <gtest/gtest.h>
#include <nvFX/IUniform.h>

#include <array>
#include <memory>
#include <string>

namespace {

struct ShaderDeleter
{
    void operator()(QorIShader* shader) const { shader->Destroy(); }
};
using ShaderPtr = std::unique_ptr<QorIShader, ShaderDeleter>;

// A shader of the test effect, its values generated; the load's output swallowed.
ShaderPtr Generated(const char* name)
{
    ShaderPtr shader(new QorNvFXShader());
    shader->SetBuffer(kQorNvFXTestEffect, name);
    testing::internal::CaptureStdout();
    shader->GenerateParameters();
    testing::internal::GetCapturedStdout();
    return shader;
}

} // namespace

TEST(QorNvFXShaderTest, FileNamesAndSharing)
{
    QorRegistryGuard guard; // the test effect registers its texture
    QorScopedEnv startup("QorStartupPath", nullptr);
    QorScopedEnv graphic("QorGraphicPath", nullptr);
    QorNvFXShader empty;
    empty.SetFileName(QorString(""));
    EXPECT_FALSE(empty.HasEffect());
    EXPECT_STREQ(empty.GetPathName().c_str(), "");
    QorNvFXShader nested;
    nested.SetFileName(QorString("a/b\\c.glslfx"));
    EXPECT_STREQ(nested.GetPathName().c_str(), "a/b\\") << "the separator is kept";
    QorNvFXShader rooted;
    rooted.SetFileName(QorString("\\x.glslfx"));
    EXPECT_STREQ(rooted.GetPathName().c_str(), "") << "a separator at the start sets no directory";
    EXPECT_FALSE(rooted.HasEffect()) << "found nowhere: no effect, nothing printed";
    EXPECT_EQ(empty.GetImplementation(), QorFxQRFX);

    QorTempDir dir;
    const std::string path = dir.Write("shared.glslfx", kQorNvFXTestEffect);
    ShaderPtr first(new QorNvFXShader()), second(new QorNvFXShader());
    first->SetFileName(QorString(path.c_str()));
    second->SetFileName(QorString(path.c_str()));
    ASSERT_TRUE(first->HasEffect());
    EXPECT_EQ(first->GetIShaderEffect(), second->GetIShaderEffect());
    EXPECT_EQ(first->GetIShaderEffect()->AddRef(), 3u);
    first->GetIShaderEffect()->Release();
    QorNvFXShader own;
    own.SetBufferWithoutName(kQorNvFXTestEffect);
    EXPECT_NE(own.GetIShaderEffect(), first->GetIShaderEffect()) << "no name: an effect of its own";
    EXPECT_FALSE(QorNvFXShader().GenerateParameters()) << "no effect, no values";
}

TEST(QorNvFXShaderTest, ValuesThroughTheShader)
{
    QorRegistryGuard guard; // the test effect registers its texture
    ShaderPtr shader = Generated("values.glslfx");
    ASSERT_EQ(shader->GetNbParameters(), 7);
    const int base = shader->GetParameterIndex("Base");
    float r = -1, g = -1, b = -1, a = -1;
    EXPECT_EQ(shader->GetParameterColor(0, &r, &g, &b, &a), -1);
    EXPECT_EQ(shader->GetParameterColor(base, &r, &g, &b, &a), 1) << "changed: answered as it is, nothing written";
    EXPECT_EQ(r, -1);
    shader->GetIShaderParameters()->ResetModified(base);
    EXPECT_EQ(shader->GetParameterColor(base, &r, &g, &b, &a), 0);
    EXPECT_FLOAT_EQ(a, 0.4f);

    char file[QorMaxParameterStringLength] = {};
    EXPECT_EQ(shader->GetParameterString(0, file), -1);
    EXPECT_EQ(shader->GetParameterString(shader->GetParameterIndex("ColorMap"), file), 0);
    EXPECT_STREQ(file, "wood.tif");
    float technique = -1;
    EXPECT_EQ(shader->GetParameterFloat(0, &technique), 0);
    EXPECT_EQ(technique, 0.0f);

    float min = 0, max = 0, step = 0;
    EXPECT_EQ(shader->GetParameterFloatMinMaxStep(1, min, max, step, nullptr, nullptr), -1);
    QorCapturingSink sink;
    EXPECT_EQ(shader->GetGroupParameterFloatMinMaxStep(0, 1, min, max, step, nullptr, nullptr), 0);
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "This method is not supposed to be called when using nvfx");
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderQRFX.m/src/QorNvFXShader");
    EXPECT_EQ(sink.Records()[0].line, 544);

    ShaderPtr clone(shader->Clone());
    EXPECT_EQ(clone->GetIShaderEffect(), shader->GetIShaderEffect());
    EXPECT_NE(clone->GetIShaderParameters(), shader->GetIShaderParameters());
    EXPECT_EQ(clone->SetEnvironmentMap("sky.png", 0, 0), 0);
    EXPECT_EQ(clone->UsesAutomaticEnvironmentMap(), 0);
}

TEST(QorNvFXShaderTest, TheEffectNeverPushesTheValuesOfAGoneShader)
{
    QorRegistryGuard guard; // the test effect registers its texture
    ShaderPtr kept = Generated("current.glslfx");
    auto* effect = static_cast<QorNvFXEffect*>(kept->GetIShaderEffect());
    ShaderPtr leaving = Generated("current.glslfx");
    leaving->SetCurrentParameters();
    EXPECT_EQ(effect->GetIShaderParameters(), leaving->GetIShaderParameters());
    leaving.reset();
    EXPECT_EQ(effect->GetIShaderParameters(), nullptr);
    effect->UploadCurrentParameters(false); // nothing to push, nothing freed read
    kept->SetCurrentParameters();
    EXPECT_EQ(effect->GetIShaderParameters(), kept->GetIShaderParameters());
}

// Two materials of one effect take turns: a material made current after the other one
// uploads whole, since the uniforms hold the other's values; the same material again
// uploads what it changed since (through the shader object or the value itself).
TEST(QorNvFXShaderTest, AnUploadPushesOnlyWhatChangedSinceTheLastOne)
{
    QorRegistryGuard guard; // the test effect registers its texture
    ShaderPtr first = Generated("turns.glslfx");
    ShaderPtr second = Generated("turns.glslfx");
    auto* effect = static_cast<QorNvFXEffect*>(first->GetIShaderEffect());
    auto* set = static_cast<QorNvFXShaderParameters*>(first->GetIShaderParameters());
    const int gloss = first->GetParameterIndex("Gloss");
    const int base = first->GetParameterIndex("Base");
    ASSERT_GT(gloss, 0);
    ASSERT_GT(base, 0);
    // The first component the uniform holds (Gloss is a float, Base a vec4).
    const auto uniformValue = [&](int index) {
        float value[4] = {};
        set->GetUniform(index)->getValuefv(value, index == gloss ? 1 : 4);
        return value[0];
    };
    first->SetCurrentParameters();
    effect->UploadCurrentParameters(true); // every value is new: all pushed
    EXPECT_FLOAT_EQ(uniformValue(gloss), 8.0f);

    second->SetParameterFloat(gloss, 20.0f);
    second->SetParameterColor(base, 0.9f, 0.2f, 0.3f, 0.4f);
    second->SetCurrentParameters();
    effect->UploadCurrentParameters(true);
    EXPECT_FLOAT_EQ(uniformValue(gloss), 20.0f);

    struct Turn
    {
        const char* change;
        float gloss, base;
    };
    const Turn turns[] = {{"nothing", 8.0f, 0.1f},
                          {"the shader object", 12.0f, 0.1f},
                          {"the value itself", 12.0f, 0.5f},
                          {"a change cleared again", 12.0f, 0.5f}};
    for (const Turn& turn : turns) {
        SCOPED_TRACE(turn.change);
        const std::string change = turn.change;
        if (change == "the shader object")
            first->SetParameterFloat(gloss, 12.0f);
        if (change == "the value itself")
            set->GetValue(base - 1)->SetColor(std::array<float, 4>{0.5f, 0.5f, 0.5f, 1.0f}.data());
        if (change == "a change cleared again") {
            first->SetParameterFloat(gloss, 30.0f);
            set->ResetModified(gloss);
        }
        first->SetCurrentParameters();
        effect->UploadCurrentParameters(true);
        EXPECT_FLOAT_EQ(uniformValue(gloss), turn.gloss);
        EXPECT_FLOAT_EQ(uniformValue(base), turn.base);
    }

    // A clone's values are all new to it: its first upload pushes them all.
    ShaderPtr clone(first->Clone());
    second->SetCurrentParameters();
    second->SetParameterFloat(gloss, 40.0f);
    effect->UploadCurrentParameters(true);
    clone->SetCurrentParameters();
    effect->UploadCurrentParameters(true);
    EXPECT_FLOAT_EQ(uniformValue(gloss), 30.0f) << "the clone's own value, cleared in the original";
}

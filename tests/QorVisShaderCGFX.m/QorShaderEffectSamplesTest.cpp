// The sample effects, compiled and reflected on the real Cg runtime (no GL context
// needed): user parameters in index order, UI ranges, bound semantics and interfaces.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorShaderParameters.h"
#include "QorTestSupport.h"
#include "QorVisShaders/QorShaderIncludeManager.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct ExpectedParameter
{
    const char* name;
    int type;
    float min, max, step;
};

struct EffectHolder
{
    explicit EffectHolder(const std::string& file)
    {
        effect = QorShaderEffect::AddShaderEffect(file.c_str());
        effect->setFileName(QorString(file.c_str()));
    }
    ~EffectHolder() { effect->Release(); }
    QorShaderEffect* effect;
};

std::string Sample(const char* relative)
{
    return std::string(QOR_SAMPLES_DIR) + "/" + relative;
}

void ExpectParameters(QorShaderEffect& effect, const std::vector<ExpectedParameter>& expected)
{
    auto* parameters = static_cast<QorShaderParameters*>(effect.GetParameters());
    ASSERT_NE(parameters, nullptr);
    ASSERT_EQ(parameters->GetNbParameters(), static_cast<int>(expected.size()) + 1);
    EXPECT_STREQ(parameters->GetParameterName(0), "Technique");
    for (size_t i = 0; i < expected.size(); ++i) {
        const int index = static_cast<int>(i) + 1;
        EXPECT_STREQ(parameters->GetParameterName(index), expected[i].name);
        EXPECT_EQ(parameters->GetParameterType(index), expected[i].type) << expected[i].name;
        float min = -1, max = -1, step = -1;
        EXPECT_EQ(effect.getParameterFloatMinMaxStep(parameters->GetCgParameter(index), min, max, step, nullptr,
                                                     nullptr),
                  1);
        EXPECT_FLOAT_EQ(min, expected[i].min) << expected[i].name;
        EXPECT_FLOAT_EQ(max, expected[i].max) << expected[i].name;
        EXPECT_FLOAT_EQ(step, expected[i].step) << expected[i].name;
    }
}

class QorShaderEffectSamplesTest : public testing::Test
{
protected:
    // Includes come from the samples' "shaders" folder.
    QorScopedEnv graphic{"QorGraphicPath", QOR_SAMPLES_DIR};
    QorScopedEnv startup{"QorStartupPath", nullptr};
};

} // namespace

TEST_F(QorShaderEffectSamplesTest, PlasticTexturedAndChrome)
{
    EffectHolder plastic(Sample("materials/plastic.cgfx"));
    ASSERT_NE(plastic.effect->GenerateShader(), nullptr);
    ExpectParameters(*plastic.effect, {{"Diffuse", 2, 0, 1, 0.1f},
                                       {"Specular", 2, 0, 1, 0.1f},
                                       {"Glossiness", 1, 1, 128, 1}});
    QorShaderEffect& effect = *plastic.effect;
    for (QorFeed bound : {QorFeedWorldViewProjection, QorFeedWorld, QorFeedWorldInverseTranspose, QorFeedViewInverse})
        EXPECT_NE(effect.GetFeedParameter(bound), nullptr) << bound;
    EXPECT_EQ(effect.GetFeedParameter(QorFeedView), nullptr);
    EXPECT_EQ(effect.GetFeedParameter(QorFeedAmbient), nullptr);
    EXPECT_STREQ(cgGetParameterName(effect.GetFeedParameter(QorFeedSpecular)), "Specular");
    EXPECT_EQ(effect.GetEnvironmentState(), QorEnvironmentColor);
    EXPECT_NE(effect.GetEnvironmentMember(0), nullptr) << "EnvAmbient of SEnvColor";
    EXPECT_STREQ(effect.GetBaseType("environment"), "Environment");
    EXPECT_STREQ(effect.GetDynamicType("environment"), "SEnvColor");
    EXPECT_EQ(effect.GetLightCount(), 0) << "no light configuration yet";
    EXPECT_EQ(effect.NeedTanBin(), 0);

    EffectHolder textured(Sample("materials/textured.cgfx"));
    ASSERT_NE(textured.effect->GenerateShader(), nullptr);
    ExpectParameters(*textured.effect, {{"ColorMap", 4, 0, 1, 0.1f}, {"Tiling", 1, 1, 16, 1}});
    char* file = nullptr;
    textured.effect->GetParameters()->GetTextureValue(1, &file, 0);
    EXPECT_STREQ(file, "checker.rgb") << "the sampler's File annotation";

    EffectHolder chrome(Sample("materials/chrome.cgfx"));
    ASSERT_NE(chrome.effect->GenerateShader(), nullptr);
    EXPECT_EQ(chrome.effect->updateEnvModel(QorEnvironmentCube), 1);
    EXPECT_STREQ(chrome.effect->GetDynamicType("environment"), "SEnvCUBE");
    for (int member = 0; member < 3; ++member)
        EXPECT_NE(chrome.effect->GetEnvironmentMember(member), nullptr) << member;
    EXPECT_EQ(chrome.effect->updateEnvModel(QorEnvironmentCube), 1);
    EXPECT_EQ(chrome.effect->updateEnvModel(QorEnvironmentColor), 1);
    EXPECT_STREQ(chrome.effect->GetDynamicType("environment"), "SEnvColor");
}

TEST_F(QorShaderEffectSamplesTest, LightCodesBuildTheLightArray)
{
    EffectHolder plastic(Sample("materials/plastic.cgfx"));
    QorShaderEffect& effect = *plastic.effect;
    ASSERT_NE(effect.GenerateShader(), nullptr);
    const CGparameter lights = cgGetNamedEffectParameter(effect.GetCgEffect(), "lights");

    EXPECT_TRUE(effect.updateLightModel(14)); // spot, then directional
    ASSERT_EQ(effect.GetLightCount(), 2);
    EXPECT_EQ(effect.GetLight(0).lightType, unsigned(QorLightSpot));
    EXPECT_STREQ(cgGetTypeString(effect.GetLight(0).structureType), "SLightSpot");
    EXPECT_NE(effect.GetLight(0).direction, nullptr);
    EXPECT_NE(effect.GetLight(0).radialOuterCone, nullptr);
    EXPECT_STREQ(cgGetTypeString(effect.GetLight(1).structureType), "SLightDir");
    EXPECT_EQ(effect.GetLight(1).position, nullptr) << "a directional light has no position";
    EXPECT_EQ(cgGetArraySize(cgGetConnectedParameter(lights), 0), 2);

    const CGparameter instance = effect.GetLight(0).instance;
    EXPECT_TRUE(effect.updateLightModel(14));
    EXPECT_EQ(effect.GetLight(0).instance, instance) << "the same code rebuilds nothing";

    EXPECT_TRUE(effect.updateLightModel(4)); // the lowest pair is 0: the list ends at once
    EXPECT_EQ(effect.GetLightCount(), 0);
    EXPECT_EQ(cgGetArraySize(cgGetConnectedParameter(lights), 0), 0);

    EXPECT_TRUE(effect.updateLightModel(0x1B)); // directional, spot, point
    ASSERT_EQ(effect.GetLightCount(), 3);
    EXPECT_EQ(effect.GetLight(2).lightType, unsigned(QorLightPoint));
    EXPECT_NE(effect.GetLight(2).axialFalloffQuadratic, nullptr);

    EXPECT_TRUE(effect.updateLightModel(0xFFFFFFFFu)) << "at most 8 lights, the high bits ignored";
    EXPECT_EQ(effect.GetLightCount(), 8);
    EXPECT_EQ(effect.ForceCompile(), 1);
}

TEST_F(QorShaderEffectSamplesTest, InMemoryIncludeFromTheManager)
{
    EffectHolder palette(Sample("effects/palette.cgfx"));
    {
        QorCapturingSink sink;
        EXPECT_EQ(palette.effect->GenerateShader(), nullptr) << "the include is not registered yet";
        ASSERT_EQ(sink.Records().size(), 1u);
        EXPECT_EQ(sink.Records()[0].message, "Shader include is not in manager");
        EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderEffect");
        EXPECT_EQ(sink.Records()[0].line, 178);
    }
    const std::string text = QorReadFile(Sample("effects/QorPalette.fxh"));
    ASSERT_EQ(QorShaderIncludeManager::Instance().AddInclude(QorString("QorPalette.fxh"), text.c_str()), 1);
    ASSERT_NE(palette.effect->GenerateShader(), nullptr);
    ExpectParameters(*palette.effect, {{"Position", 1, 0, 1, 0.05f}});
    QorShaderIncludeManager::Instance().RemoveInclude(QorString("QorPalette.fxh"));
}

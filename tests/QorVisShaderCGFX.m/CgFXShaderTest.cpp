#include "CgFXShader.h"

#include "QorRegistryGuard.h"
#include "QorTestMaterial.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

struct ShaderDeleter
{
    void operator()(QorIShader* shader) const { shader->Destroy(); }
};
using ShaderPtr = std::unique_ptr<QorIShader, ShaderDeleter>;

ShaderPtr LoadedShader(const char* fileName)
{
    ShaderPtr shader(new CgFXShader());
    shader->SetFileName(QorString(fileName));
    return shader;
}

// Environment with every search route pointing nowhere useful.
struct CleanSearchPaths
{
    QorScopedEnv startup{"QorStartupPath", nullptr};
    QorScopedEnv graphic{"QorGraphicPath", nullptr};
};

} // namespace

// What the CgFX shader object answers of its own: the technique's position, slider
// ranges and the environment map; the rest is checked on both roads in the shared suite.
TEST(CgFXShaderTest, TechniqueRangesAndEnvironment)
{
    CleanSearchPaths paths;
    CgFXShader empty;
    EXPECT_EQ(empty.SetEnvironmentMap(nullptr, 0, 0), -1);
    EXPECT_EQ(empty.UsesAutomaticEnvironmentMap(), 0);
    QorTempDir dir;
    const std::string path = dir.Write("techniques.cgfx", kQorTestMaterial);
    ShaderPtr shader = LoadedShader(path.c_str());
    ASSERT_TRUE(shader->GenerateParameters());
    const int gloss = shader->GetParameterIndex("gloss");
    float min = 0, max = 0, step = 0;
    EXPECT_EQ(shader->GetParameterFloatMinMaxStep(gloss, min, max, step, nullptr, nullptr), 1);
    EXPECT_EQ(min, 2.0f);
    EXPECT_EQ(max, 8.0f);
    EXPECT_FLOAT_EQ(step, 0.1f);
    EXPECT_EQ(shader->GetParameterFloatMinMaxStep(0, min, max, step, nullptr, nullptr), -1);

    // Every float selects a technique safely: beyond the last one the selection stays,
    // before the first it is the first.
    float technique = -1;
    EXPECT_EQ(shader->SetParameterString(0, "second"), 0);
    shader->GetParameterFloat(0, &technique);
    EXPECT_EQ(technique, 1.0f);
    const float cases[][2] = {{1.9f, 1}, {0, 0}, {2147483648.0f, 1}, {1e30f, 1}, {INFINITY, 1},
                              {-2147483904.0f, 0}, {-INFINITY, 0}, {NAN, 0}};
    for (const auto& c : cases) {
        shader->SetParameterFloat(0, 1);
        EXPECT_EQ(shader->SetParameterFloat(0, c[0]), 0);
        shader->GetParameterFloat(0, &technique);
        EXPECT_EQ(technique, c[1]) << c[0];
    }

    // With no set selected the environment answers 0; a recompilation forgets the selection.
    auto* effect = static_cast<QorShaderEffect*>(shader->GetIShaderEffect());
    EXPECT_EQ(effect->updateEnvModel(QorEnvironmentColor), 0);
    shader->SetCurrentParameters();
    effect->GenerateShader();
    EXPECT_EQ(effect->GetIShaderParameters(), nullptr);
}

TEST(CgFXShaderTest, StreamCarriesValuesAndTheEffectThroughTheContainer)
{
    CleanSearchPaths paths;
    QorTempDir dir;
    const std::string path = dir.Write("travelling.cgfx", kQorTestMaterial);
    QorResourceZPKContainer container;
    QorStreamer streamer;
    streamer.SetResourceZPKContainer(&container);
    {
        ShaderPtr written = LoadedShader(path.c_str());
        ASSERT_TRUE(written->GenerateParameters());
        written->SetParameterColor(1, 0.9f, 0.8f, 0.7f, 0.6f);
        written->SetParameterFloat(2, 0.3f);
        written->Stream(streamer);
    }
    // The effect is gone with its last shader; the container carries name and source.
    EXPECT_EQ(QorShaderEffect::AddShaderEffect(path.c_str())->Release(), 0u);

    streamer.Rewind();
    ShaderPtr read(new CgFXShader());
    read->UnStream(streamer);
    EXPECT_FALSE(streamer.IsFailed());
    ASSERT_TRUE(read->HasEffect());
    EXPECT_STREQ(read->GetIShaderEffect()->GetName(), path.c_str());
    EXPECT_NE(read->GetIShaderEffect()->Generated(), 0);
    ASSERT_EQ(read->GetNbParameters(), 3);
    float r = 0, g = 0, b = 0, a = 0;
    read->GetParameterColor(1, &r, &g, &b, &a);
    EXPECT_FLOAT_EQ(r, 0.9f);
    EXPECT_FLOAT_EQ(a, 0.6f);
    float gloss = 0;
    read->GetParameterFloat(2, &gloss);
    EXPECT_FLOAT_EQ(gloss, 0.3f);

    // A truncated stream leaves a fresh shader empty and usable.
    QorStreamer truncated(std::vector<unsigned char>(streamer.GetBytes().begin(), streamer.GetBytes().begin() + 3));
    truncated.SetResourceZPKContainer(&container);
    ShaderPtr broken(new CgFXShader());
    broken->UnStream(truncated);
    EXPECT_FALSE(broken->HasEffect());
    EXPECT_EQ(broken->GetNbParameters(), -1);
}

TEST(CgFXShaderTest, ATextureStoredWithoutItsImageLeavesEveryValueOnItsName)
{
    QorRegistryGuard registry;
    QorResourceZPKContainer container;
    QorStreamer streamer;
    streamer.SetResourceZPKContainer(&container);
    const char* const text = R"(
sampler2D ColorMap;
float B = 1;
float C = 2;
float4 PS() : COLOR { return tex2D(ColorMap, float2(B, C)); }
technique T { pass p0 { FragmentProgram = compile arbfp1 PS(); } }
)";
    {
        ShaderPtr written(new CgFXShader());
        written->SetBuffer(text, "paint.cgfx");
        ASSERT_TRUE(written->GenerateParameters());
        written->SetParameterFloat(2, 10.0f);
        written->SetParameterFloat(3, 20.0f);
        written->Stream(streamer); // ColorMap names no file: it goes without an image
    }
    streamer.Rewind();
    ShaderPtr read(new CgFXShader());
    read->UnStream(streamer);
    ASSERT_EQ(read->GetNbParameters(), 4);
    float b = 0, c = 0;
    read->GetParameterFloat(2, &b);
    read->GetParameterFloat(3, &c);
    EXPECT_FLOAT_EQ(b, 10.0f);
    EXPECT_FLOAT_EQ(c, 20.0f);
    EXPECT_EQ(read->GetParameterType(1), 4);
}

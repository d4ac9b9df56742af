#include "CgFXShader.h"

#include "QorShaderParameters.h"
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

TEST(CgFXShaderTest, WithoutEffectOrParametersQueriesAnswerNeutrally)
{
    CgFXShader shader;
    EXPECT_FALSE(shader.HasEffect());
    EXPECT_EQ(shader.GetNbParameters(), -1);
    EXPECT_EQ(shader.GetParameterIndex("tint"), -1);
    EXPECT_EQ(shader.GetParameterType(1), 0);
    EXPECT_EQ(shader.GetParameterName(1), nullptr);
    float value = 0, r = 0;
    EXPECT_EQ(shader.GetParameterFloat(0, &value), -1);
    EXPECT_EQ(shader.SetParameterFloat(1, 1.0f), -1);
    EXPECT_EQ(shader.GetParameterColor(1, &r, &r, &r, &r), -1);
    EXPECT_EQ(shader.SetParameterColor(1, 1, 1, 1, 1), -1);
    char buffer[QorMaxParameterStringLength];
    EXPECT_EQ(shader.GetParameterString(1, buffer), -1);
    EXPECT_EQ(shader.SetParameterString(1, "x"), -1);
    EXPECT_EQ(shader.Reserved1(), -1);
    EXPECT_EQ(shader.Reserved2(), -1);
    EXPECT_FALSE(shader.GenerateParameters());
    EXPECT_FALSE(shader.UpdateLightModel(1));
    EXPECT_EQ(shader.GetBuffer(), nullptr);
    EXPECT_EQ(shader.SetEnvironmentMap(nullptr, 0, 0), -1);
    EXPECT_EQ(shader.UsesAutomaticEnvironmentMap(), 0);
    float min = 0, max = 0, step = 0;
    EXPECT_EQ(shader.GetParameterFloatMinMaxStep(1, min, max, step, nullptr, nullptr), -1);
    EXPECT_EQ(shader.GetImplementation(), QorFxCgFX);
    shader.SetCurrentParameters(); // no effect: nothing to do, no crash
}

TEST(CgFXShaderTest, LoadsItsFileFromTheSearchPathsUnderTheNameAsGiven)
{
    QorTempDir graphic, elsewhere;
    graphic.Write("shaders/under_shaders.cgfx", kQorTestMaterial);
    const std::string direct = elsewhere.Write("direct.cgfx", kQorTestMaterial);
    CleanSearchPaths clean;
    QorScopedEnv graphicPath("QorGraphicPath", graphic.Path().c_str());

    ShaderPtr found = LoadedShader("under_shaders.cgfx");
    ASSERT_TRUE(found->HasEffect());
    EXPECT_STREQ(found->GetBuffer(), kQorTestMaterial);
    EXPECT_STREQ(found->GetIShaderEffect()->GetName(), "under_shaders.cgfx") << "shared under the name as given";
    std::string windowsStyle = direct;
    for (char& c : windowsStyle)
        if (c == '/')
            c = '\\';
    ShaderPtr byPath = LoadedShader(windowsStyle.c_str());
    ASSERT_TRUE(byPath->HasEffect());
    EXPECT_STREQ(byPath->GetPathName().c_str(), (windowsStyle.substr(0, windowsStyle.rfind('\\') + 1)).c_str());

    ShaderPtr missing = LoadedShader("nowhere.cgfx");
    EXPECT_FALSE(missing->HasEffect());
    EXPECT_STREQ(missing->GetFileName().c_str(), "nowhere.cgfx");
    ShaderPtr empty = LoadedShader("");
    EXPECT_FALSE(empty->HasEffect());
}

TEST(CgFXShaderTest, ShadersOfOneFileShareTheEffectAndCloneCopiesValues)
{
    CleanSearchPaths paths;
    QorTempDir dir;
    const std::string path = dir.Write("shared.cgfx", kQorTestMaterial);
    ShaderPtr first = LoadedShader(path.c_str());
    ShaderPtr second = LoadedShader(path.c_str());
    ASSERT_TRUE(first->HasEffect());
    EXPECT_EQ(first->GetIShaderEffect(), second->GetIShaderEffect());
    EXPECT_EQ(first->GetIShaderEffect()->AddRef(), 3u) << "one reference per shader";
    first->GetIShaderEffect()->Release();

    ASSERT_TRUE(first->GenerateParameters());
    EXPECT_EQ(first->GetNbParameters(), 3);
    EXPECT_STREQ(first->GetParameterName(0), "Technique");
    const int tint = first->GetParameterIndex("tint");
    const int gloss = first->GetParameterIndex("gloss");
    ASSERT_EQ(tint, 1);
    ASSERT_EQ(gloss, 2);
    float r = 0, g = 0, b = 0, a = 0;
    EXPECT_EQ(first->GetParameterColor(0, &r, &g, &b, &a), -1) << "index 0 is no colour";
    first->GetParameterColor(tint, &r, &g, &b, &a);
    EXPECT_FLOAT_EQ(g, 0.5f);

    // The technique pseudo-parameter goes to the shared effect.
    float technique = -1;
    EXPECT_EQ(first->GetParameterFloat(0, &technique), 0);
    EXPECT_EQ(technique, 0.0f);
    EXPECT_EQ(first->SetParameterFloat(0, 1.9f), 0);
    first->GetParameterFloat(0, &technique);
    EXPECT_EQ(technique, 1.0f);
    EXPECT_EQ(first->SetParameterString(0, "first"), 0);
    first->GetParameterFloat(0, &technique);
    EXPECT_EQ(technique, 0.0f);
    EXPECT_EQ(second->GetParameterFloat(0, &technique), -1) << "no parameter set yet, although the effect exists";

    float min = 0, max = 0, step = 0;
    EXPECT_EQ(first->GetParameterFloatMinMaxStep(gloss, min, max, step, nullptr, nullptr), 1);
    EXPECT_EQ(min, 2.0f);
    EXPECT_EQ(max, 8.0f);
    EXPECT_FLOAT_EQ(step, 0.1f);
    EXPECT_EQ(first->GetParameterFloatMinMaxStep(0, min, max, step, nullptr, nullptr), -1);

    EXPECT_EQ(first->SetParameterFloat(gloss, 0.75f), 0);
    ShaderPtr clone(first->Clone());
    EXPECT_EQ(clone->GetIShaderEffect(), first->GetIShaderEffect());
    EXPECT_NE(clone->GetIShaderParameters(), first->GetIShaderParameters());
    float copied = 0;
    clone->GetParameterFloat(gloss, &copied);
    EXPECT_EQ(copied, 0.75f);
    clone->SetParameterFloat(gloss, 0.1f);
    first->GetParameterFloat(gloss, &copied);
    EXPECT_EQ(copied, 0.75f) << "values are independent after cloning";

    first->SetCurrentParameters();
    EXPECT_EQ(first->GetIShaderEffect()->GetIShaderParameters(), first->GetIShaderParameters());
    clone->ReleaseEffect();
    EXPECT_FALSE(clone->HasEffect());
    EXPECT_EQ(clone->GetNbParameters(), 3) << "the values stay";
}

TEST(CgFXShaderTest, TheEffectNeverDrawsWithTheValuesOfAGoneShader)
{
    CleanSearchPaths paths;
    QorTempDir dir;
    const std::string path = dir.Write("shared.cgfx", kQorTestMaterial);
    ShaderPtr kept = LoadedShader(path.c_str());
    ASSERT_TRUE(kept->GenerateParameters());
    auto* effect = static_cast<QorShaderEffect*>(kept->GetIShaderEffect());
    // Each way a selected set can go, or its shader leave the effect: the effect then has
    // no current set (and answers as before any selection) until another is selected.
    const std::pair<const char*, void (*)(ShaderPtr&, const std::string&)> departures[] = {
        {"deleted", [](ShaderPtr& shader, const std::string&) { shader.reset(); }},
        {"regenerated", [](ShaderPtr& shader, const std::string&) { shader->GenerateParameters(); }},
        {"moved to another effect",
         [](ShaderPtr& shader, const std::string&) { shader->SetBuffer(kQorTestMaterial, "elsewhere"); }},
        {"clone deleted", [](ShaderPtr& shader, const std::string&) { shader.reset(); }},
    };
    for (const auto& [how, depart] : departures) {
        ShaderPtr leaving = std::string(how) == "clone deleted" ? ShaderPtr(kept->Clone()) : LoadedShader(path.c_str());
        ASSERT_TRUE(leaving->GenerateParameters()) << how;
        leaving->SetCurrentParameters();
        ASSERT_EQ(effect->GetIShaderParameters(), leaving->GetIShaderParameters()) << how;
        depart(leaving, path);
        EXPECT_EQ(effect->GetIShaderParameters(), nullptr) << how;
        EXPECT_EQ(effect->updateEnvModel(QorEnvironmentColor), 0) << how << ": as with no set selected";
        effect->UploadCurrentParameters(false);
    }
    kept->SetCurrentParameters();
    EXPECT_EQ(effect->GetIShaderParameters(), kept->GetIShaderParameters());
    effect->GenerateShader();
    EXPECT_EQ(effect->GetIShaderParameters(), nullptr) << "a recompilation forgets the selection";
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

TEST(CgFXShaderTest, EveryFloatSelectsATechniqueSafely)
{
    CleanSearchPaths paths;
    QorTempDir dir;
    ShaderPtr shader = LoadedShader(dir.Write("techniques.cgfx", kQorTestMaterial).c_str());
    ASSERT_TRUE(shader->GenerateParameters());
    const struct
    {
        float value;
        float technique;
    } cases[] = {
        // Beyond the last technique the selection stays; before the first it is the first.
        {2147483648.0f, 1}, {1e30f, 1}, {INFINITY, 1}, {-2147483904.0f, 0}, {-INFINITY, 0}, {NAN, 0},
    };
    for (const auto& c : cases) {
        shader->SetParameterFloat(0, 1);
        EXPECT_EQ(shader->SetParameterFloat(0, c.value), 0);
        float technique = -1;
        shader->GetParameterFloat(0, &technique);
        EXPECT_EQ(technique, c.technique) << c.value;
    }
}

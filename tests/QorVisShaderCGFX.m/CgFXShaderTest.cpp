#include "CgFXShader.h"

#include "QorTestMaterial.h"
#include "QorTestSupport.h"
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
    EXPECT_EQ(min, 2.0f) << "the effect's range (checked there)";
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

// What the GLSL-effect shader object answers of its own: grouped slider ranges are not
// offered, the environment map is the renderer's. The rest is checked on both roads in
// the shared suite.
#include "QorNvFXShader.h"

#include "QorNvFXTestEffect.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

TEST(QorNvFXShaderTest, RangesAndTheEnvironmentAreNotItsOwn)
{
    QorRegistryGuard guard; // the test effect registers its texture
    QorNvFXShader shader;
    shader.SetBuffer(kQorNvFXTestEffect, "values.glslfx");
    testing::internal::CaptureStdout();
    ASSERT_TRUE(shader.GenerateParameters());
    testing::internal::GetCapturedStdout();
    float min = 0, max = 0, step = 0;
    EXPECT_EQ(shader.GetParameterFloatMinMaxStep(1, min, max, step, nullptr, nullptr), -1);
    QorCapturingSink sink;
    EXPECT_EQ(shader.GetGroupParameterFloatMinMaxStep(0, 1, min, max, step, nullptr, nullptr), 0);
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].message, "This method is not supposed to be called when using nvfx");
    EXPECT_EQ(sink.Records()[0].source, "QorVisShaderQRFX.m/src/QorNvFXShader");
    EXPECT_EQ(sink.Records()[0].line, 544);
    EXPECT_EQ(shader.SetEnvironmentMap("sky.png", 0, 0), 0);
    EXPECT_EQ(shader.UsesAutomaticEnvironmentMap(), 0);
}

#include "QorDiagnostics/CheckFailure.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

TEST(CheckFailureTest, ReportsReachTheInstalledSinkAndTheDefaultWritesOneLine)
{
    {
        QorCapturingSink sink;
        CheckFailure__("Should not happen", "QorVisShaderCGFX.m/src/QorShaderValueFloat", 84);
        CheckFailure__(nullptr, nullptr, 1);
        ASSERT_EQ(sink.Records().size(), 2u);
        EXPECT_EQ(sink.Records()[0].message, "Should not happen");
        EXPECT_EQ(sink.Records()[0].source, "QorVisShaderCGFX.m/src/QorShaderValueFloat");
        EXPECT_EQ(sink.Records()[0].line, 84);
        EXPECT_EQ(sink.Records()[1].message, "");
        {
            QorCapturingSink inner;
            CheckFailure__("inner", "src", 2);
            EXPECT_EQ(inner.Records().size(), 1u);
        }
        CheckFailure__("after", "src", 3);
        EXPECT_EQ(sink.Records().size(), 3u) << "the outer sink is back once the inner one ends";
    }
    testing::internal::CaptureStderr();
    CheckFailure__("Not implemented", "QorVisShaderQRFX.m/src/QorNvFXShader", 12);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "QorVisShaderQRFX.m/src/QorNvFXShader:12: Not implemented\n");
}

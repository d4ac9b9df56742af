#include "QorDiagnostics/CheckFailure.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

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

TEST(CheckFailureTest, TheSinkCanBeReplacedWhileOtherThreadsReport)
{
    std::atomic<int> received{0};
    std::atomic<bool> stop{false};
    const QorDiagnosticSink counting = [&received](const char*, const char*, int) { ++received; };
    const QorDiagnosticSink previous = QorSetDiagnosticSink(counting);
    std::vector<std::thread> reporters;
    std::atomic<int> sent{0};
    for (int i = 0; i < 4; ++i)
        reporters.emplace_back([&] {
            while (!stop) {
                CheckFailure__("Should not happen", "src", 1);
                ++sent;
            }
        });
    // Each replacement is a new function object: a report must never meet one half-made
    // or already destroyed, whatever the interleaving.
    for (int i = 0; i < 20000 || sent < 20000; ++i)
        QorSetDiagnosticSink(QorDiagnosticSink(counting));
    stop = true;
    for (std::thread& reporter : reporters)
        reporter.join();
    QorSetDiagnosticSink(previous);
    EXPECT_GT(sent.load(), 0);
    EXPECT_EQ(received.load(), sent.load()) << "every report reached one of the sinks";
}

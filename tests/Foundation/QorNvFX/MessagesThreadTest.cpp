// nvFX::printf and its sink: formatting, the default standard output, and replacing the
// sink while another thread prints.
#include "nvFX/nvFX.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

TEST(MessagesTest, MessagesAreFormattedOnceAndReachTheSinkAsData)
{
    std::vector<std::string> received;
    nvFX::MessageSink previous = nvFX::setMessageSink([&](const char* message) { received.push_back(message); });
    EXPECT_EQ(nvFX::printf("%s has %d%%", "path/%n%s", 5), 16);
    EXPECT_EQ(nvFX::printf(nullptr), -1);
    nvFX::setMessageSink(std::move(previous));
    EXPECT_EQ(received, std::vector<std::string>{"path/%n%s has 5%"});

    previous = nvFX::setMessageSink([](const char*) { throw std::runtime_error("sink failed"); });
    EXPECT_EQ(nvFX::printf("thrown away"), -1) << "a throwing sink does not throw through printf";
    nvFX::setMessageSink(std::move(previous));

    testing::internal::CaptureStdout();
    nvFX::printf("to %s\n", "stdout %d");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to stdout %d\n");
}

TEST(MessagesTest, AReplacedSinkIsNeverCalledAgainWhileAnotherThreadPrints)
{
    struct Counter
    {
        std::atomic<int> count{0};
        std::atomic<bool> retired{false};
        std::atomic<int> callsAfterRetirement{0};
    };
    std::vector<Counter> counters(50);
    auto install = [&counters](std::size_t i) {
        Counter& counter = counters[i];
        return nvFX::setMessageSink([&counter](const char*) {
            counter.callsAfterRetirement += counter.retired ? 1 : 0;
            ++counter.count;
        });
    };
    nvFX::MessageSink original = install(0);
    std::atomic<bool> done{false};
    int printed = 0;
    std::thread printer([&] {
        for (; !done; ++printed)
            nvFX::printf("message %d\n", printed);
    });
    // Each sink is replaced only after it received something, so replacements and
    // deliveries interleave.
    for (std::size_t i = 1; i < counters.size(); ++i) {
        while (counters[i - 1].count == 0)
            std::this_thread::yield();
        install(i);
        counters[i - 1].retired = true;
    }
    while (counters.back().count == 0)
        std::this_thread::yield();
    done = true;
    printer.join();
    nvFX::setMessageSink(std::move(original));
    int delivered = 0;
    for (const Counter& counter : counters) {
        EXPECT_EQ(counter.callsAfterRetirement, 0);
        delivered += counter.count;
    }
    EXPECT_EQ(delivered, printed) << "each message reaches exactly one sink";
}

#include "QorSysMultiThreading/QorMutex.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

TEST(QorMutexTest, SerialisesAppendsFromSeveralThreads)
{
    QorMutex mutex;
    std::vector<int> appended;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                std::lock_guard<QorMutex> guard(mutex);
                appended.push_back(i);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(appended.size(), 4000u);

    mutex.Lock();
    std::thread other([&] { EXPECT_FALSE(mutex.TryLock()); });
    other.join();
    mutex.Unlock();
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
}

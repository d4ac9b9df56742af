// Registration with a migration from many threads at once, as a renderer reading
// documents on several threads does.
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"

#include "QorNvFXShader.h"

#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

TEST(QorShaderQRFXMigrationThreadTest, EveryRegistrationIsKeptOnce)
{
    constexpr int kThreads = 8;
    constexpr int kPerThread = 1000;
    std::vector<QorNvFXShader> shaders(kThreads * kPerThread);
    QorNvFXShaderParameters stored;
    QorShaderQRFXMigration migration;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPerThread; ++i)
                migration.AddShaderToMigrate(&shaders[static_cast<size_t>(t * kPerThread + i)],
                                             QorUnicodeString("C:\\materials\\metal.cgfx"), &stored);
        });
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_EQ(migration.GetEntryCount(), shaders.size());
    std::set<QorIShader*> registered;
    for (size_t entry = 0; entry < migration.GetEntryCount(); ++entry)
        registered.insert(migration.GetEntryShader(entry));
    EXPECT_EQ(registered.size(), shaders.size()) << "none lost, none twice";
}

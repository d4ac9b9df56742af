#include "QorVisFoundation/QorQRFX0Factory.h"
#include "QorVisFoundation/QorVisBaseEnv.h"

#include <gtest/gtest.h>

namespace {
QorIShader* const kHostShader = reinterpret_cast<QorIShader*>(0x10);
QorIShader* HostFactory() { return kHostShader; }
} // namespace

TEST(QorVisBaseEnvTest, HostSettingsAndQRFX0Factory)
{
    EXPECT_FALSE(QorVisBaseEnv::IsNewVisu());
    QorVisBaseEnv::SetNewVisu(true);
    EXPECT_TRUE(QorVisBaseEnv::IsNewVisu());
    QorVisBaseEnv::SetNewVisu(false);

    EXPECT_EQ(CreateQRFX0Effect(), nullptr) << "no host factory, no object";
    EXPECT_EQ(QorRegisterQRFX0Factory(HostFactory), nullptr);
    EXPECT_EQ(CreateQRFX0Effect(), kHostShader);
    EXPECT_EQ(QorRegisterQRFX0Factory(nullptr), &HostFactory);
    EXPECT_EQ(CreateQRFX0Effect(), nullptr);
}

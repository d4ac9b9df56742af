#include "QorVisShaders/QorShaderManager.h"

#include <gtest/gtest.h>

namespace {

// The renderer's driver is a derived class; this one exposes the protected helpers.
class TestDriver : public QorShaderManager
{
public:
    using QorShaderManager::Init_Light_Properties;
    using QorShaderManager::isPowerOfTwo;
    void FxBeginScene() override {}
    void FxEndScene() override {}
    void FxBindShader(QorIShader*) override {}
    void FxUnbindShader() override {}
    void FxUpdateMatrices() override {}
    void FxUpdateLights(_LightsParameters&) override {}
    void FxUpdateEnvironment() override {}
    void FxUpdateMaterial() override {}
    int FxGetNbPasses() override { return 1; }
    void FxBeginPass(int) override {}
    void FxEndPass() override {}
    void FxDraw() override {}
    QorOGLRender* Renderer() const { return m_renderer; }
};

} // namespace

TEST(QorShaderManagerTest, DriverHelpers)
{
    EXPECT_TRUE(TestDriver::isPowerOfTwo(0));
    EXPECT_TRUE(TestDriver::isPowerOfTwo(1));
    EXPECT_TRUE(TestDriver::isPowerOfTwo(1024));
    EXPECT_FALSE(TestDriver::isPowerOfTwo(6));

    _LightsParameters lights;
    lights.lightModel = 7;
    for (auto& word : lights.lightProperties)
        word = ~0ull;
    TestDriver::Init_Light_Properties(lights);
    for (auto word : lights.lightProperties)
        EXPECT_EQ(word, 0u);
    EXPECT_EQ(lights.lightModel, 7u) << "only the light-properties block is cleared";

    TestDriver driver;
    QorOGLRender* renderer = reinterpret_cast<QorOGLRender*>(0x40);
    driver.FxInit(renderer);
    EXPECT_EQ(driver.Renderer(), renderer);
    driver.Reset();
    EXPECT_EQ(driver.Renderer(), nullptr);
}

#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorDeleteShaderEffect.h"
#include "QorShaderParameters.h"
#include "QorTestMaterial.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorGLServices.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

TEST(QorShaderEffectTest, CompilesFromItsBufferAndAgainFromTheKeptSource)
{
    QorShaderEffect* effect = QorShaderEffect::AddShaderEffect("techniques.cgfx");
    effect->setBuffer(kQorTestMaterial);
    QorShaderParameters* parameters = effect->GenerateShader();
    ASSERT_NE(parameters, nullptr);
    EXPECT_TRUE(effect->HasDefaults());
    EXPECT_EQ(parameters->GetNbParameters(), 3) << "Technique, tint, gloss";
    int count = -1;
    EXPECT_EQ(effect->GetNumInterface(count), 1);
    EXPECT_EQ(count, 0);

    // Technique positions are checked through the shader object; an unknown name keeps one.
    int technique = -1;
    effect->setTechnique(1);
    effect->setTechniqueByName("missing");
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 1);

    float min = 0, max = 0, step = 0;
    EXPECT_EQ(effect->getParameterFloatMinMaxStep(nullptr, min, max, step, nullptr, nullptr), 0);
    EXPECT_EQ(max, 2.0f) << "one per technique";

    // A second compilation finds the buffer freed and compiles the kept source again;
    // the holder's reference survives it.
    effect->AddRef();
    EXPECT_NE(effect->GenerateShader(), nullptr);
    EXPECT_EQ(effect->getBuffer(), nullptr);
    EXPECT_STREQ(effect->GetSource().c_str(), kQorTestMaterial);
    EXPECT_EQ(effect->Release(), 1u);
    EXPECT_EQ(effect->Release(), 0u);
}

TEST(QorShaderEffectTest, ACompiledEffectGoesBackThroughDeleteShaderEffect)
{
    std::vector<std::uintptr_t> deleted;
    QorGLServiceObserver previous = QorSetGLServiceObserver([&deleted](QorGLService service, std::uintptr_t handle) {
        if (service == QorGLService::DeleteShaderEffect)
            deleted.push_back(handle);
    });
    QorShaderEffect* effect = QorShaderEffect::AddShaderEffect(nullptr);
    effect->setBuffer(kQorTestMaterial);
    ASSERT_NE(effect->Generate(), nullptr);
    const CGeffect cg = effect->GetCgEffect();
    ASSERT_TRUE(cgIsEffect(cg));
    effect->Release();
    EXPECT_FALSE(cgIsEffect(cg)) << "destroyed with the effect";
    DeleteShaderEffect(nullptr);
    QorSetGLServiceObserver(std::move(previous));
    EXPECT_EQ(deleted, (std::vector<std::uintptr_t>{reinterpret_cast<std::uintptr_t>(cg), 0}));
}

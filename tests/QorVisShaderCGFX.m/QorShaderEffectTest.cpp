#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorDeleteShaderEffect.h"
#include "QorShaderParameters.h"
#include "QorTestMaterial.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

TEST(QorShaderEffectTest, RegistrySharesByNameAndForgetsOnLastRelease)
{
    QorShaderEffect* first = QorShaderEffect::AddShaderEffect("plastic.cgfx");
    QorShaderEffect* second = QorShaderEffect::AddShaderEffect("plastic.cgfx");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first->GetName(), "plastic.cgfx");
    EXPECT_EQ(first->AddRef(), 3u);
    EXPECT_EQ(first->Release(), 2u);
    EXPECT_EQ(first->Release(), 1u);
    EXPECT_EQ(first->Release(), 0u);
    QorShaderEffect* fresh = QorShaderEffect::AddShaderEffect("plastic.cgfx");
    EXPECT_EQ(fresh->AddRef(), 2u) << "a new effect (count 1) after the last release unregistered the old";
    fresh->Release();
    fresh->Release();

    QorShaderEffect* unnamed = QorShaderEffect::AddShaderEffect(nullptr);
    QorShaderEffect* empty = QorShaderEffect::AddShaderEffect("");
    ASSERT_NE(unnamed, nullptr);
    EXPECT_NE(unnamed, empty) << "nameless effects are never shared";
    EXPECT_STREQ(unnamed->GetName(), "");
    EXPECT_EQ(unnamed->Release(), 0u);
    EXPECT_EQ(empty->Release(), 0u);
}

TEST(QorShaderEffectTest, NamesPathsAndBuffers)
{
    QorShaderEffect* effect = QorShaderEffect::AddShaderEffect(nullptr);
    effect->setFileName(QorString("b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "");
    effect->setFileName(QorString("C:\\a\\b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "C:\\a\\");
    effect->setFileName(QorString("\\b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "C:\\a\\") << "a separator at position 0 changes nothing";
    EXPECT_STREQ(effect->GetFileName().c_str(), "\\b.fx");

    effect->setBuffer(kQorTestMaterial);
    EXPECT_STREQ(effect->GetFileName().c_str(), "");
    EXPECT_STREQ(effect->getBuffer(), kQorTestMaterial);
    EXPECT_EQ(effect->Generated(), 0);
    EXPECT_EQ(effect->GetImplementation(), QorFxCgFX);
    int count = -1;
    EXPECT_EQ(effect->GetNumInterface(count), 1);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(effect->GetUUID(), nullptr);
    EXPECT_EQ(effect->GetProvider(), nullptr);
    effect->setBuffer(nullptr);
    EXPECT_EQ(effect->getBuffer(), nullptr);
    effect->Release();
}

TEST(QorShaderEffectTest, CompilesFromItsBufferAndAgainFromTheKeptSource)
{
    QorShaderEffect* effect = QorShaderEffect::AddShaderEffect("techniques.cgfx");
    effect->setBuffer(kQorTestMaterial);
    QorShaderParameters* parameters = effect->GenerateShader();
    ASSERT_NE(parameters, nullptr);
    EXPECT_NE(effect->Generated(), 0);
    EXPECT_TRUE(effect->HasDefaults());
    EXPECT_STREQ(effect->getBuffer(), kQorTestMaterial);
    EXPECT_EQ(parameters->GetNbParameters(), 3) << "Technique, tint, gloss";

    int technique = -1;
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 0);
    effect->setTechnique(1);
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 1);
    effect->setTechnique(5);
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 1) << "past the last technique nothing changes";
    effect->setTechnique(-2);
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 0);
    effect->setTechniqueByName("second");
    effect->getTechnique(&technique);
    EXPECT_EQ(technique, 1);
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

TEST(QorShaderEffectTest, StreamsNameAndSource)
{
    QorShaderEffect* written = QorShaderEffect::AddShaderEffect("streamed.cgfx");
    written->setBuffer("technique t { pass p {} }");
    QorStreamer streamer;
    written->Stream(streamer);

    QorShaderEffect* read = QorShaderEffect::AddShaderEffect(nullptr);
    read->setBuffer("old");
    streamer.Rewind();
    read->UnStream(streamer);
    EXPECT_STREQ(read->GetName(), "streamed.cgfx");
    EXPECT_STREQ(read->getBuffer(), "technique t { pass p {} }");
    EXPECT_FALSE(streamer.IsFailed());

    // A truncated record leaves what was there.
    QorStreamer truncated(std::vector<unsigned char>(streamer.GetBytes().begin(), streamer.GetBytes().begin() + 6));
    read->UnStream(truncated);
    EXPECT_TRUE(truncated.IsFailed());
    EXPECT_STREQ(read->GetName(), "streamed.cgfx");
    EXPECT_STREQ(read->getBuffer(), "technique t { pass p {} }");
    read->Release();
    written->Release();
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

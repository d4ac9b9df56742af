// The effect of the material model on both roads: sharing by name and counting, names,
// paths and buffers, the effect record, and the upload's change tracking.
#include "QorMaterialRoads.h"

#include "QorVisFoundation/QorStreamer.h"

QOR_MATERIAL_SUITE(QorMaterialEffectTest);

TYPED_TEST(QorMaterialEffectTest, SharedByNameUntilTheLastRelease)
{
    QorShaderPtr first = this->Generated("shared"), second = this->Generated("shared");
    QorIShaderEffect* effect = first->GetIShaderEffect();
    EXPECT_EQ(second->GetIShaderEffect(), effect);
    EXPECT_STREQ(effect->GetName(), (std::string("shared") + TypeParam::kExtension).c_str());
    EXPECT_EQ(effect->AddRef(), 3u);
    EXPECT_EQ(effect->Release(), 2u);
    EXPECT_NE(this->Generated(nullptr)->GetIShaderEffect(), effect) << "no name: an effect of its own";
    QorShaderPtr unnamed(TypeParam::NewShader()), empty(TypeParam::NewShader());
    unnamed->SetBuffer(TypeParam::kMaterial, nullptr);
    empty->SetBuffer(TypeParam::kMaterial, "");
    EXPECT_NE(unnamed->GetIShaderEffect(), empty->GetIShaderEffect()) << "nameless effects are never shared";
    EXPECT_STREQ(unnamed->GetIShaderEffect()->GetName(), "");

    first.reset();
    second.reset();
    QorShaderPtr fresh(TypeParam::NewShader());
    fresh->SetBuffer(TypeParam::kMaterial, (std::string("shared") + TypeParam::kExtension).c_str());
    EXPECT_EQ(fresh->GetIShaderEffect()->Generated(), 0) << "a new effect after the last release unregistered the old";
}

TYPED_TEST(QorMaterialEffectTest, NamesPathsBuffersAndTheEffectRecord)
{
    QorShaderPtr shader(TypeParam::NewShader());
    shader->SetBufferWithoutName("old");
    QorIShaderEffect* effect = shader->GetIShaderEffect();
    EXPECT_EQ(effect->GetImplementation(), TypeParam::kImplementation);
    effect->setFileName(QorString("b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "");
    effect->setFileName(QorString("C:\\a\\b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "C:\\a\\");
    effect->setFileName(QorString("\\b.fx"));
    EXPECT_STREQ(effect->GetPathName().c_str(), "C:\\a\\") << "a separator at position 0 changes nothing";
    EXPECT_STREQ(effect->GetFileName().c_str(), "\\b.fx");
    effect->setBuffer(TypeParam::kMaterial);
    EXPECT_STREQ(effect->GetFileName().c_str(), "") << "the buffer is compiled next";
    EXPECT_STREQ(effect->getBuffer(), TypeParam::kMaterial);
    EXPECT_EQ(effect->Generated(), 0);
    EXPECT_EQ(effect->GetUUID(), nullptr);
    EXPECT_EQ(effect->GetProvider(), nullptr);

    // The effect record: the name, then the source, where the back end streams effects.
    QorShaderPtr written = this->Generated("streamed");
    QorStreamer streamer;
    written->GetIShaderEffect()->Stream(streamer);
    const bool streams = this->Set(*written).Profile().effectStreamsItsText;
    EXPECT_EQ(streamer.GetBytes().empty(), !streams);
    streamer.Rewind();
    effect->UnStream(streamer);
    EXPECT_STREQ(effect->GetName(), streams ? written->GetIShaderEffect()->GetName() : "");
    EXPECT_STREQ(effect->getBuffer(), TypeParam::kMaterial);
    QorStreamer truncated(std::vector<unsigned char>(streamer.GetBytes().begin(),
                                                     streamer.GetBytes().begin() + (streams ? 6 : 0)));
    effect->setBuffer("kept");
    effect->UnStream(truncated);
    EXPECT_TRUE(truncated.IsFailed());
    EXPECT_STREQ(effect->getBuffer(), "kept") << "a cut record leaves what was there";
    effect->setBuffer(nullptr);
    EXPECT_EQ(effect->getBuffer(), nullptr);
}

// Two materials of one effect take turns: a material made current after the other one
// uploads whole, since the parameters hold the other's values; the same material again
// uploads only what it changed since (through the shader object or the value itself).
TYPED_TEST(QorMaterialEffectTest, AnUploadPushesADifferentSetWholeAndTheSameSetsChanges)
{
    QorShaderPtr first = this->Generated("turns"), second = this->Generated("turns");
    QorIShaderEffect* effect = first->GetIShaderEffect();
    const int gloss = kGloss + 1, tint = kTint + 1;
    const auto pushed = [&](int position, int count) { return this->Pushed(*first, position, count)[0]; };
    first->SetCurrentParameters();
    effect->UploadCurrentParameters(true); // every value is new: all pushed
    EXPECT_FLOAT_EQ(pushed(kGloss, 1), 0.5f);
    EXPECT_FLOAT_EQ(pushed(kScale, 2), 2.0f);

    second->SetParameterFloat(gloss, 20.0f);
    second->SetParameterColor(tint, 0.9f, 0.2f, 0.3f, 0.4f);
    second->SetCurrentParameters();
    effect->UploadCurrentParameters(true);
    EXPECT_FLOAT_EQ(pushed(kGloss, 1), 20.0f);

    struct Turn
    {
        const char* change;
        float gloss, tint;
    };
    const Turn turns[] = {{"nothing", 0.5f, 0.25f},
                          {"the shader object", 12.0f, 0.25f},
                          {"the value itself", 12.0f, 0.6f},
                          {"a change cleared again", 12.0f, 0.6f}};
    QorMaterialParameters& set = this->Set(*first);
    for (const Turn& turn : turns) {
        SCOPED_TRACE(turn.change);
        const std::string change = turn.change;
        if (change == "the shader object")
            first->SetParameterFloat(gloss, 12.0f);
        if (change == "the value itself")
            set.ValueAtPosition(kTint)->SetColor(std::vector<float>{0.6f, 0.5f, 0.5f, 1.0f}.data());
        if (change == "a change cleared again") {
            first->SetParameterFloat(gloss, 30.0f);
            set.ResetModified(gloss);
        }
        first->SetCurrentParameters();
        effect->UploadCurrentParameters(true);
        EXPECT_FLOAT_EQ(pushed(kGloss, 1), turn.gloss);
        EXPECT_FLOAT_EQ(pushed(kTint, 4), turn.tint);
    }
    effect->UploadCurrentParameters(false);
    EXPECT_FLOAT_EQ(pushed(kGloss, 1), 30.0f) << "a whole upload pushes unchanged values too";

    // A clone's values are all new to it: its first upload pushes them all.
    QorShaderPtr clone(first->Clone());
    second->SetCurrentParameters();
    effect->UploadCurrentParameters(true);
    first->SetParameterFloat(gloss, 60.0f);
    first->GetIShaderParameters()->ResetModified(gloss);
    clone->SetCurrentParameters();
    effect->UploadCurrentParameters(true);
    EXPECT_FLOAT_EQ(pushed(kGloss, 1), 30.0f) << "the clone's own value";
}

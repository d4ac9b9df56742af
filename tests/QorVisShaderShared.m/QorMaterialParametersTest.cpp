// The parameter set of the material model on both roads: indexes, checked reads and
// writes, texture references, copies, changed positions and serials, extra textures and
// the records of a parameter stream.
#include "QorMaterialRoads.h"

#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorVisPixelImage.h"
#include "QorVisFoundation/VisResourceManager.h"

#include <algorithm>
#include <cstdint>

QOR_MATERIAL_SUITE(QorMaterialParametersTest);

TYPED_TEST(QorMaterialParametersTest, IndexesCountFromOneAndReadsAndWritesCheckIndexAndKind)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    const QorBackEndProfile& profile = set.Profile();
    EXPECT_EQ(set.GetParameterType(0), 1) << "the technique";
    EXPECT_EQ(set.GetParameterIndex(nullptr), -1);
    for (int bad : {-1, 6})
        EXPECT_EQ(set.GetParameterName(bad), nullptr);
    // The name list grows past its first 20 entries; a name need not have a value.
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(set.AddParameterName(("p" + std::to_string(i)).c_str()), 5 + i);
    EXPECT_EQ(set.AddParameterName(nullptr), -1);
    EXPECT_STREQ(set.GetParameterName(35), "p29");
    EXPECT_EQ(set.GetParameterType(35), 0);

    QorCapturingSink sink;
    const float red[4] = {1, 0, 0, 1};
    for (int bad : {-4, 0, 36}) {
        EXPECT_EQ(set.SetFloatValue(bad, 1), -1);
        EXPECT_EQ(set.SetColorValue(bad, red), -1);
        EXPECT_EQ(set.SetTextureValue(bad, "x.png", 0), -1);
        EXPECT_EQ(set.GetParameterHandle(bad), 0);
        set.ResetModified(bad);
        for (int only : {0, 1}) {
            float out[4] = {};
            EXPECT_EQ(set.GetFloatValue(bad, out, only), 0);
            EXPECT_EQ(set.GetColorValue(bad, out, only), 0);
        }
    }
    const int gloss = kGloss + 1, tint = kTint + 1, diffuse = kDiffuse + 1;
    EXPECT_EQ(set.SetFloatValue(tint, 1), -1) << "a colour";
    EXPECT_EQ(set.SetTextureValue(gloss, "x.png", 0), -1) << "a float";
    EXPECT_EQ(TextureCount("x.png"), 0u);
    EXPECT_TRUE(sink.Records().empty());
    EXPECT_EQ(set.SetColorValue(gloss, red), profile.colorKindChecked ? -1 : 0);
    EXPECT_EQ(sink.Records().size(), profile.colorKindChecked ? 0u : 1u) << "else the float reports";

    set.ResetModified(gloss);
    float number = -1;
    EXPECT_EQ(set.GetFloatValue(gloss, &number, 1), 0);
    EXPECT_EQ(number, profile.readsOnlyModified ? -1.0f : 0.5f) << "unmodified: left alone where that is honoured";
    EXPECT_EQ(set.GetFloatValue(gloss, &number, 0), 0) << "the answer is the mark";
    EXPECT_FLOAT_EQ(number, 0.5f);
    EXPECT_EQ(set.SetFloatValue(gloss, 0.25f), 0);
    EXPECT_EQ(set.GetFloatValue(gloss, &number, 1), 1);
    float raw[4] = {};
    EXPECT_EQ(set.GetColorValue(gloss, raw, 0), profile.colorKindChecked ? 0 : 1) << "else the float's raw read";
    char* file = nullptr;
    EXPECT_EQ(set.GetTextureValue(gloss, &file, 0), 0);
    EXPECT_EQ(set.GetTextureValue(diffuse, &file, 0), 1);
    EXPECT_STREQ(file, "wood.png");
    const auto token = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(set.ValueAt(gloss)->Binding()));
    EXPECT_EQ(static_cast<std::uint32_t>(set.GetParameterHandle(gloss)), profile.handsOutTokens ? token : 0u);

    // GetValue guards positions by the name count, each road its own way.
    for (int position : {-1, 0, 4, 35}) {
        sink.Clear();
        const bool listed = position >= 0 && position < 5;
        EXPECT_EQ(set.GetValue(position) != nullptr, listed) << position;
        const bool reported = profile.overlap == QorOverlapRule::ReportBelowNames ? position < 35 : position >= 35;
        ASSERT_EQ(sink.Records().size(), reported ? 1u : 0u) << position;
        if (reported) {
            EXPECT_EQ(sink.Records()[0].message, "Overlapping memory");
            EXPECT_EQ(sink.Records()[0].source, profile.setSource);
            EXPECT_EQ(sink.Records()[0].line, TypeParam::kOverlapLine);
        }
    }
}

TYPED_TEST(QorMaterialParametersTest, TextureChangesKeepTheRegistryInStep)
{
    std::vector<std::uintptr_t> deleted;
    QorGLServiceObserver previous = QorSetGLServiceObserver([&](QorGLService service, std::uintptr_t id) {
        if (service == QorGLService::DeleteDLTexture)
            deleted.push_back(id);
    });
    {
        QorShaderPtr shader = this->Generated();
        QorMaterialParameters& set = this->Set(*shader);
        const int diffuse = kDiffuse + 1;
        EXPECT_EQ(TextureCount("wood.png"), 3u) << "the registry's, the default set's and the shader's";
        EXPECT_EQ(set.SetTextureValue(diffuse, "stone.png", 0), 0);
        EXPECT_EQ(TextureCount("wood.png"), 2u) << "handed to the destroy list";
        EXPECT_EQ(TextureCount("stone.png"), 2u);
        EXPECT_EQ(set.SetTextureValue(diffuse, "stone.png", 0), 0);
        EXPECT_EQ(TextureCount("stone.png"), 2u) << "the same name changes nothing";
        {
            std::unique_ptr<QorIShaderParameters> copy(set.Clone());
            EXPECT_EQ(TextureCount("stone.png"), 3u) << "a copy registers again";
        }
        EXPECT_EQ(TextureCount("stone.png"), 2u);

        QorShaderManager::GetShaderTexture("stone.png")->SetID(17);
        set.ResetModified(diffuse);
        EXPECT_EQ(set.SetTextureValue(diffuse, "stone.png", 1), 0);
        EXPECT_EQ(deleted, std::vector<std::uintptr_t>{17});
        EXPECT_EQ(QorShaderManager::GetShaderTexture("stone.png")->GetID(), 0u);
        char* file = nullptr;
        EXPECT_EQ(set.GetTextureValue(diffuse, &file, 0), 0) << "a reload leaves the value as it was";
        EXPECT_EQ(set.SetTextureValue(diffuse, nullptr, 0), 0);
        EXPECT_EQ(TextureCount("stone.png"), 1u);
        EXPECT_EQ(set.SetTextureValue(diffuse, "stone.png", 1), 0) << "no current name: a plain set";

        // A reload of a texture the host stores queues its image again.
        VisResourceManager* host = VisResourceManager::Create();
        QorTexturePixelImage* pixels = QorTexturePixelImage::Create("host.png", QorPixelRGBA8, 2, 2);
        host->AddVisPixelImage(
            std::make_unique<QorVisPixelImage>("host.png", pixels, QorVisPixelImage::QorSyncSynchronous));
        host->AddPixelImage(pixels);
        QorShaderPtr stored = this->Generated("stored");
        this->Set(*stored).SetTextureValue(diffuse, "host.png", 0);
        ASSERT_EQ(QorShaderManager::GetShaderTexture("host.png")->IsStoredInManager(), 1u);
        this->Set(*stored).SetTextureValue(diffuse, "host.png", 1);
        EXPECT_EQ(host->GetQueuedBufferCount(), 1u);
        stored.reset();
        VisResourceManager::Destroy();
    }
    QorShaderManager::CleanShaderTextureToDestroyList();
    EXPECT_EQ(QorShaderManager::GetShaderTexture("wood.png"), nullptr) << "a set going hands every reference back";
    EXPECT_EQ(QorShaderManager::GetShaderTexture("stone.png"), nullptr);
    QorSetGLServiceObserver(previous);
}

TYPED_TEST(QorMaterialParametersTest, CopiesAreDeepAndIndependentWithSerialsOfTheirOwn)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& source = this->Set(*shader);
    source.SetDefaultTexture("env.png", 0);
    source.SetUseDefaultTexture(0);
    source.ResetModified(kGloss + 1);
    std::unique_ptr<QorIShaderParameters> clone(source.Clone());
    auto& copy = static_cast<QorMaterialParameters&>(*clone);
    EXPECT_NE(copy.Serial(), source.Serial());
    EXPECT_EQ(TextureCount("env.png"), 3u);
    for (int i = 1; i < source.GetNbParameters(); ++i) {
        EXPECT_STREQ(copy.GetParameterName(i), source.GetParameterName(i));
        EXPECT_NE(copy.ValueAt(i), source.ValueAt(i));
        EXPECT_EQ(copy.ValueAt(i)->Binding(), source.ValueAt(i)->Binding()) << "the same parameters mirrored";
    }
    EXPECT_EQ(copy.GetChangedPositions(), (std::vector<int>{0, 1, 2, 3, 4})) << "copies count as modified";
    int use = 1;
    copy.GetUseDefaultTexture(&use);
    EXPECT_EQ(use, 0);
    copy.SetFloatValue(kGloss + 1, 9.0f);
    float number = 0;
    source.GetFloatValue(kGloss + 1, &number, 0);
    EXPECT_FLOAT_EQ(number, 0.5f) << "the copy is independent";
    std::unique_ptr<QorIShaderParameters> second(copy.Clone());
    clone.reset();
    second->GetFloatValue(kGloss + 1, &number, 0);
    EXPECT_FLOAT_EQ(number, 9.0f) << "a copy of a copy outlives it";
    second.reset();
    EXPECT_EQ(TextureCount("env.png"), 2u) << "every value and slot handed its reference back";
}

TYPED_TEST(QorMaterialParametersTest, ModifiedValuesAreListedOnceAndTheListStaysBounded)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    set.ClearChangedPositions();
    for (int index = 1; index <= 5; ++index)
        set.ResetModified(index);
    set.SetFloatValue(kGloss + 1, 2.0f);
    set.ValueAtPosition(kRgb)->SetColor(std::vector<float>{1, 0, 0}.data());
    set.SetFloatValue(kGloss + 1, 3.0f);
    EXPECT_EQ(set.GetChangedPositions(), (std::vector<int>{kGloss, kRgb})) << "each once, in the order changed";

    // Clearing a mark and changing the value again lists it again; however often a
    // renderer does so between uploads, the list is rebuilt before it outgrows the set.
    for (int turn = 0; turn < 1000; ++turn) {
        set.ResetModified(kGloss + 1);
        set.SetFloatValue(kGloss + 1, static_cast<float>(turn));
        ASSERT_LE(set.GetChangedPositions().size(), 2u * 5 + 16) << turn;
    }
    const std::vector<int>& listed = set.GetChangedPositions();
    for (int position : {kGloss, kRgb})
        EXPECT_NE(std::find(listed.begin(), listed.end(), position), listed.end()) << position;
}

TYPED_TEST(QorMaterialParametersTest, ExtraTextureSlots)
{
    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    char* file = nullptr;
    EXPECT_EQ(set.GetDefaultTexture(&file), -1) << "none yet";
    int use = 0;
    set.GetUseDefaultTexture(&use);
    EXPECT_EQ(use, 1);
    EXPECT_EQ(set.SetDefaultTexture("env.png", 0), 0);
    EXPECT_EQ(set.GetDefaultTexture(&file), 0);
    EXPECT_STREQ(file, "env.png");
    QorShaderTexture* env = QorShaderManager::GetShaderTexture("env.png");

    // A reload hands the reference back, frees the record's own copy of its name and
    // takes the texture again under the name it is still registered with.
    EXPECT_EQ(set.SetDefaultTexture("env.png", 1), 0);
    EXPECT_EQ(env->GetName(), nullptr);
    EXPECT_EQ(QorShaderManager::GetShaderTexture("env.png"), env);
    EXPECT_EQ(env->GetRefCount(), 2u);
    // A registry that lost the texture (another holder handed back a reference it never
    // took) does not stop a reload.
    QorShaderManager::AddShaderTextureToDestroyList(env);
    QorShaderManager::CleanShaderTextureToDestroyList();
    ASSERT_EQ(QorShaderManager::GetShaderTexture("env.png"), nullptr);
    EXPECT_EQ(set.SetDefaultTexture("sky.png", 1), 0);
    set.GetDefaultTexture(&file);
    EXPECT_STREQ(file, "sky.png");
    EXPECT_EQ(TextureCount("sky.png"), 2u);

    const int slots = set.Profile().extraTextureSlots ? 1 : 0;
    EXPECT_EQ(set.SetSecondTexture("a.png"), slots);
    EXPECT_EQ(set.SetSecondTexture("a.png"), slots);
    EXPECT_EQ(set.SetThirdTexture(nullptr), slots);
    EXPECT_EQ(set.SetThirdTexture("a.png"), slots);
    EXPECT_EQ(TextureCount("a.png"), slots ? 3u : 0u);
}

// The records a CgFX set writes, read by either road's set: names replace the set's,
// values follow its own, read values mirror no parameter and count as modified; an
// unknown type keeps its place empty, a texture stored without its image has no file.
TYPED_TEST(QorMaterialParametersTest, ReadsTheRecordsOfAParameterStream)
{
    QorStreamer stream;
    stream.WriteInt(2, 0);
    stream.WriteString("Gloss");
    stream.WriteString("Base");
    stream.WriteInt(4, 0);
    stream.WriteInt(1, 0); // float
    stream.WriteInt(0x1234, 0);
    stream.WriteFloat(0.75f);
    stream.WriteInt(3, 0); // no kind
    stream.WriteInt(4, 0); // a texture, its image in no container
    stream.WriteInt(77, 0);
    stream.WriteInt(6, 0); // colour of three
    stream.WriteInt(0x5678, 0);
    const float rgb[4] = {0.1f, 0.2f, 0.3f, 0};
    stream.WriteFloat(rgb, 4);

    QorShaderPtr shader = this->Generated();
    QorMaterialParameters& set = this->Set(*shader);
    set.UnStream(stream);
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(stream.GetRemainingSize(), 0u);
    ASSERT_EQ(set.GetNbParameters(), 3);
    EXPECT_STREQ(set.GetParameterName(2), "Base");
    ASSERT_EQ(set.GetValueList()->size(), 9u) << "read values follow the ones there";
    EXPECT_EQ(set.ValueAtPosition(6), nullptr) << "the unknown record keeps its place";
    EXPECT_EQ(set.ValueAtPosition(7)->Type(), 4);
    const char* none = set.ValueAtPosition(7)->File();
    EXPECT_TRUE(!none || !*none) << "a texture without its image keeps its place";
    QorMaterialValue* colour = set.ValueAtPosition(8);
    EXPECT_EQ(colour->Type(), 6);
    EXPECT_FLOAT_EQ(colour->Components()[2], 0.3f);
    EXPECT_EQ(colour->Binding(), nullptr) << "a token never turns back into a parameter";
    EXPECT_EQ(colour->GetParameterToken(), 0x5678);
    EXPECT_EQ(set.ValueAtPosition(5)->GetModified(), 1);
    EXPECT_FLOAT_EQ(set.ValueAtPosition(5)->Components()[0], 0.75f);
    std::unique_ptr<QorIShaderParameters> copy(set.Clone());
    EXPECT_EQ(static_cast<QorMaterialParameters&>(*copy).ValueAtPosition(6), nullptr) << "a copy keeps the empty place";

    // A read value mirrors nothing: uploads pass it over.
    shader->SetCurrentParameters();
    shader->GetIShaderEffect()->UploadCurrentParameters(false);
}

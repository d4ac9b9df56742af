#include "QorVisFoundation/QorResourceZPKContainer.h"

#include "QorTestSupport.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorIShaderEffect.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

// An effect as a shader holds it: only its name and source matter to the container.
class SourceEffect : public QorIShaderEffect
{
public:
    SourceEffect(const char* name, const char* source)
        : m_name(name), m_source(source ? source : ""), m_hasSource(source != nullptr)
    {
    }
    char* getBuffer() override { return m_hasSource ? m_source.data() : nullptr; }
    const char* GetName() override { return m_name; }
    unsigned int AddRef() override { return 2; } // lives on the test's stack
    unsigned int Release() override { return 1; }
    void Init() override {}
    const QorString& GetPathName() const override { return m_empty; }
    const QorString& GetFileName() const override { return m_empty; }
    void getTechnique(int*) override {}
    void setTechnique(int) override {}
    void setTechniqueByName(const char*) override {}
    void setFileName(const QorString&) override {}
    QorIShaderParameters* Generate() override { return nullptr; }
    int Generated() override { return 1; }
    bool updateLightModel(unsigned int) override { return true; }
    void setBuffer(const char*) override {}
    void SetName(char* name) override { std::free(name); }
    void Stream(QorStreamer&) override {}
    void UnStream(QorStreamer&) override {}
    QorIShaderParameters* GetIShaderParameters() override { return nullptr; }
    int NeedTanBin() override { return 1; }
    int ValidateTechnique() override { return 1; }
    void SetMatrixParam(QorMatrixParam, const Qor4x4Matrix&) override {}
    int ValidateShaderEffect() override { return 1; }
    int ForceCompile() override { return 1; }
    const char* GetProvider() override { return "test"; }
    const char* GetUUID() override { return "uuid"; }
    int ConnectTypeToInterface(const char*, const char*, QorIShaderParameters*) override { return 1; }
    const char* GetBaseType(const char*) const override { return "base"; }
    const char* GetDynamicType(const char*) const override { return "dynamic"; }
    int GetNumInterface(int& count) const override { return count = 2, 1; }
    QorFxImplementation GetImplementation() const override { return QorFxQRFX; }
    int updateEnvModel(EnvironmentState) override { return 1; }

private:
    const char* m_name;
    std::string m_source;
    bool m_hasSource;
    QorString m_empty;
};

struct EffectReleaser
{
    void operator()(QorIShaderEffect* effect) const
    {
        if (effect)
            effect->Release();
    }
};
using EffectPtr = std::unique_ptr<QorIShaderEffect, EffectReleaser>;
using ImagePtr = QorTexturePixelImage::Ptr;

ImagePtr TakeImage(QorResourceZPKContainer& container, QorStreamer& in, int expected = 1)
{
    QorTexturePixelImage* image = reinterpret_cast<QorTexturePixelImage*>(1);
    EXPECT_EQ(container.GetResource(in, image), expected);
    return ImagePtr(image);
}

} // namespace

TEST(QorResourceZPKContainerTest, EffectsAndImagesRoundTripThroughOneStreamer)
{
    QorResourceZPKContainer container;
    QorStreamer streamer;
    streamer.SetResourceZPKContainer(&container);
    SourceEffect plastic("plastic", "float4 main() : COLOR { return 1; }");
    SourceEffect plasticAgain("plastic", "float4 main() : COLOR { return 1; }");
    SourceEffect plasticEdited("plastic", "float4 main() : COLOR { return 0; }");
    SourceEffect noSource("bare", nullptr);
    SourceEffect emptySource("bare", "");
    ImagePtr wood(QorTexturePixelImage::Create("wood.png", QorPixelRGB8, 2, 2));

    // What the shaders' Stream writes, in order.
    streamer.GetResourceZPKContainer()->AddResource(streamer, &plastic);      // id 0
    container.AddResource(streamer, wood.get());                              // id 1
    container.AddResource(streamer, &plasticAgain);                           // same name and text: 0
    container.AddResource(streamer, &plasticEdited);                          // other text: id 2
    container.AddResource(streamer, static_cast<QorIShaderEffect*>(nullptr)); // -1
    container.AddResource(streamer, wood.get());                              // 1 again
    container.AddResource(streamer, static_cast<QorTexturePixelImage*>(nullptr));
    container.AddResource(streamer, &noSource);    // id 3
    container.AddResource(streamer, &emptySource); // id 4: empty is not missing
    for (int id : {1, 0, 5, -5, 0x7fffffff})       // wrong kinds, unknown and negative ids
        streamer.WriteInt(id, 0);

    ASSERT_EQ(container.GetEntryCount(), 5);
    EXPECT_EQ(wood->GetRefCount(), 2u) << "one container reference however often it is streamed";
    const QorResourceZPKContainer::Entry* image = container.GetEntry(1);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->id, 1);
    EXPECT_EQ(image->kind, QorResourceZPKContainer::QorImageEntry);
    EXPECT_EQ(image->name, QorString("wood.png"));
    EXPECT_EQ(container.GetEntry(2)->source, "float4 main() : COLOR { return 0; }");
    EXPECT_EQ(container.GetEntry(5), nullptr);

    // What UnStream reads from the same bytes.
    QorStreamer in(streamer.GetBytes());
    EffectPtr read(container.GetResourceShader(in));
    ASSERT_TRUE(read);
    EXPECT_STREQ(read->GetName(), "plastic");
    EXPECT_STREQ(read->getBuffer(), "float4 main() : COLOR { return 1; }");
    EXPECT_NE(read->getBuffer(), plastic.getBuffer()) << "the container keeps its own copy";
    EXPECT_EQ(read->GetImplementation(), QorFxCgFX);
    EXPECT_EQ(read->AddRef(), 2u);
    EXPECT_EQ(read->Release(), 1u);
    read->SetName(static_cast<char*>(std::malloc(8))); // taken over and freed (ASan)
    EXPECT_STREQ(read->GetName(), "plastic") << "only a name and source are carried";

    ImagePtr readWood = TakeImage(container, in);
    EXPECT_EQ(readWood.get(), wood.get());
    EXPECT_EQ(wood->GetRefCount(), 3u) << "the caller got its own reference";
    EffectPtr again(container.GetResourceShader(in));
    EXPECT_NE(again.get(), read.get()) << "a new object for every un-stream";
    EXPECT_STREQ(again->getBuffer(), read->getBuffer());
    EffectPtr edited(container.GetResourceShader(in));
    EXPECT_STREQ(edited->getBuffer(), "float4 main() : COLOR { return 0; }");
    EXPECT_EQ(container.GetResourceShader(in), nullptr) << "-1 is the null effect";
    ImagePtr woodAgain = TakeImage(container, in);
    TakeImage(container, in, 0); // -1 is the null image
    EffectPtr bare(container.GetResourceShader(in));
    EXPECT_EQ(bare->getBuffer(), nullptr);
    EffectPtr empty(container.GetResourceShader(in));
    EXPECT_STREQ(empty->getBuffer(), "");

    EXPECT_EQ(container.GetResourceShader(in), nullptr) << "an image id is not an effect";
    TakeImage(container, in, 0); // an effect id is not an image
    EXPECT_EQ(container.GetResourceShader(in), nullptr) << "unknown id";
    TakeImage(container, in, 0); // negative id other than -1
    EXPECT_EQ(container.GetResourceShader(in), nullptr) << "huge id";
    EXPECT_FALSE(in.IsFailed()) << "wrong ids are not stream errors";
    EXPECT_EQ(container.GetResourceShader(in), nullptr) << "nothing left to read";
    TakeImage(container, in, 0);
    EXPECT_TRUE(in.IsFailed());
    EXPECT_EQ(wood->GetRefCount(), 4u) << "ours, the container's, two readers'; failures added none";
}

TEST(QorResourceZPKContainerTest, GetImageFindsListedOrFileImagesAndKeepsThemWhileItLives)
{
    QorTexturePixelImage::ClearList();
    QorTempDir dir;
    ImagePtr onDisk(QorTexturePixelImage::Create("ignored", QorPixelRGB8, 3, 1));
    onDisk->GetPixels()[0] = 200;
    const std::string file = dir.Path() + "\\disk.png"; // a framework path
    ASSERT_EQ(onDisk->WriteToFile("PNG", file.c_str()), 0);
    QorTexturePixelImage* listed = QorTexturePixelImage::Create("listed", QorPixelLuminance8, 1, 1);
    QorTexturePixelImage::AddList(listed);
    {
        QorResourceZPKContainer container;
        EXPECT_EQ(container.GetImage("listed", QorReadOnly), listed);
        EXPECT_EQ(listed->GetRefCount(), 2u) << "the list's and the container's";

        QorTexturePixelImage* fromFile = container.GetImage(file.c_str(), QorReadWrite);
        ASSERT_NE(fromFile, nullptr);
        EXPECT_EQ(fromFile->GetName(), QorString(file.c_str()));
        EXPECT_EQ(fromFile->GetPixels()[0], 200);
        EXPECT_EQ(container.GetImage(file.c_str(), QorReadOnly), fromFile) << "repeated calls share one image";
        EXPECT_EQ(fromFile->GetRefCount(), 1u) << "held by the container alone";
        EXPECT_EQ(container.GetImage(dir.File("absent.png").c_str(), QorReadOnly), nullptr);

        QorTexturePixelImage::ClearList();
        EXPECT_EQ(container.GetImage("listed", QorReadOnly), listed) << "still valid: the container holds it";
        EXPECT_EQ(listed->GetRefCount(), 1u);
        EXPECT_EQ(container.GetEntryCount(), 0) << "looking images up creates no stream entries";
    }
    // The container released both images; ASan reports them if not.
}

TEST(QorResourceZPKContainerTest, ReplaceResourceSwapsImagesInEveryEntryAndCountsReferences)
{
    ImagePtr oldImage(QorTexturePixelImage::Create("old", QorPixelRGB8, 1, 1));
    ImagePtr newImage(QorTexturePixelImage::Create("new", QorPixelRGB8, 2, 2));
    ImagePtr bystander(QorTexturePixelImage::Create("other", QorPixelRGB8, 1, 1));
    QorStreamer streamer;
    {
        QorResourceZPKContainer container;
        container.AddResource(streamer, oldImage.get());
        container.AddResource(streamer, bystander.get());
        container.ReplaceResource(oldImage.get(), newImage.get());
        EXPECT_EQ(oldImage->GetRefCount(), 1u) << "the entry let go of the old image";
        EXPECT_EQ(newImage->GetRefCount(), 2u) << "and holds the new one";
        EXPECT_EQ(container.GetEntry(0)->name, QorString("new"));
        EXPECT_EQ(container.GetEntry(1)->image.get(), bystander.get());

        QorStreamer in(streamer.GetBytes());
        EXPECT_EQ(TakeImage(container, in).get(), newImage.get()) << "an id streamed before the swap";

        // The new image now has the old id; the old image, added again, is a new entry.
        QorStreamer more;
        container.AddResource(more, newImage.get());
        container.AddResource(more, oldImage.get());
        QorStreamer moreIn(more.GetBytes());
        int id = -2;
        ASSERT_TRUE(moreIn.ReadInt(id));
        EXPECT_EQ(id, 0);
        ASSERT_TRUE(moreIn.ReadInt(id));
        EXPECT_EQ(id, 2);

        int unknown = 0;
        container.ReplaceResource(bystander.get(), nullptr);
        container.ReplaceResource(nullptr, newImage.get());
        container.ReplaceResource(newImage.get(), newImage.get());
        container.ReplaceResource(&unknown, newImage.get());
        EXPECT_EQ(container.GetEntry(1)->image.get(), bystander.get()) << "null or unknown arguments change nothing";
        EXPECT_EQ(newImage->GetRefCount(), 2u);
    }
    EXPECT_EQ(oldImage->GetRefCount(), 1u) << "the destructor released every image";
    EXPECT_EQ(newImage->GetRefCount(), 1u);
    EXPECT_EQ(bystander->GetRefCount(), 1u);
}

TEST(QorResourceZPKContainerTest, RemoveResourceForgetsHandedOutEffectsButKeepsTheirEntries)
{
    SourceEffect effect("glass", "source");
    auto container = std::make_unique<QorResourceZPKContainer>();
    QorStreamer streamer;
    for (int i = 0; i < 3; ++i)
        container->AddResource(streamer, &effect);
    QorStreamer in(streamer.GetBytes());
    QorIShaderEffect* first = container->GetResourceShader(in);
    QorIShaderEffect* second = container->GetResourceShader(in);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(container->GetHandedOutCount(), 2u);

    int unknown = 0;
    container->RemoveResource(first);
    container->RemoveResource(first); // already forgotten
    container->RemoveResource(&unknown);
    container->RemoveResource(nullptr);
    EXPECT_EQ(container->GetHandedOutCount(), 1u);
    EXPECT_STREQ(first->getBuffer(), "source") << "forgetting is not deleting";
    EffectPtr third(container->GetResourceShader(in));
    ASSERT_TRUE(third) << "the entry stays, so the same id un-streams again";
    EXPECT_EQ(container->GetEntryCount(), 1);

    EXPECT_EQ(second->Release(), 0u);
    EXPECT_EQ(container->GetHandedOutCount(), 1u) << "a released object drops out by itself";
    // Objects may outlive their container; releasing them later must not touch it (ASan).
    container.reset();
    EXPECT_STREQ(third->GetName(), "glass");
    third.reset();
    EXPECT_EQ(first->Release(), 0u);
}

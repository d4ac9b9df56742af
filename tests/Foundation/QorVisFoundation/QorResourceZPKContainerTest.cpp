#include "QorVisFoundation/QorResourceZPKContainer.h"

#include "QorTestSupport.h"
#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

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
    const char* const lit = "float4 main() : COLOR { return 1; }";
    ImagePtr wood(QorTexturePixelImage::Create("wood.png", QorPixelRGB8, 2, 2));

    // What the shaders' Stream writes, in order.
    container.AddResource(streamer, "plastic", lit);                                   // id 0
    container.AddResource(streamer, wood.get());                                       // id 1
    container.AddResource(streamer, "plastic", lit);                                   // same name and text: 0
    container.AddResource(streamer, "plastic", "float4 main() : COLOR { return 0; }"); // other text: id 2
    container.AddResource(streamer, wood.get());                                       // 1 again
    container.AddResource(streamer, static_cast<QorTexturePixelImage*>(nullptr));
    container.AddResource(streamer, "bare", nullptr); // id 3
    container.AddResource(streamer, "bare", "");      // id 4: empty is not missing
    container.AddResource(streamer, nullptr, lit);    // id 5: a null name counts as empty
    for (int id : {-1, 1, 0, 6, -5, 0x7fffffff})     // no effect, wrong kinds, unknown and negative ids
        streamer.WriteInt(id, 0);

    ASSERT_EQ(container.GetEntryCount(), 6);
    EXPECT_EQ(wood->GetRefCount(), 2u) << "one container reference however often it is streamed";
    EXPECT_EQ(container.GetEntry(6), nullptr);

    // What UnStream reads from the same bytes.
    QorStreamer in(streamer.GetBytes());
    const auto effect = [&](const char* name, const char* source) {
        QorResourceZPKContainer::EffectSource read;
        ASSERT_TRUE(container.GetResourceShader(in, read)) << name;
        EXPECT_EQ(read.name, name);
        EXPECT_EQ(read.hasSource, source != nullptr) << name;
        EXPECT_EQ(read.source, source ? source : "") << name;
    };
    const auto noEffect = [&](const char* why) {
        QorResourceZPKContainer::EffectSource read{"kept", "", false};
        EXPECT_FALSE(container.GetResourceShader(in, read)) << why;
        EXPECT_EQ(read.name, "kept") << "untouched: " << why;
    };
    effect("plastic", lit);
    ImagePtr readWood = TakeImage(container, in);
    EXPECT_EQ(readWood.get(), wood.get());
    EXPECT_EQ(wood->GetRefCount(), 3u) << "the caller got its own reference";
    effect("plastic", lit);
    effect("plastic", "float4 main() : COLOR { return 0; }");
    ImagePtr woodAgain = TakeImage(container, in);
    TakeImage(container, in, 0); // -1 is the null image
    effect("bare", nullptr);
    effect("bare", "");
    effect("", lit);
    noEffect("-1 is no effect");
    noEffect("an image id is not an effect");
    TakeImage(container, in, 0); // an effect id is not an image
    noEffect("unknown id");
    TakeImage(container, in, 0); // negative id other than -1
    noEffect("huge id");
    EXPECT_FALSE(in.IsFailed()) << "wrong ids are not stream errors";
    noEffect("nothing left to read");
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
        EXPECT_EQ(more.GetBytes(), (std::vector<unsigned char>{0, 0, 0, 0, 2, 0, 0, 0})) << "ids 0 and 2";

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

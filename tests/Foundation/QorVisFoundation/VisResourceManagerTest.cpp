#include "QorVisFoundation/VisResourceManager.h"

#include "QorVisFoundation/QorVisPixelImage.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

QorTexturePixelImage* MakePixels(const char* name, unsigned char fill)
{
    QorTexturePixelImage* image = QorTexturePixelImage::Create(name, QorPixelRGB8, 2, 1);
    for (std::size_t i = 0; i < image->GetByteCount(); ++i)
        image->GetPixels()[i] = fill;
    return image;
}

} // namespace

TEST(VisResourceManagerTest, ExistsOnlyBetweenCreateAndDestroyAndHandsOutWhatItHolds)
{
    VisResourceManager::Destroy();
    EXPECT_EQ(VisResourceManager::Get(), nullptr) << "a host may have no resource manager";
    VisResourceManager* host = VisResourceManager::Create();
    ASSERT_NE(host, nullptr);
    EXPECT_EQ(VisResourceManager::Get(), host);
    EXPECT_EQ(VisResourceManager::Create(), host) << "one manager per process";

    EXPECT_EQ(host->GivePixelImage("wood"), nullptr);
    EXPECT_EQ(host->GivePixelImage(nullptr), nullptr);
    QorTexturePixelImage* wood = MakePixels("wood", 1);
    QorTexturePixelImage* newerWood = MakePixels("wood", 2);
    wood->AddRef(); // the test's own, to see the manager let go of its one
    host->AddPixelImage(wood);
    EXPECT_EQ(host->GivePixelImage("wood"), wood);
    host->AddPixelImage(newerWood);
    host->AddPixelImage(nullptr);
    EXPECT_EQ(host->GivePixelImage("wood"), newerWood) << "the newest shadows";
    EXPECT_EQ(wood->GetRefCount(), 2u) << "the shadowed one is kept alive";

    EXPECT_EQ(host->GiveVisPixelImage("screen"), nullptr);
    QorVisPixelImage* screen = host->AddVisPixelImage(std::make_unique<QorVisPixelImage>("screen", wood));
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(host->GiveVisPixelImage("screen"), screen);
    EXPECT_EQ(host->GiveVisPixelImage(nullptr), nullptr);
    EXPECT_EQ(host->AddVisPixelImage(nullptr), nullptr);
    EXPECT_EQ(screen->GetPixelImage(), wood);
    EXPECT_EQ(wood->GetRefCount(), 3u) << "the host image holds its own reference";

    VisResourceManager::Destroy();
    EXPECT_EQ(VisResourceManager::Get(), nullptr);
    EXPECT_EQ(wood->GetRefCount(), 1u) << "Destroy released the list's and the host image's references";
    wood->Release();
}

TEST(VisResourceManagerTest, ImplementationObjectsQueueCopiesOfThePixelsForTheNextUpload)
{
    VisResourceManager::Destroy();
    QorTexturePixelImage::Ptr pixels(MakePixels("sky", 10));

    QorVisPixelImage image("sky", pixels.get());
    EXPECT_EQ(image.GetSyncMode(), 0) << "asynchronous unless the host says otherwise";
    l_QorVisPixelImage* implementation = image.GetImplementation();
    ASSERT_NE(implementation, nullptr);
    EXPECT_FALSE(implementation->QueueBuffer()) << "no manager, nowhere to queue";

    VisResourceManager* host = VisResourceManager::Create();
    EXPECT_EQ(host->GetQueuedBufferCount(), 0u);
    ASSERT_TRUE(implementation->QueueBuffer());
    EXPECT_EQ(host->GetQueuedBufferCount(), 1u);
    pixels->GetPixels()[0] = 99;

    QorVisPixelImage other("ground", pixels.get());
    ASSERT_TRUE(other.GetImplementation()->QueueBuffer());
    EXPECT_EQ(host->GetQueuedBufferCount(), 2u);
    pixels->GetPixels()[1] = 77; // after "ground" was queued: its copy must not see this
    ASSERT_TRUE(implementation->QueueBuffer()) << "queued again before the upload";
    EXPECT_EQ(host->GetQueuedBufferCount(), 2u) << "the newer copy replaces the earlier one of that name";

    std::vector<VisResourceManager::QueuedBuffer> queued = host->TakeQueuedBuffers();
    EXPECT_EQ(host->GetQueuedBufferCount(), 0u);
    ASSERT_EQ(queued.size(), 2u);
    EXPECT_EQ(queued[0].name, QorString("sky"));
    EXPECT_EQ(queued[0].format, QorPixelRGB8);
    EXPECT_EQ(queued[0].width, 2u);
    EXPECT_EQ(queued[0].height, 1u);
    EXPECT_EQ(queued[0].bytes, (std::vector<unsigned char>{99, 77, 10, 10, 10, 10}));
    EXPECT_EQ(queued[1].name, QorString("ground"));
    EXPECT_EQ(queued[1].bytes, (std::vector<unsigned char>{99, 10, 10, 10, 10, 10}));

    // Without pixels there is nothing to upload, so no implementation object.
    QorVisPixelImage empty("empty", nullptr);
    EXPECT_EQ(empty.GetImplementation(), nullptr);
    image.SetPixelImage(nullptr);
    EXPECT_EQ(image.GetImplementation(), nullptr);
    EXPECT_EQ(pixels->GetRefCount(), 2u) << "ours and other's; SetPixelImage(nullptr) released image's";
    VisResourceManager::Destroy();
}

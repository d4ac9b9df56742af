#include "QorVisFoundation/QorPixelImageManager.h"

#include <gtest/gtest.h>

TEST(QorPixelImageManagerTest, GeneratesEachNameOnceAndKeepsTheImagesUntilCleared)
{
    QorPixelImageManager::Clear();
    QorTexturePixelImage::ClearList();
    EXPECT_EQ(QorPixelImageManager::GetImage("target"), nullptr);

    QorTexturePixelImage* target = QorPixelImageManager::GenerateImage("target", 8, 4, QorPixelRGBA8);
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->GetName(), QorString("target"));
    EXPECT_EQ(target->GetWidth(), 8u);
    EXPECT_EQ(target->GetHeight(), 4u);
    EXPECT_EQ(target->GetPixelFormat(), QorPixelRGBA8);
    EXPECT_EQ(target->GetPixels()[8 * 4 * 4 - 1], 0);
    EXPECT_EQ(QorPixelImageManager::GetImage("target"), target);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("target"), nullptr)
        << "generated images stay out of the file-image list";

    EXPECT_EQ(QorPixelImageManager::GenerateImage("target", 2, 2, QorPixelRGB8), nullptr) << "name already generated";
    EXPECT_EQ(QorPixelImageManager::GetImage("target"), target) << "the first image stays";
    EXPECT_EQ(QorPixelImageManager::GenerateImage("empty", 0, 2, QorPixelRGB8), nullptr);
    EXPECT_EQ(QorPixelImageManager::GetImage("empty"), nullptr) << "a refused image is not remembered";
    QorTexturePixelImage* floats = QorPixelImageManager::GenerateImage("floats", 2, 2, QorPixelRGBFloat);
    ASSERT_NE(floats, nullptr);
    EXPECT_NE(floats->GetFloatPixels(), nullptr);

    // A holder with its own reference outlives Clear; the manager drops its one.
    target->AddRef();
    EXPECT_EQ(target->GetRefCount(), 2u);
    QorPixelImageManager::Clear();
    EXPECT_EQ(QorPixelImageManager::GetImage("target"), nullptr);
    EXPECT_EQ(QorPixelImageManager::GetImage("floats"), nullptr);
    EXPECT_EQ(target->GetRefCount(), 1u);
    target->Release();

    EXPECT_NE(QorPixelImageManager::GenerateImage("target", 1, 1, QorPixelLuminance8), nullptr)
        << "after Clear the name can be generated again";
    QorPixelImageManager::Clear();
}

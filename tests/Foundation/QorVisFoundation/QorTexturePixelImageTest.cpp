#include "QorVisFoundation/QorTexturePixelImage.h"

#include "QorSystem/QorFiles.h"
#include "QorTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using ImagePtr = QorTexturePixelImage::Ptr;

// Neighbouring bytes differ, so swapped channels or rows show up.
ImagePtr MakePattern(QorPixelImageFormat format, unsigned width, unsigned height)
{
    ImagePtr image(QorTexturePixelImage::Create("pattern", format, width, height));
    for (std::size_t i = 0; i < image->GetByteCount(); ++i)
        image->GetPixels()[i] = static_cast<unsigned char>(i * 37 + 11);
    return image;
}

bool SamePixels(const QorTexturePixelImage& a, const QorTexturePixelImage& b)
{
    const unsigned char* pa = a.IsFloatFormat() ? a.GetFloatPixels() : a.GetPixels();
    const unsigned char* pb = b.IsFloatFormat() ? b.GetFloatPixels() : b.GetPixels();
    return a.GetPixelFormat() == b.GetPixelFormat() && a.GetByteCount() == b.GetByteCount() &&
           std::memcmp(pa, pb, a.GetByteCount()) == 0;
}

std::string Magic(const std::string& path, std::size_t count) { return QorReadFile(path).substr(0, count); }
bool IsPng(const std::string& path) { return Magic(path, 8) == "\x89PNG\r\n\x1a\n"; }
bool IsJpeg(const std::string& path) { return Magic(path, 3) == "\xff\xd8\xff"; }
bool IsTiff(const std::string& path)
{
    return Magic(path, 4) == std::string("II*\0", 4) || Magic(path, 4) == std::string("MM\0*", 4);
}

} // namespace

TEST(QorTexturePixelImageTest, CreateMakesZeroedCountedImagesAndRefusesBadSizes)
{
    const struct
    {
        QorPixelImageFormat format;
        unsigned bytesPerPixel;
    } formats[] = {{QorPixelLuminance8, 1}, {QorPixelLuminanceAlpha8, 2}, {QorPixelRGB8, 3},
                   {QorPixelRGBA8, 4},      {QorPixelRGBAFloat, 16},      {QorPixelRGBFloat, 12}};
    for (const auto& expected : formats) {
        ImagePtr image(QorTexturePixelImage::Create("a", expected.format, 3, 2));
        ASSERT_TRUE(image) << expected.format;
        EXPECT_EQ(image->GetBytesPerPixel(), expected.bytesPerPixel);
        ASSERT_EQ(image->GetByteCount(), 6u * expected.bytesPerPixel);
        const bool floating = expected.format >= QorPixelRGBAFloat;
        EXPECT_EQ(image->GetPixels() == nullptr, floating) << "one accessor per kind of format";
        EXPECT_EQ(image->GetFloatPixels() == nullptr, !floating);
        const unsigned char* bytes = floating ? image->GetFloatPixels() : image->GetPixels();
        EXPECT_TRUE(std::all_of(bytes, bytes + image->GetByteCount(), [](unsigned char b) { return b == 0; }));
    }

    EXPECT_EQ(QorTexturePixelImage::Create("z", QorPixelRGB8, 4, 0), nullptr);
    EXPECT_EQ(QorTexturePixelImage::Create("z", static_cast<QorPixelImageFormat>(5), 4, 4), nullptr);
    EXPECT_EQ(QorTexturePixelImage::Create("z", QorPixelRGBAFloat, 0x7fffffff, 0x7fffffff), nullptr)
        << "the byte count overflows 64 bits";
    EXPECT_EQ(QorTexturePixelImage::Create("z", QorPixelRGBA8, 0x7fffffff, 0x7fffffff), nullptr)
        << "beyond what a byte offset can address";

    QorTexturePixelImage* counted = QorTexturePixelImage::Create("c", QorPixelLuminance8, 1, 1);
    EXPECT_EQ(counted->GetRefCount(), 1u);
    EXPECT_EQ(counted->AddRef(), 2u);
    EXPECT_EQ(counted->Release(), 1u);
    EXPECT_EQ(counted->Release(), 0u); // destroyed; ASan reports a leak or a double free
}

TEST(QorTexturePixelImageTest, PngAndTiffKeepEveryByteOfEveryFormat)
{
    QorTempDir dir;
    for (QorPixelImageFormat format : {QorPixelLuminance8, QorPixelLuminanceAlpha8, QorPixelRGB8, QorPixelRGBA8}) {
        ImagePtr image = MakePattern(format, 7, 5);
        if (format == QorPixelRGBA8)
            image->GetPixels()[3] = 0; // colour under zero alpha survives: nothing is premultiplied
        for (const char* word : {"PNG", "TIFF"}) {
            const std::string path = dir.File(word + std::to_string(format));
            ASSERT_EQ(image->WriteToFile(word, path.c_str()), 0) << word << " " << format;
            EXPECT_TRUE(word[0] == 'P' ? IsPng(path) : IsTiff(path)) << path;
            ImagePtr back(QorTexturePixelImage::ReadFromFile(path.c_str(), "back"));
            ASSERT_TRUE(back) << path;
            EXPECT_EQ(back->GetName(), QorString("back"));
            EXPECT_EQ(back->GetWidth(), 7u);
            EXPECT_EQ(back->GetHeight(), 5u);
            EXPECT_TRUE(SamePixels(*back, *image)) << word << " changed format " << format;
        }
    }

    // Float images keep their values where the file format can hold floats...
    ImagePtr floats(QorTexturePixelImage::Create("hdr", QorPixelRGBAFloat, 3, 2));
    ImagePtr rgbFloats(QorTexturePixelImage::Create("rgb", QorPixelRGBFloat, 3, 2));
    for (QorTexturePixelImage* image : {floats.get(), rgbFloats.get()}) {
        float* values = reinterpret_cast<float*>(image->GetFloatPixels());
        for (std::size_t i = 0; i < image->GetByteCount() / sizeof(float); ++i)
            values[i] = 0.125f * float(i) - 0.5f; // negative and above 1 too
    }
    const std::pair<const char*, QorTexturePixelImage*> files[] = {{"TIFF", floats.get()}, {"EXR", floats.get()},
                                                                   {"TIF", rgbFloats.get()}};
    for (const auto& [word, image] : files) {
        const std::string path = dir.File(std::string("float.") + word + std::to_string(image->GetPixelFormat()));
        ASSERT_EQ(image->WriteToFile(word, path.c_str()), 0) << word;
        ImagePtr back(QorTexturePixelImage::ReadFromFile(path.c_str(), "back"));
        ASSERT_TRUE(back);
        EXPECT_TRUE(SamePixels(*back, *image)) << word << " " << image->GetPixelFormat();
    }

    // ...and are clamped to 0..1 and stored as bytes where it cannot.
    ASSERT_EQ(floats->WriteToFile("PNG", dir.File("float.png").c_str()), 0);
    ImagePtr bytes(QorTexturePixelImage::ReadFromFile(dir.File("float.png").c_str(), "bytes"));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->GetPixelFormat(), QorPixelRGBA8);
    EXPECT_EQ(bytes->GetPixels()[0], 0) << "-0.5";
    EXPECT_EQ(bytes->GetPixels()[8], 128) << "0.5";
    EXPECT_EQ(bytes->GetPixels()[23], 255) << "2.375";
}

TEST(QorTexturePixelImageTest, TheFormatWordDecidesTheFileFormatWhateverTheExtension)
{
    QorTempDir dir;
    ImagePtr image(QorTexturePixelImage::Create("gradient", QorPixelRGBA8, 16, 8));
    for (unsigned p = 0; p < 16 * 8; ++p) {
        unsigned char* pixel = image->GetPixels() + p * 4;
        pixel[0] = static_cast<unsigned char>((p % 16) * 16);
        pixel[1] = static_cast<unsigned char>((p / 16) * 32);
        pixel[2] = 128;
        pixel[3] = 255;
    }
    // Each file's extension names another format than its word, which is not case-sensitive.
    const std::tuple<const char*, const char*, bool (*)(const std::string&)> files[] = {
        {"PNG", "really_png.jpg", IsPng}, {"jpeg", "really_jpeg.png", IsJpeg}, {"TIFF", "really_tiff.bmp", IsTiff}};
    for (const auto& [word, name, written] : files) {
        ASSERT_EQ(image->WriteToFile(word, dir.File(name).c_str()), 0) << word;
        EXPECT_TRUE(written(dir.File(name))) << name;
    }

    ImagePtr png(QorTexturePixelImage::ReadFromFile(dir.File("really_png.jpg").c_str(), "png"));
    ASSERT_TRUE(png) << "files are recognised by content, not extension";
    EXPECT_TRUE(SamePixels(*png, *image));

    // JPEG has no alpha: RGBA comes back as RGB close to the original.
    ImagePtr jpeg(QorTexturePixelImage::ReadFromFile(dir.File("really_jpeg.png").c_str(), "jpeg"));
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->GetPixelFormat(), QorPixelRGB8);
    ASSERT_EQ(jpeg->GetWidth() * jpeg->GetHeight(), 16u * 8u);
    int total = 0;
    for (unsigned i = 0; i < 16 * 8 * 3; ++i)
        total += std::abs(int(jpeg->GetPixels()[i]) - int(image->GetPixels()[i / 3 * 4 + i % 3]));
    EXPECT_LE(total / (16 * 8 * 3), 3) << "JPEG is lossy but close on average";

    // Framework paths with "\" work both ways.
    ASSERT_EQ(QorCreateDirectory((dir.Path() + "\\sub").c_str()), 0);
    const std::string framework = dir.Path() + "\\sub\\image.tga";
    ASSERT_EQ(image->WriteToFile("TARGA", framework.c_str()), 0);
    EXPECT_FALSE(QorReadFile(dir.File("sub/image.tga")).empty());
    ImagePtr targa(QorTexturePixelImage::ReadFromFile(framework.c_str(), "tga"));
    ASSERT_TRUE(targa);
    EXPECT_TRUE(SamePixels(*targa, *image));

    // A format lacking the image's layout gets an adapted one rather than a failure.
    ImagePtr grey = MakePattern(QorPixelLuminanceAlpha8, 4, 4);
    for (const char* word : {"BMP", "GIF", "PPM", "HDR", "WEBP"}) {
        const std::string path = dir.File(std::string("adapted.") + word);
        ASSERT_EQ(grey->WriteToFile(word, path.c_str()), 0) << word;
        ImagePtr back(QorTexturePixelImage::ReadFromFile(path.c_str(), word));
        ASSERT_TRUE(back) << word;
        EXPECT_EQ(back->GetWidth(), 4u);
    }
}

TEST(QorTexturePixelImageTest, FailedWritesLeaveNoFileAndBadFilesReadAsNull)
{
    QorTempDir dir;
    ImagePtr image = MakePattern(QorPixelRGB8, 64, 64);
    const std::string target = dir.File("out.png");
    EXPECT_EQ(image->WriteToFile("NOT-A-FORMAT", target.c_str()), -1);
    EXPECT_EQ(image->WriteToFile(nullptr, target.c_str()), -1);
    EXPECT_EQ(image->WriteToFile("PNG", nullptr), -1);
    EXPECT_EQ(image->WriteToFile("PNG", dir.File("missing/folder/out.png").c_str()), -1);
    // The encoder succeeds, but its file cannot take the place of a folder.
    ASSERT_EQ(QorCreateDirectory(dir.File("taken.png").c_str()), 0);
    EXPECT_EQ(image->WriteToFile("PNG", dir.File("taken.png").c_str()), -1);
    EXPECT_EQ(QorFolderContent(dir.Path()), std::vector<std::string>{"taken.png"}) << "no partial files left behind";

    const std::string keep = dir.Write("keep.png", "previous content");
    EXPECT_EQ(image->WriteToFile("NOT-A-FORMAT", keep.c_str()), -1);
    EXPECT_EQ(QorReadFile(keep), "previous content") << "a failed write leaves an existing file alone";
    EXPECT_EQ(image->WriteToFile("PNG", keep.c_str()), 0);
    EXPECT_TRUE(IsPng(keep)) << "a successful one replaces it";

    EXPECT_EQ(QorTexturePixelImage::ReadFromFile(nullptr, "x"), nullptr);
    EXPECT_EQ(QorTexturePixelImage::ReadFromFile(dir.File("absent.png").c_str(), "x"), nullptr);
    EXPECT_EQ(QorTexturePixelImage::ReadFromFile(dir.Write("garbage.png", "not an image").c_str(), "x"), nullptr);
    // Cut short inside the pixel data. (Not PNG: OpenImageIO 2.4 leaks an error string
    // when libpng aborts a truncated read, which the sanitizer build would report.)
    for (const char* word : {"TIFF", "JPEG"}) {
        const std::string whole = dir.File(std::string("whole.") + word);
        ASSERT_EQ(image->WriteToFile(word, whole.c_str()), 0);
        std::string cut = QorReadFile(whole);
        cut.resize(cut.size() / 2);
        ImagePtr read(QorTexturePixelImage::ReadFromFile(dir.Write(std::string("cut.") + word, cut).c_str(), "x"));
        EXPECT_FALSE(read) << word << ": refused rather than half shown";
    }
}

TEST(QorTexturePixelImageTest, DeeperIntegerFilesBecomeEightBits)
{
    QorTempDir dir;
    const std::string path = dir.File("deep.dat");
    const std::string command = "convert -size 3x2 xc:'rgb(100%,0%,25%)' -depth 16 PNG48:'" + path + "' 2>/dev/null";
    if (std::system(command.c_str()) != 0)
        GTEST_SKIP() << "ImageMagick makes the 16-bit file";
    ImagePtr image(QorTexturePixelImage::ReadFromFile(path.c_str(), "deep"));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetPixelFormat(), QorPixelRGB8);
    EXPECT_EQ(image->GetWidth(), 3u);
    EXPECT_EQ(image->GetPixels()[0], 255);
    EXPECT_EQ(image->GetPixels()[1], 0);
    EXPECT_NEAR(image->GetPixels()[2], 64, 1);
}

TEST(QorTexturePixelImageTest, TheListSharesImagesByNameUntilCleared)
{
    QorTexturePixelImage::ClearList();
    QorTexturePixelImage* first = QorTexturePixelImage::Create("wood", QorPixelRGB8, 1, 1);
    QorTexturePixelImage* second = QorTexturePixelImage::Create("wood", QorPixelRGB8, 2, 2);
    QorTexturePixelImage* other = QorTexturePixelImage::Create("stone", QorPixelRGB8, 1, 1);
    first->AddRef(); // the test's own, to watch what the list does with its one
    QorTexturePixelImage::AddList(first);
    QorTexturePixelImage::AddList(other);
    QorTexturePixelImage::AddList(nullptr);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("wood"), first);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("stone"), other);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("none"), nullptr);
    EXPECT_EQ(first->GetRefCount(), 2u) << "the list took the caller's reference over";

    QorTexturePixelImage::AddList(second);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("wood"), second) << "the newest shadows";
    EXPECT_EQ(first->GetRefCount(), 2u) << "the shadowed image is still held";

    QorTexturePixelImage::ClearList();
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("wood"), nullptr);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList("stone"), nullptr);
    EXPECT_EQ(first->Release(), 0u) << "ClearList released the list's reference";
}

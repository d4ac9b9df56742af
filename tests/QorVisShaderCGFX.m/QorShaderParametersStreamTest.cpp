#include "QorShaderParameters.h"
#include "QorShaderValue.h"

#include "QorCgTestSupport.h"
#include "QorTestSupport.h"

#include "QorSystem/QorFiles.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> Names(QorShaderParameters& set)
{
    std::vector<std::string> names;
    for (int i = 1; i < set.GetNbParameters(); ++i)
        names.emplace_back(set.GetParameterName(i) ? set.GetParameterName(i) : "<null>");
    return names;
}

std::string TextureOf(QorShaderParameters& set, int index)
{
    char* file = nullptr;
    set.GetTextureValue(index, &file, 0);
    return file ? file : "<null>";
}

// Little-endian ints and floats as the streamer writes them.
std::vector<unsigned char> Ints(std::initializer_list<int> values, std::initializer_list<float> floats = {})
{
    QorStreamer writer;
    for (int value : values)
        writer.WriteInt(value, 0);
    for (float value : floats)
        writer.WriteFloat(value);
    return writer.GetBytes();
}

// A 2x2 RGBA PNG with distinct pixels; returns its path.
std::string WritePng(const QorTempDir& folder, const char* fileName)
{
    QorTexturePixelImage::Ptr image(QorTexturePixelImage::Create("source", QorPixelRGBA8, 2, 2));
    for (std::size_t i = 0; i < image->GetByteCount(); ++i)
        image->GetPixels()[i] = static_cast<unsigned char>(1 + i * 13);
    const std::string path = folder.File(fileName);
    EXPECT_EQ(image->WriteToFile("PNG", path.c_str()), 0);
    return path;
}

// Streams `set` through `container` and reads the bytes back into `target`.
void RoundTrip(QorShaderParameters& set, QorShaderParameters& target, QorResourceZPKContainer& container)
{
    QorStreamer out;
    out.SetResourceZPKContainer(&container);
    set.Stream(out);
    QorStreamer in(out.GetBytes());
    in.SetResourceZPKContainer(&container);
    target.UnStream(in);
    EXPECT_EQ(in.GetRemainingSize(), 0u);
}

// A set whose one texture names a PNG in `sources`, with QorTemp naming `cache`, where
// streaming the set through `container` caches the image.
class QorShaderParametersCacheTest : public testing::Test
{
protected:
    QorShaderParametersCacheTest() { set.AddTextureParameter(cg.Parameter("diffuse"), png.c_str()); }

    QorRegistryGuard registry;
    QorTempDir sources;
    QorTempDir cache;
    const std::string png = WritePng(sources, "wood.png");
    QorScopedEnv temp{"QorTemp", cache.Path().c_str()};
    QorCgTestEffect cg;
    QorResourceZPKContainer container;
    QorShaderParameters set;
};

} // namespace

TEST(QorShaderParametersStreamTest, NamesAreReplacedAndValuesAppended)
{
    QorRegistryGuard registry;
    QorShaderParameters empty;
    QorStreamer bytes;
    empty.Stream(bytes);
    EXPECT_EQ(bytes.GetBytes(), Ints({0, 0}));

    QorShaderParameters named;
    named.AddParameterName("a");
    named.AddParameterName("b");
    QorStreamer written;
    named.Stream(written);
    QorCgTestEffect cg;
    QorShaderParameters target;
    cg.AddNumbers(target);
    target.UnStream(written);
    EXPECT_EQ(Names(target), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(target.GetValueList()->size(), 4u) << "values kept";
    EXPECT_EQ(target.AddParameterName("c"), 2);

    QorShaderParameters numbers;
    cg.AddNumbers(numbers);
    QorStreamer stream;
    numbers.Stream(stream);
    target.UnStream(stream);
    EXPECT_EQ(target.GetValueList()->size(), 8u) << "read values follow the ones there";
    EXPECT_EQ(target.GetCgParameter(1), cg.Parameter("gloss"));
}

TEST(QorShaderParametersStreamTest, ValuesRoundTripWithTheirTokensButWithoutHandles)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters set;
    cg.AddNumbers(set);
    QorStreamer stream;
    set.Stream(stream);

    // The names, the count, then type, handle token and data of each value; colours write
    // four floats whatever their count.
    int number = 0;
    stream.ReadInt(number);
    for (char* name = nullptr; number-- > 0; delete[] name)
        stream.ReadString(name);
    stream.ReadInt(number);
    EXPECT_EQ(number, 4);
    const int types[] = {1, 2, 5, 6};
    for (int i = 0; i < 4; ++i) {
        float data[4] = {};
        stream.ReadInt(number);
        EXPECT_EQ(number, types[i]);
        stream.ReadInt(number);
        EXPECT_EQ(number, set.GetParameterHandle(i + 1));
        stream.ReadFloat(data, i == 0 ? 1 : 4);
        if (i == 2) { // the two-component colour
            EXPECT_EQ(std::vector<float>(data, data + 4), (std::vector<float>{2, 3, 0, 0}));
        }
    }
    EXPECT_EQ(stream.GetRemainingSize(), 0u);

    QorShaderParameters read;
    stream.Rewind();
    read.UnStream(stream);
    ASSERT_EQ(Names(read), Names(set));
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(read.GetParameterType(i), types[i - 1]);
        EXPECT_EQ(read.GetCgParameter(i), nullptr) << "a streamed token never becomes a handle";
        float expected[4] = {};
        float actual[4] = {};
        set.GetColorValue(i, expected, 0);
        EXPECT_EQ(read.GetColorValue(i, actual, 1), 1) << "read values count as modified";
        EXPECT_EQ(std::memcmp(expected, actual, sizeof expected), 0) << i;
    }
}

TEST(QorShaderParametersStreamTest, UnknownTypesAndTexturesWithoutImagesKeepTheirPlaces)
{
    QorRegistryGuard registry;
    QorShaderParameters set;
    // An unknown type; a texture without a container (its token only); a float.
    QorStreamer stream(Ints({0, 3, 3, 4, 77, 1, 12}, {1.5f}));
    set.UnStream(stream);
    EXPECT_FALSE(stream.IsFailed());
    // The values read (no names came with them), as a list of type codes, 0 for an empty place.
    const auto types = [](QorShaderParameters& of) {
        std::vector<int> codes;
        for (QorIShaderValue* value : *of.GetValueList()) {
            int type = 0;
            if (value)
                value->GetType(&type);
            codes.push_back(type);
        }
        return codes;
    };
    EXPECT_EQ(types(set), (std::vector<int>{0, 4, 1})) << "every record keeps its place, so values stay by their names";
    EXPECT_EQ(TextureOf(set, 2), "<null>") << "a texture without an image";
    float number = 0;
    set.GetFloatValue(3, &number, 0);
    EXPECT_FLOAT_EQ(number, 1.5f);
    QorShaderParameters copy(set);
    EXPECT_EQ(types(copy), types(set)) << "a copy keeps the empty place";
}

TEST(QorShaderParametersStreamTest, TruncatedAndCorruptStreamsLeaveTheSetUsable)
{
    QorRegistryGuard registry;
    QorCgTestEffect cg;
    QorShaderParameters source;
    cg.AddNumbers(source);
    QorStreamer written;
    source.Stream(written);
    const std::vector<unsigned char> bytes = written.GetBytes();

    for (std::size_t length = 0; length < bytes.size(); ++length) {
        QorShaderParameters target;
        target.AddParameterName("old");
        const float kept[4] = {7, 7, 7, 7};
        target.AddColorParameter(cg.Parameter("tint"), kept, 4);
        const std::vector<std::string> before = Names(target);
        QorStreamer truncated(bytes.data(), length);
        target.UnStream(truncated);
        const std::vector<std::string> names = Names(target);
        EXPECT_TRUE(names == before || names == Names(source)) << "whole name lists only: " << length;
        // The value already there first, then whole records only.
        for (std::size_t i = 0; i < target.GetValueList()->size(); ++i) {
            float expected[4] = {};
            float actual[4] = {};
            if (i == 0)
                std::copy(kept, kept + 4, expected);
            else
                source.GetColorValue(static_cast<int>(i), expected, 0);
            target.GetColorValue(static_cast<int>(i + 1), actual, 0);
            EXPECT_EQ(std::memcmp(expected, actual, sizeof expected), 0) << length;
        }
        QorShaderParameters copy(target);
    }

    // Name counts the data cannot hold are refused before anything is allocated.
    for (int count : {-1, 0x7fffffff, 1000}) {
        QorShaderParameters target;
        target.AddParameterName("old");
        QorStreamer corrupt(Ints({count, -1}));
        target.UnStream(corrupt);
        EXPECT_EQ(Names(target), std::vector<std::string>{"old"}) << count;
    }
    QorShaderParameters many;
    QorStreamer manyValues(Ints({0, 0x7fffffff, 1, 0}, {2}));
    many.UnStream(manyValues);
    EXPECT_EQ(many.GetValueList()->size(), 1u) << "a huge value count ends with the data";

    std::mt19937 random(20240611);
    for (int round = 0; round < 3000; ++round) {
        std::vector<unsigned char> noise(bytes);
        for (std::size_t flips = 1 + random() % 6; flips > 0; --flips)
            noise[random() % noise.size()] = static_cast<unsigned char>(random());
        noise.resize(random() % (noise.size() + 8), 0xff);
        QorShaderParameters target;
        QorStreamer stream(noise);
        target.UnStream(stream);
        QorShaderParameters copy(target);
    }
}

TEST(QorShaderParametersStreamTest, WithoutQorTempATextureIsRegisteredUnderItsImageName)
{
    QorRegistryGuard registry;
    QorTempDir folder;
    const std::string png = WritePng(folder, "wood.png");
    QorScopedEnv temp("QorTemp", nullptr);
    QorCgTestEffect cg;
    QorResourceZPKContainer container;
    QorShaderParameters set;
    set.AddTextureParameter(cg.Parameter("diffuse"), png.c_str());
    cg.AddNumbers(set);
    QorShaderParameters read;
    RoundTrip(set, read, container);
    EXPECT_EQ(TextureOf(read, 1), png);
    EXPECT_EQ(QorTextureCount(png.c_str()), 3u) << "the source's, the read set's and the registry's";
    ASSERT_NE(QorTexturePixelImage::GetImageFromList(QorString(png.c_str())), nullptr) << "listed";
    EXPECT_NE(QorFileAccess(folder.File("ZPKResources").c_str(), 0), 0);
    float gloss = 0;
    read.GetFloatValue(2, &gloss, 0);
    EXPECT_FLOAT_EQ(gloss, 0.5f) << "the records after the texture are read in step";
}

TEST_F(QorShaderParametersCacheTest, ATextureIsCachedUnderZPKResourcesInAFolderOfItsContent)
{
    QorShaderParameters read;
    RoundTrip(set, read, container);
    const std::string cached = TextureOf(read, 1);
    const std::string key = QorCacheKeyOf(cached, cache.Path(), "wood.png");
    ASSERT_NE(key, "") << cached;
    EXPECT_EQ(QorTextureCount(cached.c_str()), 2u);
    const std::string native = cache.File("ZPKResources/" + key + "/wood.png");
    QorTexturePixelImage::Ptr written(QorTexturePixelImage::ReadFromFile(native.c_str(), "cached"));
    QorTexturePixelImage::Ptr original(QorTexturePixelImage::ReadFromFile(png.c_str(), "original"));
    ASSERT_TRUE(written && original);
    EXPECT_EQ(std::memcmp(written->GetPixels(), original->GetPixels(), original->GetByteCount()), 0);

    // Read again: the listed image and its cached file are reused.
    QorShaderParameters again;
    RoundTrip(set, again, container);
    EXPECT_EQ(TextureOf(again, 1), cached);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList(QorString(png.c_str()))->GetRefCount(), 3u)
        << "the list's, the container's entry's and its look-up's: the streamed reference went back";
}

TEST_F(QorShaderParametersCacheTest, ImagesOfOtherPackagesOrPlantedFilesAreNeverTakenForThisOne)
{
    // Another package's image of the same file name, read with the same "QorTemp", and a
    // file planted where the cache once looked: neither may stand for this package's image.
    QorTempDir other;
    const std::string otherPng = other.File("wood.png");
    QorTexturePixelImage::Ptr black(QorTexturePixelImage::Create(QorString(otherPng.c_str()), QorPixelRGBA8, 3, 3));
    ASSERT_EQ(black->WriteToFile("PNG", otherPng.c_str()), 0);
    cache.Write("ZPKResources/wood.png", "planted");
    QorResourceZPKContainer otherContainer;
    QorShaderParameters otherSet;
    otherSet.AddTextureParameter(cg.Parameter("diffuse"), otherPng.c_str());
    QorShaderParameters otherRead;
    RoundTrip(otherSet, otherRead, otherContainer);
    QorShaderParameters read;
    RoundTrip(set, read, container);

    const std::string mine = TextureOf(read, 1), theirs = TextureOf(otherRead, 1);
    ASSERT_NE(QorCacheKeyOf(mine, cache.Path(), "wood.png"), "") << mine;
    ASSERT_NE(QorCacheKeyOf(theirs, cache.Path(), "wood.png"), "") << theirs;
    EXPECT_NE(mine, theirs);
    QorTexturePixelImage::Ptr mineRead(QorTexturePixelImage::ReadFromFile(mine.c_str(), "mine"));
    ASSERT_NE(mineRead, nullptr);
    EXPECT_EQ(mineRead->GetWidth(), 2u) << "this package's own image, not the other one's 3 x 3";

    // A cached file whose bytes were changed under the key is passed over, not taken.
    const std::string key = QorCacheKeyOf(mine, cache.Path(), "wood.png");
    QorTexturePixelImage::ClearList();
    cache.Write("ZPKResources/" + key + "/wood.png", "changed");
    QorShaderParameters again;
    RoundTrip(set, again, container);
    EXPECT_EQ(TextureOf(again, 1), cache.Path() + "\\ZPKResources\\" + key + "-1\\wood.png");
}

TEST_F(QorShaderParametersCacheTest, AListedImageOfTheSameNameTakesTheStreamedOnesPlace)
{
    QorStreamer out;
    out.SetResourceZPKContainer(&container);
    set.Stream(out);

    QorTexturePixelImage* listed = QorTexturePixelImage::Create(png.c_str(), QorPixelRGBA8, 1, 1);
    QorTexturePixelImage::AddList(listed);
    QorShaderParameters read;
    QorStreamer in(out.GetBytes());
    in.SetResourceZPKContainer(&container);
    read.UnStream(in);
    EXPECT_EQ(container.GetEntry(0)->image.get(), listed) << "the container holds the listed image";
    QorTexturePixelImage::Ptr written(QorTexturePixelImage::ReadFromFile(TextureOf(read, 1).c_str(), "cached"));
    ASSERT_NE(written, nullptr);
    EXPECT_EQ(written->GetWidth(), 1u) << "the cached file is the listed image";
}

TEST(QorShaderParametersStreamTest, ProceduralTexturesFillAGeneratedImage)
{
    QorRegistryGuard registry;
    QorTempDir cache;
    QorScopedEnv temp("QorTemp", cache.Path().c_str());
    QorCgTestEffect cg;
    for (QorPixelImageFormat format : {QorPixelRGBA8, QorPixelRGBAFloat}) {
        const std::string name = format == QorPixelRGBA8 ? "noise.procedural" : "clouds.procedural";
        QorTexturePixelImage* image = QorTexturePixelImage::Create(name.c_str(), format, 3, 2);
        unsigned char* pixels = format == QorPixelRGBA8 ? image->GetPixels() : image->GetFloatPixels();
        for (std::size_t i = 0; i < image->GetByteCount(); ++i)
            pixels[i] = static_cast<unsigned char>(i * 7 + 1);
        QorTexturePixelImage::AddList(image);

        QorResourceZPKContainer container;
        QorShaderParameters set;
        set.AddTextureParameter(cg.Parameter("diffuse"), name.c_str());
        QorShaderParameters read;
        RoundTrip(set, read, container);
        EXPECT_EQ(TextureOf(read, 1), name) << "the value keeps the image name";
        EXPECT_EQ(QorTextureCount(name.c_str()), 3u);
        QorTexturePixelImage* generated = QorPixelImageManager::GetImage(name.c_str());
        ASSERT_NE(generated, nullptr) << name;
        const unsigned char* copied = format == QorPixelRGBA8 ? generated->GetPixels() : generated->GetFloatPixels();
        EXPECT_EQ(std::memcmp(copied, pixels, image->GetByteCount()), 0) << name;
        EXPECT_NE(QorFileAccess(cache.File("ZPKResources/" + name).c_str(), 0), 0) << "no file format PROCEDURAL";
    }

    // A smaller image generated earlier under the name is not written past.
    QorPixelImageManager::Clear();
    QorPixelImageManager::GenerateImage("noise.procedural", 1, 1, QorPixelRGBA8);
    QorResourceZPKContainer container;
    QorShaderParameters set;
    set.AddTextureParameter(cg.Parameter("diffuse"), "noise.procedural");
    QorShaderParameters read;
    RoundTrip(set, read, container);
    EXPECT_EQ(QorPixelImageManager::GetImage("noise.procedural")->GetPixels()[0], 0);
}

TEST(QorShaderParametersStreamTest, MissingImagesAndUnusableCacheFoldersDegrade)
{
    QorRegistryGuard registry;
    QorTempDir folder;
    const std::string png = WritePng(folder, "wood.png");
    QorScopedEnv temp("QorTemp", folder.Write("plain-file", "x").c_str());
    QorCgTestEffect cg;
    QorResourceZPKContainer container;
    QorShaderParameters set;
    const std::string missing = folder.File("missing.png");
    set.AddTextureParameter(cg.Parameter("diffuse"), missing.c_str());
    set.AddTextureParameter(cg.Parameter("bump"), png.c_str());
    QorShaderParameters read;
    RoundTrip(set, read, container);
    ASSERT_EQ(read.GetValueList()->size(), 2u) << "the texture without an image keeps its place";
    EXPECT_EQ(TextureOf(read, 1), "<null>");
    EXPECT_EQ(TextureOf(read, 2), png) << "no cache folder: the image name";
    EXPECT_EQ(QorTextureCount(png.c_str()), 3u);
    EXPECT_EQ(QorTextureCount(missing.c_str()), 2u) << "only the source holds it";
}

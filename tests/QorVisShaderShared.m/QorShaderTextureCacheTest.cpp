// Texture values through the parameter stream: the image travels in the stream's
// container and comes back as a file cached under "QorTemp"\ZPKResources in a folder named
// by its content (or as a generated image). Streams are written on the CgFX road.
#include "QorMaterialRoads.h"

#include "QorSystem/QorFiles.h"
#include "QorVisFoundation/QorPixelImageManager.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"

#include <cstring>

namespace {

// The width of the image in the file; 0 when it is no image.
unsigned WidthOf(const std::string& path)
{
    QorTexturePixelImage::Ptr image(QorTexturePixelImage::ReadFromFile(path.c_str(), "read"));
    return image ? image->GetWidth() : 0;
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

// `sources` holds wood.png; "QorTemp" names `cache`.
class QorShaderTextureCacheTest : public testing::Test
{
protected:
    /// A shader of one texture value per name, each naming it ("" for none).
    QorShaderPtr Textured(const std::vector<std::string>& files)
    {
        std::string text;
        for (std::size_t i = 0; i < files.size(); ++i)
            text += "sampler2D map" + std::to_string(i) + ";\n";
        QorShaderPtr shader(QorCgFXRoad::NewShader());
        shader->SetBufferWithoutName((text + "technique t { pass p {} }\n").c_str());
        EXPECT_TRUE(shader->GenerateParameters());
        for (std::size_t i = 0; i < files.size(); ++i)
            if (!files[i].empty())
                shader->GetIShaderParameters()->SetTextureValue(static_cast<int>(i) + 1, files[i].c_str(), 0);
        return shader;
    }
    /// Reads `bytes` into a new set of `count` texture values, which the fixture keeps;
    /// the names read ("<null>" for none).
    std::vector<std::string> Read(QorStreamer& in, std::size_t count)
    {
        m_read.push_back(Textured(std::vector<std::string>(count)));
        QorIShaderParameters& read = *m_read.back()->GetIShaderParameters();
        read.UnStream(in);
        EXPECT_EQ(in.GetRemainingSize(), 0u);
        EXPECT_EQ(read.GetValueList()->size(), 2 * count) << "a texture without an image keeps its place";
        std::vector<std::string> files;
        for (std::size_t i = 1; i <= count; ++i) {
            char* file = nullptr;
            read.GetTextureValue(static_cast<int>(count + i), &file, 0);
            files.push_back(file ? file : "<null>");
        }
        return files;
    }
    /// Streams the shader's values through `container` and reads them back.
    std::vector<std::string> RoundTrip(QorIShader& shader, QorResourceZPKContainer& container)
    {
        QorStreamer out;
        out.SetResourceZPKContainer(&container);
        shader.GetIShaderParameters()->Stream(out);
        QorStreamer in(out.GetBytes());
        in.SetResourceZPKContainer(&container);
        return Read(in, shader.GetIShaderParameters()->GetValueList()->size());
    }

    QorRegistryGuard registry;
    QorTempDir sources;
    QorTempDir cache;
    const std::string png = WritePng(sources, "wood.png");
    QorScopedEnv temp{"QorTemp", cache.Path().c_str()};
    QorResourceZPKContainer container;
    std::vector<QorShaderPtr> m_read;
};

} // namespace

TEST_F(QorShaderTextureCacheTest, ATextureIsCachedUnderZPKResourcesInAFolderOfItsContent)
{
    QorShaderPtr shader = Textured({png});
    const std::string cached = RoundTrip(*shader, container)[0];
    const std::string key = QorCacheKeyOf(cached, cache.Path(), "wood.png");
    ASSERT_NE(key, "") << cached;
    EXPECT_EQ(TextureCount(cached), 2u);
    const std::string native = cache.File("ZPKResources/" + key + "/wood.png");
    QorTexturePixelImage::Ptr written(QorTexturePixelImage::ReadFromFile(native.c_str(), "cached"));
    QorTexturePixelImage::Ptr original(QorTexturePixelImage::ReadFromFile(png.c_str(), "original"));
    ASSERT_TRUE(written && original);
    EXPECT_EQ(std::memcmp(written->GetPixels(), original->GetPixels(), original->GetByteCount()), 0);

    // Read again: the listed image and its cached file are reused.
    EXPECT_EQ(RoundTrip(*shader, container)[0], cached);
    EXPECT_EQ(QorTexturePixelImage::GetImageFromList(QorString(png.c_str()))->GetRefCount(), 3u)
        << "the list's, the container's entry's and its look-up's: the streamed reference went back";
}

TEST_F(QorShaderTextureCacheTest, ImagesOfOtherPackagesOrPlantedFilesAreNeverTakenForThisOne)
{
    // Another package's image of the same file name, read with the same "QorTemp", and a
    // file planted where the cache once looked: neither may stand for this package's image.
    QorTempDir other;
    const std::string otherPng = other.File("wood.png");
    QorTexturePixelImage::Ptr black(QorTexturePixelImage::Create(QorString(otherPng.c_str()), QorPixelRGBA8, 3, 3));
    ASSERT_EQ(black->WriteToFile("PNG", otherPng.c_str()), 0);
    cache.Write("ZPKResources/wood.png", "planted");
    QorResourceZPKContainer otherContainer;
    QorShaderPtr otherShader = Textured({otherPng}), shader = Textured({png});
    const std::string theirs = RoundTrip(*otherShader, otherContainer)[0];
    const std::string mine = RoundTrip(*shader, container)[0];
    const std::string key = QorCacheKeyOf(mine, cache.Path(), "wood.png");
    ASSERT_NE(key, "") << mine;
    ASSERT_NE(QorCacheKeyOf(theirs, cache.Path(), "wood.png"), "") << theirs;
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(WidthOf(mine), 2u) << "this package's own image, not the other one's 3 x 3";

    // A cached file whose bytes were changed under the key is passed over, not taken.
    QorTexturePixelImage::ClearList();
    cache.Write("ZPKResources/" + key + "/wood.png", "changed");
    EXPECT_EQ(RoundTrip(*shader, container)[0], cache.Path() + "\\ZPKResources\\" + key + "-1\\wood.png");
}

TEST_F(QorShaderTextureCacheTest, AListedImageOfTheSameNameTakesTheStreamedOnesPlace)
{
    QorShaderPtr shader = Textured({png});
    QorStreamer out;
    out.SetResourceZPKContainer(&container);
    shader->GetIShaderParameters()->Stream(out);
    QorTexturePixelImage* listed = QorTexturePixelImage::Create(png.c_str(), QorPixelRGBA8, 1, 1);
    QorTexturePixelImage::AddList(listed);
    QorStreamer in(out.GetBytes());
    in.SetResourceZPKContainer(&container);
    const std::string file = Read(in, 1)[0];
    EXPECT_EQ(container.GetEntry(0)->image.get(), listed) << "the container holds the listed image";
    EXPECT_EQ(WidthOf(file), 1u) << "the cached file is the listed image";
}

TEST_F(QorShaderTextureCacheTest, ProceduralTexturesFillAGeneratedImage)
{
    for (QorPixelImageFormat format : {QorPixelRGBA8, QorPixelRGBAFloat}) {
        const std::string name = format == QorPixelRGBA8 ? "noise.procedural" : "clouds.procedural";
        QorTexturePixelImage* image = QorTexturePixelImage::Create(name.c_str(), format, 3, 2);
        unsigned char* pixels = format == QorPixelRGBA8 ? image->GetPixels() : image->GetFloatPixels();
        for (std::size_t i = 0; i < image->GetByteCount(); ++i)
            pixels[i] = static_cast<unsigned char>(i * 7 + 1);
        QorTexturePixelImage::AddList(image);
        QorResourceZPKContainer each;
        QorShaderPtr shader = Textured({name});
        EXPECT_EQ(RoundTrip(*shader, each)[0], name) << "the value keeps the image name";
        EXPECT_EQ(TextureCount(name), 3u);
        QorTexturePixelImage* generated = QorPixelImageManager::GetImage(name.c_str());
        ASSERT_NE(generated, nullptr) << name;
        const unsigned char* copied = format == QorPixelRGBA8 ? generated->GetPixels() : generated->GetFloatPixels();
        EXPECT_EQ(std::memcmp(copied, pixels, image->GetByteCount()), 0) << name;
        EXPECT_NE(QorFileAccess(cache.File("ZPKResources/" + name).c_str(), 0), 0) << "no file format PROCEDURAL";
    }
    // A smaller image generated earlier under the name is not written past.
    QorPixelImageManager::Clear();
    QorPixelImageManager::GenerateImage("noise.procedural", 1, 1, QorPixelRGBA8);
    QorShaderPtr shader = Textured({"noise.procedural"});
    RoundTrip(*shader, container);
    EXPECT_EQ(QorPixelImageManager::GetImage("noise.procedural")->GetPixels()[0], 0);
}

TEST_F(QorShaderTextureCacheTest, WithoutACacheFolderTheImageNameIsKeptAndMissingImagesDegrade)
{
    const std::string missing = sources.File("missing.png");
    for (const char* folder : {static_cast<const char*>(nullptr), "plain-file"}) {
        SCOPED_TRACE(folder ? folder : "no QorTemp");
        QorScopedEnv noCache("QorTemp", folder ? sources.Write(folder, "x").c_str() : nullptr);
        QorShaderPtr shader = Textured({missing, png});
        QorResourceZPKContainer each;
        EXPECT_EQ(RoundTrip(*shader, each), (std::vector<std::string>{"<null>", png}));
        EXPECT_EQ(TextureCount(png), 3u) << "the source's, the read set's and the registry's";
        EXPECT_EQ(TextureCount(missing), 2u) << "only the source holds it";
        ASSERT_NE(QorTexturePixelImage::GetImageFromList(QorString(png.c_str())), nullptr) << "listed";
        EXPECT_NE(QorFileAccess(sources.File("ZPKResources").c_str(), 0), 0);
        m_read.clear();
    }
}

TEST_F(QorShaderTextureCacheTest, TextureNamesLikePathsAreCachedOnlyUnderZPKResources)
{
    const std::vector<std::string> names = {"../../escape.png", "/abs/folder/absolute.png", "C:\\textures\\drive.png",
                                            "..\\..\\windows.png", "C:relative.png"};
    const std::string package = sources.File("hostile.zpk");
    {
        for (const std::string& name : names)
            QorTexturePixelImage::AddList(QorTexturePixelImage::ReadFromFile(png.c_str(), QorString(name.c_str())));
        QorShaderPtr shader = Textured(names);
        QorStreamer stream;
        stream.SetResourceZPKContainer(&container);
        shader->GetIShaderParameters()->Stream(stream);
        ASSERT_EQ(container.GetEntryCount(), 5);
        ASSERT_EQ(container.SaveToFile(package.c_str(), stream, nullptr), 0);
    }
    QorTexturePixelImage::ClearList();
    QorResourceZPKContainer loaded;
    QorStreamer stream;
    std::string error;
    ASSERT_EQ(loaded.LoadFromFile(package.c_str(), stream, &error), 0) << error;
    Read(stream, names.size());
    // The five images are alike, so they share one content folder.
    const std::vector<std::string> content = QorFolderContent(cache.Path());
    ASSERT_EQ(content.size(), 7u);
    const std::string key = content[1];
    EXPECT_EQ(content, (std::vector<std::string>{"ZPKResources", key, key + "/C:relative.png", key + "/absolute.png",
                                                 key + "/drive.png", key + "/escape.png", key + "/windows.png"}));
    EXPECT_EQ(QorFileAccess("/abs/folder/absolute.png", 0), -1);
    EXPECT_EQ(QorFileAccess("../../escape.png", 0), -1);
    EXPECT_EQ(WidthOf(cache.File(key + "/escape.png")), 2u);
}

// The format a cached image is written in comes from its name's extension.
TEST(QorShaderTextureExtensionTest, TheExtensionNamesTheImageFormat)
{
    const auto extension = [](const char* name) {
        return std::string(QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(name)).c_str());
    };
    EXPECT_EQ(extension("a/b/wood.jpg"), "JPEG");
    EXPECT_EQ(extension("wood.Tif"), "TIFF");
    EXPECT_EQ(extension("wood.tif.3"), "TIFF");
    EXPECT_EQ(extension("C:\\maps\\wood.png"), "PNG");
    EXPECT_EQ(extension("wood.jpeg"), "JPEG");
    EXPECT_EQ(extension("wood"), "");
    EXPECT_EQ(extension(""), "");
    EXPECT_EQ(extension("wood.12"), "12") << "a number with no earlier dot stays";
    EXPECT_EQ(extension("noise.procedural"), "PROCEDURAL");
}

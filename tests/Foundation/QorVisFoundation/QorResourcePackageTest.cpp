// The ".zpk" document of the resource container: real zip files written and read back,
// listed by unzip, loaded in a second process, and hostile archives refused.
#include "QorVisFoundation/QorResourceZPKContainer.h"

#include "QorSystem/QorFiles.h"
#include "QorTestSupport.h"
#include "QorVisFoundation/QorStreamer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <zip.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using ImagePtr = QorTexturePixelImage::Ptr;
using Json = nlohmann::ordered_json;

// The variable that turns this test program into the second process of the cross-process
// case: it names the package the first one saved.
const char* const kChildVariable = "QOR_PACKAGE_CHILD";


// Every byte differs from its neighbours; float formats get values no PNG could hold.
ImagePtr Image(const std::string& name, QorPixelImageFormat format, unsigned width, unsigned height)
{
    ImagePtr image(QorTexturePixelImage::Create(QorString(name), format, width, height));
    if (image->IsFloatFormat()) {
        float* values = reinterpret_cast<float*>(image->GetFloatPixels());
        for (std::size_t i = 0; i < image->GetByteCount() / sizeof(float); ++i)
            values[i] = static_cast<float>(i) * -1.75f + 3.1f;
        values[0] = std::numeric_limits<float>::infinity();
    } else {
        for (std::size_t i = 0; i < image->GetByteCount(); ++i)
            image->GetPixels()[i] = static_cast<unsigned char>(i * 37 + width);
    }
    return image;
}

const char* const kPlastic = "float4 main() : COLOR { return float4(1, 0, 0, 1); }\n";

// One document with every kind of entry and names that look like paths; built the same in
// both processes of the cross-process case.
struct Document
{
    QorResourceZPKContainer container;
    QorStreamer stream;
    Document()
    {
        stream.SetResourceZPKContainer(&container);
        stream.WriteInt(42, 0);
        container.AddResource(stream, "materials\\plastic.cgfx", kPlastic); // 0
        container.AddResource(stream, "bare", nullptr);                     // 1
        const char* names[] = {"C:\\textures\\wood.png", "../../escape.png", "/abs/folder/la.png", "caf\xe9.png",
                               "clouds.procedural", "sky.procedural"};
        const QorPixelImageFormat formats[] = {QorPixelRGBA8,    QorPixelLuminance8, QorPixelLuminanceAlpha8,
                                               QorPixelRGB8,     QorPixelRGBAFloat,  QorPixelRGBFloat};
        for (int i = 0; i < 6; ++i) // 2 to 7
            container.AddResource(stream, Image(names[i], formats[i], 3 + i, 2).get());
        container.AddResource(stream, "materials\\plastic.cgfx", "// edited\n"); // 8
        stream.WriteString("end");
    }
};

void ExpectSampleDocument(const QorResourceZPKContainer& actual, const QorStreamer& actualStream)
{
    const Document sample;
    const QorResourceZPKContainer& expected = sample.container;
    EXPECT_EQ(actualStream.GetBytes(), sample.stream.GetBytes());
    ASSERT_EQ(actual.GetEntryCount(), expected.GetEntryCount());
    for (int id = 0; id < expected.GetEntryCount(); ++id) {
        const QorResourceZPKContainer::Entry& want = *expected.GetEntry(id);
        const QorResourceZPKContainer::Entry& got = *actual.GetEntry(id);
        SCOPED_TRACE("entry " + std::to_string(id) + " " + want.name.str());
        EXPECT_EQ(got.id, id);
        EXPECT_EQ(got.kind, want.kind);
        EXPECT_EQ(got.name, want.name);
        EXPECT_EQ(got.hasSource, want.hasSource);
        EXPECT_EQ(got.source, want.source);
        ASSERT_EQ(got.image == nullptr, want.image == nullptr);
        if (!want.image)
            continue;
        EXPECT_EQ(got.image->GetPixelFormat(), want.image->GetPixelFormat());
        EXPECT_EQ(got.image->GetWidth(), want.image->GetWidth());
        EXPECT_EQ(got.image->GetHeight(), want.image->GetHeight());
        EXPECT_EQ(got.image->GetName(), want.name);
        ASSERT_EQ(got.image->GetByteCount(), want.image->GetByteCount());
        const bool floats = want.image->IsFloatFormat();
        EXPECT_EQ(std::memcmp(floats ? got.image->GetFloatPixels() : got.image->GetPixels(),
                              floats ? want.image->GetFloatPixels() : want.image->GetPixels(),
                              want.image->GetByteCount()),
                  0)
            << "every pixel bit survives";
    }
}

std::string CommandOutput(const std::string& command)
{
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char slice[4096];
        std::size_t read;
        while ((read = std::fread(slice, 1, sizeof slice, pipe)) > 0)
            output.append(slice, read);
        pclose(pipe);
    }
    return output;
}

std::string Crc(const std::string& bytes)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08lx",
                  crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
    return text;
}

// The PNG with the compressed pixels of its first data chunk scrambled, and that chunk's
// CRC made right again when `fixCrc` is set.
std::string DamagedIdat(std::string png, bool fixCrc)
{
    const std::size_t type = png.find("IDAT");
    EXPECT_NE(type, std::string::npos);
    const auto* bytes = reinterpret_cast<const unsigned char*>(png.data());
    const std::size_t length = std::size_t(bytes[type - 4]) << 24 | std::size_t(bytes[type - 3]) << 16 |
                               std::size_t(bytes[type - 2]) << 8 | bytes[type - 1];
    for (std::size_t i = 2; i < length; ++i)
        png[type + 4 + i] = static_cast<char>(0xff - i);
    if (fixCrc) {
        const auto crc = crc32(0, bytes + type, static_cast<uInt>(length + 4));
        for (int i = 0; i < 4; ++i)
            png[type + 4 + length + i] = static_cast<char>(crc >> (24 - 8 * i));
    }
    return png;
}

// Changes a saved package with libzip, as someone crafting a hostile one would.
class PackageEditor
{
public:
    explicit PackageEditor(const std::string& path) : m_archive(zip_open(path.c_str(), 0, nullptr))
    {
        EXPECT_NE(m_archive, nullptr) << path;
    }
    ~PackageEditor()
    {
        if (m_archive) {
            EXPECT_EQ(zip_close(m_archive), 0) << zip_strerror(m_archive);
        }
    }
    PackageEditor(const PackageEditor&) = delete;
    PackageEditor& operator=(const PackageEditor&) = delete;

    std::string Read(const std::string& name)
    {
        zip_stat_t info;
        if (zip_stat(m_archive, name.c_str(), 0, &info) != 0)
            return "";
        std::string bytes(info.size, '\0');
        zip_file_t* file = zip_fopen(m_archive, name.c_str(), 0);
        zip_fread(file, bytes.data(), bytes.size());
        zip_fclose(file);
        return bytes;
    }
    // Adds or replaces a file; `fixManifest` also gives the manifest its new size and CRC.
    void Put(const std::string& name, const std::string& bytes, bool fixManifest = false)
    {
        if (fixManifest)
            EditManifest([&](Json& manifest) {
                for (Json& entry : manifest["entries"])
                    for (const char* key : {"file", "pixels"})
                        if (entry.contains(key) && entry[key]["path"] == name) {
                            entry[key]["size"] = bytes.size();
                            entry[key]["crc32"] = Crc(bytes);
                        }
            });
        m_kept.push_back(std::make_unique<std::string>(bytes));
        zip_source_t* source = zip_source_buffer(m_archive, m_kept.back()->data(), bytes.size(), 0);
        EXPECT_GE(zip_file_add(m_archive, name.c_str(), source, ZIP_FL_OVERWRITE | ZIP_FL_ENC_RAW), 0);
    }
    void Remove(const std::string& name)
    {
        EXPECT_EQ(zip_delete(m_archive, zip_name_locate(m_archive, name.c_str(), 0)), 0);
    }
    void EditManifest(const std::function<void(Json&)>& edit)
    {
        Json manifest = Json::parse(Read("manifest.json"));
        edit(manifest);
        Put("manifest.json", manifest.dump(2));
    }

private:
    zip_t* m_archive;
    std::vector<std::unique_ptr<std::string>> m_kept; // buffers libzip reads at zip_close
};

// A container and stream that already hold a document, to show a failed load keeps them.
struct Holder
{
    QorResourceZPKContainer container;
    QorStreamer stream;
    Holder()
    {
        stream.SetResourceZPKContainer(&container);
        container.AddResource(stream, "earlier", "// earlier\n");
        int id = 0;
        stream.ReadInt(id, 0); // a reader part-way through
    }
    void ExpectUntouched() const
    {
        ASSERT_EQ(container.GetEntryCount(), 1);
        EXPECT_EQ(container.GetEntry(0)->name, QorString("earlier"));
        EXPECT_EQ(stream.GetBytes().size(), 4u);
        EXPECT_EQ(stream.GetRemainingSize(), 0u) << "its read position too";
        EXPECT_EQ(stream.GetResourceZPKContainer(), &container);
    }
};

// Loads `path` into a holder, expects a refusal that keeps the holder's document, and
// returns the message.
std::string Refusal(const std::string& path)
{
    Holder holder;
    std::string error;
    EXPECT_EQ(holder.container.LoadFromFile(path.c_str(), holder.stream, &error), -1) << path;
    holder.ExpectUntouched();
    EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << "the message names the package: " << error;
    return error;
}

// The sample document saved at `path` (a copy to damage, often).
std::string SavedCopy(const std::string& path)
{
    Document document;
    std::string error;
    EXPECT_EQ(document.container.SaveToFile(path.c_str(), document.stream, &error), 0) << error;
    return path;
}

void ExpectLoadsSample(const std::string& path)
{
    QorResourceZPKContainer loaded;
    QorStreamer stream;
    std::string error;
    ASSERT_EQ(loaded.LoadFromFile(path.c_str(), stream, &error), 0) << error;
    ExpectSampleDocument(loaded, stream);
}

} // namespace

TEST(QorResourcePackageTest, ASavedPackageIsAZipAPersonCanOpen)
{
    QorTempDir dir;
    const std::string path = SavedCopy(dir.File("doc.zpk"));
    EXPECT_EQ(QorFolderContent(dir.Path()), std::vector<std::string>{"doc.zpk"}) << "no temporary file is left";

    const std::string listing = CommandOutput("unzip -l '" + path + "'");
    for (const char* part : {"manifest.json", "stream.bin", "effects/0.cgfx", "effects/1.cgfx", "images/2.png",
                             "images/3.png", "images/4.png", "images/5.png", "images/6.png", "images/6.f32",
                             "images/7.png", "images/7.f32", "effects/8.cgfx", "13 files"})
        EXPECT_NE(listing.find(part), std::string::npos) << part << " in\n" << listing;
    EXPECT_EQ(CommandOutput("unzip -p '" + path + "' effects/0.cgfx"), kPlastic);

    const Json manifest = Json::parse(CommandOutput("unzip -p '" + path + "' manifest.json"));
    EXPECT_EQ(manifest["format"], "QorResourcePackage");
    EXPECT_EQ(manifest["version"], QorResourceZPKContainer::kPackageVersion);
    const Json& wood = manifest["entries"][2];
    EXPECT_EQ(wood["name"], "C:\\textures\\wood.png") << "names are kept as data";
    EXPECT_EQ(wood["kind"], "image");
    EXPECT_EQ(wood["pixelFormat"], "RGBA8");
    const std::string png = CommandOutput("unzip -p '" + path + "' images/2.png");
    EXPECT_EQ(wood["file"]["size"], png.size());
    EXPECT_EQ(wood["file"]["crc32"], Crc(png));
    EXPECT_EQ(manifest["entries"][5]["nameHex"], "636166e92e706e67") << "a name that is not UTF-8";

    // The PNG part is the image itself for any viewer.
    ImagePtr original = Image("C:\\textures\\wood.png", QorPixelRGBA8, 3, 2);
    ImagePtr viewed(QorTexturePixelImage::ReadFromFile(dir.Write("viewed.png", png).c_str(), "viewed"));
    ASSERT_NE(viewed, nullptr);
    EXPECT_EQ(std::memcmp(viewed->GetPixels(), original->GetPixels(), original->GetByteCount()), 0);
}

TEST(QorResourcePackageTest, LoadingGivesBackEveryEntryPixelAndStreamByte)
{
    QorTempDir dir;
    const std::string path = SavedCopy(dir.Path() + "\\doc.zpk"); // a framework path
    QorResourceZPKContainer loaded;
    QorStreamer stream;
    std::string error;
    ASSERT_EQ(loaded.LoadFromFile(path.c_str(), stream, &error), 0) << error;
    ExpectSampleDocument(loaded, stream);
    EXPECT_EQ(stream.GetResourceZPKContainer(), &loaded);

    // The stream reads back through the loaded container as the shaders' UnStream does.
    int number = 0;
    stream.ReadInt(number, 0);
    EXPECT_EQ(number, 42);
    QorResourceZPKContainer::EffectSource plastic, bare;
    ASSERT_TRUE(loaded.GetResourceShader(stream, plastic));
    EXPECT_EQ(plastic.source, kPlastic);
    ASSERT_TRUE(loaded.GetResourceShader(stream, bare));
    EXPECT_FALSE(bare.hasSource) << "an effect without source stays without";
    QorTexturePixelImage* wood = nullptr;
    EXPECT_EQ(loaded.GetResource(stream, wood), 1);
    ImagePtr woodHolder(wood);
    EXPECT_EQ(woodHolder->GetName(), QorString("C:\\textures\\wood.png"));

    // Loading replaces the entries; what was handed out before stays usable and the id
    // indexes follow the new entries.
    QorStreamer again;
    EXPECT_EQ(loaded.LoadFromFile(path.c_str(), again, nullptr), 0);
    EXPECT_EQ(plastic.name, "materials\\plastic.cgfx");
    EXPECT_EQ(woodHolder->GetWidth(), 3u);
    QorStreamer more;
    loaded.AddResource(more, "materials\\plastic.cgfx", kPlastic);
    loaded.AddResource(more, loaded.GetEntry(4)->image.get());
    EXPECT_EQ(more.GetBytes(), (std::vector<unsigned char>{0, 0, 0, 0, 4, 0, 0, 0})) << "ids 0 and 4";
    EXPECT_EQ(loaded.GetEntryCount(), 9);

    // The same bytes from memory load the same document.
    const std::string bytes = QorReadFile(dir.File("doc.zpk"));
    QorResourceZPKContainer fromMemory;
    QorStreamer memoryStream;
    ASSERT_EQ(fromMemory.LoadFromMemory(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                                        memoryStream, &error),
              0)
        << error;
    ExpectSampleDocument(fromMemory, memoryStream);
}

TEST(QorResourcePackageTest, ASecondProcessLoadsWhatTheFirstSaved)
{
    QorTempDir dir;
    const std::string path = SavedCopy(dir.File("shared.zpk"));
    char self[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    const std::string command = std::string(kChildVariable) + "='" + path + "' '" + self +
                                "' --gtest_filter=QorResourcePackageTest.DISABLED_SecondProcessSide"
                                " --gtest_also_run_disabled_tests";
    EXPECT_EQ(std::system(command.c_str()), 0) << "the second process found the document different";
    EXPECT_EQ(QorReadFile(path + ".verdict"), "equal") << "the second process ran its checks";
}

// Runs only as the second process of the case above.
TEST(QorResourcePackageTest, DISABLED_SecondProcessSide)
{
    const char* path = std::getenv(kChildVariable);
    ASSERT_NE(path, nullptr);
    ExpectLoadsSample(path);
    if (!::testing::Test::HasFailure())
        std::ofstream(std::string(path) + ".verdict") << "equal";
}

TEST(QorResourcePackageTest, MissingNonZipAndCutArchivesAreRefusedWithTheReason)
{
    QorTempDir dir;
    EXPECT_NE(Refusal(dir.File("absent.zpk")).find("cannot be opened as a zip archive"), std::string::npos);
    EXPECT_NE(Refusal(dir.Write("text.zpk", "plain text, no zip")).find("cannot be opened as a zip archive"),
              std::string::npos);

    // Every cut of a real package is refused, whatever part the cut falls in.
    const std::string whole = QorReadFile(SavedCopy(dir.File("whole.zpk")));
    for (std::size_t length = 0; length < whole.size(); length += 1 + length / 8) {
        Holder holder;
        std::string error;
        EXPECT_EQ(holder.container.LoadFromMemory(reinterpret_cast<const unsigned char*>(whole.data()), length,
                                                  holder.stream, &error),
                  -1)
            << length;
        holder.ExpectUntouched();
        EXPECT_EQ(error.rfind("package in memory: ", 0), 0u) << error;
    }
    Holder holder;
    EXPECT_EQ(holder.container.LoadFromMemory(nullptr, 12, holder.stream, nullptr), -1) << "no bytes, no message";
    holder.ExpectUntouched();
}

TEST(QorResourcePackageTest, ForeignNewerMissingExtraOrCorruptPartsAreRefusedAndTheContainerKept)
{
    QorTempDir dir;
    struct Damage
    {
        const char* what;
        std::function<void(PackageEditor&)> apply;
        const char* message;
    };
    const std::string notPng = "this text is not an image";
    const Damage damages[] = {
        {"a zip without manifest", [](PackageEditor& e) { e.Remove("manifest.json"); },
         "no manifest.json: not a Qor resource package"},
        {"another format's manifest",
         [](PackageEditor& e) { e.EditManifest([](Json& m) { m["format"] = "SomethingElse"; }); },
         "not a Qor resource package"},
        {"a newer version", [](PackageEditor& e) {
             e.EditManifest([](Json& m) {
                 m["version"] = 2;
                 m["entries"] = "laid out differently"; // nothing past the version is judged
             });
         }, "format version 2 is newer than this library reads (1)"},
        {"a missing effect", [](PackageEditor& e) { e.Remove("effects/0.cgfx"); },
         "\"effects/0.cgfx\", named by the manifest, is missing"},
        {"missing float pixels", [](PackageEditor& e) { e.Remove("images/6.f32"); }, "\"images/6.f32\", named by"},
        {"an extra file", [](PackageEditor& e) { e.Put("notes.txt", "hello"); },
         "\"notes.txt\" is not named by the manifest"},
        {"changed text, manifest kept", [](PackageEditor& e) { e.Put("effects/0.cgfx", std::string(kPlastic) + " "); },
         "\"effects/0.cgfx\" has 54 bytes where 53 are expected"},
        {"same size, other bytes",
         [](PackageEditor& e) { e.Put("stream.bin", e.Read("stream.bin").replace(0, 1, "x")); },
         "\"stream.bin\" has checksum"},
        {"a manifest of 1 MiB of \"[\"", [](PackageEditor& e) { e.Put("manifest.json", std::string(1 << 20, '[')); },
         "manifest: nested deeper than 16 levels"},
        {"a wrong checksum", [](PackageEditor& e) {
             e.EditManifest([](Json& m) { m["entries"][8]["file"]["crc32"] = "00000000"; });
         }, "\"effects/8.cgfx\" has checksum"},
        {"a checksum that is no number", [](PackageEditor& e) {
             e.EditManifest([](Json& m) { m["stream"]["crc32"] = "12345g78"; });
         }, "manifest: stream: \"crc32\" is not 8 hexadecimal digits"},
        {"a text where a PNG belongs", [&](PackageEditor& e) { e.Put("images/2.png", notPng, true); },
         "\"images/2.png\" is not a PNG image"},
        {"a PNG of another size", [](PackageEditor& e) { e.Put("images/2.png", e.Read("images/3.png"), true); },
         "\"images/2.png\" is 4 x 2 where the manifest says 3 x 2"},
        {"a PNG of other channels", [](PackageEditor& e) {
             e.EditManifest([](Json& m) { m["entries"][3]["pixelFormat"] = "RGB8"; });
         }, "\"images/3.png\" is not an 8-bit PNG of 3 channels"},
        {"a PNG cut short", [](PackageEditor& e) { e.Put("images/2.png", e.Read("images/2.png").substr(0, 60), true); },
         "\"images/2.png\" is not a PNG image (cut short)"},
        {"a PNG chunk with a wrong CRC",
         [](PackageEditor& e) { e.Put("images/2.png", DamagedIdat(e.Read("images/2.png"), false), true); },
         "\"images/2.png\" is not a PNG image (a chunk's CRC is wrong)"},
        {"PNG pixels that do not inflate",
         [](PackageEditor& e) { e.Put("images/2.png", DamagedIdat(e.Read("images/2.png"), true), true); },
         "\"images/2.png\" is not a PNG image that can be decoded"},
        {"a path of the manifest's choosing", [](PackageEditor& e) {
             e.EditManifest([](Json& m) { m["entries"][0]["file"]["path"] = "../effects/0.cgfx"; });
         }, "manifest: entry 0 file: path \"../effects/0.cgfx\" is not \"effects/0.cgfx\""},
        {"ids out of order", [](PackageEditor& e) { e.EditManifest([](Json& m) { m["entries"][1]["id"] = 0; }); },
         "manifest: entry 1: id 0 is not its position in the list"},
        {"an unknown kind",
         [](PackageEditor& e) { e.EditManifest([](Json& m) { m["entries"][1]["kind"] = "sound"; }); },
         "manifest: entry 1: unknown kind \"sound\""},
        {"a huge image", [](PackageEditor& e) {
             e.EditManifest([](Json& m) { m["entries"][2]["width"] = 1 << 30; });
         }, "manifest: entry 2: an image of 1073741824 x 2 is empty or too large"},
        {"a negative size", [](PackageEditor& e) { e.EditManifest([](Json& m) { m["stream"]["size"] = -1; }); },
         "\"size\" is not a whole number"},
        {"a manifest that is no JSON", [](PackageEditor& e) { e.Put("manifest.json", "{\"format\": "); },
         "manifest: not a JSON object"},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.what);
        const std::string path = SavedCopy(dir.File("damaged.zpk"));
        {
            PackageEditor editor(path);
            damage.apply(editor);
        }
        const std::string error = Refusal(path);
        EXPECT_NE(error.find(damage.message), std::string::npos) << error;
    }

    // A flipped byte inside the stored PNG data: the archive's own CRC catches it.
    const std::string path = SavedCopy(dir.File("flipped.zpk"));
    std::string bytes = QorReadFile(path);
    const std::size_t png = bytes.find("\x89PNG");
    ASSERT_NE(png, std::string::npos);
    bytes[png + 40] = static_cast<char>(bytes[png + 40] ^ 0x55);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    EXPECT_NE(Refusal(path).find("\"images/2.png\" cannot be read"), std::string::npos);
}

TEST(QorResourcePackageTest, ResourceNamesAreDataAndNothingIsWrittenOutsideTheCallersFolders)
{
    QorTempDir root;
    const std::string temp = root.File("tmp");
    std::filesystem::create_directories(temp);
    const std::string work = root.File("work/deeper");
    std::filesystem::create_directories(work);
    QorScopedEnv privateTemp("TMPDIR", temp.c_str()); // where the loader decodes its PNGs

    // Zip-slip names beside a genuine package are refused, never extracted.
    for (const char* name : {"../escaped.txt", "/tmp/absolute.txt", "..\\..\\escaped.txt", "C:/drive.txt"}) {
        SCOPED_TRACE(name);
        const std::string copy = SavedCopy(root.File("work/deeper/slip.zpk"));
        PackageEditor(copy).Put(name, "payload");
        EXPECT_NE(Refusal(copy).find(std::string("\"") + name + "\" is not named by the manifest"),
                  std::string::npos);
        EXPECT_EQ(QorFolderContent(temp), std::vector<std::string>{}) << "the private folder is gone";
    }
    EXPECT_EQ(QorFolderContent(root.Path()),
              (std::vector<std::string>{"tmp", "work", "work/deeper", "work/deeper/slip.zpk"}));
    EXPECT_EQ(QorFileAccess("/tmp/absolute.txt", 0), -1);

    // Names that end in no file name cannot be saved, and a crafted one cannot be loaded:
    // readers cache images by that last part.
    for (const char* name : {"..", "textures/..", "C:\\textures\\.", "folder/", ""}) {
        SCOPED_TRACE(name);
        QorResourceZPKContainer container;
        QorStreamer stream;
        container.AddResource(stream, Image(name, QorPixelRGB8, 1, 1).get());
        std::string error;
        EXPECT_EQ(container.SaveToFile((work + "/never.zpk").c_str(), stream, &error), -1);
        EXPECT_NE(error.find("does not end in a file name"), std::string::npos) << error;
        EXPECT_EQ(QorFileAccess((work + "/never.zpk").c_str(), 0), -1);

        const std::string crafted = SavedCopy(root.File("crafted.zpk"));
        PackageEditor(crafted).EditManifest([name](Json& manifest) { manifest["entries"][2]["name"] = name; });
        EXPECT_NE(Refusal(crafted).find("manifest: entry 2: the image name"), std::string::npos);
    }
    const std::string nul = SavedCopy(root.File("nul.zpk"));
    PackageEditor(nul).EditManifest([](Json& manifest) { manifest["entries"][0]["name"] = std::string("a\0b", 3); });
    EXPECT_NE(Refusal(nul).find("manifest: entry 0: the name holds a NUL character"), std::string::npos);
    EXPECT_EQ(QorFolderContent(temp), std::vector<std::string>{});
}

TEST(QorResourcePackageTest, AFailedSaveLeavesNoFileAndKeepsTheOldOne)
{
    QorTempDir dir;
    const std::string old = dir.Write("doc.zpk", "the previous document");
    QorResourceZPKContainer container;
    QorStreamer stream;
    container.AddResource(stream, "fine", "// fine\n");
    container.AddResource(stream, Image("textures/", QorPixelRGB8, 1, 1).get());
    std::string error;
    EXPECT_EQ(container.SaveToFile(old.c_str(), stream, &error), -1);
    EXPECT_EQ(error.rfind(old + ": image entry 1", 0), 0u) << error;
    EXPECT_EQ(QorReadFile(old), "the previous document");

    Document good;
    QorStreamer& goodStream = good.stream;
    EXPECT_EQ(good.container.SaveToFile(dir.File("missing/folder/doc.zpk").c_str(), goodStream, &error), -1);
    EXPECT_NE(error.find("missing/folder/doc.zpk: cannot be"), std::string::npos) << error;
    std::filesystem::create_directories(dir.File("a-folder"));
    EXPECT_EQ(good.container.SaveToFile(dir.File("a-folder").c_str(), goodStream, &error), -1);
    EXPECT_EQ(good.container.SaveToFile(nullptr, goodStream, &error), -1);
    EXPECT_EQ(error, "(no path): no package path given");
    EXPECT_EQ(QorFolderContent(dir.Path()), (std::vector<std::string>{"a-folder", "doc.zpk"}));

    // A good save replaces the old file whole.
    ASSERT_EQ(good.container.SaveToFile(old.c_str(), goodStream, &error), 0) << error;
    ExpectLoadsSample(old);
    EXPECT_EQ(QorFolderContent(dir.Path()), (std::vector<std::string>{"a-folder", "doc.zpk"}));
}

TEST(QorResourcePackageTest, TheFuzzSeedsAreLoadablePackagesOfThisVersion)
{
    const std::string seeds = std::string(QOR_SAMPLES_DIR) + "/../fuzz/seeds/QorResourcePackageFuzz";
    int count = 0;
    for (const auto& seed : std::filesystem::directory_iterator(seeds)) {
        SCOPED_TRACE(seed.path().string());
        QorResourceZPKContainer container;
        QorStreamer stream;
        std::string error;
        EXPECT_EQ(container.LoadFromFile(seed.path().c_str(), stream, &error), 0) << error;
        ++count;
    }
    EXPECT_GE(count, 3) << "the fuzzer starts from real packages";
}

#include "QorPackageManifest_p.h"

#include "QorSystem/QorPaths.h"

#include <nlohmann/json.hpp>

#include <climits>
#include <cstdio>
#include <utility>

namespace {

// Insertion order is kept so the manifest reads in the order a person expects.
using Json = nlohmann::ordered_json;

const char* const kFormatName = "QorResourcePackage";

struct FormatWord
{
    QorPixelImageFormat format;
    const char* word;
};

const FormatWord kPixelFormats[] = {
    {QorPixelLuminance8, "L8"},    {QorPixelLuminanceAlpha8, "LA8"}, {QorPixelRGB8, "RGB8"},
    {QorPixelRGBA8, "RGBA8"},      {QorPixelRGBAFloat, "RGBAF32"},   {QorPixelRGBFloat, "RGBF32"},
};

const char* WordOf(QorPixelImageFormat format)
{
    for (const FormatWord& entry : kPixelFormats)
        if (entry.format == format)
            return entry.word;
    return "";
}

bool FormatOf(const std::string& word, QorPixelImageFormat& format)
{
    for (const FormatWord& entry : kPixelFormats)
        if (word == entry.word) {
            format = entry.format;
            return true;
        }
    return false;
}

std::string Hex(const std::string& bytes)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

bool FromHex(const std::string& text, std::string& bytes)
{
    if (text.size() % 2)
        return false;
    bytes.clear();
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = HexDigit(text[i]);
        const int low = HexDigit(text[i + 1]);
        if (high < 0 || low < 0)
            return false;
        bytes += static_cast<char>(high * 16 + low);
    }
    return true;
}

// JSON strings are UTF-8; a name that is not goes as "nameHex" so its bytes come back
// exactly.
bool IsUtf8(const std::string& text)
{
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

// Whether arrays and objects nest deeper than `limit` anywhere in the JSON text. Counted
// before parsing, since the parser's memory and time grow with the nesting: 16 MiB of
// "[" would take it over a gigabyte.
bool NestsDeeperThan(const std::string& text, int limit)
{
    int depth = 0;
    bool inString = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (inString) {
            if (c == '\\')
                ++at;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > limit)
                return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

Json FileJson(const QorPackageFile& file)
{
    char crc[9];
    std::snprintf(crc, sizeof crc, "%08x", static_cast<unsigned>(file.crc32));
    return Json{{"path", file.path}, {"size", file.size}, {"crc32", crc}};
}

// One bounded reading of the parsed manifest: every accessor checks the type first, so
// nothing here throws for bad input, and the first problem is kept as the error.
class Reader
{
public:
    explicit Reader(std::string& error) : m_error(error) {}

    bool Fail(const std::string& where, const std::string& what)
    {
        m_error = "manifest: " + where + (where.empty() ? "" : ": ") + what;
        return false;
    }

    const Json* Member(const Json& object, const char* key, const std::string& where)
    {
        const auto found = object.find(key);
        if (found == object.end()) {
            Fail(where, std::string("\"") + key + "\" is missing");
            return nullptr;
        }
        return &*found;
    }

    bool Unsigned(const Json& object, const char* key, std::uint64_t max, const std::string& where,
                  std::uint64_t& value)
    {
        const Json* member = Member(object, key, where);
        if (!member)
            return false;
        // The parser keeps non-negative integers unsigned; negatives and fractions are not.
        if (!member->is_number_unsigned() || member->get<std::uint64_t>() > max)
            return Fail(where, std::string("\"") + key + "\" is not a whole number from 0 to " + std::to_string(max));
        value = member->get<std::uint64_t>();
        return true;
    }

    bool String(const Json& object, const char* key, const std::string& where, std::string& value)
    {
        const Json* member = Member(object, key, where);
        if (!member)
            return false;
        if (!member->is_string())
            return Fail(where, std::string("\"") + key + "\" is not a string");
        value = member->get_ref<const std::string&>();
        return true;
    }

    bool File(const Json& object, const char* key, const std::string& expectedPath, const std::string& where,
              QorPackageFile& file)
    {
        const Json* member = Member(object, key, where);
        if (!member)
            return false;
        const std::string here = where + (where.empty() ? "" : " ") + key;
        if (!member->is_object())
            return Fail(here, "not an object");
        std::string crc;
        if (!String(*member, "path", here, file.path) ||
            !Unsigned(*member, "size", QorPackageManifest::kMaxTotalBytes, here, file.size) ||
            !String(*member, "crc32", here, crc))
            return false;
        // Paths are ours, fixed by kind and id: a package cannot point a resource at any
        // other file of the archive.
        if (file.path != expectedPath)
            return Fail(here, "path \"" + file.path + "\" is not \"" + expectedPath + "\"");
        if (crc.size() != 8)
            return Fail(here, "\"crc32\" is not 8 hexadecimal digits");
        file.crc32 = 0;
        for (char c : crc) {
            const int digit = HexDigit(c);
            if (digit < 0)
                return Fail(here, "\"crc32\" is not 8 hexadecimal digits");
            file.crc32 = file.crc32 * 16 + static_cast<std::uint32_t>(digit);
        }
        return true;
    }

    bool Name(const Json& object, const std::string& where, std::string& name)
    {
        const bool plain = object.contains("name");
        if (plain == object.contains("nameHex"))
            return Fail(where, "needs exactly one of \"name\" and \"nameHex\"");
        std::string text;
        if (!String(object, plain ? "name" : "nameHex", where, text))
            return false;
        if (plain)
            name = std::move(text);
        else if (!FromHex(text, name))
            return Fail(where, "\"nameHex\" is not lower-case hexadecimal bytes");
        if (name.find('\0') != std::string::npos)
            return Fail(where, "the name holds a NUL character");
        return true;
    }

private:
    std::string& m_error;
};

} // namespace

bool QorPackageManifest::IsUsableImageName(const std::string& name)
{
    if (name.find('\0') != std::string::npos)
        return false;
    // The same split the parameter streaming uses to name the cached file.
    QorString directory;
    QorString file;
    QorSplitPath(name.c_str(), directory, file);
    return !file.IsEmpty() && file != QorString(".") && file != QorString("..");
}

std::uint64_t QorPackageManifest::PixelBytes(QorPixelImageFormat format, unsigned width, unsigned height)
{
    const unsigned channels = QorTexturePixelImage::GetChannelCount(format);
    const std::uint64_t pixelSize = channels * (QorTexturePixelImage::IsFloatFormat(format) ? sizeof(float) : 1);
    if (!channels || width == 0 || height == 0 || width > INT_MAX || height > INT_MAX)
        return 0;
    // Both factors are below 2^31, so the product cannot overflow 64 bits.
    const std::uint64_t pixels = std::uint64_t(width) * height;
    if (pixels > kMaxTotalBytes / pixelSize)
        return 0;
    return pixels * pixelSize;
}

std::string QorPackageManifest::Write() const
{
    Json list = Json::array();
    for (const QorPackageManifestEntry& entry : entries) {
        Json item;
        item["id"] = entry.id;
        const bool image = entry.kind == QorResourceZPKContainer::QorImageEntry;
        item["kind"] = image ? "image" : "effect";
        if (IsUtf8(entry.name))
            item["name"] = entry.name;
        else
            item["nameHex"] = Hex(entry.name);
        if (image) {
            item["pixelFormat"] = WordOf(entry.format);
            item["width"] = entry.width;
            item["height"] = entry.height;
        } else {
            item["hasSource"] = entry.hasSource;
        }
        item["file"] = FileJson(entry.file);
        if (entry.hasPixels)
            item["pixels"] = FileJson(entry.pixels);
        list.push_back(std::move(item));
    }
    Json root;
    root["format"] = kFormatName;
    root["version"] = version;
    root["stream"] = FileJson(stream);
    root["entries"] = std::move(list);
    return root.dump(2) + "\n";
}

bool QorPackageManifest::Read(const std::string& text, std::string& error)
{
    try {
        Reader reader(error);
        if (NestsDeeperThan(text, kMaxNesting))
            return reader.Fail("", "nested deeper than " + std::to_string(kMaxNesting) + " levels");
        const Json root = Json::parse(text, nullptr, false);
        if (root.is_discarded() || !root.is_object())
            return reader.Fail("", "not a JSON object");
        const auto format = root.find("format");
        if (format == root.end() || !format->is_string() || format->get_ref<const std::string&>() != kFormatName)
            return reader.Fail("", std::string("\"format\" is not \"") + kFormatName +
                                       "\": not a Qor resource package");
        std::uint64_t number = 0;
        if (!reader.Unsigned(root, "version", UINT32_MAX, "", number))
            return false;
        if (number == 0)
            return reader.Fail("", "format version 0 is not valid");
        if (number > static_cast<std::uint64_t>(QorResourceZPKContainer::kPackageVersion))
            return reader.Fail("", "format version " + std::to_string(number) +
                                       " is newer than this library reads (" +
                                       std::to_string(QorResourceZPKContainer::kPackageVersion) + ")");
        version = static_cast<int>(number);
        if (!reader.File(root, "stream", StreamPath(), "", stream))
            return false;
        const Json* list = reader.Member(root, "entries", "");
        if (!list)
            return false;
        if (!list->is_array() || list->size() > kMaxEntries)
            return reader.Fail("", "\"entries\" is not a list of at most " + std::to_string(kMaxEntries) + " entries");

        std::vector<QorPackageManifestEntry> read;
        read.reserve(list->size());
        std::uint64_t total = stream.size;
        for (std::size_t position = 0; position < list->size(); ++position) {
            const Json& item = (*list)[position];
            const std::string where = "entry " + std::to_string(position);
            if (!item.is_object())
                return reader.Fail(where, "not an object");
            QorPackageManifestEntry entry;
            std::string kind;
            if (!reader.Unsigned(item, "id", kMaxEntries, where, number) || !reader.String(item, "kind", where, kind) ||
                !reader.Name(item, where, entry.name))
                return false;
            if (number != position)
                return reader.Fail(where, "id " + std::to_string(number) + " is not its position in the list");
            entry.id = static_cast<int>(position);
            if (kind == "effect") {
                entry.kind = QorResourceZPKContainer::QorEffectEntry;
                const Json* hasSource = reader.Member(item, "hasSource", where);
                if (!hasSource)
                    return false;
                if (!hasSource->is_boolean())
                    return reader.Fail(where, "\"hasSource\" is not true or false");
                entry.hasSource = hasSource->get<bool>();
                if (!reader.File(item, "file", EffectPath(entry.id), where, entry.file))
                    return false;
                if (!entry.hasSource && entry.file.size != 0)
                    return reader.Fail(where, "an effect without source has a non-empty file");
                total += entry.file.size;
            } else if (kind == "image") {
                entry.kind = QorResourceZPKContainer::QorImageEntry;
                if (!IsUsableImageName(entry.name))
                    return reader.Fail(where, "the image name \"" + entry.name + "\" does not end in a file name");
                std::string word;
                std::uint64_t width = 0;
                std::uint64_t height = 0;
                if (!reader.String(item, "pixelFormat", where, word) ||
                    !reader.Unsigned(item, "width", INT_MAX, where, width) ||
                    !reader.Unsigned(item, "height", INT_MAX, where, height))
                    return false;
                if (!FormatOf(word, entry.format))
                    return reader.Fail(where, "unknown pixel format \"" + word + "\"");
                entry.width = static_cast<unsigned>(width);
                entry.height = static_cast<unsigned>(height);
                const std::uint64_t pixelBytes = PixelBytes(entry.format, entry.width, entry.height);
                if (!pixelBytes)
                    return reader.Fail(where, "an image of " + std::to_string(width) + " x " + std::to_string(height) +
                                                  " is empty or too large");
                if (!reader.File(item, "file", ImagePath(entry.id), where, entry.file))
                    return false;
                entry.hasPixels = QorTexturePixelImage::IsFloatFormat(entry.format);
                if (entry.hasPixels != item.contains("pixels"))
                    return reader.Fail(where, entry.hasPixels ? "\"pixels\" is missing for a floating-point image"
                                                              : "\"pixels\" is only for floating-point images");
                if (entry.hasPixels) {
                    if (!reader.File(item, "pixels", PixelsPath(entry.id), where, entry.pixels))
                        return false;
                    if (entry.pixels.size != pixelBytes)
                        return reader.Fail(where, "\"pixels\" has " + std::to_string(entry.pixels.size) +
                                                      " bytes where the image needs " + std::to_string(pixelBytes));
                    total += entry.pixels.size;
                }
                total += entry.file.size + pixelBytes;
            } else {
                return reader.Fail(where, "unknown kind \"" + kind + "\"");
            }
            // Each term is at most kMaxTotalBytes, so the sum cannot wrap before this test.
            if (total > kMaxTotalBytes)
                return reader.Fail(where, "the package needs more than " + std::to_string(kMaxTotalBytes) +
                                              " bytes of files and pixels");
            read.push_back(std::move(entry));
        }
        entries = std::move(read);
        return true;
    } catch (...) {
        // Out of memory while reading: refused like any other bad manifest.
        error = "manifest: cannot be read (out of memory)";
        return false;
    }
}

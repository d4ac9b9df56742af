// The ".zpk" document of the resource container: one zip archive (libzip) holding the
// manifest, the stream's bytes, each effect as a text file and each image as a PNG.
#include "QorVisFoundation/QorResourceZPKContainer.h"

#include "QorPackageManifest_p.h"
#include "QorSystem/QorFiles.h"
#include "QorVisFoundation/QorStreamer.h"

#include <zip.h>
#include <zlib.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace {

using Entry = QorResourceZPKContainer::Entry;

// Read in slices so that memory follows the bytes actually inflated, not what a header
// claims.
const std::uint64_t kReadSlice = 1u << 20;

struct ZipDiscarder
{
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
// An open archive; dropping it discards every change. A save calls zip_close, which frees
// the archive on success only.
using ZipArchive = std::unique_ptr<zip_t, ZipDiscarder>;

struct ZipFileCloser
{
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using ZipFile = std::unique_ptr<zip_file_t, ZipFileCloser>;

std::uint32_t Crc32(const void* data, std::size_t size)
{
    return static_cast<std::uint32_t>(crc32_z(crc32_z(0, nullptr, 0), static_cast<const Bytef*>(data), size));
}

std::string Hex8(std::uint32_t value)
{
    char text[9];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(value));
    return text;
}

struct ZipSourceFreer
{
    void operator()(zip_source_t* source) const { zip_source_free(source); }
};
using ZipSource = std::unique_ptr<zip_source_t, ZipSourceFreer>;

// ---- Saving ----

// The files of one package, kept alive until zip_close has read them.
struct PackageFiles
{
    QorPackageManifest manifest;
    std::deque<std::string> owned; // PNG files and float pixels made for the package
    struct Item
    {
        std::string path;
        const void* data;
        std::size_t size;
        bool compress;
    };
    std::vector<Item> items;

    QorPackageFile Add(const std::string& path, const void* data, std::size_t size, bool compress)
    {
        items.push_back({path, data, size, compress});
        return {path, size, Crc32(data, size)};
    }
};

bool DescribeImage(const Entry& entry, PackageFiles& files, QorPackageManifestEntry& item, std::string& error)
{
    const QorTexturePixelImage* image = entry.image.get();
    if (!image) {
        error = "image entry " + std::to_string(entry.id) + " holds no image";
        return false;
    }
    if (!QorPackageManifest::IsUsableImageName(entry.name.str())) {
        error = "image entry " + std::to_string(entry.id) + ": the name \"" + entry.name.str() +
                "\" does not end in a file name";
        return false;
    }
    item.format = image->GetPixelFormat();
    item.width = image->GetWidth();
    item.height = image->GetHeight();
    if (!QorPackageManifest::PixelBytes(item.format, item.width, item.height)) {
        error = "image entry " + std::to_string(entry.id) + " is too large for a package";
        return false;
    }
    // The PNG is encoded in memory; a floating-point image gets a viewable 8-bit PNG and
    // its exact values beside it.
    files.owned.emplace_back();
    if (!image->Encode("PNG", files.owned.back())) {
        error = "image entry " + std::to_string(entry.id) + " cannot be written as a PNG";
        return false;
    }
    const std::string& pngBytes = files.owned.back();
    item.file = files.Add(QorPackageManifest::ImagePath(entry.id), pngBytes.data(), pngBytes.size(), false);
    if (image->IsFloatFormat()) {
        QorStreamer floats;
        floats.WriteFloat(reinterpret_cast<const float*>(image->GetFloatPixels()),
                          static_cast<int>(image->GetByteCount() / sizeof(float)));
        if (floats.IsFailed()) {
            error = "out of memory";
            return false;
        }
        files.owned.emplace_back(floats.GetBytes().begin(), floats.GetBytes().end());
        const std::string& pixels = files.owned.back();
        item.hasPixels = true;
        item.pixels = files.Add(QorPackageManifest::PixelsPath(entry.id), pixels.data(), pixels.size(), true);
    }
    return true;
}

bool DescribePackage(const QorResourceZPKContainer& container, const QorStreamer& stream, PackageFiles& files,
                     std::string& error)
{
    const std::vector<unsigned char>& bytes = stream.GetBytes();
    files.manifest.stream = files.Add(QorPackageManifest::StreamPath(), bytes.data(), bytes.size(), true);
    for (int id = 0; id < container.GetEntryCount(); ++id) {
        const Entry& entry = *container.GetEntry(id);
        QorPackageManifestEntry item;
        item.id = id;
        item.kind = entry.kind;
        item.name = entry.name.str();
        if (item.name.find('\0') != std::string::npos) {
            error = "entry " + std::to_string(id) + ": the name holds a NUL character";
            return false;
        }
        if (entry.kind == QorResourceZPKContainer::QorImageEntry) {
            if (!DescribeImage(entry, files, item, error))
                return false;
        } else {
            item.hasSource = entry.hasSource;
            const std::size_t size = entry.hasSource ? entry.source.size() : 0;
            item.file = files.Add(QorPackageManifest::EffectPath(id), entry.source.data(), size, true);
        }
        files.manifest.entries.push_back(std::move(item));
    }
    files.owned.push_back(files.manifest.Write());
    const std::string& manifest = files.owned.back();
    // The loader's own checks (limits, names, sizes): no package it would refuse is written.
    QorPackageManifest check;
    if (!check.Read(manifest, error))
        return false;
    files.Add(QorPackageManifest::kPath, manifest.data(), manifest.size(), true);
    // The manifest opens the archive, so a listing starts with what describes the rest.
    std::rotate(files.items.begin(), files.items.end() - 1, files.items.end());
    return true;
}

bool AddToArchive(zip_t* archive, const PackageFiles::Item& item, std::string& error)
{
    // The buffers belong to PackageFiles, which outlives zip_close: libzip must not free them.
    zip_source_t* source = zip_source_buffer(archive, item.data, item.size, 0);
    const zip_int64_t index = source ? zip_file_add(archive, item.path.c_str(), source, ZIP_FL_ENC_UTF_8) : -1;
    if (index < 0) {
        if (source)
            zip_source_free(source);
        error = item.path + ": " + zip_strerror(archive);
        return false;
    }
    // PNG data is compressed already.
    if (!item.compress && zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0) != 0) {
        error = item.path + ": " + zip_strerror(archive);
        return false;
    }
    return true;
}

// The archive of the package's files, made in memory: nothing reaches the disk before
// the whole package is known to be good.
bool WriteArchive(const PackageFiles& files, std::string& bytes, std::string& error)
{
    zip_error_t failure;
    zip_error_init(&failure);
    ZipSource source(zip_source_buffer_create(nullptr, 0, 0, &failure));
    ZipArchive archive(source ? zip_open_from_source(source.get(), ZIP_TRUNCATE, &failure) : nullptr);
    zip_error_fini(&failure);
    if (!archive) {
        error = "cannot make an archive in memory";
        return false;
    }
    // The archive takes the source over; one more reference keeps it for reading back.
    zip_source_keep(source.get());
    for (const PackageFiles::Item& item : files.items)
        if (!AddToArchive(archive.get(), item, error))
            return false;
    if (zip_close(archive.get()) != 0) {
        error = std::string("cannot be written: ") + zip_strerror(archive.get());
        return false;
    }
    archive.release(); // zip_close freed it
    zip_stat_t info;
    zip_stat_init(&info);
    if (zip_source_stat(source.get(), &info) != 0 || !(info.valid & ZIP_STAT_SIZE) ||
        zip_source_open(source.get()) != 0) {
        error = "cannot read the archive made in memory";
        return false;
    }
    bytes.resize(info.size);
    const zip_int64_t read = zip_source_read(source.get(), bytes.data(), bytes.size());
    zip_source_close(source.get());
    if (read < 0 || static_cast<zip_uint64_t>(read) != info.size) {
        error = "cannot read the archive made in memory";
        return false;
    }
    return true;
}

// ---- Loading ----

// What a package held once every check has passed.
struct LoadedPackage
{
    std::vector<Entry> entries;
    std::vector<unsigned char> stream;
};

class PackageReader
{
public:
    PackageReader(zip_t* archive, std::string& error) : m_archive(archive), m_error(error) {}

    bool Read(LoadedPackage& package)
    {
        if (!IndexArchive())
            return false;
        std::string manifestText;
        const auto manifestIndex = m_indexes.find(QorPackageManifest::kPath);
        if (manifestIndex == m_indexes.end())
            return Fail(std::string("no ") + QorPackageManifest::kPath + ": not a Qor resource package");
        if (!ReadIndex(manifestIndex->second, QorPackageManifest::kPath, QorPackageManifest::kMaxBytes, true,
                       manifestText))
            return false;
        QorPackageManifest manifest;
        if (!manifest.Read(manifestText, m_error) || !CheckFileList(manifest))
            return false;

        if (!ReadChecked(manifest.stream, package.stream))
            return false;
        package.entries.reserve(manifest.entries.size());
        for (const QorPackageManifestEntry& item : manifest.entries) {
            Entry entry;
            entry.id = item.id;
            entry.kind = item.kind;
            entry.name = QorString(item.name);
            if (item.kind == QorResourceZPKContainer::QorEffectEntry) {
                if (!ReadChecked(item.file, entry.source))
                    return false;
                entry.hasSource = item.hasSource;
            } else if (!ReadImage(item, entry)) {
                return false;
            }
            package.entries.push_back(std::move(entry));
        }
        return true;
    }

private:
    bool Fail(const std::string& what)
    {
        m_error = what;
        return false;
    }

    // Every name of the archive, each once.
    bool IndexArchive()
    {
        const zip_int64_t count = zip_get_num_entries(m_archive, 0);
        // Each entry has at most two files, plus the manifest and the stream.
        if (count < 0 || static_cast<std::uint64_t>(count) > 2 * QorPackageManifest::kMaxEntries + 2)
            return Fail("the archive holds too many files for a package");
        for (zip_int64_t index = 0; index < count; ++index) {
            const char* name = zip_get_name(m_archive, static_cast<zip_uint64_t>(index), ZIP_FL_ENC_RAW);
            if (!name)
                return Fail(std::string("the archive's directory cannot be read: ") + zip_strerror(m_archive));
            if (!m_indexes.emplace(name, static_cast<zip_uint64_t>(index)).second)
                return Fail(std::string("the archive holds \"") + name + "\" twice");
        }
        return true;
    }

    // The archive holds exactly the manifest's files: nothing missing, nothing more.
    bool CheckFileList(const QorPackageManifest& manifest)
    {
        std::set<std::string> expected{QorPackageManifest::kPath, manifest.stream.path};
        for (const QorPackageManifestEntry& item : manifest.entries) {
            expected.insert(item.file.path);
            if (item.hasPixels)
                expected.insert(item.pixels.path);
        }
        for (const std::string& file : expected)
            if (!m_indexes.count(file))
                return Fail("\"" + file + "\", named by the manifest, is missing");
        for (const auto& name : m_indexes)
            if (!expected.count(name.first))
                return Fail("\"" + name.first + "\" is not named by the manifest");
        return true;
    }

    // Reads a whole entry of at most `limit` bytes, or of exactly `limit` unless `atMost`.
    template <class Bytes>
    bool ReadIndex(zip_uint64_t index, const std::string& path, std::uint64_t limit, bool atMost, Bytes& bytes)
    {
        zip_stat_t info;
        zip_stat_init(&info);
        if (zip_stat_index(m_archive, index, 0, &info) != 0 || !(info.valid & ZIP_STAT_SIZE))
            return Fail("\"" + path + "\" cannot be read: " + zip_strerror(m_archive));
        if (atMost ? info.size > limit : info.size != limit)
            return Fail("\"" + path + "\" has " + std::to_string(info.size) + " bytes where " +
                        (atMost ? "at most " : "") + std::to_string(limit) + " are expected");
        ZipFile file(zip_fopen_index(m_archive, index, 0));
        if (!file)
            return Fail("\"" + path + "\" cannot be opened: " + zip_strerror(m_archive));
        bytes.clear();
        const std::uint64_t expected = info.size;
        // One byte more than expected is asked for, so data longer than its header says is seen.
        while (bytes.size() <= expected) {
            const std::uint64_t want = std::min<std::uint64_t>(kReadSlice, expected + 1 - bytes.size());
            const std::size_t old = bytes.size();
            bytes.resize(old + want);
            const zip_int64_t got = zip_fread(file.get(), &bytes[old], want);
            if (got < 0)
                return Fail("\"" + path + "\" cannot be read: " + zip_file_strerror(file.get()));
            bytes.resize(old + static_cast<std::size_t>(got));
            if (got == 0)
                break;
        }
        if (bytes.size() != expected)
            return Fail("\"" + path + "\" holds " + (bytes.size() > expected ? "more" : "fewer") +
                        " bytes than its header says");
        return true;
    }

    template <class Bytes>
    bool ReadChecked(const QorPackageFile& file, Bytes& bytes)
    {
        if (!ReadIndex(m_indexes.at(file.path), file.path, file.size, false, bytes))
            return false;
        const std::uint32_t crc = Crc32(bytes.data(), bytes.size());
        if (crc != file.crc32)
            return Fail("\"" + file.path + "\" has checksum " + Hex8(crc) + " where the manifest says " +
                        Hex8(file.crc32));
        return true;
    }

    bool ReadImage(const QorPackageManifestEntry& item, Entry& entry)
    {
        std::string png;
        if (!ReadChecked(item.file, png) || !CheckPngStructure(item, png))
            return false;
        QorTexturePixelImage::Ptr image;
        if (item.hasPixels) {
            // Exact values from the raw pixels; the PNG is only the viewable copy.
            std::string raw;
            if (!ReadChecked(item.pixels, raw))
                return false;
            image.reset(QorTexturePixelImage::Create(entry.name, item.format, item.width, item.height));
            if (!image)
                return Fail("\"" + item.file.path + "\": out of memory for its pixels");
            QorStreamer floats(reinterpret_cast<const unsigned char*>(raw.data()), raw.size());
            floats.ReadFloat(reinterpret_cast<float*>(image->GetFloatPixels()),
                             static_cast<int>(image->GetByteCount() / sizeof(float)));
            if (floats.IsFailed())
                return Fail("\"" + item.pixels.path + "\" cannot be read");
        } else {
            image.reset(QorTexturePixelImage::ReadFromMemory(png.data(), png.size(), "PNG", entry.name));
            if (!image)
                return Fail("\"" + item.file.path + "\" is not a PNG image that can be decoded");
            if (image->GetPixelFormat() != item.format || image->GetWidth() != item.width ||
                image->GetHeight() != item.height)
                return Fail("\"" + item.file.path + "\" does not decode to the manifest's image");
        }
        entry.image = std::move(image);
        return true;
    }

    // The PNG's chunks must be whole, with their CRCs right, and its header must agree
    // with the manifest before any decoder sees it: the decoder then never meets a file
    // cut short, nor allocates for a size the manifest did not accept.
    bool CheckPngStructure(const QorPackageManifestEntry& item, const std::string& png)
    {
        static const unsigned char kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
        const auto* bytes = reinterpret_cast<const unsigned char*>(png.data());
        const auto bigEndian = [bytes](std::size_t at) {
            return std::uint32_t(bytes[at]) << 24 | std::uint32_t(bytes[at + 1]) << 16 |
                   std::uint32_t(bytes[at + 2]) << 8 | std::uint32_t(bytes[at + 3]);
        };
        const std::string notPng = "\"" + item.file.path + "\" is not a PNG image";
        if (png.size() < sizeof kSignature || std::memcmp(bytes, kSignature, sizeof kSignature) != 0)
            return Fail(notPng);
        bool ended = false;
        for (std::size_t at = sizeof kSignature; !ended;) {
            // Length, type, data, CRC; the length is checked against what is left first.
            if (png.size() - at < 12 || bigEndian(at) > png.size() - at - 12)
                return Fail(notPng + " (cut short)");
            const std::size_t length = bigEndian(at);
            const bool header = at == sizeof kSignature;
            if (header != (std::memcmp(bytes + at + 4, "IHDR", 4) == 0) || (header && length != 13))
                return Fail(notPng + " (no header first)");
            if (Crc32(bytes + at + 4, length + 4) != bigEndian(at + 8 + length))
                return Fail(notPng + " (a chunk's CRC is wrong)");
            ended = std::memcmp(bytes + at + 4, "IEND", 4) == 0;
            at += length + 12;
            if (ended && at != png.size())
                return Fail(notPng + " (bytes after its end)");
        }
        if (bigEndian(16) != item.width || bigEndian(20) != item.height)
            return Fail("\"" + item.file.path + "\" is " + std::to_string(bigEndian(16)) + " x " +
                        std::to_string(bigEndian(20)) + " where the manifest says " + std::to_string(item.width) +
                        " x " + std::to_string(item.height));
        if (item.hasPixels)
            return true;
        // 8-bit images: grey, grey + alpha, RGB or RGBA at 8 bits, as the channel count says.
        static const unsigned kColourTypes[] = {0, 0, 4, 2, 6};
        const unsigned channels = QorTexturePixelImage::GetChannelCount(item.format);
        if (bytes[24] != 8 || bytes[25] != kColourTypes[channels])
            return Fail("\"" + item.file.path + "\" is not an 8-bit PNG of " + std::to_string(channels) +
                        " channels");
        return true;
    }

    zip_t* m_archive;
    std::string& m_error;
    std::map<std::string, zip_uint64_t> m_indexes;
};

bool ReadPackage(zip_t* archive, LoadedPackage& package, std::string& error)
{
    try {
        PackageReader reader(archive, error);
        return reader.Read(package);
    } catch (...) {
        // Out of memory, or a third-party throw: the package is refused, nothing has changed.
        error = "out of memory while reading the package";
        return false;
    }
}

std::string ZipErrorText(int code)
{
    zip_error_t failure;
    zip_error_init_with_code(&failure, code);
    std::string text = zip_error_strerror(&failure);
    zip_error_fini(&failure);
    return text;
}

// The archive of a file (`path` set) or of bytes in memory, read-only and checked for
// consistency; null with `what` set when it is no zip archive.
ZipArchive OpenForReading(const char* path, const unsigned char* data, std::size_t size, std::string& what)
{
    int code = ZIP_ER_OK;
    ZipArchive archive;
    if (path) {
        // A package holds at most kMaxTotalBytes of files, which a zip archive stores in
        // about as many bytes; a FIFO or a device is refused without waiting.
        std::string why;
        const int fd = QorOpenRegularFile(path, 2 * QorPackageManifest::kMaxTotalBytes, &why);
        if (fd < 0) {
            what = "cannot be opened as a zip archive: " + why;
            return archive;
        }
        archive.reset(zip_fdopen(fd, ZIP_RDONLY | ZIP_CHECKCONS, &code));
        if (!archive)
            close(fd); // zip_fdopen takes the descriptor over only when it succeeds
    } else {
        zip_error_t failure;
        zip_error_init(&failure);
        // The source only borrows the bytes, which the caller keeps for the whole call.
        zip_source_t* source = zip_source_buffer_create(data, data ? size : 0, 0, &failure);
        if (source) {
            archive.reset(zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, &failure));
            if (!archive)
                zip_source_free(source);
        }
        code = zip_error_code_zip(&failure);
        zip_error_fini(&failure);
    }
    if (!archive)
        what = "cannot be opened as a zip archive: " + ZipErrorText(code);
    return archive;
}

void Report(std::string* error, const std::string& label, const std::string& what)
{
    if (!error)
        return;
    try {
        *error = label + ": " + what;
    } catch (...) {
        error->clear();
    }
}

// The loader's full check of the bytes about to be written: a package that could not be
// read back never replaces an earlier one.
bool VerifyPackage(const std::string& bytes, std::string& error)
{
    QorResourceZPKContainer check;
    QorStreamer stream;
    if (check.LoadFromMemory(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), stream, &error) == 0)
        return true;
    error = "the package made does not read back (" + error + ")";
    return false;
}

} // namespace

int QorResourceZPKContainer::SaveToMemory(const QorStreamer& stream, std::string& bytes, std::string* error) const
{
    return Save(stream, bytes, "(the package)", error);
}

int QorResourceZPKContainer::Save(const QorStreamer& stream, std::string& bytes, const std::string& label,
                                  std::string* error) const
{
    std::string what;
    try {
        PackageFiles files;
        std::string made;
        if (!DescribePackage(*this, stream, files, what) || !WriteArchive(files, made, what) ||
            !VerifyPackage(made, what)) {
            Report(error, label, what);
            return -1;
        }
        bytes.swap(made);
        return 0;
    } catch (...) {
        Report(error, label, "out of memory");
        return -1;
    }
}

int QorResourceZPKContainer::SaveToFile(const char* path, const QorStreamer& stream, std::string* error) const
{
    const std::string label = path && *path ? path : "(no path)";
    if (!path || !*path) {
        Report(error, label, "no package path given");
        return -1;
    }
    std::string bytes, what;
    if (Save(stream, bytes, label, error) != 0)
        return -1;
    if (!QorWriteFileAtomically(path, bytes.data(), bytes.size(), &what)) {
        Report(error, label, what);
        return -1;
    }
    return 0;
}

int QorResourceZPKContainer::LoadFromFile(const char* path, QorStreamer& stream, std::string* error)
{
    if (!path || !*path) {
        Report(error, "(no path)", "no package path given");
        return -1;
    }
    return Load(path, nullptr, 0, stream, error);
}

int QorResourceZPKContainer::LoadFromMemory(const unsigned char* data, std::size_t size, QorStreamer& stream,
                                            std::string* error)
{
    return Load(nullptr, data, size, stream, error);
}

int QorResourceZPKContainer::Load(const char* path, const unsigned char* data, std::size_t size, QorStreamer& stream,
                                  std::string* error)
{
    const std::string label = path ? path : "package in memory";
    std::string what;
    ZipArchive archive = OpenForReading(path, data, size, what);
    LoadedPackage package;
    if (!archive || !ReadPackage(archive.get(), package, what) || !AdoptEntries(package.entries)) {
        Report(error, label, what.empty() ? "out of memory" : what);
        return -1;
    }
    QorStreamer loaded(std::move(package.stream));
    loaded.SetResourceZPKContainer(this);
    stream = std::move(loaded);
    return 0;
}

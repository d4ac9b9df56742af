/// @file
/// The manifest of a ".zpk" package ("manifest.json"): what the package holds, entry by
/// entry, with the zip path, size and CRC-32 of every file. Private to QorVisFoundation.
#pragma once

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <cstdint>
#include <string>
#include <vector>

/// A file of the package as the manifest names it.
struct QorPackageFile
{
    std::string path;        ///< zip path, always one the library chose ("images/3.png")
    std::uint64_t size = 0;  ///< uncompressed bytes
    std::uint32_t crc32 = 0; ///< CRC-32 of those bytes
};

struct QorPackageManifestEntry
{
    int id = -1;
    QorResourceZPKContainer::EntryKind kind = QorResourceZPKContainer::QorEffectEntry;
    std::string name;     ///< the resource's name: data, never used as a path
    bool hasSource = false;                       ///< effects
    QorPixelImageFormat format = QorPixelRGBA8;   ///< images
    unsigned width = 0;                           ///< images
    unsigned height = 0;                          ///< images
    QorPackageFile file;                          ///< the effect's text or the image's PNG
    bool hasPixels = false;                       ///< floating-point images only
    QorPackageFile pixels;                        ///< their exact pixels, little-endian floats
};

/// Everything the manifest says. Reading it checks every rule a package must follow
/// before any of its files is opened; what is read is then safe to act on.
class QorPackageManifest
{
public:
    /// The manifest's zip path and the most bytes it may have.
    static constexpr const char* kPath = "manifest.json";
    static constexpr std::uint64_t kMaxBytes = 16u << 20;
    /// Limits that keep a hostile package from asking for unbounded memory: entries, and
    /// the bytes of all files and decoded pixels together.
    static constexpr std::size_t kMaxEntries = 65536;
    static constexpr std::uint64_t kMaxTotalBytes = std::uint64_t(1) << 30;
    /// A manifest nests four levels deep (root, entries, entry, file); deeper ones are
    /// refused before they are parsed.
    static constexpr int kMaxNesting = 16;

    int version = QorResourceZPKContainer::kPackageVersion;
    QorPackageFile stream;
    std::vector<QorPackageManifestEntry> entries;

    /// The zip paths the library gives to each file, by entry id.
    static std::string StreamPath() { return "stream.bin"; }
    static std::string EffectPath(int id) { return "effects/" + std::to_string(id) + ".cgfx"; }
    static std::string ImagePath(int id) { return "images/" + std::to_string(id) + ".png"; }
    static std::string PixelsPath(int id) { return "images/" + std::to_string(id) + ".f32"; }

    /// The JSON text of the manifest. May throw std::bad_alloc; the saver catches it.
    std::string Write() const;
    /// Parses and checks `text`. Returns true, or false with `error` saying what is wrong;
    /// never throws.
    bool Read(const std::string& text, std::string& error);

    /// Whether an image of that name can be cached by its file name: the part after the
    /// last "\" or "/" is not "", "." or "..". Names never hold a NUL either.
    static bool IsUsableImageName(const std::string& name);
    /// Bytes of the pixels of an image of that format and size, 0 when it is too large to
    /// accept.
    static std::uint64_t PixelBytes(QorPixelImageFormat format, unsigned width, unsigned height);
};

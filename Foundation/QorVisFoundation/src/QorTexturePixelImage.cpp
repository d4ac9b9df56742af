#include "QorVisFoundation/QorTexturePixelImage.h"

#include "QorSystem/QorFiles.h"
#include "QorSystem/QorStrings.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// OpenImageIO's description of an image file: size, channels, sample type, attributes.
using FileLayout = OIIO::ImageSpec;

// The words the framework uses for file formats, and OpenImageIO's plugin names.
struct FormatWord
{
    const char* word;
    const char* plugin;
};

const FormatWord kFormatWords[] = {
    {"PNG", "png"},   {"JPEG", "jpeg"}, {"JPG", "jpeg"},   {"TIFF", "tiff"},       {"TIF", "tiff"},
    {"TARGA", "targa"}, {"TGA", "targa"}, {"BMP", "bmp"},  {"GIF", "gif"},         {"PNM", "pnm"},
    {"PPM", "pnm"},   {"PGM", "pnm"},   {"SGI", "sgi"},    {"WEBP", "webp"},       {"HDR", "hdr"},
    {"EXR", "openexr"}, {"OPENEXR", "openexr"}, {"PBM", "pnm"}, {"RGB", "sgi"}, {"RGBA", "sgi"},
    {"ICO", "ico"},   {"DPX", "dpx"},   {"IFF", "iff"},    {"JP2", "jpeg2000"},    {"JPEG2000", "jpeg2000"},
};

const char* PluginForWord(const char* word)
{
    if (!word)
        return nullptr;
    for (const FormatWord& entry : kFormatWords)
        if (_stricmp(entry.word, word) == 0)
            return entry.plugin;
    return nullptr;
}

// No texture file comes near this size; larger ones are refused before a decoder sees them.
constexpr std::uint64_t kMaxImageFileBytes = std::uint64_t{4} << 30;

// A file of our own in the temporary folder, for the formats whose writer cannot write
// to memory; removed with its content.
class ScratchFile
{
public:
    /// Named with the plugin's name as extension, by which reading it back finds the format.
    explicit ScratchFile(const std::string& plugin)
    {
        std::error_code failed;
        const std::string suffix = "." + plugin;
        std::string pattern = (std::filesystem::temp_directory_path(failed) / ("QorImage-XXXXXX" + suffix)).string();
        const int fd = failed ? -1 : mkstemps(pattern.data(), static_cast<int>(suffix.size()));
        if (fd >= 0) {
            close(fd);
            m_path = pattern;
        }
    }
    ~ScratchFile()
    {
        if (!m_path.empty())
            std::remove(m_path.c_str());
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

// The pixels rearranged to `colour` colour channels (1 or 3) plus an optional alpha.
std::vector<unsigned char> Rearrange(const unsigned char* pixels, std::size_t pixelCount, unsigned channels,
                                     std::size_t componentSize, unsigned colour, bool alpha)
{
    const unsigned sourceColour = (channels == 2 || channels == 4) ? channels - 1 : channels;
    const unsigned outChannels = colour + (alpha ? 1 : 0);
    std::vector<unsigned char> out(pixelCount * outChannels * componentSize);
    for (std::size_t p = 0; p < pixelCount; ++p) {
        const unsigned char* from = pixels + p * channels * componentSize;
        unsigned char* to = out.data() + p * outChannels * componentSize;
        for (unsigned c = 0; c < colour; ++c)
            std::memcpy(to + c * componentSize, from + (sourceColour == 1 ? 0 : c) * componentSize, componentSize);
        if (alpha)
            std::memcpy(to + colour * componentSize, from + (channels - 1) * componentSize, componentSize);
    }
    return out;
}

std::vector<std::string> ChannelNames(unsigned colour, bool alpha)
{
    std::vector<std::string> names = colour == 1 ? std::vector<std::string>{"Y"}
                                                 : std::vector<std::string>{"R", "G", "B"};
    if (alpha)
        names.push_back("A");
    return names;
}

struct ImageList
{
    std::mutex mutex;
    // Every image added, oldest first under each name; the back one answers lookups.
    std::map<QorString, std::vector<QorTexturePixelImage::Ptr>> images;
};

ImageList& List()
{
    static ImageList list;
    return list;
}

} // namespace

void QorTexturePixelImage::FreeDeleter::operator()(unsigned char* bytes) const
{
    std::free(bytes);
}

QorTexturePixelImage::QorTexturePixelImage(const QorString& name, QorPixelImageFormat format, unsigned width,
                                           unsigned height, std::size_t byteCount, unsigned char* pixels)
    : m_name(name), m_format(format), m_width(width), m_height(height), m_byteCount(byteCount), m_pixels(pixels)
{
}

unsigned QorTexturePixelImage::GetChannelCount(QorPixelImageFormat format)
{
    switch (format) {
    case QorPixelLuminance8:
        return 1;
    case QorPixelLuminanceAlpha8:
        return 2;
    case QorPixelRGB8:
    case QorPixelRGBFloat:
        return 3;
    case QorPixelRGBA8:
    case QorPixelRGBAFloat:
        return 4;
    }
    return 0;
}

unsigned QorTexturePixelImage::GetBytesPerPixel() const
{
    return GetChannelCount(m_format) * (IsFloatFormat() ? sizeof(float) : 1);
}

QorTexturePixelImage* QorTexturePixelImage::Create(const QorString& name, QorPixelImageFormat format,
                                                   unsigned width, unsigned height)
{
    const unsigned channels = GetChannelCount(format);
    if (!channels || width == 0 || height == 0 || width > INT_MAX || height > INT_MAX)
        return nullptr;
    const std::size_t pixelSize = channels * (IsFloatFormat(format) ? sizeof(float) : 1);
    const std::size_t limit = PTRDIFF_MAX;
    if (width > limit / height || static_cast<std::size_t>(width) * height > limit / pixelSize)
        return nullptr;
    const std::size_t byteCount = static_cast<std::size_t>(width) * height * pixelSize;
    unsigned char* pixels = static_cast<unsigned char*>(std::calloc(byteCount, 1));
    if (!pixels)
        return nullptr;
    try {
        return new QorTexturePixelImage(name, format, width, height, byteCount, pixels);
    } catch (...) {
        std::free(pixels);
        return nullptr;
    }
}

QorTexturePixelImage* QorTexturePixelImage::Decode(const std::string& path, void* proxy, const QorString& name)
{
    try {
        // Texture pixels are straight (unassociated) alpha: the bytes are taken as stored,
        // never premultiplied on the way in.
        FileLayout config;
        config.attribute("oiio:UnassociatedAlpha", 1);
        // The image library takes a proxy through this attribute (its open() argument for
        // one is ignored here).
        if (proxy)
            config.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &proxy);
        auto input = OIIO::ImageInput::open(path, &config);
        if (!input) {
            OIIO::geterror(); // consumed so it does not linger for the next caller
            return nullptr;
        }
        const FileLayout& header = input->spec();
        if (header.width <= 0 || header.height <= 0 || header.depth > 1 || header.nchannels < 1) {
            input->close();
            return nullptr;
        }
        const int channels = header.nchannels < 4 ? header.nchannels : 4;
        const bool floating = header.format.is_floating_point() && channels >= 3;
        const QorPixelImageFormat format = floating ? (channels == 4 ? QorPixelRGBAFloat : QorPixelRGBFloat)
                                                    : static_cast<QorPixelImageFormat>(channels);
        Ptr image(Create(name, format, static_cast<unsigned>(header.width), static_cast<unsigned>(header.height)));
        if (!image) {
            input->close();
            return nullptr;
        }
        const OIIO::TypeDesc type = floating ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT8;
        // Decoders report a file cut short as an error while still returning success for
        // the partly filled pixels; such an image is refused rather than shown half garbage.
        const bool read = input->read_image(0, 0, 0, channels, type, image->m_pixels.get());
        const bool clean = !input->has_error();
        input->geterror();
        input->close();
        return read && clean ? image.release() : nullptr;
    } catch (...) {
        // OpenImageIO and its format libraries may throw; a bad file is just "no image".
        return nullptr;
    }
}

QorTexturePixelImage* QorTexturePixelImage::ReadFromFile(const char* path, const QorString& name)
{
    // A FIFO or a device named as a texture must neither hang the reader nor fill its memory.
    if (!QorIsRegularFile(path, kMaxImageFileBytes))
        return nullptr;
    return Decode(QorNativePath(path), nullptr, name);
}

QorTexturePixelImage* QorTexturePixelImage::ReadFromMemory(const void* data, std::size_t size,
                                                           const char* formatName, const QorString& name)
{
    const char* plugin = PluginForWord(formatName);
    if (!data || !plugin)
        return nullptr;
    OIIO::Filesystem::IOMemReader proxy(data, size);
    // The name only tells the image library which reader to take.
    return Decode(std::string("memory.") + plugin, &proxy, name);
}

bool QorTexturePixelImage::IsWritableFormat(const char* formatName)
{
    return PluginForWord(formatName) != nullptr;
}

bool QorTexturePixelImage::Encode(const char* formatName, std::string& bytes) const
{
    const char* plugin = PluginForWord(formatName);
    if (!plugin)
        return false;
    try {
        const unsigned channels = GetChannelCount(m_format);
        const bool hasAlpha = channels == 2 || channels == 4;
        const unsigned colour = hasAlpha ? channels - 1 : channels;
        const OIIO::TypeDesc type = IsFloatFormat() ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT8;
        const std::size_t componentSize = IsFloatFormat() ? sizeof(float) : 1;
        const std::size_t pixelCount = static_cast<std::size_t>(m_width) * m_height;

        // First the image's own colour channels, then luminance widened to RGB for
        // formats that only take colour (BMP with alpha, GIF, WEBP, HDR).
        const int attempts = colour == 1 ? 2 : 1;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            const unsigned outColour = attempt == 0 ? colour : 3u;
            auto output = OIIO::ImageOutput::create(plugin);
            if (!output) {
                OIIO::geterror();
                return false;
            }
            const bool alpha = hasAlpha && output->supports("alpha");
            const unsigned outChannels = outColour + (alpha ? 1 : 0);
            FileLayout layout(static_cast<int>(m_width), static_cast<int>(m_height), static_cast<int>(outChannels),
                              type);
            layout.channelnames = ChannelNames(outColour, alpha);
            layout.alpha_channel = alpha ? static_cast<int>(outChannels) - 1 : -1;
            if (alpha)
                layout.attribute("oiio:UnassociatedAlpha", 1); // straight alpha, written unchanged
            // In memory where the writer can: the image library then never meets a full
            // disk (it reports that as success, or ends the process).
            std::vector<unsigned char> memory;
            OIIO::Filesystem::IOVecOutput proxy(memory);
            const bool inMemory = output->supports("ioproxy") && output->set_ioproxy(&proxy);
            std::optional<ScratchFile> scratch;
            if (!inMemory && scratch.emplace(plugin).Path().empty())
                return false;
            if (!output->open(inMemory ? std::string("memory.") + plugin : scratch->Path(), layout)) {
                output->geterror();
                // A writer that failed to open still closes its proxy when destroyed, and
                // the WebP writer then frees what it never made.
                if (inMemory)
                    output->set_ioproxy(nullptr);
                continue;
            }
            std::vector<unsigned char> rearranged;
            const unsigned char* data = m_pixels.get();
            if (outChannels != channels || outColour != colour) {
                rearranged = Rearrange(m_pixels.get(), pixelCount, channels, componentSize, outColour, alpha);
                data = rearranged.data();
            }
            bool written = output->write_image(type, data);
            written = output->close() && written;
            output->geterror(); // libtiff reports harmless warnings here even on success
            output.reset();
            if (!written)
                return false;
            if (inMemory) {
                bytes.assign(memory.begin(), memory.end());
                return true;
            }
            return ReadBackScratch(scratch->Path(), data, outChannels, bytes);
        }
        return false;
    } catch (...) {
        // Out of memory, or a throw from the image library: no bytes.
        return false;
    }
}

bool QorTexturePixelImage::ReadBackScratch(const std::string& path, const unsigned char* pixels, unsigned channels,
                                           std::string& bytes) const
{
    // The writer does not report a failed write: the file counts only when it decodes
    // whole, to the same size and (for 8-bit pixels) to the very bytes written.
    Ptr decoded(ReadFromFile(path.c_str(), m_name));
    if (!decoded || decoded->m_width != m_width || decoded->m_height != m_height)
        return false;
    if (!IsFloatFormat() && (GetChannelCount(decoded->m_format) != channels ||
                             std::memcmp(decoded->m_pixels.get(), pixels, decoded->m_byteCount) != 0))
        return false;
    return QorReadRegularFile(path.c_str(), bytes, kMaxImageFileBytes);
}

int QorTexturePixelImage::WriteToFile(const char* formatName, const char* path) const
{
    std::string bytes;
    if (!path || !*path || !Encode(formatName, bytes))
        return -1;
    return QorWriteFileAtomically(path, bytes.data(), bytes.size()) ? 0 : -1;
}

unsigned int QorTexturePixelImage::AddRef()
{
    return ++m_refCount;
}

unsigned int QorTexturePixelImage::Release()
{
    const unsigned int left = --m_refCount;
    if (left == 0)
        delete this;
    return left;
}

QorTexturePixelImage* QorTexturePixelImage::GetImageFromList(const QorString& name)
{
    ImageList& list = List();
    std::lock_guard<std::mutex> lock(list.mutex);
    const auto found = list.images.find(name);
    return found == list.images.end() || found->second.empty() ? nullptr : found->second.back().get();
}

void QorTexturePixelImage::AddList(QorTexturePixelImage* image)
{
    if (!image)
        return;
    Ptr reference(image);
    ImageList& list = List();
    std::lock_guard<std::mutex> lock(list.mutex);
    try {
        list.images[image->GetName()].push_back(std::move(reference));
    } catch (...) {
        // Out of memory: the reference is released by its holder rather than leaked.
    }
}

void QorTexturePixelImage::ClearList()
{
    std::map<QorString, std::vector<Ptr>> released;
    {
        ImageList& list = List();
        std::lock_guard<std::mutex> lock(list.mutex);
        released.swap(list.images);
    }
    // `released` goes out of scope here, outside the lock.
}

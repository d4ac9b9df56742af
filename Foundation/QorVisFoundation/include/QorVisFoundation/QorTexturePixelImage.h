/// @file
/// The framework's pixel images: named, reference-counted pixel buffers that textures are
/// made from, and the process-wide list that shares them by name.
#pragma once

#include "QorSystem/QorString.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// Pixel layouts. The 8-bit formats are numbered by their channel count; the two
/// floating-point formats hold native 32-bit floats per channel.
enum QorPixelImageFormat : std::uint32_t
{
    QorPixelLuminance8 = 1,      ///< one byte per pixel
    QorPixelLuminanceAlpha8 = 2, ///< luminance, alpha
    QorPixelRGB8 = 3,            ///< red, green, blue
    QorPixelRGBA8 = 4,           ///< red, green, blue, alpha
    QorPixelRGBAFloat = 10,      ///< four floats per pixel
    QorPixelRGBFloat = 11,       ///< three floats per pixel
};

/// A named image with tightly packed rows, top row first. A new image has a count of 1;
/// AddRef adds a holder and Release from 1 destroys it, so never delete one directly.
class QorTexturePixelImage
{
public:
    /// Lets std::unique_ptr hold one reference: the deleter calls Release().
    struct Releaser
    {
        void operator()(QorTexturePixelImage* image) const
        {
            if (image)
                image->Release();
        }
    };
    using Ptr = std::unique_ptr<QorTexturePixelImage, Releaser>;

    /// A new image with all pixels zero, owned by the caller (count 1). Null for an unknown
    /// format, a zero or larger-than-INT_MAX dimension (the image libraries' limit), a byte
    /// count that overflows, or when the memory cannot be had.
    static QorTexturePixelImage* Create(const QorString& name, QorPixelImageFormat format, unsigned width,
                                        unsigned height);
    /// Reads an image file through OpenImageIO; the path may use the framework's "\".
    /// 8-bit data becomes the 8-bit format of its channel count (channels beyond four are
    /// dropped). Floating-point files with three or four channels become QorPixelRGBFloat or
    /// QorPixelRGBAFloat with their values unchanged; floating-point files with one or two
    /// channels, and integer files deeper than 8 bits, are converted to 8 bits (values
    /// clamped to 0..1 and scaled). Owned by the caller (count 1); null when the file is
    /// missing, is not a regular file (a FIFO or a device is refused without waiting), has
    /// more than 4 GiB, cannot be decoded, or its decoder reports an error (a file cut short).
    static QorTexturePixelImage* ReadFromFile(const char* path, const QorString& name);
    /// ReadFromFile for the `size` bytes at `data` of a file in the format `formatName`
    /// names (the words of WriteToFile).
    static QorTexturePixelImage* ReadFromMemory(const void* data, std::size_t size, const char* formatName,
                                                const QorString& name);

    unsigned int AddRef();
    /// Returns the count left; 0 means the image is gone.
    unsigned int Release();
    unsigned int GetRefCount() const { return m_refCount.load(); }

    const QorString& GetName() const { return m_name; }
    QorPixelImageFormat GetPixelFormat() const { return m_format; }
    unsigned GetWidth() const { return m_width; }
    unsigned GetHeight() const { return m_height; }
    unsigned GetBytesPerPixel() const;
    /// Size of the pixel buffer in bytes.
    std::size_t GetByteCount() const { return m_byteCount; }
    bool IsFloatFormat() const { return IsFloatFormat(m_format); }

    /// The 8-bit pixels, owned by the image; null for the floating-point formats.
    unsigned char* GetPixels() { return IsFloatFormat() ? nullptr : m_pixels.get(); }
    const unsigned char* GetPixels() const { return IsFloatFormat() ? nullptr : m_pixels.get(); }
    /// The bytes of the float pixels of QorPixelRGBAFloat and QorPixelRGBFloat (aligned
    /// for float access), owned by the image; null for the 8-bit formats.
    unsigned char* GetFloatPixels() { return IsFloatFormat() ? m_pixels.get() : nullptr; }
    const unsigned char* GetFloatPixels() const { return IsFloatFormat() ? m_pixels.get() : nullptr; }

    /// Writes the image in the file format the word names, whatever the path's extension:
    /// "PNG", "JPEG"/"JPG", "TIFF"/"TIF", "TARGA"/"TGA", "BMP", "GIF", "PNM"/"PPM"/"PGM"/"PBM",
    /// "SGI"/"RGB"/"RGBA", "WEBP", "HDR", "EXR"/"OPENEXR", "ICO", "DPX", "IFF", "JP2"/"JPEG2000"
    /// (case ignored); any other word fails. Channels a format cannot hold
    /// are adapted: alpha is dropped where the format has none, luminance is widened to
    /// RGB where the format needs colour. The file appears only complete: it is written
    /// beside the destination and renamed over it, with every write checked (a full disk
    /// fails the call). Returns 0, or -1 on failure, in which case any file already at the
    /// path is left as it was.
    int WriteToFile(const char* formatName, const char* path) const;
    /// The bytes of the file WriteToFile would write; false (and `bytes` unspecified) when
    /// the format is unknown or the image cannot be encoded.
    bool Encode(const char* formatName, std::string& bytes) const;
    /// Whether `formatName` is one of the words WriteToFile and Encode take (case
    /// ignored): a caller can refuse an output before it draws what it would write.
    static bool IsWritableFormat(const char* formatName);

    /// The newest image of that name in the process-wide list, borrowed; null when absent.
    static QorTexturePixelImage* GetImageFromList(const QorString& name);
    /// The list takes over the caller's reference (null is ignored). Adding another image
    /// under a name already listed shadows the earlier one for lookups, but the earlier one
    /// stays alive until ClearList, so pointers handed out for it remain valid.
    static void AddList(QorTexturePixelImage* image);
    /// Releases every reference the list holds and empties it.
    static void ClearList();

    static bool IsFloatFormat(QorPixelImageFormat format)
    {
        return format == QorPixelRGBAFloat || format == QorPixelRGBFloat;
    }
    /// Channels of a format, 0 for a value that is not a format.
    static unsigned GetChannelCount(QorPixelImageFormat format);

    QorTexturePixelImage(const QorTexturePixelImage&) = delete;
    QorTexturePixelImage& operator=(const QorTexturePixelImage&) = delete;

protected:
    virtual ~QorTexturePixelImage() = default;

private:
    struct FreeDeleter
    {
        void operator()(unsigned char* bytes) const;
    };

    QorTexturePixelImage(const QorString& name, QorPixelImageFormat format, unsigned width, unsigned height,
                         std::size_t byteCount, unsigned char* pixels);
    /// Decodes the file at `path`, or the bytes of `proxy` (an OpenImageIO IOProxy) when
    /// not null, whose format `path`'s extension then names.
    static QorTexturePixelImage* Decode(const std::string& path, void* proxy, const QorString& name);
    /// Encode's check of a file written where the writer cannot write to memory.
    bool ReadBackScratch(const std::string& path, const unsigned char* pixels, unsigned channels,
                         std::string& bytes) const;

    QorString m_name;
    QorPixelImageFormat m_format;
    unsigned m_width;
    unsigned m_height;
    std::size_t m_byteCount;
    std::unique_ptr<unsigned char, FreeDeleter> m_pixels; // calloc'd: zero pages stay untouched until used
    std::atomic<unsigned int> m_refCount{1};
};

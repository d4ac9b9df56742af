#include "ShaderTextureImageReader.h"

#include "QorSystem/QorFiles.h"

#include <climits>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t kHeaderSize = 512;
constexpr int kPlanesUsed = 4;
// The largest file read. A picture is below 2 GiB of RGBA, and no file this reader decodes
// needs more bytes than that picture plus its header and tables; a larger file is refused
// before anything is allocated for it.
constexpr std::size_t kLongestUsefulFile = std::size_t{1} << 31;
// A run-length packet of two bytes gives at most 127 pixels.
constexpr std::uint64_t kMostPixelsPerPacket = 127;

// Decodes one run-length row: each packet starts with a byte whose low seven bits count
// pixels; the high bit set means that many bytes follow as they are, clear means the next
// byte repeats that many times; a count of 0 ends the row. Running out of encoded bytes
// between packets also ends it; the pixels not produced stay 0. False when a packet
// would write past the row or read past the row's encoded bytes.
bool DecodeRunLengthRow(const unsigned char* in, std::size_t inSize, unsigned char* out, std::size_t width)
{
    std::size_t read = 0;
    std::size_t written = 0;
    while (read < inSize) {
        const unsigned char packet = in[read++];
        const std::size_t count = packet & 0x7f;
        if (count == 0)
            break;
        if (count > width - written)
            return false;
        if (packet & 0x80) {
            if (count > inSize - read)
                return false;
            std::memcpy(out + written, in + read, count);
            read += count;
        } else {
            if (read == inSize)
                return false;
            std::memset(out + written, in[read++], count);
        }
        written += count;
    }
    std::memset(out + written, 0, width - written);
    return true;
}

} // namespace

ShaderTextureImageReader::ShaderTextureImageReader(const char* fileName)
{
    m_opened = ReadFile(fileName) && ReadHeader();
}

bool ShaderTextureImageReader::ReadFile(const char* fileName)
{
    // Only regular files: a FIFO or a device may never end.
    return QorReadRegularFile(fileName, m_file, kLongestUsefulFile);
}

bool ShaderTextureImageReader::ReadHeader()
{
    // Big-endian words at offset 0: magic (not checked, as the framework never did),
    // storage and bytes per channel, dimension (unused), width, height, channels.
    std::uint16_t type = 0, width = 0, height = 0, channels = 0;
    if (!ReadBigEndian16(2, type) || !ReadBigEndian16(6, width) || !ReadBigEndian16(8, height)
        || !ReadBigEndian16(10, channels))
        return false;
    // Two-byte channels would need their own decoding and scaling; refused rather than
    // read as if they were bytes.
    if ((type & 0xff) != 1 || width == 0 || height == 0 || channels == 0)
        return false;
    const std::size_t pixels = std::size_t{width} * height;
    if (pixels > INT_MAX / 4)
        return false;
    m_width = width;
    m_height = height;
    m_channels = channels;
    m_runLength = (type >> 8) == 1;

    const std::size_t planes = channels < kPlanesUsed ? channels : kPlanesUsed;
    if (!m_runLength)
        return Bytes(kHeaderSize, pixels * planes) != nullptr;
    // Two tables of height x channels 32-bit entries: row starts, then row sizes.
    if (!Bytes(kHeaderSize, std::size_t{height} * channels * 8) || !RunTablesCanFill(planes))
        return false;
    m_rows.reset(new (std::nothrow) unsigned char[planes * width]);
    return m_rows != nullptr;
}

bool ShaderTextureImageReader::RunTablesCanFill(std::size_t planes) const
{
    // Rows may end early and stay 0, but the encoded bytes of all rows together must be
    // able to fill the picture: a file of empty rows cannot claim a picture of gigabytes.
    const std::size_t tableEntries = static_cast<std::size_t>(m_height) * m_channels;
    std::uint64_t encoded = 0;
    for (std::size_t plane = 0; plane < planes; ++plane)
        for (std::size_t row = 0; row < static_cast<std::size_t>(m_height); ++row) {
            std::uint32_t size = 0;
            ReadBigEndian32(kHeaderSize + (tableEntries + plane * m_height + row) * 4, size);
            encoded += size;
        }
    // Rows may also share their bytes; the file itself must still be able to hold the
    // picture, so that a few kilobytes never decode to gigabytes.
    const std::uint64_t needed = std::uint64_t{static_cast<unsigned>(m_width)} * m_height * planes;
    return encoded / 2 * kMostPixelsPerPacket >= needed && m_file.size() / 2 * kMostPixelsPerPacket >= needed;
}

const unsigned char* ShaderTextureImageReader::Row(int row, int channel)
{
    if (!m_opened || row < 0 || row >= m_height || channel < 0 || channel >= m_channels || channel >= kPlanesUsed)
        return nullptr;
    const std::size_t width = static_cast<std::size_t>(m_width);
    const std::size_t index = static_cast<std::size_t>(row) + static_cast<std::size_t>(channel) * m_height;
    if (!m_runLength)
        return Bytes(kHeaderSize + index * width, width);

    const std::size_t tableEntries = static_cast<std::size_t>(m_height) * m_channels;
    std::uint32_t start = 0, size = 0;
    if (!ReadBigEndian32(kHeaderSize + index * 4, start)
        || !ReadBigEndian32(kHeaderSize + (tableEntries + index) * 4, size))
        return nullptr;
    const unsigned char* encoded = Bytes(start, size);
    unsigned char* decoded = m_rows.get() + static_cast<std::size_t>(channel) * width;
    if (!encoded || !DecodeRunLengthRow(encoded, size, decoded, width))
        return nullptr;
    return decoded;
}

const unsigned char* ShaderTextureImageReader::Bytes(std::size_t offset, std::size_t count) const
{
    if (offset > m_file.size() || count > m_file.size() - offset)
        return nullptr;
    return reinterpret_cast<const unsigned char*>(m_file.data()) + offset;
}

bool ShaderTextureImageReader::ReadBigEndian16(std::size_t offset, std::uint16_t& value) const
{
    const unsigned char* bytes = Bytes(offset, 2);
    if (!bytes)
        return false;
    value = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    return true;
}

bool ShaderTextureImageReader::ReadBigEndian32(std::size_t offset, std::uint32_t& value) const
{
    const unsigned char* bytes = Bytes(offset, 4);
    if (!bytes)
        return false;
    value = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
    return true;
}

#include "ShaderTextureImageReader.h"

#include "QorSystem/QorFiles.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <new>
#include <sys/stat.h>

namespace {

constexpr std::size_t kHeaderSize = 512;
constexpr int kPlanesUsed = 4;
// No row can lie further: its start and its size are both 32-bit. A longer file is read
// only this far, so even a huge sparse file cannot make the reader allocate more.
constexpr std::uint64_t kLongestUsefulFile = std::uint64_t{1} << 33;

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
    const QorFile file(QorFopen(fileName, "rb"));
    // Only regular files: a folder reports a bogus size and a device may never end.
    struct stat info;
    if (!file || fstat(fileno(file.get()), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size < 0)
        return false;
    const std::size_t size =
        static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(info.st_size), kLongestUsefulFile));
    // Uninitialised on purpose: only the bytes fread fills are ever looked at.
    m_file.reset(new (std::nothrow) unsigned char[size > 0 ? size : 1]);
    if (!m_file)
        return false;
    m_fileSize = std::fread(m_file.get(), 1, size, file.get());
    return true;
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
    if (!Bytes(kHeaderSize, std::size_t{height} * channels * 8))
        return false;
    m_rows.reset(new (std::nothrow) unsigned char[planes * width]);
    return m_rows != nullptr;
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
    if (offset > m_fileSize || count > m_fileSize - offset)
        return nullptr;
    return m_file.get() + offset;
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

/// @file
/// The state of one opened SGI image file, private to readTexture. The whole file is
/// read into memory once; every header word, table entry and row is then taken through
/// one bounds-checked accessor, so a corrupt file can make a read fail but never reach
/// outside the bytes that were read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class ShaderTextureImageReader
{
public:
    /// Opens the file (a framework path), reads it and checks its header and, for a
    /// run-length file, that both offset tables fit and that their rows can fill the
    /// picture. IsOpened() tells whether it worked.
    explicit ShaderTextureImageReader(const char* fileName);

    ShaderTextureImageReader(const ShaderTextureImageReader&) = delete;
    ShaderTextureImageReader& operator=(const ShaderTextureImageReader&) = delete;

    /// True when the file was read and its header describes a picture this reader can
    /// decode: one byte per channel, no zero dimension, an RGBA buffer below 2 GiB and,
    /// for verbatim storage, every plane inside the file.
    bool IsOpened() const { return m_opened; }
    int Width() const { return m_width; }
    int Height() const { return m_height; }
    int Channels() const { return m_channels; }

    /// The Width() bytes of one channel of one row (row 0 is the first in the file).
    /// Verbatim rows point into the file's bytes; run-length rows are decoded into a
    /// buffer of the reader that the next call for the same channel overwrites.
    /// Null when the row's encoded bytes lie outside the file or its runs overflow it.
    const unsigned char* Row(int row, int channel);

private:
    bool ReadFile(const char* fileName);
    bool ReadHeader();
    /// Whether the run-length rows of the first `planes` planes hold enough encoded bytes
    /// to fill them, as the tables say, and the file has that many bytes at all.
    bool RunTablesCanFill(std::size_t planes) const;
    /// Bytes [offset, offset + count) of the file, or null when they are not all there.
    const unsigned char* Bytes(std::size_t offset, std::size_t count) const;
    bool ReadBigEndian16(std::size_t offset, std::uint16_t& value) const;
    bool ReadBigEndian32(std::size_t offset, std::uint32_t& value) const;

    bool m_opened = false;
    bool m_runLength = false;
    int m_width = 0;
    int m_height = 0;
    int m_channels = 0;
    std::string m_file;
    /// Decoded run-length rows, one of Width() bytes for each of the four planes used.
    std::unique_ptr<unsigned char[]> m_rows;
};

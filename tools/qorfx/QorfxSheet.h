/// @file
/// A contact sheet: materials' pictures side by side in rows, each tile with its label
/// strip when there are several, and the writing of a picture to an image file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class QorfxSheet
{
public:
    /// The largest sheet: 1 GiB of RGBA pixels, held twice while it is written.
    static constexpr std::uint64_t kMaxPixels = std::uint64_t{1} << 28;

    /// Check Fits() first: the sheet's size is held in ints.
    QorfxSheet(std::size_t tiles, int columns, int width, int height, bool labelled);

    /// The sheet's pixel count, when it is at most kMaxPixels; 0 otherwise. `columns` 0:
    /// as many columns as rows, or one more; never more columns than tiles.
    static std::uint64_t Fits(std::size_t tiles, int columns, int width, int height, bool labelled);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    const std::vector<unsigned char>& Pixels() const { return m_pixels; }

    /// Copies a tile's RGBA picture (top row first) into place, with its label.
    void Place(std::size_t tile, const std::vector<unsigned char>& rgba, const std::string& label);
    /// A dark red tile crossed from corner to corner, with the reason in its middle.
    void MarkFailed(std::size_t tile, const std::string& label, const std::string& reason);

private:
    static int Columns(std::size_t tiles, int columns);
    static std::uint64_t Rows(std::size_t tiles, int columns) { return (tiles + columns - 1) / columns; }
    int X(std::size_t tile) const { return static_cast<int>(tile % m_columns) * m_tileWidth; }
    int Y(std::size_t tile) const { return static_cast<int>(tile / m_columns) * m_cellHeight; }
    void Label(std::size_t tile, const std::string& label);

    int m_columns, m_tileWidth, m_tileHeight, m_cellHeight, m_width, m_height;
    bool m_labelled;
    std::vector<unsigned char> m_pixels;
};

/// Writes a width x height RGBA picture (top row first) to `output`, in the format its
/// extension names, through QorfxOutput. An empty string or the problem, naming the file.
std::string QorfxWriteImage(const std::string& output, int width, int height, const std::vector<unsigned char>& rgba);

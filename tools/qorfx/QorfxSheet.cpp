#include "QorfxSheet.h"

#include "QorfxFont.h"
#include "QorfxOutput.h"
#include "QorfxRender.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kLabelScale = 2;
constexpr int kLabelHeight = 7 * kLabelScale + 8;

} // namespace

QorfxSheet::QorfxSheet(std::size_t tiles, int columns, int width, int height, bool labelled)
    : m_columns(Columns(tiles, columns)), m_tileWidth(width), m_tileHeight(height),
      m_cellHeight(height + (labelled ? kLabelHeight : 0)), m_width(m_columns * width),
      m_height(static_cast<int>(Rows(tiles, m_columns)) * m_cellHeight), m_labelled(labelled),
      m_pixels(static_cast<std::size_t>(m_width) * m_height * 4, 0)
{
    for (std::size_t i = 3; i < m_pixels.size(); i += 4)
        m_pixels[i] = 255;
}

std::uint64_t QorfxSheet::Fits(std::size_t tiles, int columns, int width, int height, bool labelled)
{
    const int across = Columns(tiles, columns);
    const std::uint64_t pixels = std::uint64_t(across) * std::uint64_t(width) * Rows(tiles, across) *
                                 std::uint64_t(height + (labelled ? kLabelHeight : 0));
    return pixels <= kMaxPixels ? pixels : 0;
}

int QorfxSheet::Columns(std::size_t tiles, int columns)
{
    return columns > 0 ? std::min(columns, static_cast<int>(tiles))
                       : static_cast<int>(std::ceil(std::sqrt(static_cast<double>(tiles))));
}

void QorfxSheet::Place(std::size_t tile, const std::vector<unsigned char>& rgba, const std::string& label)
{
    const int x = X(tile), y = Y(tile);
    for (int row = 0; row < m_tileHeight; ++row)
        std::memcpy(&m_pixels[(static_cast<std::size_t>(y + row) * m_width + x) * 4],
                    &rgba[static_cast<std::size_t>(row) * m_tileWidth * 4], static_cast<std::size_t>(m_tileWidth) * 4);
    Label(tile, label);
}

void QorfxSheet::MarkFailed(std::size_t tile, const std::string& label, const std::string& reason)
{
    const int x = X(tile), y = Y(tile);
    for (int row = 0; row < m_tileHeight; ++row)
        for (int column = 0; column < m_tileWidth; ++column) {
            const int across = column * m_tileHeight / m_tileWidth;
            const bool cross = std::abs(across - row) <= 1 || std::abs(m_tileHeight - 1 - across - row) <= 1;
            unsigned char* p = &m_pixels[(static_cast<std::size_t>(y + row) * m_width + x + column) * 4];
            p[0] = cross ? 220 : 70;
            p[1] = cross ? 60 : 12;
            p[2] = cross ? 60 : 16;
        }
    const int reasonX = x + std::max(2, (m_tileWidth - QorfxTextWidth(reason, kLabelScale)) / 2);
    QorfxDrawText(m_pixels, m_width, m_height, reasonX, y + m_tileHeight / 2 - 7, reason, kLabelScale);
    Label(tile, label);
}

void QorfxSheet::Label(std::size_t tile, const std::string& label)
{
    if (!m_labelled)
        return;
    // A long name is shortened in its middle rather than run into its neighbours.
    const std::string fitted = QorfxFitText(label, m_tileWidth - 4, kLabelScale);
    const int labelX = X(tile) + std::max(2, (m_tileWidth - QorfxTextWidth(fitted, kLabelScale)) / 2);
    QorfxDrawText(m_pixels, m_width, m_height, labelX, Y(tile) + m_tileHeight + 4, fitted, kLabelScale);
}

std::string QorfxWriteImage(const std::string& output, int width, int height, const std::vector<unsigned char>& rgba)
{
    const std::string format = QorfxImageFormat(output);
    if (format.empty())
        return output + ": the output needs an image extension such as .png";
    QorTexturePixelImage::Ptr image(
        QorTexturePixelImage::Create(QorString(output.c_str()), QorPixelRGBA8, width, height));
    if (!image)
        return "cannot hold a " + std::to_string(width) + "x" + std::to_string(height) + " image";
    std::memcpy(image->GetPixels(), rgba.data(), rgba.size());
    std::string bytes, why;
    if (!image->Encode(format.c_str(), bytes))
        return output + ": cannot write the image (encoding it as " + format + " failed)";
    return QorfxOutput::WriteFile(output, bytes, why) ? "" : why;
}

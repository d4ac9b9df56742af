#include "QorVisFoundation/QorTextureReader.h"

#include "ShaderTextureImageReader.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

struct FreeBuffer
{
    void operator()(unsigned char* buffer) const { std::free(buffer); }
};

void SetOutputs(int* dimension, int* width, int* height, int* components, int d, int w, int h, int c)
{
    if (dimension)
        *dimension = d;
    if (width)
        *width = w;
    if (height)
        *height = h;
    if (components)
        *components = c;
}

void InterleaveRow(const unsigned char* red, const unsigned char* green, const unsigned char* blue,
                   const unsigned char* alpha, std::size_t width, unsigned char* out)
{
    for (std::size_t x = 0; x < width; ++x) {
        out[4 * x] = red[x];
        out[4 * x + 1] = green[x];
        out[4 * x + 2] = blue[x];
        out[4 * x + 3] = alpha[x];
    }
}

} // namespace

unsigned int* readTexture(const char* fileName, int* dimension, int* width, int* height, int* components)
{
    SetOutputs(dimension, width, height, components, 0, 0, 0, 0);
    // The first opening is closed at once; renderers have always seen the file opened
    // twice and that access pattern is kept.
    { const ShaderTextureImageReader first(fileName); }
    ShaderTextureImageReader reader(fileName);
    if (!reader.IsOpened())
        return nullptr;

    const int channels = reader.Channels();
    const std::size_t rowWidth = static_cast<std::size_t>(reader.Width());
    const std::size_t rowBytes = rowWidth * 4;
    std::unique_ptr<unsigned char, FreeBuffer> pixels(
        static_cast<unsigned char*>(std::malloc(rowBytes * static_cast<std::size_t>(reader.Height()))));
    // Alpha of files without an alpha plane.
    std::unique_ptr<unsigned char[]> opaque(new (std::nothrow) unsigned char[rowWidth]);
    if (!pixels || !opaque)
        return nullptr;
    std::memset(opaque.get(), 255, rowWidth);

    for (int row = 0; row < reader.Height(); ++row) {
        const unsigned char* planes[4] = {};
        const int planesUsed = channels < 4 ? channels : 4;
        for (int plane = 0; plane < planesUsed; ++plane)
            if (!(planes[plane] = reader.Row(row, plane)))
                return nullptr;
        unsigned char* out = pixels.get() + static_cast<std::size_t>(row) * rowBytes;
        switch (planesUsed) {
        case 1:
            InterleaveRow(planes[0], planes[0], planes[0], opaque.get(), rowWidth, out);
            break;
        case 2:
            InterleaveRow(planes[0], planes[0], planes[0], planes[1], rowWidth, out);
            break;
        case 3:
            InterleaveRow(planes[0], planes[1], planes[2], opaque.get(), rowWidth, out);
            break;
        default:
            InterleaveRow(planes[0], planes[1], planes[2], planes[3], rowWidth, out);
            break;
        }
    }
    SetOutputs(dimension, width, height, components, reader.Height() == 1 ? 1 : 2, reader.Width(), reader.Height(),
               channels);
    return reinterpret_cast<unsigned int*>(pixels.release());
}

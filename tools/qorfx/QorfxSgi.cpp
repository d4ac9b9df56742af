#include "QorfxSgi.h"

#include "QorfxOutput.h"
#include "QorfxRender.h"

#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisFoundation/QorTextureReader.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

int QorfxConvertSgi(const std::string& input, const std::string& output)
{
    const std::string format = QorfxImageFormat(output);
    if (format.empty()) {
        std::fprintf(stderr, "qorfx: %s: the output needs an image extension such as .png\n", output.c_str());
        return 2;
    }
    int dimension = 0, width = 0, height = 0, components = 0;
    std::unique_ptr<unsigned int, decltype(&std::free)> pixels(
        readTexture(input.c_str(), &dimension, &width, &height, &components), &std::free);
    if (!pixels) {
        std::fprintf(stderr, "qorfx: %s: not a readable SGI image\n", input.c_str());
        return 1;
    }
    QorTexturePixelImage::Ptr image(
        QorTexturePixelImage::Create(QorString(output.c_str()), QorPixelRGBA8, width, height));
    if (!image) {
        std::fprintf(stderr, "qorfx: %s: image too large\n", input.c_str());
        return 1;
    }
    // SGI rows run from the bottom; pixel images from the top.
    const size_t row = static_cast<size_t>(width) * 4;
    const auto* source = reinterpret_cast<const unsigned char*>(pixels.get());
    for (int y = 0; y < height; ++y)
        std::memcpy(image->GetPixels() + y * row, source + (height - 1 - y) * row, row);
    std::string bytes, why;
    if (!image->Encode(format.c_str(), bytes)) {
        std::fprintf(stderr, "qorfx: %s: cannot write the image (encoding it as %s failed)\n", output.c_str(),
                     format.c_str());
        return 1;
    }
    if (!QorfxOutput::WriteFile(output, bytes, why)) {
        std::fprintf(stderr, "qorfx: %s\n", why.c_str());
        return 1;
    }
    return 0;
}

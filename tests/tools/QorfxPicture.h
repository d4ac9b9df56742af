/// @file
/// Reading back the pictures qorfx writes and comparing them; the gallery's materials
/// with values of their own, for comparing CgFX originals with their GLSL twins.
#pragma once

#include "QorfxRun.h"

#include "QorVisFoundation/QorTexturePixelImage.h"

#include <array>
#include <cstdlib>
#include <string>
#include <utility>

struct Picture
{
    QorTexturePixelImage::Ptr image;
    std::array<int, 3> At(unsigned x, unsigned y) const
    {
        const unsigned char* p = image->GetPixels() + (static_cast<size_t>(y) * image->GetWidth() + x) * image->GetBytesPerPixel();
        return {p[0], p[1], p[2]};
    }
};

inline Picture Read(const std::string& path)
{
    return {QorTexturePixelImage::Ptr(QorTexturePixelImage::ReadFromFile(path.c_str(), QorString(path.c_str())))};
}

/// The mean absolute difference of each colour channel, as a fraction of full scale,
/// between the `width` x `height` region of `a` at (ax, ay) and that of `b` at (bx, by);
/// whole pictures when no region is given.
inline std::array<double, 3> MeanDifference(const Picture& a, const Picture& b, unsigned width = 0,
                                            unsigned height = 0, unsigned ax = 0, unsigned ay = 0, unsigned bx = 0,
                                            unsigned by = 0)
{
    if (width == 0) {
        width = a.image->GetWidth();
        height = a.image->GetHeight();
    }
    std::array<double, 3> sums = {0, 0, 0};
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const auto p = a.At(ax + x, ay + y), q = b.At(bx + x, by + y);
            for (int channel = 0; channel < 3; ++channel)
                sums[channel] += std::abs(p[channel] - q[channel]);
        }
    for (double& sum : sums)
        sum /= 255.0 * width * height;
    return sums;
}

/// The five gallery materials, each with `--set` options that move it off its defaults.
inline const std::pair<std::string, std::string> (&GalleryWithValues())[5]
{
    static const std::pair<std::string, std::string> materials[5] = {
        {"plastic", "--set Diffuse=0.2,0.5,0.9 --set Glossiness=12"},
        {"brushed_metal", "--set RoughnessAcross=0.2 --set BrushDirection=1,1,0"},
        {"textured", "--set Tiling=2"},
        {"chrome", "--set Tint=1,0.8,0.6 --set Fresnel=1"},
        {"toon", "--set Bands=5 --set BaseColor=0.9,0.4,0.1"},
    };
    return materials;
}

/// Packs each gallery material with its values into `folder`/NAME.zpk, as a document made
/// in the samples' folder (its effect named without folders, as on another machine). The
/// packages, each after a space; "" with `failure` saying why when one was not packed.
inline std::string PackGalleryDocuments(const QorTempDir& folder, std::string& failure)
{
    std::string documents;
    for (const auto& [material, values] : GalleryWithValues()) {
        const std::string package = folder.File(material + ".zpk");
        const QorfxResult packed = RunQorfx("pack " + material + ".cgfx " + values + " -o " + package,
                                            "cd '" + QorfxSample("materials") + "' && ");
        if (packed.exitCode != 0) {
            failure = material + ": " + packed.err;
            return {};
        }
        documents += " " + package;
    }
    return documents;
}

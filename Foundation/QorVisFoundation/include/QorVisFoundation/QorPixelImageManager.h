/// @file
/// Images the framework generates itself (render targets, procedural textures), kept by
/// name for the life of the process. They are separate from the process-wide list of
/// QorTexturePixelImage, which holds images loaded from files and packages.
#pragma once

#include "QorVisFoundation/QorTexturePixelImage.h"

class QorPixelImageManager
{
public:
    /// Makes a zeroed image and keeps it. The pointer is borrowed: valid until Clear().
    /// Null when an image of that name was already generated, or for a size or format
    /// QorTexturePixelImage::Create refuses.
    static QorTexturePixelImage* GenerateImage(const QorString& name, unsigned width, unsigned height,
                                               QorPixelImageFormat format);
    /// The generated image of that name, borrowed; null when none.
    static QorTexturePixelImage* GetImage(const QorString& name);
    /// Releases every generated image. Holders that took their own reference keep theirs.
    static void Clear();
};

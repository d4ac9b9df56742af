/// @file
/// Where a texture read from a stream comes to rest: its image joins the process's
/// pixel-image list, and its pixels are cached as a file under "QorTemp"\ZPKResources
/// (a procedural image is generated again instead), so that the renderer can load it
/// like any other texture file. The file keeps the image's file name in a folder named
/// after its bytes ("ZPKResources\<key>\wood.png"): images of different packages that
/// share a file name never share a cached file.
#pragma once

#include "QorSystem/QorString.h"

class QorStreamer;
class QorTexturePixelImage;

namespace QorShaderTextureCache {

/// Takes over the container's reference of `image` and returns the texture file name a
/// value should hold, already registered once with the texture registry for it.
QorString Adopt(QorStreamer& streamer, QorTexturePixelImage& image);

} // namespace QorShaderTextureCache

/// @file
/// GL textures for the texture parameters of a material and for the sky environment.
#pragma once

#include <string>

class QorfxMaterial;

/// Loads every texture file the material's parameters name (SGI files through the
/// library's readTexture, other formats through OpenImageIO), gives each the GL texture
/// name in the shared registry, and returns an empty string or the first problem.
std::string QorfxLoadTextures(QorfxMaterial& material);

/// Turns every texture value's file name into the name of the file it names relative to
/// the material's folder (see QorfxLoadTextures for where files are looked for), and lists
/// each file's image under that name in the process's pixel-image list, where a stream's
/// container takes images from. An empty string, or the first problem: a file that is
/// missing or that the image library cannot read.
std::string QorfxResolveTextureFiles(QorfxMaterial& material);

/// A procedural sky-and-ground cube map; returns its GL texture name.
unsigned int QorfxMakeSkyCubeMap();

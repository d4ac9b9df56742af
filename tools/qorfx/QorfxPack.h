/// @file
/// Materials as ".zpk" documents: the effect, its values and its textures in one zip
/// package, written and read through the shader's Stream and UnStream.
#pragma once

#include <string>
#include <vector>

/// Packs `effect` with the `sets` (NAME=VALUE) applied; returns the exit code.
int QorfxPack(const std::string& effect, const std::vector<std::string>& sets, const std::string& output);

/// Unpacks `package` into `folder`: the effect source, each texture as a PNG and
/// "material.json" with the values. Returns the exit code.
int QorfxUnpack(const std::string& package, const std::string& folder);

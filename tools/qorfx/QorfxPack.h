/// @file
/// Materials as ".zpk" documents: the effect, its values and its textures in one zip
/// package, written and read through the shader's Stream and UnStream.
#pragma once

#include "QorfxOutput.h"

#include <string>

#include <nlohmann/json.hpp>

#include <vector>

class QorfxMaterial;
class QorResourceZPKContainer;

/// Packs `effect` with the `sets` (NAME=VALUE) applied; returns the exit code.
int QorfxPack(const std::string& effect, const std::vector<std::string>& sets, const std::string& output);

/// Writes the materials (at least one) into one ".zpk" document at `output`, through
/// their shaders' Stream with the package holding their effects and texture images. An
/// empty string, or the problem naming the file.
std::string QorfxWritePackage(const std::vector<QorfxMaterial*>& materials, const std::string& output);

/// Unpacks `package` into `folder`: the effect source, each texture as a PNG and
/// "material.json" with the values (texture values name the PNGs). Returns the exit code.
int QorfxUnpack(const std::string& package, const std::string& folder);

/// Writes what unpack writes for a material read from `package` into `folder` (into its
/// folder `sub` when not empty, a name the tool chose: see QorfxOutput), all files or
/// none: the effect sources (when `sources`), each texture as a PNG and "material.json",
/// the material's `description` with texture values naming those PNGs, and the `extra`
/// files. Returns the exit code.
int QorfxWriteUnpacked(const std::string& folder, const std::string& sub, const QorResourceZPKContainer& package,
                       nlohmann::json description, bool sources, const QorfxOutput::Files& extra = {});

/// @file
/// Compiling, linking and reflecting one pass with glslang. Private to QorNvFX.
#pragma once

#include "EffectDescription_p.h"

#include <string>
#include <string_view>
#include <vector>

namespace nvFX::detail {

/// What glslang's reflection of a linked program says it uses.
struct ProgramUsage
{
    std::vector<std::string> uniforms; ///< active uniforms and block members, no "[0]"
    std::vector<std::string> blocks;   ///< active uniform blocks
};

/// A usage as a cache entry holds it, and read back: false when `bytes` are not one.
std::string encodeProgramUsage(const ProgramUsage& usage);
bool decodeProgramUsage(std::string_view bytes, ProgramUsage& usage);

/// Compiles the present stages (non-empty sources, indexed by StageIndex) and links
/// them. On failure prints glslang's messages through nvFX::printf with the effect's
/// sources and lines (messages without a line are given the pass's, `passAt`, and
/// `passLabel`) and returns false. Needs no GL context.
bool compileWithGlslang(const std::string (&stages)[StageCount], const EffectDescription& effect,
                        SourceLocation passAt, const std::string& passLabel, ProgramUsage& usage);

} // namespace nvFX::detail

/// @file
/// The GLSL of one stage of a pass, as glslang and GL compile it. Private to QorNvFX.
#pragma once

#include "EffectDescription_p.h"

#include <string>
#include <vector>

namespace nvFX::detail {

/// The version line stages get when the shared code has none: Mesa's compatibility
/// profile accepts it, and it keeps the built-ins (gl_Vertex, gl_ModelViewMatrix, ...).
constexpr const char* kDefaultVersion = "#version 330 compatibility";

/// The stage's source: the version line; the effect's `#extension` lines; every
/// effect-scope item in effect order (shared code, uniform declarations, constant
/// buffers as std140 uniform blocks, `#define`, `#undef` and `#pragma` lines); then
/// the named code of `code` in the order the pass lists it. Each part is preceded by a
/// `#line` directive giving its line and source number (see SourceNames), so glslang's
/// and GL's messages count in the effect's own lines; source 0 is the version line.
std::string assembleStage(const EffectDescription& effect, const std::vector<CodeReference>& code);

} // namespace nvFX::detail

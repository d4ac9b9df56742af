/// @file
/// Making a pass's GL program from its assembled stages. Private to QorNvFX.
#pragma once

#include "EffectDescription_p.h"
#include "GLObjects_p.h"

#include <string>

namespace nvFX::detail {

/// Compiles the present stages (non-empty sources) and links them in the current GL
/// context. On failure prints GL's log after `label` through nvFX::printf and returns
/// an empty holder. Needs a current context.
GLObject buildGLProgram(const std::string (&stages)[StageCount], const std::string& label);

} // namespace nvFX::detail

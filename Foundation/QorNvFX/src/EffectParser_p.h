/// @file
/// Reads a ".glslfx" text into an EffectDescription. Private to QorNvFX.
#pragma once

#include "EffectDescription_p.h"

namespace nvFX::detail {

/// Parses `text` and the includes it names (through the include callback) into
/// `effect`, checks that every pass names declared code, and prints the first error
/// with its source and line through nvFX::printf. False after an error; `effect` is
/// then incomplete and only good for destruction. Hostile text is refused in time and
/// memory bounded by the limits of the lexer and of the includes.
bool parseEffect(const char* text, EffectDescription& effect);

} // namespace nvFX::detail

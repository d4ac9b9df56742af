/// @file
/// Finds the text of an include the Cg compiler asks for: ".cgh"/".hfx" files on the
/// search paths, every other name from the in-memory include manager. It also refuses
/// includes that reach themselves: the Cg preprocessor expands such a cycle forever.
#pragma once

#include "QorSystem/QorString.h"

#include <Cg/cg.h>

namespace QorShaderIncludeResolver {

/// The Cg compiler's include callback: resolves `name` (as the compiler gives it, with a
/// leading "/") into the context, or reports why it cannot.
void ResolveInclude(CGcontext context, const char* name);

/// True when the include `requested` (as the compiler names it) leads back to itself
/// through #include lines, directly or through others.
bool IsCyclic(const char* requested);

} // namespace QorShaderIncludeResolver

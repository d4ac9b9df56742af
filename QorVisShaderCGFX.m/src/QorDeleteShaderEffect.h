/// @file
/// The framework's service that gives back a Cg effect the library no longer needs.
#pragma once

#include <Cg/cg.h>

/// Destroys a Cg effect with cgDestroyEffect, which also frees its techniques, programs
/// and parameters, after telling the GL service observer. Null is ignored.
void DeleteShaderEffect(CGeffect effect);

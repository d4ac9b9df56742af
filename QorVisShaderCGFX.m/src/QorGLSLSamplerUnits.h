/// @file
/// Texture units of the samplers a Cg GLSL program declares but never reads.
#pragma once

#include <Cg/cg.h>

/// Gives every sampler uniform of the technique's linked GLSL programs that the Cg runtime
/// left without a texture unit (a member of a structure the program uses, never read)
/// a unit of its own type that no sampler the program reads is on.
///
/// The Cg GL runtime assigns units only to the samplers a program reads; the others keep
/// unit 0, and when a sampler of another type uses unit 0, GL refuses to draw with the
/// program ("samplers of different types on one unit") and the pass draws nothing. Needs
/// the technique validated in the current GL context; programs of other profiles are left
/// alone. The GL program binding is restored.
void QorSeparateUnusedSamplerUnits(CGtechnique technique);

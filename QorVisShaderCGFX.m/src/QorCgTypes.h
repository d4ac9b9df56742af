/// @file
/// How the CgFX code classifies Cg parameter types.
#pragma once

#include <Cg/cg.h>

/// True for the types a texture value stands for: the 1D, 2D, rectangle, 3D, cube and
/// multisample samplers, and strings (a texture file named in the effect).
inline bool QorIsCgTextureType(int type)
{
    return (type >= CG_SAMPLER1D && type <= CG_SAMPLERCUBE) || type == CG_STRING || type == CG_SAMPLER2DMS;
}

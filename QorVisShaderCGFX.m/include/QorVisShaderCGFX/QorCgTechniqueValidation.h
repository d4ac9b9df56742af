/// @file
/// Asking Cg whether a technique runs in the current GL context, without handing it one
/// its GL layer cannot drive.
#pragma once

#include <Cg/cgGL.h>

/// cgValidateTechnique, once the context is known to support the profile of every program
/// of every pass. Cg's GL layer drives a geometry program through GL_EXT_geometry_shader4
/// without asking whether the context has it, and crashes where it has not (Mesa); such a
/// technique is not valid here. Needs a current GL context, as cgValidateTechnique does.
inline bool QorCgValidateTechnique(CGtechnique technique)
{
    for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass))
        for (CGdomain domain : {CG_VERTEX_DOMAIN, CG_GEOMETRY_DOMAIN, CG_FRAGMENT_DOMAIN})
            if (const CGprogram program = cgGetPassProgram(pass, domain))
                if (!cgGLIsProfileSupported(cgGetProgramProfile(program)))
                    return false;
    return cgValidateTechnique(technique) == CG_TRUE;
}

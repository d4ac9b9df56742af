// Before any GL header: the GL 2.0 program queries are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "QorGLSLSamplerUnits.h"

#include <Cg/cgGL.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include <map>
#include <set>
#include <string>

namespace {

bool IsGLSL(CGprogram program)
{
    const CGprofile profile = program ? cgGetProgramProfile(program) : CG_PROFILE_UNKNOWN;
    return profile == CG_PROFILE_GLSLV || profile == CG_PROFILE_GLSLF || profile == CG_PROFILE_GLSLG;
}

bool IsSamplerType(GLenum type)
{
    switch (type) {
    case GL_SAMPLER_1D:
    case GL_SAMPLER_2D:
    case GL_SAMPLER_3D:
    case GL_SAMPLER_CUBE:
    case GL_SAMPLER_2D_RECT_ARB:
    case GL_SAMPLER_1D_SHADOW:
    case GL_SAMPLER_2D_SHADOW:
        return true;
    default:
        return false;
    }
}

bool HasGLSL(CGpass pass)
{
    for (CGdomain domain : {CG_VERTEX_DOMAIN, CG_FRAGMENT_DOMAIN, CG_GEOMETRY_DOMAIN})
        if (IsGLSL(cgGetPassProgram(pass, domain)))
            return true;
    return false;
}

// The GL names of the samplers the pass's GLSL programs read, and the units they are on.
void ReadSamplers(CGpass pass, std::set<std::string>& names, std::set<GLint>& units)
{
    for (CGdomain domain : {CG_VERTEX_DOMAIN, CG_FRAGMENT_DOMAIN, CG_GEOMETRY_DOMAIN}) {
        const CGprogram program = cgGetPassProgram(pass, domain);
        if (!IsGLSL(program))
            continue;
        for (CGenum space : {CG_PROGRAM, CG_GLOBAL})
            for (CGparameter parameter = cgGetFirstLeafParameter(program, space); parameter;
                 parameter = cgGetNextLeafParameter(parameter)) {
                const char* resource = cgGetParameterResourceName(parameter);
                if (!cgIsParameterReferenced(parameter) || !resource)
                    continue;
                const GLenum unit = cgGLGetTextureEnum(parameter);
                if (unit >= GL_TEXTURE0 && unit < GL_TEXTURE0 + 256) {
                    names.insert(resource);
                    units.insert(static_cast<GLint>(unit - GL_TEXTURE0));
                }
            }
    }
}

// Moves the unread samplers of the bound program to spare units, one unit per sampler type.
void SeparateUnread(GLuint program, const std::set<std::string>& read, std::set<GLint>& taken)
{
    GLint count = 0, units = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    glGetIntegerv(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, &units);
    std::map<GLenum, GLint> spareOfType;
    for (GLint index = 0; index < count; ++index) {
        GLchar name[256];
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(program, static_cast<GLuint>(index), sizeof name, nullptr, &size, &type, name);
        if (!IsSamplerType(type) || read.count(name))
            continue;
        auto spare = spareOfType.find(type);
        if (spare == spareOfType.end()) {
            GLint unit = 0;
            while (unit < units && taken.count(unit))
                ++unit;
            if (unit == units)
                return; // no unit left: GL keeps refusing, as before
            taken.insert(unit);
            spare = spareOfType.emplace(type, unit).first;
        }
        glUniform1i(glGetUniformLocation(program, name), spare->second);
    }
}

} // namespace

void QorSeparateUnusedSamplerUnits(CGtechnique technique)
{
    GLint previous = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &previous);
    for (CGpass pass = cgGetFirstPass(technique); pass; pass = cgGetNextPass(pass)) {
        std::set<std::string> read;
        std::set<GLint> taken;
        ReadSamplers(pass, read, taken);
        if (!HasGLSL(pass))
            continue;
        // Setting the pass state links and binds the pass's GLSL program.
        cgSetPassState(pass);
        GLint program = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        if (program != 0)
            SeparateUnread(static_cast<GLuint>(program), read, taken);
        cgResetPassState(pass);
    }
    glUseProgram(static_cast<GLuint>(previous));
}

// Before any GL header: the GL 2.0 program functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "GLProgram_p.h"

#include "nvFX/nvFX.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <vector>

namespace nvFX::detail {

namespace {

constexpr GLenum kShaderTypes[StageCount] = {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER, GL_GEOMETRY_SHADER,
                                             GL_TESS_CONTROL_SHADER, GL_TESS_EVALUATION_SHADER};
constexpr const char* kStageNames[StageCount] = {"vertex", "fragment", "geometry", "tessellation control",
                                                 "tessellation evaluation"};

template <typename GetLength, typename GetLog>
std::string InfoLog(GLuint object, GetLength getLength, GetLog getLog)
{
    GLint length = 0;
    getLength(object, GL_INFO_LOG_LENGTH, &length);
    std::vector<GLchar> log(static_cast<std::size_t>(length > 0 ? length : 1), '\0');
    getLog(object, static_cast<GLsizei>(log.size()), nullptr, log.data());
    return log.data();
}

} // namespace

GLObject buildGLProgram(const std::string (&stages)[StageCount], const std::string& label)
{
    GLObject program(glCreateProgram(), deleteGLProgram);
    if (!program) {
        nvFX::printf("%s: GL made no program\n", label.c_str());
        return GLObject();
    }
    // Attached shaders live on with the program; ours go when this function returns.
    GLObject shaders[StageCount];
    for (int stage = 0; stage < StageCount; ++stage) {
        if (stages[stage].empty())
            continue;
        shaders[stage] = GLObject(glCreateShader(kShaderTypes[stage]), deleteGLShader);
        const GLchar* text = stages[stage].c_str();
        glShaderSource(shaders[stage].get(), 1, &text, nullptr);
        glCompileShader(shaders[stage].get());
        GLint compiled = GL_FALSE;
        glGetShaderiv(shaders[stage].get(), GL_COMPILE_STATUS, &compiled);
        if (!compiled) {
            nvFX::printf("%s: GL does not compile the %s stage:\n%s\n", label.c_str(), kStageNames[stage],
                         InfoLog(shaders[stage].get(), glGetShaderiv, glGetShaderInfoLog).c_str());
            return GLObject();
        }
        glAttachShader(program.get(), shaders[stage].get());
    }
    glLinkProgram(program.get());
    GLint linked = GL_FALSE;
    glGetProgramiv(program.get(), GL_LINK_STATUS, &linked);
    if (!linked) {
        nvFX::printf("%s: GL does not link the program:\n%s\n", label.c_str(),
                     InfoLog(program.get(), glGetProgramiv, glGetProgramInfoLog).c_str());
        return GLObject();
    }
    return program;
}

} // namespace nvFX::detail

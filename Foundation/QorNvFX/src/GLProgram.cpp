// Before any GL header: the GL 2.0 program functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "GLProgram_p.h"

#include "nvFX/nvFX.h"

#include "ProgramCache_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstring>
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

const char* GLText(GLenum name)
{
    const GLubyte* text = glGetString(name);
    return text ? reinterpret_cast<const char*>(text) : "";
}

// A binary is good only for the driver that wrote it, and for the very same stages.
CacheKey BinaryKey(const std::string (&stages)[StageCount])
{
    CacheKeyBuilder key("GL program binary");
    key.add(GLText(GL_VENDOR)).add(GLText(GL_RENDERER)).add(GLText(GL_VERSION));
    for (const std::string& stage : stages)
        key.add(stage);
    return key.finish();
}

// The program of a cached binary; empty when the driver does not take it back.
GLObject ProgramOfBinary(std::string_view payload)
{
    std::uint32_t format = 0;
    if (!readU32(payload, format) || payload.empty())
        return GLObject();
    GLObject program(glCreateProgram(), deleteGLProgram);
    if (!program)
        return program;
    glProgramBinary(program.get(), format, payload.data(), static_cast<GLsizei>(payload.size()));
    GLint linked = GL_FALSE;
    glGetProgramiv(program.get(), GL_LINK_STATUS, &linked);
    return linked ? std::move(program) : GLObject();
}

void StoreBinary(GLuint program, const CacheKey& key)
{
    GLint length = 0;
    glGetProgramiv(program, GL_PROGRAM_BINARY_LENGTH, &length);
    if (length <= 0)
        return;
    std::string binary(static_cast<std::size_t>(length), '\0');
    GLenum format = 0;
    glGetProgramBinary(program, length, &length, &format, binary.data());
    if (length <= 0)
        return;
    binary.resize(static_cast<std::size_t>(length));
    std::string payload;
    appendU32(payload, format);
    writeCacheEntry(CacheKind::ProgramBinary, key, payload + binary);
}

GLObject CompileAndLink(const std::string (&stages)[StageCount], const std::string& label, bool retrievable)
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
    if (retrievable)
        glProgramParameteri(program.get(), GL_PROGRAM_BINARY_RETRIEVABLE_HINT, GL_TRUE);
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

} // namespace

GLObject buildGLProgram(const std::string (&stages)[StageCount], const std::string& label)
{
    // Asked only of a driver that offers binaries: the query would leave an error behind.
    GLint formats = 0;
    if (cacheIsOn() && std::strstr(GLText(GL_EXTENSIONS), "GL_ARB_get_program_binary"))
        glGetIntegerv(GL_NUM_PROGRAM_BINARY_FORMATS, &formats);
    if (formats <= 0)
        return CompileAndLink(stages, label, false);
    const CacheKey key = BinaryKey(stages);
    std::string payload;
    if (readCacheEntry(CacheKind::ProgramBinary, key, payload)) {
        if (GLObject program = ProgramOfBinary(payload))
            return program;
        nvFX::printf("%s: the driver did not take the cached program back; compiled from source\n", label.c_str());
    }
    GLObject program = CompileAndLink(stages, label, true);
    if (program)
        StoreBinary(program.get(), key);
    return program;
}

} // namespace nvFX::detail

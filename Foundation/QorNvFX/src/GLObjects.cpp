// Before any GL header: glDeleteProgram and friends are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "GLObjects_p.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

#include <utility>

namespace nvFX::detail {

const void* currentGLContext()
{
    return glXGetCurrentContext();
}

GLObject::GLObject(unsigned int name, Deleter deleter)
    : m_name(name), m_deleter(deleter), m_context(currentGLContext())
{
}

GLObject::~GLObject()
{
    reset();
}

GLObject::GLObject(GLObject&& other) noexcept
    : m_name(std::exchange(other.m_name, 0)), m_deleter(other.m_deleter), m_context(other.m_context)
{
}

GLObject& GLObject::operator=(GLObject&& other) noexcept
{
    if (this != &other) {
        reset();
        m_name = std::exchange(other.m_name, 0);
        m_deleter = other.m_deleter;
        m_context = other.m_context;
    }
    return *this;
}

void GLObject::reset()
{
    if (m_name != 0 && m_context != nullptr && currentGLContext() == m_context)
        m_deleter(m_name);
    m_name = 0;
}

void deleteGLProgram(unsigned int name)
{
    glDeleteProgram(name);
}

void deleteGLShader(unsigned int name)
{
    glDeleteShader(name);
}

void deleteGLBuffer(unsigned int name)
{
    glDeleteBuffers(1, &name);
}

} // namespace nvFX::detail

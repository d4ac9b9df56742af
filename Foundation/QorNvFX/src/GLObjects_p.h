/// @file
/// Ownership of GL objects across contexts. Private to QorNvFX.
#pragma once

namespace nvFX::detail {

/// The GLX context current on the calling thread; null when none is.
const void* currentGLContext();

/// Owns one GL object name, made in the context current at construction. The destructor
/// deletes it only when that context is current again: in another context the name
/// means another object (or none), and without one the object dies with its context.
/// Move-only; a moved-from holder owns nothing.
class GLObject
{
public:
    using Deleter = void (*)(unsigned int name);

    GLObject() = default;
    GLObject(unsigned int name, Deleter deleter);
    ~GLObject();
    GLObject(GLObject&& other) noexcept;
    GLObject& operator=(GLObject&& other) noexcept;
    GLObject(const GLObject&) = delete;
    GLObject& operator=(const GLObject&) = delete;

    unsigned int get() const { return m_name; }
    explicit operator bool() const { return m_name != 0; }

private:
    void reset();

    unsigned int m_name = 0;
    Deleter m_deleter = nullptr;
    const void* m_context = nullptr;
};

void deleteGLProgram(unsigned int name);
void deleteGLShader(unsigned int name);
void deleteGLBuffer(unsigned int name);

} // namespace nvFX::detail

// Before any GL header: the uniform-buffer functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "ConstantBuffer_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstring>

namespace nvFX::detail {

ConstantBuffer::ConstantBuffer(std::string name, unsigned int bindingPoint, bool global)
    : m_name(std::move(name)), m_bindingPoint(bindingPoint), m_global(global)
{
}

Uniform* ConstantBuffer::findMember(std::string_view name) const
{
    for (const std::unique_ptr<Uniform>& member : m_members)
        if (name == member->getName())
            return member.get();
    return nullptr;
}

void ConstantBuffer::attach(unsigned int program)
{
    const GLuint block = glGetUniformBlockIndex(program, m_name.c_str());
    if (block == GL_INVALID_INDEX)
        return;
    glUniformBlockBinding(program, block, m_bindingPoint);
    if (m_layout.empty()) {
        GLint size = 0;
        glGetActiveUniformBlockiv(program, block, GL_UNIFORM_BLOCK_DATA_SIZE, &size);
        m_bytes.assign(static_cast<std::size_t>(size > 0 ? size : 0), 0);
        learnLayout(program);
    }
}

// std140 fixes the layout, so every program that uses the block agrees with the first.
void ConstantBuffer::learnLayout(unsigned int program)
{
    m_layout.resize(m_members.size());
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        const GLchar* name = m_members[i]->getName();
        GLuint index = GL_INVALID_INDEX;
        glGetUniformIndices(program, 1, &name, &index);
        if (index == GL_INVALID_INDEX)
            continue;
        glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_OFFSET, &m_layout[i].offset);
        glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_ARRAY_STRIDE, &m_layout[i].arrayStride);
        glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_MATRIX_STRIDE, &m_layout[i].matrixStride);
    }
}

// Each component lands at offset + element * arrayStride + column * matrixStride + row *
// its size (8 for doubles, 4 for the rest; bools are 4-byte integers in a block).
void ConstantBuffer::pack()
{
    for (std::size_t i = 0; i < m_members.size(); ++i) {
        const Uniform& member = *m_members[i];
        const MemberLayout& layout = m_layout[i];
        if (layout.offset < 0)
            continue;
        const int columns = member.type().columns ? member.type().columns : 1;
        const int rows = member.type().components / columns;
        const bool isFloat = isFloating(member.type().base);
        const bool isDouble = member.type().base == ValueBase::Double;
        const std::size_t componentBytes = isDouble ? 8 : 4;
        for (int element = 0, component = 0; element < member.elements(); ++element) {
            for (int column = 0; column < columns; ++column) {
                for (int row = 0; row < rows; ++row, ++component) {
                    const std::size_t at = static_cast<std::size_t>(layout.offset) +
                                           static_cast<std::size_t>(element) * layout.arrayStride +
                                           static_cast<std::size_t>(column) * layout.matrixStride +
                                           static_cast<std::size_t>(row) * componentBytes;
                    if (at + componentBytes > m_bytes.size())
                        continue;
                    const double asDouble = isDouble ? member.floats()[component] : 0.0;
                    const void* value = isDouble  ? static_cast<const void*>(&asDouble)
                                        : isFloat ? static_cast<const void*>(&member.floats()[component])
                                                  : static_cast<const void*>(&member.ints()[component]);
                    std::memcpy(&m_bytes[at], value, componentBytes);
                }
            }
        }
    }
}

void ConstantBuffer::bind()
{
    if (m_layout.empty())
        return;
    if (!m_buffer) {
        GLuint name = 0;
        glGenBuffers(1, &name);
        m_buffer = GLObject(name, deleteGLBuffer);
    }
    if (m_uploadedVersion != m_version) {
        pack();
        glBindBuffer(GL_UNIFORM_BUFFER, m_buffer.get());
        // The storage is made once; later uploads rewrite it in place, which costs a
        // copy instead of a new allocation every frame a member changes.
        if (m_uploadedVersion == 0)
            glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(m_bytes.size()), m_bytes.data(), GL_DYNAMIC_DRAW);
        else
            glBufferSubData(GL_UNIFORM_BUFFER, 0, static_cast<GLsizeiptr>(m_bytes.size()), m_bytes.data());
        m_uploadedVersion = m_version;
    }
    glBindBufferBase(GL_UNIFORM_BUFFER, m_bindingPoint, m_buffer.get());
}

} // namespace nvFX::detail

// Before any GL header: the uniform-buffer functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "ConstantBuffer_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstring>

namespace nvFX::detail {

ConstantBuffer::ConstantBuffer(std::string name, unsigned int bindingPoint, bool global)
    : m_name(std::move(name)), m_bindingPoint(bindingPoint), m_global(global)
{
}

void ConstantBuffer::addMember(std::unique_ptr<Uniform> member)
{
    member->placeInBuffer(static_cast<int>(m_members.size()));
    m_members.push_back(std::move(member));
    m_stale.push_back(0);
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
void ConstantBuffer::pack(std::size_t member, std::size_t& first, std::size_t& end)
{
    const Uniform& uniform = *m_members[member];
    const MemberLayout& layout = m_layout[member];
    if (layout.offset < 0)
        return;
    const int columns = uniform.type().columns ? uniform.type().columns : 1;
    const int rows = uniform.type().components / columns;
    const bool isFloat = isFloating(uniform.type().base);
    const bool isDouble = uniform.type().base == ValueBase::Double;
    const std::size_t componentBytes = isDouble ? 8 : 4;
    if (isFloat && !isDouble && columns == 1 && uniform.elements() == 1) {
        // A float or a float vector is one run of bytes: what a frame changes most.
        const std::size_t at = static_cast<std::size_t>(layout.offset);
        const std::size_t bytes = static_cast<std::size_t>(rows) * componentBytes;
        if (at + bytes <= m_bytes.size()) {
            std::memcpy(&m_bytes[at], uniform.floats(), bytes);
            first = std::min(first, at);
            end = std::max(end, at + bytes);
        }
        return;
    }
    for (int element = 0, component = 0; element < uniform.elements(); ++element) {
        for (int column = 0; column < columns; ++column) {
            for (int row = 0; row < rows; ++row, ++component) {
                const std::size_t at = static_cast<std::size_t>(layout.offset) +
                                       static_cast<std::size_t>(element) * layout.arrayStride +
                                       static_cast<std::size_t>(column) * layout.matrixStride +
                                       static_cast<std::size_t>(row) * componentBytes;
                if (at + componentBytes > m_bytes.size())
                    continue;
                const double asDouble = isDouble ? uniform.floats()[component] : 0.0;
                const void* value = isDouble  ? static_cast<const void*>(&asDouble)
                                    : isFloat ? static_cast<const void*>(&uniform.floats()[component])
                                              : static_cast<const void*>(&uniform.ints()[component]);
                std::memcpy(&m_bytes[at], value, componentBytes);
                first = std::min(first, at);
                end = std::max(end, at + componentBytes);
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
    std::size_t first = m_bytes.size();
    std::size_t end = 0;
    if (!m_stored) {
        for (std::size_t member = 0; member < m_members.size(); ++member)
            pack(member, first, end);
        glBindBuffer(GL_UNIFORM_BUFFER, m_buffer.get());
        glBufferData(GL_UNIFORM_BUFFER, static_cast<GLsizeiptr>(m_bytes.size()), m_bytes.data(), GL_DYNAMIC_DRAW);
        m_stored = true;
    } else if (!m_staleMembers.empty()) {
        // Only the span the changed members cover is copied: a few members of a large
        // block cost a few members' bytes.
        for (const int member : m_staleMembers)
            pack(static_cast<std::size_t>(member), first, end);
        if (end > first) {
            glBindBuffer(GL_UNIFORM_BUFFER, m_buffer.get());
            glBufferSubData(GL_UNIFORM_BUFFER, static_cast<GLintptr>(first), static_cast<GLsizeiptr>(end - first),
                            m_bytes.data() + first);
        }
    }
    for (const int member : m_staleMembers)
        m_stale[static_cast<std::size_t>(member)] = 0;
    m_staleMembers.clear();
    glBindBufferBase(GL_UNIFORM_BUFFER, m_bindingPoint, m_buffer.get());
}

} // namespace nvFX::detail

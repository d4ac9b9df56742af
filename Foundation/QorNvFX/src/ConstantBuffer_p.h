/// @file
/// A constant buffer: a std140 uniform block whose members are uniforms, kept in a GL
/// buffer object. Private to QorNvFX.
#pragma once

#include "GLObjects_p.h"
#include "Uniform_p.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nvFX::detail {

class ConstantBuffer
{
public:
    /// Every program that uses the buffer reads it from GL uniform-buffer binding
    /// point `bindingPoint`; a `global` one is shared by the effects that declare it.
    ConstantBuffer(std::string name, unsigned int bindingPoint, bool global);

    const std::string& name() const { return m_name; }
    bool global() const { return m_global; }
    void addMember(std::unique_ptr<Uniform> member) { m_members.push_back(std::move(member)); }
    const std::vector<std::unique_ptr<Uniform>>& members() const { return m_members; }
    Uniform* findMember(std::string_view name) const;
    /// A member's value changed: the buffer is uploaded again at the next bind().
    void changed() { ++m_version; }

    /// In the current context, right after `program` was linked: points the program's
    /// block at the binding point, and learns the block's layout from the first program.
    void attach(unsigned int program);
    /// At a pass's setup: uploads the members' values when they changed since the last
    /// upload (making the buffer object at the first), and binds it to the binding point.
    void bind();

private:
    struct MemberLayout
    {
        int offset = -1; ///< -1: GL answered nothing for the member
        int arrayStride = 0;
        int matrixStride = 0;
    };

    void learnLayout(unsigned int program);
    void pack();

    std::string m_name;
    unsigned int m_bindingPoint;
    bool m_global;
    std::vector<std::unique_ptr<Uniform>> m_members;
    std::vector<MemberLayout> m_layout; ///< one per member; empty until learned
    std::vector<unsigned char> m_bytes; ///< the block's data as GL reads it
    GLObject m_buffer;
    unsigned int m_version = 1;
    unsigned int m_uploadedVersion = 0;
};

} // namespace nvFX::detail

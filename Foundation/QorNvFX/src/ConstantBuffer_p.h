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
    void addMember(std::unique_ptr<Uniform> member);
    const std::vector<std::unique_ptr<Uniform>>& members() const { return m_members; }
    Uniform* findMember(std::string_view name) const;
    /// The value of member `member` (its place in members()) changed: the next bind()
    /// packs and uploads it again, with the other members that changed, and only them.
    void changed(int member)
    {
        if (m_stale[static_cast<std::size_t>(member)])
            return;
        m_stale[static_cast<std::size_t>(member)] = 1;
        m_staleMembers.push_back(member);
    }

    /// In the current context, right after `program` was linked: points the program's
    /// block at the binding point, and learns the block's layout from the first program.
    void attach(unsigned int program);
    /// At a pass's setup: uploads the members' values that changed since the last upload
    /// (the whole block at the first, making the buffer object), and binds it to the
    /// binding point.
    void bind();

private:
    struct MemberLayout
    {
        int offset = -1; ///< -1: GL answered nothing for the member
        int arrayStride = 0;
        int matrixStride = 0;
    };

    void learnLayout(unsigned int program);
    /// Writes member `member` into the block's bytes, widening [first, end) to cover it.
    void pack(std::size_t member, std::size_t& first, std::size_t& end);

    std::string m_name;
    unsigned int m_bindingPoint;
    bool m_global;
    std::vector<std::unique_ptr<Uniform>> m_members;
    std::vector<MemberLayout> m_layout; ///< one per member; empty until learned
    std::vector<unsigned char> m_bytes; ///< the block's data as GL reads it
    GLObject m_buffer;
    bool m_stored = false;           ///< whether the buffer object holds the whole block
    std::vector<char> m_stale;       ///< per member: changed since the last upload
    std::vector<int> m_staleMembers; ///< the members whose m_stale is set
};

} // namespace nvFX::detail

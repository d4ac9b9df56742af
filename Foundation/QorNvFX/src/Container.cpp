#include "Container_p.h"

#include "Lookup_p.h"

#include <new>
#include <string_view>

namespace nvFX {

IContainer* IContainer::create(const char* name)
{
    try {
        return new detail::Container(name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void IContainer::destroy(IContainer* container)
{
    // Every container comes from create().
    delete static_cast<detail::Container*>(container);
}

namespace detail {

ITechnique* Container::findTechnique(int index)
{
    return atIndex(m_content.techniques, index);
}

ITechnique* Container::findTechnique(const char* name)
{
    return byName(m_content.techniques, name);
}

IUniform* Container::findUniform(int index)
{
    return atIndex(m_content.uniforms, index);
}

IUniform* Container::findUniform(const char* name)
{
    return byName(m_content.uniforms, name);
}

IUniform* Container::findBufferUniform(const char* name)
{
    if (!name)
        return nullptr;
    const std::string_view wanted(name);
    const std::size_t dot = wanted.find('.');
    for (const std::shared_ptr<ConstantBuffer>& buffer : m_content.buffers) {
        if (dot == std::string_view::npos) {
            if (Uniform* member = buffer->findMember(wanted))
                return member;
        } else if (wanted.substr(0, dot) == buffer->name()) {
            return buffer->findMember(wanted.substr(dot + 1));
        }
    }
    return nullptr;
}

const char* Container::getBufferName(int buffer) const
{
    const ConstantBuffer* found = atIndex(m_content.buffers, buffer);
    return found ? found->name().c_str() : nullptr;
}

bool Container::isBufferGlobal(int buffer) const
{
    const ConstantBuffer* found = atIndex(m_content.buffers, buffer);
    return found && found->global();
}

IUniform* Container::getBufferMember(int buffer, int member)
{
    const ConstantBuffer* found = atIndex(m_content.buffers, buffer);
    return found ? atIndex(found->members(), member) : nullptr;
}

} // namespace detail
} // namespace nvFX

#include "Container_p.h"

#include <cstring>
#include <new>
#include <string_view>

namespace nvFX {

IContainer* IContainer::create(const char* name)
{
    return new (std::nothrow) detail::Container(name);
}

void IContainer::destroy(IContainer* container)
{
    // Every container comes from create().
    delete static_cast<detail::Container*>(container);
}

namespace detail {

namespace {

template <typename T>
T* AtIndex(const std::vector<std::unique_ptr<T>>& items, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < items.size() ? items[static_cast<std::size_t>(index)].get()
                                                                         : nullptr;
}

template <typename T>
T* ByName(const std::vector<std::unique_ptr<T>>& items, const char* name)
{
    if (!name)
        return nullptr;
    for (const std::unique_ptr<T>& item : items)
        if (std::strcmp(item->getName(), name) == 0)
            return item.get();
    return nullptr;
}

} // namespace

ITechnique* Container::findTechnique(int index)
{
    return AtIndex(m_content.techniques, index);
}

ITechnique* Container::findTechnique(const char* name)
{
    return ByName(m_content.techniques, name);
}

IUniform* Container::findUniform(int index)
{
    return AtIndex(m_content.uniforms, index);
}

IUniform* Container::findUniform(const char* name)
{
    return ByName(m_content.uniforms, name);
}

IUniform* Container::findBufferUniform(const char* name)
{
    if (!name)
        return nullptr;
    const std::string_view wanted(name);
    const std::size_t dot = wanted.find('.');
    for (const std::unique_ptr<ConstantBuffer>& buffer : m_content.buffers) {
        if (dot == std::string_view::npos) {
            if (Uniform* member = buffer->findMember(wanted))
                return member;
        } else if (wanted.substr(0, dot) == buffer->name()) {
            return buffer->findMember(wanted.substr(dot + 1));
        }
    }
    return nullptr;
}

} // namespace detail
} // namespace nvFX

/// @file
/// Look-ups the runtime's objects share: by index and by name over what they own, by
/// name over a constant table. Private to QorNvFX.
#pragma once

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace nvFX::detail {

/// The item at `index` of a vector of owning pointers (unique or shared); null for an
/// index out of range.
template <typename Pointers>
auto atIndex(const Pointers& items, int index) -> decltype(items.front().get())
{
    return index >= 0 && static_cast<std::size_t>(index) < items.size() ? items[static_cast<std::size_t>(index)].get()
                                                                         : nullptr;
}

/// The first item whose getName() is `name`; null for a null or unknown name.
template <typename T>
T* byName(const std::vector<std::unique_ptr<T>>& items, const char* name)
{
    if (!name)
        return nullptr;
    for (const std::unique_ptr<T>& item : items)
        if (std::strcmp(item->getName(), name) == 0)
            return item.get();
    return nullptr;
}

/// The entry of `table` whose `field` is `name`; null when none is.
template <typename T, std::size_t N>
const T* inTable(const T (&table)[N], const char* const T::*field, std::string_view name)
{
    for (const T& entry : table)
        if (name == entry.*field)
            return &entry;
    return nullptr;
}

} // namespace nvFX::detail

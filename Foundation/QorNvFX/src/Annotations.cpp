#include "Annotations_p.h"

#include <algorithm>

namespace nvFX::detail {

const AnnotationEntry* Annotations::find(const char* name) const
{
    if (!name)
        return nullptr;
    for (const AnnotationEntry& entry : m_entries)
        if (entry.name == name)
            return &entry;
    return nullptr;
}

const char* Annotations::getAnnotationString(const char* name) const
{
    const AnnotationEntry* entry = find(name);
    return entry && entry->isString ? entry->text.c_str() : nullptr;
}

float Annotations::getAnnotationFloat(const char* name) const
{
    const AnnotationEntry* entry = find(name);
    return entry && !entry->numbers.empty() ? entry->numbers.front() : 0.0f;
}

int Annotations::getAnnotationInt(const char* name) const
{
    // Clamped first: a float beyond int's range has no int value to truncate to.
    const float value = std::clamp(getAnnotationFloat(name), -2147483648.0f, 2147483520.0f);
    return static_cast<int>(value);
}

int Annotations::getNumAnnotations() const
{
    return static_cast<int>(m_entries.size());
}

const char* Annotations::getAnnotationName(int index) const
{
    return index >= 0 && index < getNumAnnotations() ? m_entries[static_cast<std::size_t>(index)].name.c_str() : nullptr;
}

int Annotations::getAnnotationFloatv(const char* name, float* values, int capacity) const
{
    const AnnotationEntry* entry = find(name);
    if (!entry)
        return 0;
    const int count = static_cast<int>(entry->numbers.size());
    if (values && capacity > 0)
        std::copy_n(entry->numbers.begin(), std::min(count, capacity), values);
    return count;
}

} // namespace nvFX::detail

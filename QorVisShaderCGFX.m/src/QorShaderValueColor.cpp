#include "QorShaderValueColor.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <algorithm>

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueColor", 108, 0, 121, 89, 0, 82};

} // namespace

QorShaderValueColor::QorShaderValueColor(int count) : QorShaderValueColor(nullptr, nullptr, count) {}

QorShaderValueColor::QorShaderValueColor(CGparameter parameter, const float* values, int count)
    : QorShaderValue(kGuards, parameter), m_count(count)
{
    if (values)
        std::copy(values, values + MovedCount(), m_components);
}

QorShaderValueColor::QorShaderValueColor(const QorShaderValueColor& other)
    : QorShaderValue(other), m_count(other.m_count)
{
    std::copy(other.m_components, other.m_components + 4, m_components);
}

int QorShaderValueColor::MovedCount() const
{
    // A count above 4 stays visible (type 2, GetComponentCount) but reads and writes stop
    // at the four stored floats: moving more would run past the storage.
    return std::clamp(m_count, 0, 4);
}

void QorShaderValueColor::GetType(int* type)
{
    if (!type)
        return;
    *type = QorColorTypeOf(m_count);
}

int QorShaderValueColor::GetColor(float* values)
{
    Get(values);
    return m_modified;
}

void QorShaderValueColor::SetColor(const float* values)
{
    if (!values)
        return;
    std::copy(values, values + MovedCount(), m_components);
    m_modified = 1;
}

int QorShaderValueColor::Get(void* out)
{
    if (out)
        std::copy(m_components, m_components + MovedCount(), static_cast<float*>(out));
    return m_modified;
}

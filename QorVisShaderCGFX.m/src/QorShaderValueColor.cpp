#include "QorShaderValueColor.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <algorithm>

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueColor", 108, 0, 121, 89, 0, 82};

} // namespace

QorShaderValueColor::QorShaderValueColor(int count) : QorShaderValueColor(nullptr, nullptr, count) {}

QorShaderValueColor::QorShaderValueColor(CGparameter parameter, const float* values, int count)
    : QorShaderValue(QorColorTypeOf(count), parameter), m_count(count)
{
    if (values)
        Move(values, m_components);
}

QorShaderValueColor::QorShaderValueColor(const QorShaderValueColor& other)
    : QorShaderValue(other), m_count(other.m_count)
{
    std::copy(other.m_components, other.m_components + 4, m_components);
}

int QorShaderValueColor::GetColor(float* values)
{
    Get(values);
    return m_modified;
}

int QorShaderValueColor::Get(void* out)
{
    if (out)
        Move(m_components, static_cast<float*>(out));
    return m_modified;
}

const QorShaderValueGuards& QorShaderValueColor::Guards() const
{
    return kGuards;
}

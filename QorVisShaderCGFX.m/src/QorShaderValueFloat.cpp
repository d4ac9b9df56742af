#include "QorShaderValueFloat.h"

#include "QorVisShaders/QorShaderValueType.h"

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueFloat", 0, 84, 92, 60, 53, 0};

} // namespace

// A malloc chunk of 48 bytes: denser values mean fewer cache lines per material per frame.
static_assert(sizeof(QorShaderValueFloat) <= 40, "a float value grew past 40 bytes");

QorShaderValueFloat::QorShaderValueFloat(CGparameter parameter, float value)
    : QorShaderValue(QorValueFloat, parameter), m_value(value)
{
}

int QorShaderValueFloat::GetFloat(float* value)
{
    Get(value);
    return m_modified;
}

int QorShaderValueFloat::Get(void* out)
{
    if (out)
        *static_cast<float*>(out) = m_value;
    return m_modified;
}

const QorShaderValueGuards& QorShaderValueFloat::Guards() const
{
    return kGuards;
}

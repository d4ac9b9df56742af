#include "QorShaderValueFloat.h"

#include "QorVisShaders/QorShaderValueType.h"

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueFloat", 0, 84, 92, 60, 53, 0};

} // namespace

QorShaderValueFloat::QorShaderValueFloat(CGparameter parameter, float value)
    : QorShaderValue(kGuards, QorValueFloat, parameter), m_value(value)
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

#include "QorShaderValueFloat.h"

#include "QorVisShaders/QorShaderValueType.h"

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueFloat", 0, 84, 92, 60, 53, 0};

} // namespace

QorShaderValueFloat::QorShaderValueFloat(CGparameter parameter, float value)
    : QorShaderValue(kGuards, parameter), m_value(value)
{
}

void QorShaderValueFloat::GetType(int* type)
{
    if (type)
        *type = QorValueFloat;
}

int QorShaderValueFloat::GetFloat(float* value)
{
    Get(value);
    return m_modified;
}

void QorShaderValueFloat::SetFloat(float value)
{
    m_value = value;
    m_modified = 1;
}

int QorShaderValueFloat::Get(void* out)
{
    if (out)
        *static_cast<float*>(out) = m_value;
    return m_modified;
}

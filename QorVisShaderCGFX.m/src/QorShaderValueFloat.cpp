#include "QorShaderValueFloat.h"

#include "QorVisShaders/QorShaderValueType.h"

namespace {

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderValueFloat";

} // namespace

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

int QorShaderValueFloat::GetColor(float*)
{
    ReportShouldNotHappen(kSource, 84);
    return 0;
}

int QorShaderValueFloat::GetString(char**)
{
    ReportShouldNotHappen(kSource, 92);
    return 0;
}

void QorShaderValueFloat::SetString(const char*)
{
    ReportShouldNotHappen(kSource, 60);
}

void QorShaderValueFloat::SetColor(const float*)
{
    ReportShouldNotHappen(kSource, 53);
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

#include "QorVisShaders/QorNvFXShaderValue.h"

#include <cstdint>

int QorNvFXShaderValue::GetFloat(float*)
{
    return 0;
}

int QorNvFXShaderValue::GetColor(float*)
{
    return 0;
}

int QorNvFXShaderValue::GetString(char**)
{
    return 0;
}

void QorNvFXShaderValue::SetString(const char*) {}

void QorNvFXShaderValue::SetColor(const float*) {}

void QorNvFXShaderValue::SetFloat(float) {}

void QorNvFXShaderValue::SetParameter(CGparameter) {}

int QorNvFXShaderValue::GetParameterToken() const
{
    // Uniforms are pointers on 64-bit hosts; records keep 32 bits of them.
    return m_streamed ? m_streamedToken
                      : static_cast<int>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(m_uniform)));
}

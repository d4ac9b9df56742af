#include "QorVisShaders/QorNvFXShaderValue.h"

#include "QorVisShaders/QorNvFXShaderParameters.h"

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

void QorNvFXShaderValue::MarkChanged()
{
    if (m_changed)
        return;
    m_changed = 1;
    if (m_owner)
        m_owner->NoteChanged(m_position);
}

int QorNvFXShaderValue::GetParameterToken() const
{
    // Uniforms are pointers on 64-bit hosts; records keep 32 bits of them.
    return m_streamed ? m_streamedToken
                      : static_cast<int>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(m_uniform)));
}

#include "QorShaderValue.h"

#include "QorShaderParameters.h"

#include "QorDiagnostics/CheckFailure.h"

#include <cstdint>

QorShaderValue::~QorShaderValue()
{
    m_parameter = nullptr;
}

void QorShaderValue::TellOwner()
{
    m_modified = 1;
    if (m_owner)
        m_owner->NoteModified(m_position);
}

int QorShaderValue::GetParameterToken() const
{
    // Cg handles are pointers on 64-bit hosts; the framework's wire format and interface
    // keep 32 bits of them.
    return static_cast<int>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(m_parameter)));
}

namespace {

int ShouldNotHappen(const QorShaderValueGuards& guards, int line)
{
    CheckFailure__("Should not happen", guards.source, line);
    return 0;
}

} // namespace

int QorShaderValue::GetFloat(float*)
{
    return ShouldNotHappen(m_guards, m_guards.getFloat);
}

int QorShaderValue::GetColor(float*)
{
    return ShouldNotHappen(m_guards, m_guards.getColor);
}

int QorShaderValue::GetString(char**)
{
    return ShouldNotHappen(m_guards, m_guards.getString);
}

void QorShaderValue::SetString(const char*)
{
    ShouldNotHappen(m_guards, m_guards.setString);
}

void QorShaderValue::SetColor(const float*)
{
    ShouldNotHappen(m_guards, m_guards.setColor);
}

void QorShaderValue::SetFloat(float)
{
    ShouldNotHappen(m_guards, m_guards.setFloat);
}

#include "QorShaderValue.h"

#include "QorDiagnostics/CheckFailure.h"

#include <cstdint>

QorShaderValue::~QorShaderValue()
{
    m_parameter = nullptr;
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
    return ShouldNotHappen(Guards(), Guards().getFloat);
}

int QorShaderValue::GetColor(float*)
{
    return ShouldNotHappen(Guards(), Guards().getColor);
}

int QorShaderValue::GetString(char**)
{
    return ShouldNotHappen(Guards(), Guards().getString);
}

void QorShaderValue::SetString(const char*)
{
    ShouldNotHappen(Guards(), Guards().setString);
}

void QorShaderValue::SetColor(const float*)
{
    ShouldNotHappen(Guards(), Guards().setColor);
}

void QorShaderValue::SetFloat(float)
{
    ShouldNotHappen(Guards(), Guards().setFloat);
}

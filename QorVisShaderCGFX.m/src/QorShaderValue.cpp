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

void QorShaderValue::ReportShouldNotHappen(const char* source, int line)
{
    CheckFailure__("Should not happen", source, line);
}

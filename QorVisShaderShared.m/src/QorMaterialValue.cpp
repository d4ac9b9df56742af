#include "QorVisShaderShared/QorMaterialValue.h"

#include "QorVisShaderShared/QorBackEndProfile.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorStrings.h"

#include <cstdint>
#include <cstdlib>

static_assert(sizeof(QorMaterialValue) <= 56, "a value grew past 56 bytes");

namespace {

char* CopyText(const char* text)
{
    return text ? _strdup(text) : nullptr;
}

} // namespace

QorMaterialValue::QorMaterialValue(int type, int count, void* binding, const float* numbers, const char* file)
    : m_binding(binding), m_count(type == QorValueFloat ? 1 : type == QorValueTexture ? 0 : count),
      m_type(static_cast<signed char>(type))
{
    if (type == QorValueTexture)
        m_file = CopyText(file);
    else if (numbers)
        MoveComponents(numbers, m_components);
}

QorMaterialValue::QorMaterialValue(const QorMaterialValue& other)
    : QorIShaderValue(), m_binding(other.m_binding), m_count(other.m_count), m_token(other.m_token),
      m_type(other.m_type), m_loadState(other.m_loadState)
{
    if (m_type == QorValueTexture)
        m_file = CopyText(other.m_file);
    else
        for (int i = 0; i < 4; ++i)
            m_components[i] = other.m_components[i];
}

QorMaterialValue::~QorMaterialValue()
{
    if (m_type == QorValueTexture)
        std::free(m_file);
}

void QorMaterialValue::Misplaced(int QorValueGuards::*line) const
{
    const QorBackEndProfile& profile = Profile();
    const QorValueGuards& guards = m_type == QorValueFloat     ? profile.floatGuards
                                   : m_type == QorValueTexture ? profile.stringGuards
                                                               : profile.colorGuards;
    CheckFailure__("Should not happen", guards.source, guards.*line);
}

void QorMaterialValue::GetType(int* type)
{
    if (type)
        *type = m_type;
}

int QorMaterialValue::GetFloat(float* value)
{
    if (m_type != QorValueFloat) {
        Misplaced(&QorValueGuards::getFloat);
        return 0;
    }
    return Get(value);
}

int QorMaterialValue::GetColor(float* values)
{
    if (!QorIsColorType(m_type)) {
        Misplaced(&QorValueGuards::getColor);
        return 0;
    }
    return Get(values);
}

int QorMaterialValue::GetString(char** file)
{
    if (m_type != QorValueTexture) {
        Misplaced(&QorValueGuards::getString);
        return 0;
    }
    return Get(file);
}

void QorMaterialValue::SetString(const char* file)
{
    if (m_type != QorValueTexture) {
        Misplaced(&QorValueGuards::setString);
        return;
    }
    // Copied before the old text goes, so setting the value's own text is safe.
    char* copy = file ? _strdup(file) : Profile().emptyTextForNull ? _strdup("") : nullptr;
    std::free(m_file);
    m_file = copy;
    MarkModified();
}

int QorMaterialValue::Get(void* out)
{
    if (out) {
        if (m_type == QorValueTexture)
            *static_cast<char**>(out) = m_file;
        else if (m_type == QorValueFloat)
            *static_cast<float*>(out) = m_components[0];
        else
            MoveComponents(m_components, static_cast<float*>(out));
    }
    return m_modified;
}

int QorMaterialValue::GetParameterToken() const
{
    // Parameters are pointers on 64-bit hosts; the framework's records keep 32 bits of them.
    return m_binding ? static_cast<int>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(m_binding)))
                     : m_token;
}

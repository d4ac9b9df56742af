#include "QorShaderValueString.h"

#include "QorVisShaders/QorShaderValueType.h"

#include "QorSystem/QorStrings.h"

#include <cstdlib>

namespace {

const QorShaderValueGuards kGuards = {"QorVisShaderCGFX.m/src/QorShaderValueString", 111, 118, 0, 0, 83, 76};

char* CopyFile(const char* file)
{
    return file ? _strdup(file) : nullptr;
}

} // namespace

QorShaderValueString::QorShaderValueString(CGparameter parameter, const char* file)
    : QorShaderValue(QorValueTexture, parameter), m_file(CopyFile(file))
{
}

QorShaderValueString::QorShaderValueString(const QorShaderValueString& other)
    : QorShaderValue(other), m_loadState(other.m_loadState), m_file(CopyFile(other.m_file))
{
}

QorShaderValueString::~QorShaderValueString()
{
    std::free(m_file);
}

int QorShaderValueString::GetString(char** file)
{
    Get(file);
    return m_modified;
}

void QorShaderValueString::SetString(const char* file)
{
    // Copied before the old string goes, so setting the value's own string is safe.
    char* copy = CopyFile(file);
    std::free(m_file);
    m_file = copy;
    MarkModified();
}

int QorShaderValueString::Get(void* out)
{
    if (out)
        *static_cast<char**>(out) = m_file;
    return m_modified;
}

QorShaderValueString* QorShaderValueString::FromValue(QorIShaderValue* value)
{
    if (!value)
        return nullptr;
    int type = 0;
    value->GetType(&type);
    return type == QorValueTexture ? dynamic_cast<QorShaderValueString*>(value) : nullptr;
}

const QorShaderValueGuards& QorShaderValueString::Guards() const
{
    return kGuards;
}

#include "QorVisShaders/QorShaderIncludeManager.h"

#include "QorSystem/QorStrings.h"

#include <cstdlib>

void QorShaderIncludeManager::FreeText::operator()(char* text) const
{
    std::free(text);
}

QorShaderIncludeManager& QorShaderIncludeManager::Instance()
{
    static QorShaderIncludeManager instance;
    return instance;
}

int QorShaderIncludeManager::AddInclude(const QorString& name, const char* text)
{
    if (!text || m_includes.count(name))
        return 0;
    m_texts.emplace_back(_strdup(text));
    m_includes[name] = m_texts.back().get();
    return 1;
}

void QorShaderIncludeManager::RemoveInclude(const QorString& name)
{
    m_includes.erase(name);
}

const char* QorShaderIncludeManager::GetInclude(const QorString& name) const
{
    const auto found = m_includes.find(name);
    return found == m_includes.end() ? nullptr : found->second;
}

/// @file
/// Include files that exist only in memory. An application registers a text under a
/// name; an effect that includes that name gets the text instead of a file. Names are
/// case-sensitive and matched exactly. One instance per process; use from one thread.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"

#include <map>
#include <memory>
#include <vector>

class QOR_VISSHADERS_API QorShaderIncludeManager
{
public:
    static QorShaderIncludeManager& Instance();

    /// 1 when the name was new and a copy of the text is stored; 0 when the name is
    /// taken (the stored text is kept: remove it first to change it) or the text is null.
    int AddInclude(const QorString& name, const char* text);
    /// Forgets the name. Texts handed out by GetInclude stay valid until the process ends.
    void RemoveInclude(const QorString& name);
    /// The stored text or null; valid until the process ends.
    const char* GetInclude(const QorString& name) const;

    QorShaderIncludeManager(const QorShaderIncludeManager&) = delete;
    QorShaderIncludeManager& operator=(const QorShaderIncludeManager&) = delete;

private:
    QorShaderIncludeManager() = default;

    struct FreeText
    {
        void operator()(char* text) const;
    };
    using Text = std::unique_ptr<char, FreeText>;

    std::map<QorString, const char*> m_includes;
    // Owns every text ever stored, also after removal, so pointers from GetInclude never dangle.
    std::vector<Text> m_texts;
};

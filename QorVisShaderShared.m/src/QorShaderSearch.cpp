#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorSystem/QorStrings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace QorShaderSearch {
namespace {

struct TextFree
{
    void operator()(char* text) const { std::free(text); }
};

bool Accessible(const QorString& path)
{
    return QorFileAccess(path.c_str(), 0) == 0;
}

// The first "<entry><folder><name>" that exists over the entries of the variable: the
// first entry split at `firstDelimiters`, the later ones at `laterDelimiters`.
bool FindUnder(const char* variable, const char* folder, const char* name, const char* firstDelimiters,
               const char* laterDelimiters, QorString& found, QorString* lastTried)
{
    const char* list = QorGetEnv(variable);
    if (!list)
        return false;
    // The tokenizer writes into its string: split a private copy.
    std::unique_ptr<char, TextFree> copy(_strdup(list));
    char* context = nullptr;
    for (char* entry = QorSysStrtok(copy.get(), firstDelimiters, &context); entry;
         entry = QorSysStrtok(nullptr, laterDelimiters, &context)) {
        const QorString candidate = QorString(entry) + folder + name;
        if (lastTried)
            *lastTried = candidate;
        if (Accessible(candidate)) {
            found = candidate;
            return true;
        }
    }
    return false;
}

} // namespace

bool FindShaderFile(const QorString& name, QorString& path)
{
    path = name;
    if (Accessible(name) ||
        FindUnder("QorStartupPath", "\\materials\\shaders\\", name.c_str(), ";", " ;", path, nullptr))
        return true;
    // QorFindPath tests each candidate and hands the name back unchanged when none passes:
    // what it hands back otherwise needs no second test (every material looks its file up).
    path = QorFindPath(name.c_str(), "QorGraphicPath");
    if (path != name)
        return true;
    const QorString inShaders = QorString("shaders\\") + name;
    path = QorFindPath(inShaders.c_str(), "QorGraphicPath");
    return path != inShaders || Accessible(path);
}

bool FindEffectFile(const QorString& name, QorString& path)
{
    path = name;
    if (Accessible(name) ||
        FindUnder("QorStartupPath", "\\materials\\shaders\\", name.c_str(), ";", ";", path, nullptr))
        return true;
    path = name;
    return QorGetFilePathFromOfficialVariable(path, "QorGraphicPath", 0) != -1;
}

bool IsFileInclude(const char* name, std::initializer_list<const char*> suffixes)
{
    for (const char* suffix : suffixes)
        if (name && std::strstr(name, suffix))
            return true;
    return false;
}

bool FindIncludeFile(const char* name, const char* relative, QorString& found, QorString* lastTried)
{
    if (lastTried)
        *lastTried = QorString(name);
    if (Accessible(QorString(name))) {
        found = QorString(name);
        return true;
    }
    return FindIncludeOnSearchPaths(relative, found, lastTried);
}

bool FindIncludeOnSearchPaths(const char* relative, QorString& found, QorString* lastTried)
{
    return FindUnder("QorGraphicPath", "\\shaders\\", relative, ";", ";", found, lastTried) ||
           FindUnder("QorStartupPath", "\\shaders\\", relative, ";", ";", found, lastTried);
}

bool ReadSource(const QorString& path, QorUnicodeString& text)
{
    std::string content;
    if (!QorReadRegularFile(path.c_str(), content, kMaxSourceBytes))
        return false;
    text = QorUnicodeString(content.c_str());
    return true;
}

} // namespace QorShaderSearch

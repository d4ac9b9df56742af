#include "QorShaderIncludeResolver.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorVisShaders/QorShaderIncludeManager.h"
#include "QorVisShaderShared/QorShaderSearch.h"

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace QorShaderIncludeResolver {
namespace {

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderEffect";
// Deeper include chains than this are treated as cycles.
constexpr int kMaxIncludeDepth = 64;

bool IsFileInclude(const std::string& name)
{
    return QorShaderSearch::IsFileInclude(name.c_str(), {".hfx", ".cgh"});
}

// Where a file include lives; `requested` keeps the compiler's "/", which the first
// access test uses as it stands and the directory searches drop.
bool FindIncludeFile(const std::string& requested, QorString& found)
{
    return QorShaderSearch::FindIncludeFile(requested.c_str(), requested.c_str() + 1, found);
}

std::string ReadWholeFile(const QorString& path)
{
    std::ifstream in(QorNativePath(path.c_str()), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The text the include would resolve to, or false when it resolves to nothing.
bool IncludeText(const std::string& requested, std::string& text)
{
    if (IsFileInclude(requested)) {
        QorString path;
        if (!FindIncludeFile(requested, path))
            return false;
        text = ReadWholeFile(path);
        return true;
    }
    const char* stored = QorShaderIncludeManager::Instance().GetInclude(QorString(requested.c_str() + 1));
    if (!stored)
        return false;
    text = stored;
    return true;
}

// The names of the #include lines of a text, each with the leading "/" the compiler adds.
std::vector<std::string> IncludedNames(const std::string& text)
{
    std::vector<std::string> names;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        size_t at = line.find_first_not_of(" \t");
        if (at == std::string::npos || line[at] != '#')
            continue;
        at = line.find_first_not_of(" \t", at + 1);
        if (at == std::string::npos || line.compare(at, 7, "include") != 0)
            continue;
        at = line.find_first_of("\"<", at + 7);
        if (at == std::string::npos)
            continue;
        const size_t end = line.find_first_of("\">", at + 1);
        if (end == std::string::npos || end == at + 1)
            continue;
        const std::string name = line.substr(at + 1, end - at - 1);
        names.push_back(name[0] == '/' ? name : "/" + name);
    }
    return names;
}

bool ReachesPath(const std::string& requested, std::set<std::string>& path, int depth)
{
    if (depth > kMaxIncludeDepth || path.count(requested))
        return true;
    std::string text;
    if (!IncludeText(requested, text))
        return false;
    path.insert(requested);
    for (const std::string& included : IncludedNames(text))
        if (ReachesPath(included, path, depth + 1))
            return true;
    path.erase(requested);
    return false;
}

} // namespace

bool IsCyclic(const char* requested)
{
    std::set<std::string> path;
    return requested && ReachesPath(requested, path, 0);
}

void ResolveInclude(CGcontext context, const char* name)
{
    if (!name || !*name)
        return;
    const std::string requested(name);
    if (IsCyclic(name)) {
        // The compiler would expand the cycle forever; this text makes it fail at once,
        // with the reason in its listing (and so in the error file).
        const std::string stop = "#error include cycle: \"" + requested + "\" includes itself\n";
        cgSetCompilerIncludeString(context, name, stop.c_str());
        return;
    }
    if (IsFileInclude(requested)) {
        QorString found;
        if (!FindIncludeFile(requested, found)) {
            CheckFailure__("Impossible to read shader file", kSource, 162);
            return;
        }
        // The Cg runtime opens the file itself: it needs the native path.
        cgSetCompilerIncludeFile(context, name, QorNativePath(found.c_str()).c_str());
        return;
    }
    const char* text = QorShaderIncludeManager::Instance().GetInclude(QorString(name + 1));
    if (!text) {
        CheckFailure__("Shader include is not in manager", kSource, 178);
        return;
    }
    cgSetCompilerIncludeString(context, name, text);
}

} // namespace QorShaderIncludeResolver

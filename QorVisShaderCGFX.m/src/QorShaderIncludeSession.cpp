#include "QorShaderIncludeSession.h"

#include "QorCgTokenLimit.h"

#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorFiles.h"
#include "QorVisShaders/QorShaderIncludeManager.h"

#include <cstdlib>

namespace {

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderEffect";
// What a name handed to the compiler carries after the include's own name: "?qor<n>",
// n the inclusion whose text holds the #include line.
const char* const kMark = "?qor";
// A chain this deep only grows without end: no effect nests its includes so far.
constexpr int kMaxDepth = 512;
// Unguarded headers that include each other in a lattice multiply their inclusions; past
// this many in one compilation the effect is refused instead of growing without bound.
constexpr std::size_t kMaxInclusions = 100000;

std::map<CGcontext, QorShaderIncludeSession*>& Sessions()
{
    static std::map<CGcontext, QorShaderIncludeSession*> sessions;
    return sessions;
}

// The span of the file name of the #include directive whose "#" stands at `hash`:
// false when the "#" does not start a line (after blanks) or starts another directive.
bool IncludedName(const std::string& text, std::size_t hash, std::size_t& start, std::size_t& end)
{
    const std::size_t lineStart = text.find_last_of('\n', hash) + 1; // 0 when npos
    if (text.find_first_not_of(" \t", lineStart) != hash)
        return false;
    std::size_t at = text.find_first_not_of(" \t", hash + 1);
    if (at == std::string::npos || text.compare(at, 7, "include") != 0)
        return false;
    at = text.find_first_not_of(" \t", at + 7);
    if (at == std::string::npos || (text[at] != '"' && text[at] != '<'))
        return false;
    start = at + 1;
    end = text.find_first_of(text[at] == '"' ? "\"\n" : ">\n", start);
    return end != std::string::npos && text[end] != '\n' && end > start;
}

// Whether the "/"-separated `name` stays inside the folder it is taken relative to: no
// ".." climbs above where it started.
bool StaysInside(const std::string& name)
{
    int depth = 0;
    std::size_t start = 0;
    while (start <= name.size()) {
        std::size_t end = name.find_first_of("/\\", start);
        if (end == std::string::npos)
            end = name.size();
        const std::string part = name.substr(start, end - start);
        if (part == "..")
            --depth;
        else if (!part.empty() && part != ".")
            ++depth;
        if (depth < 0)
            return false;
        start = end + 1;
    }
    return true;
}

} // namespace

QorShaderIncludeSession::QorShaderIncludeSession(CGcontext context, bool confined)
    : m_context(context), m_confined(confined)
{
    Sessions()[context] = this;
}

QorShaderIncludeSession::~QorShaderIncludeSession()
{
    Sessions().erase(m_context);
}

void QorShaderIncludeSession::ResolveInclude(CGcontext context, const char* name)
{
    if (!name || !*name)
        return;
    const std::string requested(name);
    const std::size_t mark = requested.rfind(kMark);
    const auto found = Sessions().find(context);
    if (found == Sessions().end()) {
        // Outside a compilation nothing tracks chains: the name is resolved as it stands.
        QorShaderIncludeSession once(context, false);
        once.Resolve(requested, -1);
        return;
    }
    if (mark == std::string::npos) {
        found->second->Resolve(requested, -1);
        return;
    }
    const int parent = std::atoi(requested.c_str() + mark + std::char_traits<char>::length(kMark));
    found->second->Resolve(requested, parent);
}

void QorShaderIncludeSession::Resolve(const std::string& requested, int parent)
{
    const std::string name = requested.substr(0, requested.rfind(kMark));
    if (parent < -1 || parent >= static_cast<int>(m_inclusions.size()))
        parent = -1; // a mark the effect wrote itself names no inclusion of ours
    const int depth = parent < 0 ? 1 : m_inclusions[static_cast<std::size_t>(parent)].depth + 1;
    m_inclusions.push_back({name, parent, depth});
    const int node = static_cast<int>(m_inclusions.size()) - 1;
    const std::string line = "#line 1 \"" + name + "\"\n";

    if (depth > kMaxDepth)
        return Stop(requested, line, "include cycle: " + Cycle(node));
    if (m_inclusions.size() > kMaxInclusions)
        return Stop(requested, line, "more than 100000 inclusions in one effect");
    if (m_confined && !StaysInside(name))
        return Stop(requested, line, "include \"" + name.substr(1) + "\" leaves the search paths");
    const std::optional<std::string>& text = Text(name);
    if (!text) {
        if (m_confined)
            Stop(requested, line, "include \"" + name.substr(1) + "\" is not on the search paths");
        return;
    }
    const std::string handed = line + MarkIncludes(*text, node);
    std::size_t tokenLine = 0, length = 0;
    if (QorFindOverlongCgToken(handed.c_str(), tokenLine, length))
        return Stop(requested, line, "a token of " + std::to_string(length) + " characters on line " +
                                         std::to_string(tokenLine - 1) + " is longer than the Cg runtime takes (" +
                                         std::to_string(kQorCgMaxTokenLength) + ")");
    Hand(requested, handed);
}

void QorShaderIncludeSession::Stop(const std::string& requested, const std::string& line, const std::string& why)
{
    Hand(requested, line + "#error " + why + "\n");
}

void QorShaderIncludeSession::Hand(const std::string& requested, const std::string& text)
{
    cgSetCompilerIncludeString(m_context, requested.c_str(), text.c_str());
    // The compiler asks for "/../x.cgh" but looks the text up as "../x.cgh"; without it,
    // it would read "../x.cgh" from the working folder itself.
    if (requested.compare(0, 3, "/..") == 0)
        cgSetCompilerIncludeString(m_context, requested.c_str() + 1, text.c_str());
}

const std::optional<std::string>& QorShaderIncludeSession::Text(const std::string& name)
{
    const auto cached = m_texts.find(name);
    if (cached != m_texts.end())
        return cached->second;
    std::optional<std::string>& text = m_texts[name];
    if (QorShaderSearch::IsFileInclude(name.c_str(), {".hfx", ".cgh"})) {
        QorString path;
        std::string content;
        const bool found = m_confined ? QorShaderSearch::FindIncludeOnSearchPaths(name.c_str() + 1, path)
                                      : QorShaderSearch::FindIncludeFile(name.c_str(), name.c_str() + 1, path);
        if (found &&
            QorReadRegularFile(path.c_str(), content, QorShaderSearch::kMaxSourceBytes))
            text = std::move(content);
        else
            CheckFailure__("Impossible to read shader file", kSource, 162);
        if (!text)
            m_missing.push_back(name.substr(1));
        return text;
    }
    if (const char* stored = QorShaderIncludeManager::Instance().GetInclude(QorString(name.c_str() + 1))) {
        text = std::string(stored);
    } else {
        CheckFailure__("Shader include is not in manager", kSource, 178);
        m_missing.push_back(name.substr(1));
    }
    return text;
}

std::string QorShaderIncludeSession::MarkIncludes(const std::string& text, int node) const
{
    const std::string mark = kMark + std::to_string(node);
    std::string marked;
    marked.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t hash = text.find('#'); hash != std::string::npos; hash = text.find('#', hash + 1)) {
        std::size_t start = 0, end = 0;
        if (!IncludedName(text, hash, start, end))
            continue;
        marked.append(text, copied, end - copied).append(mark);
        copied = end;
        hash = end;
    }
    return marked.append(text, copied, std::string::npos);
}

std::string QorShaderIncludeSession::Cycle(int node) const
{
    const std::string& name = m_inclusions[static_cast<std::size_t>(node)].name;
    std::vector<const std::string*> chain{&name};
    for (int at = m_inclusions[static_cast<std::size_t>(node)].parent; at >= 0;
         at = m_inclusions[static_cast<std::size_t>(at)].parent) {
        chain.push_back(&m_inclusions[static_cast<std::size_t>(at)].name);
        if (*chain.back() == name)
            break;
    }
    std::string cycle;
    for (auto link = chain.rbegin(); link != chain.rend(); ++link)
        cycle += (cycle.empty() ? "" : " -> ") + **link;
    return cycle;
}

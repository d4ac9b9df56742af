#include "QorCgGlslProgram.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

bool IsNameStart(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool IsNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string Trim(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The fields of a "//var" line, split at " : " (names and semantics hold no colon).
std::vector<std::string> Fields(const std::string& text)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(" : ", start)) != std::string::npos; start = at + 3)
        fields.push_back(Trim(text.substr(start, at - start)));
    fields.push_back(Trim(text.substr(start)));
    return fields;
}

// Walks code, calling `name(begin, end)` for each identifier outside comments and
// `other(begin, end)` for every other stretch (comments and punctuation included).
template <typename Name, typename Other>
void Scan(const std::string& code, Name name, Other other)
{
    std::size_t at = 0;
    while (at < code.size()) {
        const std::size_t begin = at;
        if (code.compare(at, 2, "//") == 0) {
            at = code.find('\n', at);
            at = at == std::string::npos ? code.size() : at;
        } else if (code.compare(at, 2, "/*") == 0) {
            at = code.find("*/", at + 2);
            at = at == std::string::npos ? code.size() : at + 2;
        } else if (IsNameStart(code[at])) {
            while (at < code.size() && IsNameChar(code[at]))
                ++at;
            name(begin, at);
            continue;
        } else if (std::isdigit(static_cast<unsigned char>(code[at]))) {
            // A number's letters (1e5, 2.0f) are no identifier.
            while (at < code.size() && (IsNameChar(code[at]) || code[at] == '.'))
                ++at;
        } else {
            ++at;
        }
        other(begin, at);
    }
}

} // namespace

bool QorCgGlslProgram::ParseVariable(const std::string& line, std::size_t number, std::string& why)
{
    const std::vector<std::string> fields = Fields(line.substr(6));
    const std::size_t space = fields[0].find(' ');
    if (fields.size() != 5 || space == std::string::npos) {
        why = "line " + std::to_string(number) + ": a //var line of " + std::to_string(fields.size()) +
              " fields, not 5";
        return false;
    }
    QorCgGlslVariable variable;
    variable.cgType = fields[0].substr(0, space);
    variable.cgName = Trim(fields[0].substr(space + 1));
    variable.semantic = fields[1];
    variable.glslName = fields[2];
    const std::size_t comma = variable.glslName.find(", ");
    if (comma != std::string::npos) {
        // Matrix rows: "_M[0], 4".
        const std::string rows = variable.glslName.substr(comma + 2);
        variable.rows = static_cast<int>(std::strtol(rows.c_str(), nullptr, 10));
        variable.glslName = variable.glslName.substr(0, comma);
        const std::size_t bracket = variable.glslName.rfind('[');
        if (variable.rows < 1 || variable.rows > 4 || bracket == std::string::npos) {
            why = "line " + std::to_string(number) + ": matrix rows \"" + fields[2] + "\" are not 1 to 4 rows";
            return false;
        }
        variable.glslName.erase(bracket);
    }
    variable.used = fields[4] == "1";
    m_variables.push_back(std::move(variable));
    return true;
}

bool QorCgGlslProgram::ParseUniform(const std::string& line)
{
    // "uniform TYPE NAME;" or "uniform TYPE NAME[N];", one a line, as Cg writes them.
    std::string rest = Trim(line);
    if (rest.compare(0, 8, "uniform ") != 0 || rest.empty() || rest.back() != ';')
        return false;
    rest = Trim(rest.substr(8, rest.size() - 9));
    const std::size_t space = rest.find(' ');
    if (space == std::string::npos)
        return false;
    QorCgGlslUniform uniform;
    uniform.type = rest.substr(0, space);
    uniform.name = Trim(rest.substr(space + 1));
    const std::size_t bracket = uniform.name.find('[');
    if (bracket != std::string::npos) {
        const std::string size = uniform.name.substr(bracket + 1);
        uniform.arraySize = static_cast<int>(std::strtol(size.c_str(), nullptr, 10));
        if (uniform.arraySize < 1 || size.empty() || size.back() != ']')
            return false;
        uniform.name.erase(bracket);
    }
    for (const char c : uniform.type + uniform.name)
        if (!IsNameChar(c))
            return false;
    if (uniform.name.empty() || !IsNameStart(uniform.name[0]))
        return false;
    m_uniforms.push_back(std::move(uniform));
    return true;
}

bool QorCgGlslProgram::Parse(const std::string& text, std::string& why)
{
    m_variables.clear();
    m_uniforms.clear();
    m_code.clear();
    if (text.size() > kMaxText) {
        why = "the program's text is larger than " + std::to_string(kMaxText) + " bytes";
        return false;
    }
    if (text.find('\0') != std::string::npos) {
        why = "the program's text holds a NUL byte";
        return false;
    }
    bool versionSeen = false;
    std::size_t number = 0;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find('\n', start);
        end = end == std::string::npos ? text.size() : end;
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        ++number;
        if (line.compare(0, 6, "//var ") == 0) {
            if (!ParseVariable(line, number, why))
                return false;
            continue;
        }
        const std::string trimmed = Trim(line);
        if (!versionSeen && trimmed.compare(0, 2, "//") == 0)
            continue; // Cg's header: the compiler, the profile, the parameter map
        if (trimmed.compare(0, 8, "#version") == 0) {
            // Cg writes one version line before the code; the effect format sets its own.
            if (versionSeen) {
                why = "line " + std::to_string(number) + ": a second #version line";
                return false;
            }
            versionSeen = true;
            continue;
        }
        if (trimmed.compare(0, 8, "uniform ") == 0) {
            if (!ParseUniform(trimmed)) {
                why = "line " + std::to_string(number) + ": a uniform declaration of a form Cg does not write: " +
                      trimmed.substr(0, 120);
                return false;
            }
            continue;
        }
        m_code += line;
        m_code += '\n';
    }
    if (m_code.find("main") == std::string::npos) {
        why = "the program has no main function";
        return false;
    }
    return true;
}

std::string QorCgGlslProgram::Renamed(const std::map<std::string, std::string>& names) const
{
    std::string out;
    out.reserve(m_code.size());
    std::size_t skipUntil = 0;
    Scan(
        m_code,
        [&](std::size_t begin, std::size_t end) {
            if (begin < skipUntil)
                return;
            const std::string name = m_code.substr(begin, end - begin);
            // A member access "_X._Y" or "_X[i]._Y" first, as one name.
            std::size_t at = end;
            if (at < m_code.size() && m_code[at] == '[') {
                std::size_t close = at + 1;
                while (close < m_code.size() && std::isdigit(static_cast<unsigned char>(m_code[close])))
                    ++close;
                at = close > at + 1 && close < m_code.size() && m_code[close] == ']' ? close + 1 : end;
            }
            if (at + 1 < m_code.size() && m_code[at] == '.' && IsNameStart(m_code[at + 1])) {
                std::size_t memberEnd = at + 1;
                while (memberEnd < m_code.size() && IsNameChar(m_code[memberEnd]))
                    ++memberEnd;
                const auto member = names.find(m_code.substr(begin, memberEnd - begin));
                if (member != names.end()) {
                    out += member->second;
                    skipUntil = memberEnd;
                    return;
                }
            }
            const auto found = names.find(name);
            out += found != names.end() ? found->second : name;
        },
        [&](std::size_t begin, std::size_t end) {
            if (end > skipUntil)
                out.append(m_code, std::max(begin, skipUntil), end - std::max(begin, skipUntil));
        });
    return out;
}

bool QorCgGlslProgram::UsesIdentifier(const std::string& identifier) const
{
    bool found = false;
    Scan(
        m_code,
        [&](std::size_t begin, std::size_t end) {
            found = found || m_code.compare(begin, end - begin, identifier) == 0;
        },
        [](std::size_t, std::size_t) {});
    return found;
}

#include "QorCgFXSourceLines.h"

#include <algorithm>
#include <cctype>

namespace {

bool IsWordChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool EqualNoCase(const std::string& text, std::size_t at, const std::string& word)
{
    if (at + word.size() > text.size())
        return false;
    for (std::size_t i = 0; i < word.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(text[at + i])) != std::tolower(static_cast<unsigned char>(word[i])))
            return false;
    return true;
}

} // namespace

QorCgFXSourceLines::QorCgFXSourceLines(std::string file, const std::string& source)
    : m_file(std::move(file)), m_text(source)
{
    // Comments become spaces (their line breaks stay), so words in them are not found.
    for (std::size_t at = 0; at + 1 < m_text.size();) {
        std::size_t end = std::string::npos;
        if (m_text.compare(at, 2, "//") == 0)
            end = std::min(m_text.find('\n', at), m_text.size());
        else if (m_text.compare(at, 2, "/*") == 0)
            end = std::min(m_text.find("*/", at + 2), m_text.size() - 2) + 2;
        if (end == std::string::npos) {
            ++at;
            continue;
        }
        for (; at < end; ++at)
            if (m_text[at] != '\n')
                m_text[at] = ' ';
    }
}

std::size_t QorCgFXSourceLines::Find(const std::string& word, std::size_t from, const std::string& next) const
{
    if (word.empty())
        return std::string::npos;
    for (std::size_t at = from; at < m_text.size(); ++at) {
        // Cg's keywords are case-insensitive ("technique", "Technique"); names are not,
        // but a name found in another case still points at the right line.
        if ((at > 0 && IsWordChar(m_text[at - 1])) || !EqualNoCase(m_text, at, word))
            continue;
        std::size_t end = at + word.size();
        if (end < m_text.size() && IsWordChar(m_text[end]))
            continue;
        if (next.empty())
            return at;
        while (end < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[end])))
            ++end;
        if (m_text.compare(end, next.size(), next) == 0 &&
            (end + next.size() == m_text.size() || !IsWordChar(m_text[end + next.size()])))
            return at;
    }
    return std::string::npos;
}

std::string QorCgFXSourceLines::Place(std::size_t position) const
{
    if (position == std::string::npos)
        return m_file;
    const auto line = std::count(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(position), '\n') + 1;
    return m_file + "(" + std::to_string(line) + ")";
}

std::string QorCgFXSourceLines::Pass(const std::string& technique, const std::string& pass,
                                     const std::string& state) const
{
    std::size_t at = Find("technique", 0, technique);
    if (at != std::string::npos && !pass.empty()) {
        const std::size_t passAt = Find("pass", at, pass);
        at = passAt;
        if (passAt != std::string::npos && !state.empty()) {
            const std::size_t stateAt = Find(state, passAt);
            at = stateAt != std::string::npos ? stateAt : passAt;
        }
    }
    return Place(at);
}

std::string QorCgFXSourceLines::Parameter(const std::string& parameter) const
{
    return Place(Find(parameter, 0));
}

#include "Lexer_p.h"

#include <cctype>
#include <cstdio>

namespace nvFX::detail {

namespace {

bool IsIdentifierStart(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool IsIdentifierChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

bool IsDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

constexpr std::string_view kSymbols = "{}<>[]()=;:,#+-";

} // namespace

Lexer::Lexer(std::string_view text) : m_text(text) {}

Token Lexer::next()
{
    if (m_hasPeeked) {
        m_hasPeeked = false;
        return m_peeked;
    }
    return scan();
}

Token Lexer::peek()
{
    if (!m_hasPeeked) {
        m_peekPosition = m_position;
        m_peekLine = m_line;
        m_peeked = scan();
        m_hasPeeked = true;
    }
    return m_peeked;
}

Token Lexer::error(std::string_view message, int line)
{
    m_error.assign(message);
    return {Token::Error, m_error, line};
}

void Lexer::skipSpaceAndComments()
{
    while (m_position < m_text.size()) {
        const char c = m_text[m_position];
        if (c == '\n') {
            ++m_line;
            ++m_position;
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
            ++m_position;
        } else if (c == '/' && at(m_position + 1) == '/') {
            while (m_position < m_text.size() && m_text[m_position] != '\n')
                ++m_position;
        } else if (c == '/' && at(m_position + 1) == '*') {
            const std::size_t end = m_text.find("*/", m_position + 2);
            const std::size_t stop = end == std::string_view::npos ? m_text.size() : end + 2;
            for (; m_position < stop; ++m_position)
                m_line += m_text[m_position] == '\n';
        } else {
            return;
        }
    }
}

Token Lexer::scan()
{
    skipSpaceAndComments();
    const std::size_t start = m_position;
    const int line = m_line;
    if (start >= m_text.size()) // the end is on the last line that has text
        return {Token::End, {}, line > 1 && !m_text.empty() && m_text.back() == '\n' ? line - 1 : line};
    const char c = m_text[start];

    auto take = [&](Token::Kind kind, std::size_t limit, std::string_view what) {
        if (m_position - start > limit)
            return error(std::string(what) + " longer than " + std::to_string(limit) + " characters", line);
        return Token{kind, m_text.substr(start, m_position - start), line};
    };

    if (IsIdentifierStart(c)) {
        while (m_position < m_text.size() && IsIdentifierChar(m_text[m_position]) &&
               m_position - start <= kMaxIdentifier)
            ++m_position;
        return take(Token::Identifier, kMaxIdentifier, "name");
    }
    if (IsDigit(c) || (c == '.' && IsDigit(at(start + 1)))) {
        // Digits, a point, an exponent with its sign and a float suffix; strtod decides.
        while (m_position < m_text.size() && m_position - start <= kMaxNumber) {
            const char d = m_text[m_position];
            const bool exponentSign = (d == '+' || d == '-') && (m_text[m_position - 1] | 0x20) == 'e';
            if (!IsIdentifierChar(d) && d != '.' && !exponentSign)
                break;
            ++m_position;
        }
        return take(Token::Number, kMaxNumber, "number");
    }
    if (c == '"') {
        ++m_position;
        while (m_position < m_text.size() && m_text[m_position] != '"' && m_text[m_position] != '\n' &&
               m_position - start <= kMaxString) {
            const bool escape = m_text[m_position] == '\\' && m_position + 1 < m_text.size() && at(m_position + 1) != '\n';
            m_position += escape ? 2 : 1;
        }
        if (m_position - start > kMaxString)
            return error("string longer than " + std::to_string(kMaxString) + " characters", line);
        if (at(m_position) != '"')
            return error("string not closed on its line", line);
        ++m_position;
        return {Token::String, m_text.substr(start + 1, m_position - start - 2), line};
    }
    if (kSymbols.find(c) != std::string_view::npos) {
        ++m_position;
        return {Token::Symbol, m_text.substr(start, 1), line};
    }
    char what[48];
    if (std::isprint(static_cast<unsigned char>(c)))
        std::snprintf(what, sizeof what, "unexpected character '%c'", c);
    else
        std::snprintf(what, sizeof what, "unexpected byte 0x%02x", static_cast<unsigned char>(c));
    return error(what, line);
}

void Lexer::givePeekBack()
{
    if (m_hasPeeked) {
        m_position = m_peekPosition;
        m_line = m_peekLine;
        m_hasPeeked = false;
    }
}

std::string Lexer::restOfLine(int& line)
{
    givePeekBack();
    line = m_line;
    std::string text;
    while (m_position < m_text.size() && m_text[m_position] != '\n') {
        const char c = m_text[m_position++];
        const std::size_t next = at(m_position) == '\r' ? m_position + 1 : m_position;
        if (c == '\\' && at(next) == '\n') {
            m_position = next + 1;
            ++m_line;
            continue;
        }
        text += c;
    }
    return text;
}

bool Lexer::skipToDirectiveLine()
{
    givePeekBack();
    bool lineStart = m_position == 0 || m_text[m_position - 1] == '\n';
    for (; m_position < m_text.size(); ++m_position) {
        const char c = m_text[m_position];
        if (c == '#' && lineStart)
            return true;
        if (c == '\n') {
            ++m_line;
            lineStart = true;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            lineStart = false;
        }
    }
    return false;
}

Token Lexer::captureBlock()
{
    givePeekBack();
    const std::size_t start = m_position;
    const int line = m_line;
    int depth = 1;
    while (m_position < m_text.size()) {
        const char c = m_text[m_position];
        if (c == '/' && (at(m_position + 1) == '/' || at(m_position + 1) == '*')) {
            skipSpaceAndComments();
            continue;
        }
        ++m_position;
        if (c == '\n')
            ++m_line;
        else if (c == '{')
            ++depth;
        else if (c == '}' && --depth == 0)
            return {Token::String, m_text.substr(start, m_position - 1 - start), line};
    }
    return error("block not closed: '}' missing", line);
}

} // namespace nvFX::detail

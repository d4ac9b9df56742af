#include "QorCgTokenLimit.h"

#include <cctype>
#include <cstring>

namespace {

bool IsWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Skips a comment starting at `at`, counting the lines it spans; returns where it ends.
const char* SkipComment(const char* at, std::size_t& line)
{
    if (at[1] == '/')
        return at + std::strcspn(at, "\n");
    const char* end = std::strstr(at + 2, "*/");
    const char* stop = end ? end + 2 : at + std::strlen(at);
    for (const char* c = at; c < stop; ++c)
        line += *c == '\n';
    return stop;
}

// The end of the literal whose opening quote is at `at`: its closing quote, or the end
// of its line when it is left open; escaped characters never close it.
const char* SkipLiteral(const char* at, std::size_t& line)
{
    const char quote = *at;
    const char* c = at + 1;
    while (*c && *c != quote && *c != '\n') {
        if (*c == '\\' && c[1]) {
            line += c[1] == '\n';
            ++c;
        }
        ++c;
    }
    return c;
}

} // namespace

bool QorFindOverlongCgToken(const char* text, std::size_t& line, std::size_t& length)
{
    line = 1;
    for (const char* c = text; c && *c;) {
        const std::size_t tokenLine = line;
        const char* start = c;
        std::size_t size = 0;
        if (*c == '/' && (c[1] == '/' || c[1] == '*')) {
            c = SkipComment(c, line);
            continue;
        }
        if (*c == '"' || *c == '\'') {
            c = SkipLiteral(c, line);
            size = static_cast<std::size_t>(c - start - 1);
            if (*c == *start)
                ++c;
        } else if (IsWordCharacter(*c)) {
            while (IsWordCharacter(*c))
                ++c;
            size = static_cast<std::size_t>(c - start);
        } else {
            line += *c == '\n';
            ++c;
        }
        if (size > kQorCgMaxTokenLength) {
            line = tokenLine;
            length = size;
            return true;
        }
    }
    return false;
}

/// @file
/// Tokens of an effect's text. Private to QorNvFX.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nvFX::detail {

struct Token
{
    enum Kind
    {
        End,
        Identifier,
        Number,
        String, ///< `text` is the content between the quotes, escapes not yet resolved
        Symbol, ///< one character of "{}<>[]()=;:,#+-"
        Error,  ///< `text` says what is wrong
    };
    Kind kind = End;
    std::string_view text;
    int line = 1;

    bool is(char symbol) const { return kind == Symbol && text.size() == 1 && text[0] == symbol; }
    bool is(std::string_view word) const { return kind == Identifier && text == word; }
};

/// Splits one source text into tokens, skipping white space and comments. Tokens have
/// bounded lengths (a longer one is an error), so hostile text is refused after reading
/// at most that much of a token. The text must outlive the lexer and its tokens.
class Lexer
{
public:
    static constexpr std::size_t kMaxIdentifier = 256;
    static constexpr std::size_t kMaxNumber = 64;
    static constexpr std::size_t kMaxString = 64 * 1024;

    explicit Lexer(std::string_view text);

    /// The next token; End at the end of the text, Error (with its line) when the text
    /// holds something that is no token.
    Token next();
    /// The next token without consuming it.
    Token peek();
    /// Called after a '{': the raw text up to the matching '}', which is consumed
    /// (a peeked token is given back first). Braces in comments do not count. Error
    /// token when the text ends first.
    Token captureBlock();
    /// The raw rest of the current line, without its newline, lines continued by a
    /// trailing '\\' joined (a peeked token is given back first). `line` is where it
    /// starts.
    std::string restOfLine(int& line);
    /// Moves to the next line whose first character other than blanks is '#'; false
    /// when the text ends first. The '#' is left for next() or restOfLine().
    bool skipToDirectiveLine();

private:
    void givePeekBack();
    void skipSpaceAndComments();
    Token scan();
    Token error(std::string_view message, int line);
    char at(std::size_t offset) const { return offset < m_text.size() ? m_text[offset] : '\0'; }

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_line = 1;
    std::string m_error;
    bool m_hasPeeked = false;
    Token m_peeked;
    std::size_t m_peekPosition = 0; // where the peeked token's scan began
    int m_peekLine = 1;
};

} // namespace nvFX::detail

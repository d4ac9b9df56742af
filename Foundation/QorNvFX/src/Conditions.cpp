#include "Conditions_p.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace nvFX::detail {

namespace {

// Parentheses and macros inside macros nest at most this deep: a hostile line of
// parentheses, or a macro that names itself, ends with an error, not a deep recursion.
constexpr int kMaxDepth = 64;

bool IsNameStart(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool IsNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

class Evaluator
{
public:
    Evaluator(std::string_view text, const MacroTable& macros, int depth, std::string& error)
        : m_text(text), m_macros(macros), m_depth(depth), m_error(error)
    {
    }

    bool whole(long long& value)
    {
        if (!conditional(value))
            return false;
        skipSpace();
        if (m_position < m_text.size())
            return fail("unexpected '" + std::string(m_text.substr(m_position, 1)) + "'");
        return true;
    }

private:
    bool fail(const std::string& what)
    {
        if (m_error.empty())
            m_error = what;
        return false;
    }

    void skipSpace()
    {
        while (m_position < m_text.size() && std::isspace(static_cast<unsigned char>(m_text[m_position])))
            ++m_position;
    }

    // Takes `symbol` when it comes next (and is not the start of a longer operator
    // given in `notBefore`).
    bool accept(std::string_view symbol, char notBefore = '\0')
    {
        skipSpace();
        if (m_text.compare(m_position, symbol.size(), symbol) != 0)
            return false;
        const std::size_t after = m_position + symbol.size();
        if (notBefore && after < m_text.size() && m_text[after] == notBefore)
            return false;
        m_position = after;
        return true;
    }

    bool conditional(long long& value)
    {
        if (++m_depth > kMaxDepth)
            return fail("nests too deep");
        bool ok = binary(0, value);
        if (ok && accept("?")) {
            long long yes = 0, no = 0;
            ok = conditional(yes) && (accept(":") || fail("expected ':' after '?'")) && conditional(no);
            value = value ? yes : no;
        }
        --m_depth;
        return ok;
    }

    // Binary operators by precedence, loosest first.
    bool binary(int level, long long& value)
    {
        static constexpr int kLevels = 10;
        if (level == kLevels)
            return unary(value);
        if (!binary(level + 1, value))
            return false;
        for (;;) {
            const char* op = takeOperator(level);
            if (!op)
                return true;
            long long right = 0;
            if (!binary(level + 1, right) || !apply(op, value, right))
                return false;
        }
    }

    const char* takeOperator(int level)
    {
        switch (level) {
        case 0: return accept("||") ? "||" : nullptr;
        case 1: return accept("&&") ? "&&" : nullptr;
        case 2: return accept("|", '|') ? "|" : nullptr;
        case 3: return accept("^") ? "^" : nullptr;
        case 4: return accept("&", '&') ? "&" : nullptr;
        case 5: return accept("==") ? "==" : accept("!=") ? "!=" : nullptr;
        case 6:
            return accept("<=") ? "<=" : accept(">=") ? ">=" : accept("<", '<') ? "<" : accept(">", '>') ? ">" : nullptr;
        case 7: return accept("<<") ? "<<" : accept(">>") ? ">>" : nullptr;
        case 8: return accept("+") ? "+" : accept("-") ? "-" : nullptr;
        default: return accept("*") ? "*" : accept("/") ? "/" : accept("%") ? "%" : nullptr;
        }
    }

    bool apply(std::string_view op, long long& left, long long right)
    {
        bool overflow = false;
        if (op == "||") left = left || right;
        else if (op == "&&") left = left && right;
        else if (op == "|") left |= right;
        else if (op == "^") left ^= right;
        else if (op == "&") left &= right;
        else if (op == "==") left = left == right;
        else if (op == "!=") left = left != right;
        else if (op == "<=") left = left <= right;
        else if (op == ">=") left = left >= right;
        else if (op == "<") left = left < right;
        else if (op == ">") left = left > right;
        else if (op == "+") overflow = __builtin_add_overflow(left, right, &left);
        else if (op == "-") overflow = __builtin_sub_overflow(left, right, &left);
        else if (op == "*") overflow = __builtin_mul_overflow(left, right, &left);
        else if (op == "<<" || op == ">>") {
            if (right < 0 || right > 62 || left < 0)
                return fail("shift out of range");
            overflow = op == "<<" && left > (LLONG_MAX >> right);
            if (!overflow)
                left = op == "<<" ? (left << right) : (left >> right);
        } else {
            if (right == 0)
                return fail("division by zero");
            if (left == LLONG_MIN && right == -1)
                return fail("overflow");
            left = op == "/" ? left / right : left % right;
        }
        return !overflow || fail("overflow");
    }

    bool unary(long long& value)
    {
        if (accept("!", '=') || accept("~") || accept("-") || accept("+")) {
            const char op = m_text[m_position - 1];
            if (++m_depth > kMaxDepth)
                return fail("nests too deep");
            const bool ok = unary(value);
            --m_depth;
            if (!ok)
                return false;
            if (op == '-' && value == LLONG_MIN)
                return fail("overflow");
            value = op == '!' ? !value : op == '~' ? ~value : op == '-' ? -value : value;
            return true;
        }
        return primary(value);
    }

    bool primary(long long& value)
    {
        skipSpace();
        if (accept("("))
            return conditional(value) && (accept(")") || fail("expected ')'"));
        if (m_position < m_text.size() && std::isdigit(static_cast<unsigned char>(m_text[m_position])))
            return number(value);
        if (m_position < m_text.size() && IsNameStart(m_text[m_position]))
            return name(value);
        return fail(m_position < m_text.size() ? "unexpected '" + std::string(m_text.substr(m_position, 1)) + "'"
                                               : std::string("the expression ends too early"));
    }

    bool number(long long& value)
    {
        const std::size_t start = m_position;
        while (m_position < m_text.size() && IsNameChar(m_text[m_position]))
            ++m_position;
        std::string digits(m_text.substr(start, m_position - start));
        while (!digits.empty() && (digits.back() == 'u' || digits.back() == 'U' || digits.back() == 'l' ||
                                   digits.back() == 'L'))
            digits.pop_back();
        char* end = nullptr;
        errno = 0;
        value = std::strtoll(digits.c_str(), &end, 0);
        if (digits.empty() || *end != '\0' || errno == ERANGE)
            return fail("bad number '" + std::string(m_text.substr(start, m_position - start)) + "'");
        return true;
    }

    std::string_view takeName()
    {
        skipSpace();
        const std::size_t start = m_position;
        if (m_position < m_text.size() && IsNameStart(m_text[m_position]))
            while (m_position < m_text.size() && IsNameChar(m_text[m_position]))
                ++m_position;
        return m_text.substr(start, m_position - start);
    }

    bool name(long long& value)
    {
        const std::string_view word = takeName();
        if (word == "defined") {
            const bool parenthesised = accept("(");
            const std::string_view macro = takeName();
            if (macro.empty())
                return fail("expected a macro name after 'defined'");
            if (parenthesised && !accept(")"))
                return fail("expected ')' after 'defined(" + std::string(macro) + "'");
            value = m_macros.find(macro) != m_macros.end();
            return true;
        }
        const auto macro = m_macros.find(word);
        if (macro == m_macros.end()) {
            value = 0;
            return true;
        }
        if (m_depth + 2 > kMaxDepth)
            return fail("macro '" + std::string(word) + "' expands too deep");
        if (macro->second.find_first_not_of(" \t") == std::string::npos)
            return fail("macro '" + std::string(word) + "' has no value");
        return Evaluator(macro->second, m_macros, m_depth + 1, m_error).whole(value);
    }

    std::string_view m_text;
    const MacroTable& m_macros;
    int m_depth;
    std::string& m_error;
    std::size_t m_position = 0;
};

} // namespace

bool evaluateCondition(std::string_view expression, const MacroTable& macros, long long& value, std::string& error)
{
    error.clear();
    value = 0;
    return Evaluator(expression, macros, 0, error).whole(value);
}

} // namespace nvFX::detail

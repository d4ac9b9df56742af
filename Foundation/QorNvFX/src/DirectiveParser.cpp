// Preprocessor lines at effect scope: includes, conditions the parser decides, and the
// lines it hands every stage (macros, pragmas, extensions, the version).
#include "Parser_p.h"

#include "IncludeReader_p.h"

#include <cctype>

namespace nvFX::detail {

namespace {

constexpr int kMaxIncludeDepth = 16;
constexpr int kMaxIncludes = 256;
constexpr std::size_t kMaxTotalBytes = 64u << 20;
// Every stage of every pass repeats them: a bound keeps a hostile effect's stages small.
constexpr std::size_t kMaxDirectiveLines = 4096;

// The line without its comments: a directive's words end where a comment starts.
std::string WithoutComments(const std::string& line)
{
    std::string result;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line.compare(i, 2, "//") == 0)
            break;
        if (line.compare(i, 2, "/*") == 0) {
            const std::size_t end = line.find("*/", i + 2);
            if (end == std::string::npos)
                break;
            i = end + 1;
            result += ' ';
            continue;
        }
        result += line[i];
    }
    return collapseSpaces(result);
}

bool IsNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Splits "word rest" into the directive's word and its argument.
void SplitDirective(const std::string& line, std::string& word, std::string& argument)
{
    const std::size_t start = line.find_first_not_of(' ');
    std::size_t end = start;
    while (end < line.size() && IsNameChar(line[end]))
        ++end;
    word = start == std::string::npos ? std::string() : line.substr(start, end - start);
    const std::size_t rest = line.find_first_not_of(' ', end);
    argument = rest == std::string::npos ? std::string() : line.substr(rest);
}

bool IsConditionStart(const std::string& word)
{
    return word == "if" || word == "ifdef" || word == "ifndef";
}

// The macro's name: up to the first character no name has (a '(' of a function-like one).
std::string MacroName(const std::string& argument)
{
    std::size_t end = 0;
    while (end < argument.size() && IsNameChar(argument[end]))
        ++end;
    return end && !std::isdigit(static_cast<unsigned char>(argument[0])) ? argument.substr(0, end) : std::string();
}

} // namespace

bool Parser::parseDirective(const Token& hash)
{
    int line = hash.line;
    std::string word, argument;
    SplitDirective(WithoutComments(m_lexer->restOfLine(line)), word, argument);
    if (word == "include")
        return parseInclude(hash, argument);
    if (IsConditionStart(word) || word == "elif" || word == "else" || word == "endif")
        return parseCondition(word, argument, hash.line);
    if (word == "define" || word == "undef")
        return parseDefine(word, argument, hash.line);
    if (word == "pragma")
        return addDirective(m_effect.directives, "#pragma " + argument, hash.line);
    if (word == "extension")
        return addDirective(m_effect.extensions, "#extension " + argument, hash.line);
    if (word == "version")
        return setVersion("#version " + argument, {m_source, hash.line});
    if (word == "error")
        return fail(hash.line, "#error " + argument);
    if (word.empty())
        return fail(hash.line, "expected a directive after '#'");
    return fail(hash.line, "unsupported directive '#" + word + "'");
}

bool Parser::addDirective(std::vector<DirectiveLine>& lines, std::string text, int line)
{
    if (&lines == &m_effect.extensions)
        for (const DirectiveLine& earlier : lines)
            if (earlier.text == text)
                return true; // two includes may both ask for it
    if (m_effect.directives.size() + m_effect.extensions.size() == kMaxDirectiveLines)
        return fail(line, "more than " + std::to_string(kMaxDirectiveLines) + " directives in one effect");
    if (&lines == &m_effect.directives)
        m_effect.scope.push_back({ScopeItem::Directive, lines.size()});
    lines.push_back({std::move(text), {m_source, line}});
    return true;
}

bool Parser::parseDefine(const std::string& word, const std::string& argument, int line)
{
    const std::string name = MacroName(argument);
    if (name.empty())
        return fail(line, "expected a macro name after '#" + word + "'");
    if (word == "undef") {
        m_macros.erase(name);
    } else {
        std::string value = argument.substr(name.size());
        if (!value.empty() && value[0] == '(')
            value.clear(); // a function-like macro: defined, with no value a condition can use
        m_macros[name] = collapseSpaces(value);
    }
    return addDirective(m_effect.directives, "#" + word + " " + argument, line);
}

bool Parser::evaluate(const std::string& word, const std::string& argument, int line, bool& holds)
{
    if (word == "ifdef" || word == "ifndef") {
        const std::string name = MacroName(argument);
        if (name.empty() || name.size() != argument.size())
            return fail(line, "expected one macro name after '#" + word + "'");
        holds = (m_macros.find(name) != m_macros.end()) == (word == "ifdef");
        return true;
    }
    long long value = 0;
    std::string error;
    if (argument.empty())
        return fail(line, "'#" + word + "' without a condition");
    if (!evaluateCondition(argument, m_macros, value, error))
        return fail(line, "'#" + word + " " + argument + "': " + error);
    holds = value != 0;
    return true;
}

bool Parser::parseCondition(const std::string& word, const std::string& argument, int line)
{
    if (IsConditionStart(word)) {
        bool holds = false;
        if (!evaluate(word, argument, line, holds))
            return false;
        m_conditions.push_back({word, line, holds, false});
        return holds || skipInactive();
    }
    if (m_conditions.size() == m_conditionBase)
        return fail(line, "'#" + word + "' without '#if'");
    Condition& condition = m_conditions.back();
    if (word == "endif") {
        m_conditions.pop_back();
        return true;
    }
    if (condition.sawElse)
        return fail(line, "'#" + word + "' after '#else'");
    condition.sawElse = word == "else";
    return skipInactive(); // the branch that ends here was the one taken
}

bool Parser::skipInactive()
{
    int depth = 0; // conditions opened inside the skipped lines
    while (m_lexer->skipToDirectiveLine()) {
        int line = 0;
        std::string word, argument;
        SplitDirective(WithoutComments(m_lexer->restOfLine(line).substr(1)), word, argument);
        if (IsConditionStart(word)) {
            ++depth;
            continue;
        }
        if (depth > 0) {
            depth -= word == "endif";
            continue;
        }
        Condition& condition = m_conditions.back();
        if (word == "endif") {
            m_conditions.pop_back();
            return true;
        }
        if (word != "elif" && word != "else")
            continue;
        if (condition.sawElse)
            return fail(line, "'#" + word + "' after '#else'");
        condition.sawElse = word == "else";
        bool holds = !condition.taken;
        if (holds && word == "elif" && !evaluate(word, argument, line, holds))
            return false;
        if (holds) {
            condition.taken = true;
            return true;
        }
    }
    return fail(m_conditions.back().line, "'#" + m_conditions.back().keyword + "' is not closed by '#endif'");
}

bool Parser::parseInclude(const Token& hash, const std::string& argument)
{
    if (argument.size() < 2 || argument.front() != '"' || argument.back() != '"')
        return fail(hash.line, "expected a quoted name after #include");
    const std::string file = argument.substr(1, argument.size() - 2);
    for (const std::string& open : m_includeStack) {
        if (open != file)
            continue;
        std::string chain;
        for (const std::string& step : m_includeStack)
            chain += step + " -> ";
        return fail(hash.line, "include cycle: " + chain + file);
    }
    if (static_cast<int>(m_includeStack.size()) >= kMaxIncludeDepth)
        return fail(hash.line, "includes nest deeper than " + std::to_string(kMaxIncludeDepth) + " levels");
    if (m_includes >= kMaxIncludes)
        return fail(hash.line, "more than " + std::to_string(kMaxIncludes) + " includes");
    std::string content;
    switch (readInclude(file, content)) {
    case IncludeStatus::Found:
        break;
    case IncludeStatus::Missing:
        return fail(hash.line, "include " + quoted(file) + " not found");
    case IncludeStatus::TooLarge:
        return fail(hash.line, "include " + quoted(file) + " is larger than 16 MiB");
    case IncludeStatus::Unreadable:
        return fail(hash.line, "include " + quoted(file) + " could not be read");
    }
    m_totalBytes += content.size();
    if (m_totalBytes > kMaxTotalBytes)
        return fail(hash.line, "includes add up to more than 64 MiB");
    ++m_includes;
    m_includeStack.push_back(file);
    const bool ok = parseSource(content, m_effect.sources.add(file));
    m_includeStack.pop_back();
    return ok;
}

} // namespace nvFX::detail

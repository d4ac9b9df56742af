#include "EffectParser_p.h"

#include "IncludeReader_p.h"
#include "Lexer_p.h"
#include "ValueTypes_p.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace nvFX::detail {

const CodePiece* EffectDescription::findCode(const std::string& name) const
{
    for (const CodePiece& piece : namedCode)
        if (piece.name == name)
            return &piece;
    return nullptr;
}

namespace {

constexpr int kMaxIncludeDepth = 16;
constexpr int kMaxIncludes = 256;
constexpr std::size_t kMaxTotalBytes = 64u << 20;
constexpr long kMaxArraySize = 4096;
constexpr std::size_t kMaxAnnotations = 256;
constexpr std::size_t kMaxListNumbers = 256;

// Constructs of the wider ".glslfx" format this runtime refuses, by the start of their
// keywords, with what they are.
struct Refused
{
    std::string_view prefix;
    const char* what;
};

constexpr Refused kRefused[] = {
    {"Sampler", "sampler states"},     {"sampler_state", "sampler states"},
    {"Texture", "texture resources"},  {"Image", "texture resources"},
    {"Namespace", "namespaces"},       {"namespace", "namespaces"},
    {"Compute", "compute programs"},   {"GLSLCompute", "compute programs"},
    {"CUDA", "CUDA code"},             {"HLSL", "HLSL code"},
    {"FrameBuffer", "frame buffers"},  {"FBO", "frame buffers"},
    {"RenderBuffer", "frame buffers"}, {"RenderTarget", "frame buffers"},
    {"CurrentTarget", "frame buffers"}, {"Clear", "frame buffers"},
    {"Viewport", "frame buffers"},
};

const char* RefusedConstruct(std::string_view word)
{
    for (const Refused& refused : kRefused)
        if (word.compare(0, refused.prefix.size(), refused.prefix) == 0)
            return refused.what;
    return nullptr;
}

constexpr std::string_view kStageKeys[StageCount] = {"VertexProgram", "FragmentProgram", "GeometryProgram"};

std::string Quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
}

// A found token for messages.
std::string Describe(const Token& token)
{
    return token.kind == Token::End ? std::string("the end of the text") : Quoted(token.text);
}

std::string Unescape(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const char escaped = text[++i];
        result += escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped;
    }
    return result;
}

std::string CollapseSpaces(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        const bool space = c == ' ' || c == '\t' || c == '\r';
        if (!space)
            result += c;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
    }
    while (!result.empty() && result.back() == ' ')
        result.pop_back();
    return result;
}

class Parser
{
public:
    explicit Parser(EffectDescription& effect) : m_effect(effect) {}

    bool parseSource(std::string_view text, int source);
    bool resolveCode();

private:
    bool fail(SourceLocation at, const std::string& what)
    {
        reportError(m_effect.sources, at, what);
        return false;
    }
    bool fail(int line, const std::string& what) { return fail({m_source, line}, what); }
    std::string where(SourceLocation at) const
    {
        return m_effect.sources.name(at.source) + "(" + std::to_string(at.line) + ")";
    }

    bool take(Token& token);
    bool expect(char symbol, const std::string& context);
    bool expectName(Token& token, const std::string& what);
    void skipOptionalSemicolon();

    bool parseItem(const Token& token);
    bool parseInclude(const Token& hash);
    bool parseCode(const Token& keyword);
    bool takeVersion(CodePiece& piece);
    bool parseUniform(UniformDescription& uniform);
    bool parseDefault(UniformDescription& uniform);
    bool parseNumber(const Token& first, double& value);
    bool addUniform(UniformDescription uniform);
    bool parseBuffer(const Token& keyword);
    bool parseTechnique(const Token& keyword);
    bool parsePass(TechniqueDescription& technique, const Token& keyword);
    bool parseStageCode(PassDescription& pass, int stage, const Token& key);
    bool parseState(PassDescription& pass, const Token& key);
    template <typename Description>
    bool startBlock(const std::vector<Description>& earlier, const char* what, const Token& keyword,
                    Description& description);
    template <typename Item>
    bool parseBlockBody(const std::string& context, Item item);
    bool parseOptionalAnnotations(AnnotationList& annotations);
    /// True, and the brace taken, when a '{' comes next.
    bool takeOpeningBrace();
    /// `element` once, or (`braced`, the '{' taken) elements separated by ',' up to '}'.
    template <typename Element>
    bool parseList(bool braced, bool mayBeEmpty, const std::string& context, Element element);
    bool parseAnnotations(AnnotationList& annotations);
    bool parseAnnotationNumbers(AnnotationEntry& entry);

    EffectDescription& m_effect;
    Lexer* m_lexer = nullptr;
    int m_source = 0;
    std::vector<std::string> m_includeStack;
    int m_includes = 0;
    std::size_t m_totalBytes = 0;
};

bool Parser::parseSource(std::string_view text, int source)
{
    Lexer lexer(text);
    Lexer* const outerLexer = std::exchange(m_lexer, &lexer);
    const int outerSource = std::exchange(m_source, source);
    bool ok = true;
    for (Token token; ok;) {
        ok = take(token);
        if (!ok || token.kind == Token::End)
            break;
        ok = parseItem(token);
    }
    m_lexer = outerLexer;
    m_source = outerSource;
    return ok;
}

bool Parser::take(Token& token)
{
    token = m_lexer->next();
    return token.kind != Token::Error || fail(token.line, std::string(token.text));
}

bool Parser::expect(char symbol, const std::string& context)
{
    Token token;
    if (!take(token))
        return false;
    if (token.is(symbol))
        return true;
    return fail(token.line, std::string("expected '") + symbol + "' " + context + ", found " + Describe(token));
}

bool Parser::expectName(Token& token, const std::string& what)
{
    if (!take(token))
        return false;
    if (token.kind == Token::Identifier)
        return true;
    return fail(token.line, "expected " + what + ", found " + Describe(token));
}

void Parser::skipOptionalSemicolon()
{
    if (m_lexer->peek().is(';'))
        m_lexer->next();
}

bool Parser::parseItem(const Token& token)
{
    if (token.is('#'))
        return parseInclude(token);
    if (token.is("GLSLShader"))
        return parseCode(token);
    if (token.is("uniform")) {
        UniformDescription uniform;
        return parseUniform(uniform) && addUniform(std::move(uniform));
    }
    if (token.is("ConstantBuffer"))
        return parseBuffer(token);
    if (token.is("Technique"))
        return parseTechnique(token);
    if (token.kind == Token::Identifier) {
        if (const char* what = RefusedConstruct(token.text))
            return fail(token.line, std::string(what) + " are not supported: " + Quoted(token.text));
        return fail(token.line, "unknown block " + Quoted(token.text));
    }
    return fail(token.line, "unexpected " + Describe(token) + " at effect scope");
}

bool Parser::parseInclude(const Token& hash)
{
    Token directive, name;
    if (!expectName(directive, "'include' after '#'"))
        return false;
    if (!directive.is("include"))
        return fail(directive.line, "unsupported directive '#" + std::string(directive.text) + "'");
    if (!take(name))
        return false;
    if (name.kind != Token::String)
        return fail(name.line, "expected a quoted name after #include");
    const std::string file(name.text);
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
        return fail(hash.line, "include " + Quoted(file) + " not found");
    case IncludeStatus::TooLarge:
        return fail(hash.line, "include " + Quoted(file) + " is larger than 16 MiB");
    case IncludeStatus::Unreadable:
        return fail(hash.line, "include " + Quoted(file) + " could not be read");
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

bool Parser::parseCode(const Token& keyword)
{
    CodePiece piece;
    if (m_lexer->peek().kind == Token::Identifier) {
        piece.name = std::string(m_lexer->next().text);
        if (const CodePiece* earlier = m_effect.findCode(piece.name))
            return fail(keyword.line, "code " + Quoted(piece.name) + " declared again (first at " + where(earlier->at) + ")");
    }
    if (!expect('{', "after GLSLShader"))
        return false;
    const Token body = m_lexer->captureBlock();
    if (body.kind == Token::Error)
        return fail(keyword.line, "GLSLShader " + Quoted(piece.name) + ": " + std::string(body.text));
    piece.text = std::string(body.text);
    piece.at = {m_source, body.line};
    skipOptionalSemicolon();
    if (!piece.name.empty()) {
        m_effect.namedCode.push_back(std::move(piece));
        return true;
    }
    if (!takeVersion(piece))
        return false;
    m_effect.scope.push_back({ScopeItem::SharedCode, m_effect.sharedCode.size()});
    m_effect.sharedCode.push_back(std::move(piece));
    return true;
}

// A "#version" line of shared code sets the version of every stage: it is taken out of
// the piece (blanked, so lines keep their numbers) and put first in each stage.
bool Parser::takeVersion(CodePiece& piece)
{
    std::size_t lineStart = 0;
    for (int line = piece.at.line; lineStart < piece.text.size(); ++line) {
        std::size_t lineEnd = piece.text.find('\n', lineStart);
        if (lineEnd == std::string::npos)
            lineEnd = piece.text.size();
        const std::string directive = CollapseSpaces(std::string_view(piece.text).substr(lineStart, lineEnd - lineStart));
        if (directive.compare(0, 9, "#version ") == 0 || directive.compare(0, 10, "# version ") == 0) {
            const SourceLocation at{piece.at.source, line};
            if (!m_effect.version.empty() && m_effect.version != directive)
                return fail(at, Quoted(directive) + " differs from " + Quoted(m_effect.version) + " at " +
                                    where(m_effect.versionAt));
            m_effect.version = directive;
            m_effect.versionAt = at;
            piece.text.replace(lineStart, lineEnd - lineStart, lineEnd - lineStart, ' ');
        }
        lineStart = lineEnd + 1;
    }
    return true;
}

bool Parser::parseUniform(UniformDescription& uniform)
{
    Token type, name;
    if (!expectName(type, "a uniform type"))
        return false;
    uniform.type = findValueType(type.text);
    if (!uniform.type)
        return fail(type.line, "unknown uniform type " + Quoted(type.text));
    if (!expectName(name, "a uniform name"))
        return false;
    uniform.name = std::string(name.text);
    uniform.at = {m_source, name.line};
    if (m_lexer->peek().is('[')) {
        m_lexer->next();
        Token size;
        if (!take(size))
            return false;
        char* end = nullptr;
        const std::string digits(size.text);
        const long count = size.kind == Token::Number ? std::strtol(digits.c_str(), &end, 10) : 0;
        if (size.kind != Token::Number || *end != '\0' || count < 1 || count > kMaxArraySize)
            return fail(size.line, "array size of " + Quoted(uniform.name) + " must be a whole number from 1 to " +
                                       std::to_string(kMaxArraySize));
        uniform.arraySize = static_cast<int>(count);
        if (!expect(']', "after the array size"))
            return false;
    }
    if (m_lexer->peek().is(':')) {
        m_lexer->next();
        Token semantic;
        if (!expectName(semantic, "a semantic after ':'"))
            return false;
        uniform.semantic = std::string(semantic.text);
    }
    if (!parseOptionalAnnotations(uniform.annotations))
        return false;
    if (m_lexer->peek().is('=')) {
        m_lexer->next();
        if (!parseDefault(uniform))
            return false;
    }
    return expect(';', "after the declaration of " + Quoted(uniform.name));
}

bool Parser::parseDefault(UniformDescription& uniform)
{
    const ValueType& type = *uniform.type;
    const std::string what = "uniform " + Quoted(uniform.name) + " (" + type.keyword + (uniform.arraySize ? "[]" : "") + ")";
    if (type.base == ValueBase::Sampler)
        return fail(uniform.at, what + ": a sampler takes no value");
    const std::size_t expected = static_cast<std::size_t>(type.components) * std::max(uniform.arraySize, 1);
    const bool ok = parseList(takeOpeningBrace(), true, "the value of " + what, [&] {
        Token token;
        double value = 0.0;
        if (!take(token))
            return false;
        if (token.is("true") || token.is("false"))
            value = token.is("true") ? 1.0 : 0.0;
        else if (!parseNumber(token, value))
            return false;
        if (type.base == ValueBase::Int && value != std::floor(value))
            return fail(token.line, what + " takes whole numbers");
        if (uniform.values.size() == expected)
            return fail(token.line, what + " takes " + std::to_string(expected) + " values, more are given");
        uniform.values.push_back(value);
        return true;
    });
    if (!ok)
        return false;
    if (uniform.values.size() != expected)
        return fail(uniform.at, what + " takes " + std::to_string(expected) + " values, " +
                                    std::to_string(uniform.values.size()) + " given");
    return true;
}

bool Parser::parseNumber(const Token& first, double& value)
{
    Token token = first;
    bool negative = false;
    if (token.is('-') || token.is('+')) {
        negative = token.is('-');
        if (!take(token))
            return false;
    }
    if (token.kind != Token::Number)
        return fail(token.line, "expected a number, found " + Describe(token));
    std::string digits(token.text);
    if (!digits.empty() && (digits.back() == 'f' || digits.back() == 'F'))
        digits.pop_back();
    char* end = nullptr;
    value = std::strtod(digits.c_str(), &end);
    if (digits.empty() || *end != '\0' || !std::isfinite(value) || std::fabs(value) > 3.0e38)
        return fail(token.line, "bad number " + Quoted(token.text));
    if (negative)
        value = -value;
    return true;
}

bool Parser::addUniform(UniformDescription uniform)
{
    for (const UniformDescription& earlier : m_effect.uniforms) {
        if (earlier.name != uniform.name)
            continue;
        if (earlier.type == uniform.type && earlier.arraySize == uniform.arraySize)
            return true; // the same declaration again, as two includes may both make it
        return fail(uniform.at, "uniform " + Quoted(uniform.name) + " declared again with another type (first at " +
                                    where(earlier.at) + ")");
    }
    m_effect.scope.push_back({ScopeItem::Uniform, m_effect.uniforms.size()});
    m_effect.uniforms.push_back(std::move(uniform));
    return true;
}

template <typename Description>
bool Parser::startBlock(const std::vector<Description>& earlier, const char* what, const Token& keyword,
                        Description& description)
{
    Token name;
    if (!expectName(name, std::string("a ") + what + " name"))
        return false;
    for (const Description& other : earlier)
        if (other.name == name.text)
            return fail(name.line, std::string(what) + " " + Quoted(name.text) + " declared again (first at " +
                                       where(other.at) + ")");
    description.name = std::string(name.text);
    description.at = {m_source, keyword.line};
    return true;
}

template <typename Item>
bool Parser::parseBlockBody(const std::string& context, Item item)
{
    if (!expect('{', "to open " + context))
        return false;
    for (Token token; take(token);) {
        if (token.is('}')) {
            skipOptionalSemicolon();
            return true;
        }
        if (!item(token))
            return false;
    }
    return false;
}

bool Parser::parseOptionalAnnotations(AnnotationList& annotations)
{
    if (!m_lexer->peek().is('<'))
        return true;
    m_lexer->next();
    return parseAnnotations(annotations);
}

bool Parser::parseBuffer(const Token& keyword)
{
    BufferDescription buffer;
    const std::string context = "constant buffer " + Quoted(m_lexer->peek().text);
    const bool ok = startBlock(m_effect.buffers, "constant buffer", keyword, buffer) &&
                    parseBlockBody(context, [&](const Token& token) {
                        if (!token.is("uniform"))
                            return fail(token.line, "expected 'uniform' or '}' in " + context + ", found " +
                                                        Describe(token));
                        UniformDescription member;
                        if (!parseUniform(member))
                            return false;
                        if (member.type->base == ValueBase::Sampler)
                            return fail(member.at, "sampler " + Quoted(member.name) +
                                                       " cannot be a member of a constant buffer");
                        buffer.members.push_back(std::move(member));
                        return true;
                    });
    if (ok) {
        m_effect.scope.push_back({ScopeItem::Buffer, m_effect.buffers.size()});
        m_effect.buffers.push_back(std::move(buffer));
    }
    return ok;
}

bool Parser::parseTechnique(const Token& keyword)
{
    TechniqueDescription technique;
    const std::string context = "technique " + Quoted(m_lexer->peek().text);
    const bool ok = startBlock(m_effect.techniques, "technique", keyword, technique) &&
                    parseOptionalAnnotations(technique.annotations) &&
                    parseBlockBody(context, [&](const Token& token) {
                        if (!token.is("Pass"))
                            return fail(token.line, "expected 'Pass' or '}' in " + context + ", found " +
                                                        Describe(token));
                        return parsePass(technique, token);
                    });
    if (ok)
        m_effect.techniques.push_back(std::move(technique));
    return ok;
}

bool Parser::parsePass(TechniqueDescription& technique, const Token& keyword)
{
    PassDescription pass;
    const std::string context = "pass " + Quoted(m_lexer->peek().text);
    const bool ok = startBlock(technique.passes, "pass", keyword, pass) && parseOptionalAnnotations(pass.annotations) &&
                    parseBlockBody(context, [&](const Token& key) {
                        if (key.kind != Token::Identifier)
                            return fail(key.line, "expected a pass state or '}' in " + context + ", found " +
                                                      Describe(key));
                        int stage = 0;
                        while (stage < StageCount && key.text != kStageKeys[stage])
                            ++stage;
                        const bool assigned =
                            stage < StageCount ? parseStageCode(pass, stage, key) : parseState(pass, key);
                        return assigned && expect(';', "after " + Quoted(key.text));
                    });
    if (ok)
        technique.passes.push_back(std::move(pass));
    return ok;
}

bool Parser::parseStageCode(PassDescription& pass, int stage, const Token& key)
{
    if (!pass.stages[stage].empty())
        return fail(key.line, Quoted(key.text) + " assigned twice in pass " + Quoted(pass.name));
    if (!expect('=', "after " + Quoted(key.text)))
        return false;
    return parseList(takeOpeningBrace(), false, "the code list of " + Quoted(key.text), [&] {
        Token name;
        if (!expectName(name, "a code name for " + Quoted(key.text)))
            return false;
        pass.stages[stage].push_back({std::string(name.text), {m_source, name.line}});
        return true;
    });
}

bool Parser::parseState(PassDescription& pass, const Token& key)
{
    const RenderStateKind* kind = findRenderState(key.text);
    if (!kind) {
        if (const char* what = RefusedConstruct(key.text))
            return fail(key.line, std::string(what) + " are not supported: " + Quoted(key.text));
        return fail(key.line, "unknown pass state " + Quoted(key.text));
    }
    if (!expect('=', "after " + Quoted(key.text)))
        return false;
    RenderStateSetting setting;
    setting.kind = kind;
    if (syntaxOf(*kind) == RenderStateSyntax::TwoFloats) {
        Token first, second;
        double values[2] = {0.0, 0.0};
        if (!expect('{', "for the value of " + Quoted(key.text)) || !take(first) || !parseNumber(first, values[0]) ||
            !expect(',', "between the two numbers of " + Quoted(key.text)) || !take(second) ||
            !parseNumber(second, values[1]) || !expect('}', "after the two numbers of " + Quoted(key.text)))
            return false;
        setting.value.floats[0] = static_cast<float>(values[0]);
        setting.value.floats[1] = static_cast<float>(values[1]);
    } else {
        Token word;
        if (!take(word))
            return false;
        if (word.kind != Token::Identifier || !parseStateWord(*kind, word.text, setting.value))
            return fail(word.line, Describe(word) + " is not a value of " + Quoted(key.text) + " (" +
                                       std::string(describeStateWords(*kind)) + ")");
    }
    pass.states.push_back(setting);
    return true;
}

bool Parser::parseAnnotations(AnnotationList& annotations)
{
    for (Token name; take(name);) {
        if (name.is('>'))
            return true;
        if (name.kind != Token::Identifier)
            return fail(name.line, "expected an annotation name or '>', found " + Describe(name));
        if (annotations.size() == kMaxAnnotations)
            return fail(name.line, "more than " + std::to_string(kMaxAnnotations) + " annotations");
        AnnotationEntry entry;
        entry.name = std::string(name.text);
        Token value;
        if (!expect('=', "after annotation " + Quoted(entry.name)) || !take(value))
            return false;
        if (value.kind == Token::String) {
            entry.isString = true;
            entry.text = Unescape(value.text);
        } else if (value.is('{')) {
            if (!parseAnnotationNumbers(entry))
                return false;
        } else {
            double number = 0.0;
            if (!parseNumber(value, number))
                return false;
            entry.numbers.push_back(static_cast<float>(number));
        }
        annotations.push_back(std::move(entry));
        if (m_lexer->peek().is('>'))
            continue;
        if (!expect(';', "after annotation " + Quoted(annotations.back().name)))
            return false;
    }
    return false;
}

bool Parser::parseAnnotationNumbers(AnnotationEntry& entry)
{
    return parseList(true, true, "annotation " + Quoted(entry.name), [&] {
        Token token;
        double number = 0.0;
        if (!take(token) || !parseNumber(token, number))
            return false;
        if (entry.numbers.size() == kMaxListNumbers)
            return fail(token.line, "annotation " + Quoted(entry.name) + " lists more than " +
                                        std::to_string(kMaxListNumbers) + " numbers");
        entry.numbers.push_back(static_cast<float>(number));
        return true;
    });
}

bool Parser::takeOpeningBrace()
{
    if (!m_lexer->peek().is('{'))
        return false;
    m_lexer->next();
    return true;
}

template <typename Element>
bool Parser::parseList(bool braced, bool mayBeEmpty, const std::string& context, Element element)
{
    if (braced && mayBeEmpty && m_lexer->peek().is('}')) {
        m_lexer->next();
        return true;
    }
    for (;;) {
        if (!element())
            return false;
        if (!braced)
            return true;
        Token separator;
        if (!take(separator))
            return false;
        if (separator.is('}'))
            return true;
        if (!separator.is(','))
            return fail(separator.line, "expected ',' or '}' in " + context + ", found " + Describe(separator));
    }
}

bool Parser::resolveCode()
{
    for (const TechniqueDescription& technique : m_effect.techniques) {
        for (const PassDescription& pass : technique.passes) {
            bool any = false;
            for (const std::vector<CodeReference>& stage : pass.stages) {
                for (const CodeReference& reference : stage)
                    if (!m_effect.findCode(reference.name))
                        return fail(reference.at, "pass " + Quoted(pass.name) + " of technique " +
                                                      Quoted(technique.name) + " names code " +
                                                      Quoted(reference.name) + ", which is not declared");
                any = any || !stage.empty();
            }
            if (!any)
                return fail(pass.at, "pass " + Quoted(pass.name) + " of technique " + Quoted(technique.name) +
                                         " assigns no program");
        }
    }
    return true;
}

} // namespace

bool parseEffect(const char* text, EffectDescription& effect)
{
    Parser parser(effect);
    return parser.parseSource(text, 1) && parser.resolveCode();
}

} // namespace nvFX::detail

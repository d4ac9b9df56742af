/// @file
/// The parser behind parseEffect. Private to QorNvFX.
#pragma once

#include "Conditions_p.h"
#include "EffectDescription_p.h"
#include "Lexer_p.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace nvFX::detail {

/// `text` with runs of blanks made one space and none at either end.
std::string collapseSpaces(std::string_view text);

/// Reads one effect text and its includes into an EffectDescription; the first error is
/// printed and ends the parse. EffectParser.cpp has the effect-scope blocks, includes
/// and passes; DeclarationParser.cpp the tokens, uniform declarations, values and
/// annotations they share.
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
    static std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }
    /// A found token, for messages.
    static std::string describe(const Token& token)
    {
        return token.kind == Token::End ? std::string("the end of the text") : quoted(token.text);
    }

    bool take(Token& token);
    bool expect(char symbol, const std::string& context);
    bool expectName(Token& token, const std::string& what);
    void skipOptionalSemicolon();

    bool parseItem(const Token& token);
    bool parseDirective(const Token& hash);
    bool parseInclude(const Token& hash, const std::string& argument);
    bool parseCondition(const std::string& word, const std::string& argument, int line);
    bool evaluate(const std::string& word, const std::string& argument, int line, bool& holds);
    /// Skips the lines of branches not taken, up to the `#elif` or `#else` taken or the
    /// `#endif` that closes the innermost condition.
    bool skipInactive();
    bool parseDefine(const std::string& word, const std::string& argument, int line);
    bool addDirective(std::vector<DirectiveLine>& lines, std::string text, int line);
    bool setVersion(const std::string& directive, SourceLocation at);
    bool parseCode(const Token& keyword);
    bool takeVersion(CodePiece& piece);
    bool parseUniform(UniformDescription& uniform);
    bool parseArraySize(UniformDescription& uniform);
    bool parseDefault(UniformDescription& uniform);
    bool parseNumber(const Token& first, double& value);
    bool addUniform(UniformDescription uniform);
    bool parseBuffer(const Token& keyword, bool global);
    bool parseNamespace(const Token& keyword);
    /// `name` after the names of the namespaces it stands in, each followed by `separator`.
    std::string scoped(std::string_view name, const char* separator) const;
    bool parseTechnique(const Token& keyword);
    bool parsePass(TechniqueDescription& technique, const Token& keyword);
    bool parseStageCode(PassDescription& pass, int stage, const Token& key);
    /// A state `key = value;` (without the ';') into `states`; `owner` names the pass or
    /// block in messages, `family` (when not null) the only family the states may be of.
    bool parseState(std::vector<RenderStateSetting>& states, const Token& key, std::string_view owner,
                    const StateFamily* family);
    bool parseStateBlock(const Token& keyword, StateFamily family);
    bool parseStateReference(PassDescription& pass, const Token& key, StateFamily family);
    bool parseSamplerState(const Token& keyword);
    bool parseTextureResource(const Token& keyword, const char* samplerType);
    /// `SamplerResource(NAME) = ...` or `SamplerState(NAME) = ...` of a pass.
    bool parseSamplerAssignment(PassDescription& pass, const Token& key);
    /// The index of the block `name` among `blocks`; false after saying it is not declared.
    template <typename Block>
    bool findDeclared(const std::vector<Block>& blocks, const Token& name, const char* what, std::size_t& index);
    /// `name` is the refused block's own name, or its pass's for a pass state.
    bool refuseSceneLevel(std::string_view name, const Token& keyword);
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
    /// Annotations up to `closing` ('>' after '<', or '}' of a block read as annotations).
    bool parseAnnotations(AnnotationList& annotations, char closing = '>');
    bool parseAnnotationNumbers(AnnotationEntry& entry);

    EffectDescription& m_effect;
    Lexer* m_lexer = nullptr;
    int m_source = 0;
    /// An `#if`, `#ifdef` or `#ifndef` whose `#endif` has not come yet.
    struct Condition
    {
        std::string keyword;
        int line = 0;
        bool taken = false;   ///< a branch was taken: the rest are skipped
        bool sawElse = false;
    };

    std::vector<std::string> m_includeStack;
    std::vector<std::string> m_namespaces; ///< those the parser is in, outermost first
    MacroTable m_macros;
    std::vector<Condition> m_conditions;
    std::size_t m_conditionBase = 0; ///< the first condition of the source being read
    int m_includes = 0;
    std::size_t m_totalBytes = 0;
};

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
            return fail(separator.line, "expected ',' or '}' in " + context + ", found " + describe(separator));
    }
}

template <typename Description>
bool Parser::startBlock(const std::vector<Description>& earlier, const char* what, const Token& keyword,
                        Description& description)
{
    Token name;
    if (!expectName(name, std::string("a ") + what + " name"))
        return false;
    // A constant buffer's name is GLSL's block name; techniques and passes stand outside namespaces.
    const std::string full = std::is_same_v<Description, BufferDescription> ? scoped(name.text, "_")
                                                                            : std::string(name.text);
    for (const Description& other : earlier)
        if (other.name == full)
            return fail(name.line, std::string(what) + " " + quoted(full) + " declared again (first at " +
                                       where(other.at) + ")");
    description.name = full;
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

} // namespace nvFX::detail

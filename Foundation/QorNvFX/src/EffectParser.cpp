#include "EffectParser_p.h"

#include "Parser_p.h"
#include "Lookup_p.h"
#include "ValueTypes_p.h"

#include <algorithm>
#include <cmath>
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

// Every stage declares every effect-scope uniform, and glslang's linker compares each
// declaration of one stage with each of the other: its work grows with the square of
// the count (100,000 uniforms took 13 s). No driver takes near this many.
constexpr std::size_t kMaxUniforms = 4096;
constexpr std::size_t kMaxNamespaceDepth = 16;
// The most patch vertices GL guarantees.
constexpr double kMaxStateCount = 32;
// An effect's own constant buffers take GL binding points from 0; global ones from 24.
constexpr std::ptrdiff_t kMaxOwnBuffers = 24;
// Passes copy a block's states where they name it; each block costs its states' bytes.
constexpr std::size_t kMaxStateBlocks = 1024;

struct StateBlockKeyword
{
    const char* keyword;
    StateFamily family;
};

constexpr StateBlockKeyword kStateBlocks[] = {
    {"RasterizationState", StateFamily::Rasterization},
    {"DepthStencilState", StateFamily::DepthStencil},
    {"ColorSampleState", StateFamily::ColorSample},
};

// Constructs of the wider ".glslfx" format this runtime does not read yet, by the start
// of their keywords, with what they are.
struct Refused
{
    std::string_view prefix;
    const char* what;
};

constexpr Refused kRefused[] = {
    {"Sampler", "sampler states"},    {"sampler_state", "sampler states"},
    {"Texture", "texture resources"}, {"Image", "texture resources"},
    {"HLSL", "HLSL programs"},
};

// Texture resources by kind, with the sampler type each fits.
struct TextureKeyword
{
    const char* keyword;
    const char* samplerType;
};

constexpr TextureKeyword kTextures[] = {
    {"TextureResource1D", "sampler1D"},     {"TextureResource2D", "sampler2D"},
    {"TextureResource3D", "sampler3D"},     {"TextureResourceCube", "samplerCube"},
    {"TextureResourceRect", "sampler2DRect"},
};

// What belongs to drawing a scene rather than a surface (targets, clears, blits, compute
// and CUDA or OptiX work, path rendering): a material effect is drawn into the
// renderer's own target, so these are refused, never skipped, by the start of their
// keywords.
constexpr std::string_view kSceneLevel[] = {
    "RenderTexture", "RenderBuffer", "RenderTarget", "RenderMode", "RenderGroup", "FBO", "FrameBuffer",
    "CurrentTarget", "Clear", "Blit", "Viewport", "SwapResources", "Compute", "GLSLCompute", "CUDA",
    "Optix", "OptiX", "Path",
};

bool StartsWith(std::string_view word, std::string_view prefix)
{
    return word.compare(0, prefix.size(), prefix) == 0;
}

const char* RefusedConstruct(std::string_view word)
{
    for (const Refused& refused : kRefused)
        if (StartsWith(word, refused.prefix))
            return refused.what;
    return nullptr;
}

bool IsSceneLevel(std::string_view word)
{
    for (const std::string_view prefix : kSceneLevel)
        if (StartsWith(word, prefix))
            return true;
    return false;
}

constexpr std::string_view kStageKeys[StageCount] = {"VertexProgram", "FragmentProgram", "GeometryProgram",
                                                     "TessellationControlProgram", "TessellationEvaluationProgram"};

} // namespace

std::string collapseSpaces(std::string_view text)
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

bool Parser::parseSource(std::string_view text, int source)
{
    Lexer lexer(text);
    Lexer* const outerLexer = std::exchange(m_lexer, &lexer);
    const int outerSource = std::exchange(m_source, source);
    // Conditions open in the including text cannot be closed in the included one.
    const std::size_t outerConditions = std::exchange(m_conditionBase, m_conditions.size());
    bool ok = true;
    for (Token token; ok;) {
        ok = take(token);
        if (!ok || token.kind == Token::End)
            break;
        ok = parseItem(token);
    }
    if (ok && m_conditions.size() > m_conditionBase)
        ok = fail(m_conditions.back().line, "'#" + m_conditions.back().keyword + "' is not closed by '#endif'");
    m_lexer = outerLexer;
    m_source = outerSource;
    m_conditionBase = outerConditions;
    return ok;
}

bool Parser::parseItem(const Token& token)
{
    if (token.is('#'))
        return parseDirective(token);
    if (token.is("GLSLShader"))
        return parseCode(token);
    if (token.is("uniform")) {
        UniformDescription uniform;
        return parseUniform(uniform) && addUniform(std::move(uniform));
    }
    if (token.is("ConstantBuffer"))
        return parseBuffer(token, false);
    if (token.is("global")) {
        Token next;
        if (!take(next))
            return false;
        if (next.is("ConstantBuffer"))
            return parseBuffer(next, true);
        if (next.is("uniform"))
            return fail(next.line, "'global' uniforms are not supported: a global ConstantBuffer shares its members");
        return fail(next.line, "expected 'ConstantBuffer' after 'global', found " + describe(next));
    }
    if (token.is("namespace"))
        return parseNamespace(token);
    if (token.kind == Token::Identifier) {
        if (const StateBlockKeyword* block = inTable(kStateBlocks, &StateBlockKeyword::keyword, token.text))
            return parseStateBlock(token, block->family);
        if (const TextureKeyword* texture = inTable(kTextures, &TextureKeyword::keyword, token.text))
            return parseTextureResource(token, texture->samplerType);
    }
    if (token.is("SamplerState"))
        return parseSamplerState(token);
    if (token.is("Technique"))
        return parseTechnique(token);
    if (token.kind == Token::Identifier) {
        if (IsSceneLevel(token.text)) {
            const Token name = m_lexer->peek();
            return refuseSceneLevel(name.kind == Token::Identifier ? name.text : token.text, token);
        }
        if (const char* what = RefusedConstruct(token.text))
            return fail(token.line, std::string(what) + " are not supported: " + quoted(token.text));
        return fail(token.line, "unknown block " + quoted(token.text));
    }
    return fail(token.line, "unexpected " + describe(token) + " at effect scope");
}

bool Parser::parseCode(const Token& keyword)
{
    CodePiece piece;
    if (m_lexer->peek().kind == Token::Identifier) {
        piece.name = scoped(m_lexer->next().text, "::");
        if (const CodePiece* earlier = m_effect.findCode(piece.name))
            return fail(keyword.line, "code " + quoted(piece.name) + " declared again (first at " + where(earlier->at) + ")");
    }
    if (!expect('{', "after GLSLShader"))
        return false;
    const Token body = m_lexer->captureBlock();
    if (body.kind == Token::Error)
        return fail(keyword.line, "GLSLShader " + quoted(piece.name) + ": " + std::string(body.text));
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
        const std::string directive = collapseSpaces(std::string_view(piece.text).substr(lineStart, lineEnd - lineStart));
        if (directive.compare(0, 9, "#version ") == 0 || directive.compare(0, 10, "# version ") == 0) {
            if (!setVersion(directive, {piece.at.source, line}))
                return false;
            piece.text.replace(lineStart, lineEnd - lineStart, lineEnd - lineStart, ' ');
        }
        lineStart = lineEnd + 1;
    }
    return true;
}

bool Parser::setVersion(const std::string& directive, SourceLocation at)
{
    if (!m_effect.version.empty() && m_effect.version != directive)
        return fail(at, quoted(directive) + " differs from " + quoted(m_effect.version) + " at " + where(m_effect.versionAt));
    m_effect.version = directive;
    m_effect.versionAt = at;
    return true;
}

bool Parser::addUniform(UniformDescription uniform)
{
    for (const UniformDescription& earlier : m_effect.uniforms) {
        if (earlier.name != uniform.name)
            continue;
        if (earlier.type == uniform.type && earlier.arraySize == uniform.arraySize)
            return true; // the same declaration again, as two includes may both make it
        return fail(uniform.at, "uniform " + quoted(uniform.name) + " declared again with another type (first at " +
                                    where(earlier.at) + ")");
    }
    if (m_effect.uniforms.size() == kMaxUniforms)
        return fail(uniform.at, "more than " + std::to_string(kMaxUniforms) + " uniforms in one effect");
    m_effect.scope.push_back({ScopeItem::Uniform, m_effect.uniforms.size()});
    m_effect.uniforms.push_back(std::move(uniform));
    return true;
}

std::string Parser::scoped(std::string_view name, const char* separator) const
{
    std::string result;
    for (const std::string& space : m_namespaces)
        result += space + separator;
    return result + std::string(name);
}

bool Parser::parseNamespace(const Token& keyword)
{
    Token name;
    if (!expectName(name, "a namespace name"))
        return false;
    if (m_namespaces.size() == kMaxNamespaceDepth)
        return fail(keyword.line, "namespaces nest deeper than " + std::to_string(kMaxNamespaceDepth) + " levels");
    const std::string context = "namespace " + quoted(name.text);
    m_namespaces.emplace_back(name.text);
    const bool ok = parseBlockBody(context, [&](const Token& token) {
        if (token.kind == Token::End)
            return fail(token.line, "expected '}' to close " + context + ", found the end of the text");
        if (token.is("Technique"))
            return fail(token.line, "techniques are declared outside namespaces, not in " + context);
        return parseItem(token);
    });
    m_namespaces.pop_back();
    return ok;
}

bool Parser::parseBuffer(const Token& keyword, bool global)
{
    BufferDescription buffer;
    buffer.global = global;
    if (!global && std::count_if(m_effect.buffers.begin(), m_effect.buffers.end(),
                                 [](const BufferDescription& other) { return !other.global; }) == kMaxOwnBuffers)
        return fail(keyword.line, "more than " + std::to_string(kMaxOwnBuffers) + " constant buffers in one effect");
    const std::string context = "constant buffer " + quoted(m_lexer->peek().text);
    const bool ok = startBlock(m_effect.buffers, "constant buffer", keyword, buffer) &&
                    parseBlockBody(context, [&](const Token& token) {
                        if (!token.is("uniform"))
                            return fail(token.line, "expected 'uniform' or '}' in " + context + ", found " +
                                                        describe(token));
                        UniformDescription member;
                        if (!parseUniform(member))
                            return false;
                        if (member.type->base == ValueBase::Sampler)
                            return fail(member.at, "sampler " + quoted(member.name) +
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
    const std::string context = "technique " + quoted(m_lexer->peek().text);
    const bool ok = startBlock(m_effect.techniques, "technique", keyword, technique) &&
                    parseOptionalAnnotations(technique.annotations) &&
                    parseBlockBody(context, [&](const Token& token) {
                        if (!token.is("Pass"))
                            return fail(token.line, "expected 'Pass' or '}' in " + context + ", found " +
                                                        describe(token));
                        return parsePass(technique, token);
                    });
    if (ok)
        m_effect.techniques.push_back(std::move(technique));
    return ok;
}

bool Parser::parsePass(TechniqueDescription& technique, const Token& keyword)
{
    PassDescription pass;
    const std::string context = "pass " + quoted(m_lexer->peek().text);
    const bool ok = startBlock(technique.passes, "pass", keyword, pass) && parseOptionalAnnotations(pass.annotations) &&
                    parseBlockBody(context, [&](const Token& key) {
                        if (key.kind != Token::Identifier)
                            return fail(key.line, "expected a pass state or '}' in " + context + ", found " +
                                                      describe(key));
                        int stage = 0;
                        while (stage < StageCount && key.text != kStageKeys[stage])
                            ++stage;
                        const StateBlockKeyword* block =
                            inTable(kStateBlocks, &StateBlockKeyword::keyword, key.text);
                        const bool sampler = key.is("SamplerResource") || key.is("SamplerState");
                        const bool assigned = stage < StageCount ? parseStageCode(pass, stage, key)
                                              : block            ? parseStateReference(pass, key, block->family)
                                              : sampler          ? parseSamplerAssignment(pass, key)
                                                                 : parseState(pass.states, key, pass.name, nullptr);
                        return assigned && expect(';', "after " + quoted(key.text));
                    });
    if (ok)
        technique.passes.push_back(std::move(pass));
    return ok;
}

bool Parser::parseStageCode(PassDescription& pass, int stage, const Token& key)
{
    if (!pass.stages[stage].empty())
        return fail(key.line, quoted(key.text) + " assigned twice in pass " + quoted(pass.name));
    if (!expect('=', "after " + quoted(key.text)))
        return false;
    return parseList(takeOpeningBrace(), false, "the code list of " + quoted(key.text), [&] {
        Token name;
        if (!expectName(name, "a code name for " + quoted(key.text)))
            return false;
        std::string code(name.text);
        while (m_lexer->peek().is(':')) { // NAMESPACE::Code
            m_lexer->next();
            if (!expect(':', "after ':' in " + quoted(code + ":")) ||
                !expectName(name, "a code name after " + quoted(code + "::")))
                return false;
            code += "::" + std::string(name.text);
        }
        pass.stages[stage].push_back({std::move(code), {m_source, name.line}});
        return true;
    });
}

bool Parser::parseStateBlock(const Token& keyword, StateFamily family)
{
    StateBlockDescription block;
    block.family = family;
    const std::string context = std::string(keyword.text) + " " + quoted(m_lexer->peek().text);
    if (!startBlock(m_effect.stateBlocks, "state block", keyword, block))
        return false;
    if (m_effect.stateBlocks.size() == kMaxStateBlocks)
        return fail(keyword.line, "more than " + std::to_string(kMaxStateBlocks) + " state blocks in one effect");
    const bool ok = parseBlockBody(context, [&](const Token& key) {
        if (key.kind != Token::Identifier)
            return fail(key.line, "expected a state or '}' in " + context + ", found " + describe(key));
        return parseState(block.states, key, block.name, &family) && expect(';', "after " + quoted(key.text));
    });
    if (ok)
        m_effect.stateBlocks.push_back(std::move(block));
    return ok;
}

// The block must be declared before the pass, as a name in C.
bool Parser::parseStateReference(PassDescription& pass, const Token& key, StateFamily family)
{
    Token name;
    if (!expect('=', "after " + quoted(key.text)) || !expectName(name, "a state block name for " + quoted(key.text)))
        return false;
    for (const StateBlockDescription& block : m_effect.stateBlocks) {
        if (block.name != name.text)
            continue;
        if (block.family != family)
            return fail(name.line, "state block " + quoted(name.text) + " (declared at " + where(block.at) + ") is not a " +
                                       std::string(key.text));
        pass.states.insert(pass.states.end(), block.states.begin(), block.states.end());
        return true;
    }
    return fail(name.line, "pass " + quoted(pass.name) + " names " + std::string(key.text) + " " + quoted(name.text) +
                               ", which is not declared before it");
}

bool Parser::parseState(std::vector<RenderStateSetting>& states, const Token& key, std::string_view owner,
                        const StateFamily* family)
{
    const RenderStateKind* kind = findRenderState(key.text);
    if (!kind && IsSceneLevel(key.text))
        return refuseSceneLevel(owner, key);
    if (!kind) {
        if (const char* what = RefusedConstruct(key.text))
            return fail(key.line, std::string(what) + " are not supported: " + quoted(key.text));
        if (family)
            return fail(key.line, "unknown state " + quoted(key.text) + " in " + quoted(std::string(owner)) + " (" +
                                      std::string(describeFamily(*family)) + ")");
        return fail(key.line, "unknown pass state " + quoted(key.text));
    }
    if (family && familyOf(*kind) != *family)
        return fail(key.line, quoted(key.text) + " does not belong in " + quoted(std::string(owner)) + " (" +
                                  std::string(describeFamily(*family)) + ")");
    if (!expect('=', "after " + quoted(key.text)))
        return false;
    RenderStateSetting setting;
    setting.kind = kind;
    if (syntaxOf(*kind) == RenderStateSyntax::TwoFloats) {
        Token first, second;
        double values[2] = {0.0, 0.0};
        if (!expect('{', "for the value of " + quoted(key.text)) || !take(first) || !parseNumber(first, values[0]) ||
            !expect(',', "between the two numbers of " + quoted(key.text)) || !take(second) ||
            !parseNumber(second, values[1]) || !expect('}', "after the two numbers of " + quoted(key.text)))
            return false;
        setting.value.floats[0] = static_cast<float>(values[0]);
        setting.value.floats[1] = static_cast<float>(values[1]);
    } else if (syntaxOf(*kind) == RenderStateSyntax::Count) {
        Token count;
        double value = 0.0;
        if (!take(count) || !parseNumber(count, value))
            return false;
        if (value != std::floor(value) || value < 1.0 || value > kMaxStateCount)
            return fail(count.line, quoted(key.text) + " takes a whole number from 1 to " +
                                        std::to_string(static_cast<int>(kMaxStateCount)));
        setting.value.ints[0] = static_cast<int>(value);
    } else {
        Token word;
        if (!take(word))
            return false;
        if (word.kind != Token::Identifier || !parseStateWord(*kind, word.text, setting.value))
            return fail(word.line, describe(word) + " is not a value of " + quoted(key.text) + " (" +
                                       std::string(describeStateWords(*kind)) + ")");
    }
    states.push_back(setting);
    return true;
}

bool Parser::refuseSceneLevel(std::string_view name, const Token& keyword)
{
    return fail(keyword.line, std::string(name) + ": scene-level block " + quoted(keyword.text) +
                                  " is not supported by a material effect");
}

bool Parser::resolveCode()
{
    for (const TechniqueDescription& technique : m_effect.techniques) {
        for (const PassDescription& pass : technique.passes) {
            bool any = false;
            for (const std::vector<CodeReference>& stage : pass.stages) {
                for (const CodeReference& reference : stage)
                    if (!m_effect.findCode(reference.name))
                        return fail(reference.at, "pass " + quoted(pass.name) + " of technique " +
                                                      quoted(technique.name) + " names code " +
                                                      quoted(reference.name) + ", which is not declared");
                any = any || !stage.empty();
            }
            if (!any)
                return fail(pass.at, "pass " + quoted(pass.name) + " of technique " + quoted(technique.name) +
                                         " assigns no program");
        }
    }
    return true;
}

bool parseEffect(const char* text, EffectDescription& effect)
{
    Parser parser(effect);
    return parser.parseSource(text, 1) && parser.resolveCode();
}

} // namespace nvFX::detail

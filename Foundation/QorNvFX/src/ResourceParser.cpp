// Sampler states, texture resources, and the passes' sampler assignments that join them
// to sampler uniforms.
#include "Parser_p.h"

#include "Lookup_p.h"
#include "ValueTypes_p.h"

namespace nvFX::detail {

namespace {

// Each is a small record; the bound keeps a hostile effect's count of them reasonable.
constexpr std::size_t kMaxSamplerBlocks = 1024;

} // namespace

template <typename Block>
bool Parser::findDeclared(const std::vector<Block>& blocks, const Token& name, const char* what, std::size_t& index)
{
    for (index = 0; index < blocks.size(); ++index)
        if (blocks[index].name == name.text)
            return true;
    return fail(name.line, std::string(what) + " " + quoted(name.text) + " is not declared before it");
}

bool Parser::parseSamplerState(const Token& keyword)
{
    SamplerStateDescription state;
    const std::string context = "sampler state " + quoted(m_lexer->peek().text);
    if (!startBlock(m_effect.samplerStates, "sampler state", keyword, state))
        return false;
    if (m_effect.samplerStates.size() == kMaxSamplerBlocks)
        return fail(keyword.line, "more than " + std::to_string(kMaxSamplerBlocks) + " sampler states in one effect");
    const bool ok = parseBlockBody(context, [&](const Token& key) {
        Token value;
        if (key.kind != Token::Identifier)
            return fail(key.line, "expected a sampler state or '}' in " + context + ", found " + describe(key));
        if (!expect('=', "after " + quoted(key.text)) || !take(value))
            return false;
        const bool isNumber = samplerKeyTakesNumber(key.text);
        double number = 0.0;
        if (isNumber && !parseNumber(value, number))
            return false;
        SamplerParameter parameter;
        std::string why;
        if (!parseSamplerParameter(key.text, value.text, number, isNumber, parameter, why))
            return fail(isNumber || value.kind == Token::Identifier ? value.line : key.line, why);
        state.parameters.push_back(parameter);
        return expect(';', "after " + quoted(key.text));
    });
    if (ok)
        m_effect.samplerStates.push_back(std::move(state));
    return ok;
}

// `TextureResource2D NAME < annotations > { annotations };`: a body, when there is one,
// holds more annotations (`defaultFile = "wood.png";`).
bool Parser::parseTextureResource(const Token& keyword, const char* samplerType)
{
    TextureResourceDescription texture;
    texture.samplerType = samplerType;
    if (!startBlock(m_effect.textures, "texture resource", keyword, texture) ||
        !parseOptionalAnnotations(texture.annotations))
        return false;
    if (m_effect.textures.size() == kMaxSamplerBlocks)
        return fail(keyword.line, "more than " + std::to_string(kMaxSamplerBlocks) + " texture resources in one effect");
    if (takeOpeningBrace()) {
        if (!parseAnnotations(texture.annotations, '}'))
            return false;
        skipOptionalSemicolon();
    } else if (!expect(';', "or '{' after texture resource " + quoted(texture.name))) {
        return false;
    }
    m_effect.textures.push_back(std::move(texture));
    return true;
}

bool Parser::parseSamplerAssignment(PassDescription& pass, const Token& key)
{
    Token name, first;
    if (!expect('(', "after " + quoted(key.text)) || !expectName(name, "a sampler uniform in " + quoted(key.text)) ||
        !expect(')', "after the sampler's name") || !expect('=', "after " + quoted(key.text) + "(...)"))
        return false;
    UniformDescription* sampler = nullptr;
    for (UniformDescription& uniform : m_effect.uniforms)
        if (uniform.name == name.text)
            sampler = &uniform;
    if (!sampler || sampler->type->base != ValueBase::Sampler)
        return fail(name.line, quoted(name.text) + " is no sampler uniform declared before pass " + quoted(pass.name));
    const bool braced = takeOpeningBrace();
    std::size_t state = 0;
    bool hasState = false;
    if (key.is("SamplerState")) {
        hasState = expectName(first, "a sampler state name") && findDeclared(m_effect.samplerStates, first, "sampler state", state);
        if (!hasState || (braced && !expect('}', "after the sampler state")))
            return false;
    } else {
        std::size_t texture = 0;
        if (!expectName(first, "a texture resource name") ||
            !findDeclared(m_effect.textures, first, "texture resource", texture))
            return false;
        const TextureResourceDescription& resource = m_effect.textures[texture];
        if (resource.samplerType != sampler->type->keyword)
            return fail(first.line, "texture resource " + quoted(resource.name) + " fits a " + resource.samplerType +
                                        ", not " + quoted(sampler->name) + " (" + sampler->type->keyword + ")");
        // The sampler takes the texture's file as if its own annotations named it.
        for (const AnnotationEntry& entry : resource.annotations) {
            bool own = false;
            for (const AnnotationEntry& existing : sampler->annotations)
                own = own || existing.name == entry.name;
            if (!own)
                sampler->annotations.push_back(entry);
        }
        if (braced && m_lexer->peek().is(',')) {
            Token stateName;
            m_lexer->next();
            hasState = expectName(stateName, "a sampler state name") &&
                       findDeclared(m_effect.samplerStates, stateName, "sampler state", state);
            if (!hasState)
                return false;
        }
        if (braced && !expect('}', "after the texture and sampler state of " + quoted(key.text)))
            return false;
    }
    if (hasState)
        pass.samplers.push_back({sampler->name, state, {m_source, name.line}});
    return true;
}

} // namespace nvFX::detail

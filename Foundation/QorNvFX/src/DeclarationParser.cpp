#include "Parser_p.h"

#include "ValueTypes_p.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace nvFX::detail {

namespace {

constexpr long kMaxArraySize = 4096;
constexpr std::size_t kMaxAnnotations = 256;
constexpr std::size_t kMaxListNumbers = 256;

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

// Int types take whole numbers in their range; the others any number.
bool takesValue(ValueBase base, double value)
{
    if (base == ValueBase::Int)
        return value == std::floor(value) && value >= -2147483648.0 && value <= 2147483647.0;
    if (base == ValueBase::UInt)
        return value == std::floor(value) && value >= 0.0 && value <= 4294967295.0;
    return true;
}

} // namespace

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
    return fail(token.line, std::string("expected '") + symbol + "' " + context + ", found " + describe(token));
}

bool Parser::expectName(Token& token, const std::string& what)
{
    if (!take(token))
        return false;
    if (token.kind == Token::Identifier)
        return true;
    return fail(token.line, "expected " + what + ", found " + describe(token));
}

void Parser::skipOptionalSemicolon()
{
    if (m_lexer->peek().is(';'))
        m_lexer->next();
}

bool Parser::parseUniform(UniformDescription& uniform)
{
    Token type, name;
    if (!expectName(type, "a uniform type"))
        return false;
    uniform.type = findValueType(type.text);
    if (!uniform.type)
        return fail(type.line, "unknown uniform type " + quoted(type.text));
    if (!expectName(name, "a uniform name"))
        return false;
    uniform.name = scoped(name.text, "_"); // GLSL names have no "::"
    uniform.at = {m_source, name.line};
    if (m_lexer->peek().is('[') && !parseArraySize(uniform))
        return false;
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
    if (uniform.arraySize == kSizedByValue)
        return fail(uniform.at, "array " + quoted(uniform.name) + " has neither a size nor a value to size it");
    return expect(';', "after the declaration of " + quoted(uniform.name));
}

// "[N]", or "[]" for an array as long as its value.
bool Parser::parseArraySize(UniformDescription& uniform)
{
    m_lexer->next();
    Token size;
    if (!take(size))
        return false;
    if (size.is(']')) {
        uniform.arraySize = kSizedByValue;
        return true;
    }
    char* end = nullptr;
    const std::string digits(size.text);
    const long count = size.kind == Token::Number ? std::strtol(digits.c_str(), &end, 10) : 0;
    if (size.kind != Token::Number || *end != '\0' || count < 1 || count > kMaxArraySize)
        return fail(size.line, "array size of " + quoted(uniform.name) + " must be a whole number from 1 to " +
                                   std::to_string(kMaxArraySize));
    uniform.arraySize = static_cast<int>(count);
    return expect(']', "after the array size");
}

bool Parser::parseDefault(UniformDescription& uniform)
{
    const ValueType& type = *uniform.type;
    const std::string what = "uniform " + quoted(uniform.name) + " (" + type.keyword + (uniform.arraySize ? "[]" : "") + ")";
    if (type.base == ValueBase::Sampler)
        return fail(uniform.at, what + ": a sampler takes no value");
    const bool sizedByValue = uniform.arraySize == kSizedByValue;
    const std::size_t expected =
        static_cast<std::size_t>(type.components) * (sizedByValue ? kMaxArraySize : std::max(uniform.arraySize, 1));
    const bool ok = parseList(takeOpeningBrace(), true, "the value of " + what, [&] {
        Token token;
        double value = 0.0;
        if (!take(token))
            return false;
        if (token.is("true") || token.is("false"))
            value = token.is("true") ? 1.0 : 0.0;
        else if (!parseNumber(token, value))
            return false;
        if (!takesValue(type.base, value))
            return fail(token.line, what + (type.base == ValueBase::UInt ? " takes whole numbers from 0 to 4294967295"
                                                                         : " takes whole numbers from -2147483648 to 2147483647"));
        if (uniform.values.size() == expected)
            return fail(token.line, sizedByValue ? what + " has more than " + std::to_string(kMaxArraySize) + " elements"
                                                 : what + " takes " + std::to_string(expected) + " values, more are given");
        uniform.values.push_back(value);
        return true;
    });
    if (!ok)
        return false;
    if (sizedByValue) {
        const std::size_t elements = uniform.values.size() / type.components;
        if (elements == 0 || elements * type.components != uniform.values.size())
            return fail(uniform.at, what + " takes whole elements of " + std::to_string(type.components) +
                                        " values, " + std::to_string(uniform.values.size()) + " given");
        uniform.arraySize = static_cast<int>(elements);
        return true;
    }
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
        return fail(token.line, "expected a number, found " + describe(token));
    std::string digits(token.text);
    if (!digits.empty() && (digits.back() == 'f' || digits.back() == 'F'))
        digits.pop_back();
    char* end = nullptr;
    value = std::strtod(digits.c_str(), &end);
    if (digits.empty() || *end != '\0' || !std::isfinite(value) || std::fabs(value) > 3.0e38)
        return fail(token.line, "bad number " + quoted(token.text));
    if (negative)
        value = -value;
    return true;
}

bool Parser::parseOptionalAnnotations(AnnotationList& annotations)
{
    if (!m_lexer->peek().is('<'))
        return true;
    m_lexer->next();
    return parseAnnotations(annotations);
}

bool Parser::parseAnnotations(AnnotationList& annotations, char closing)
{
    for (Token name; take(name);) {
        if (name.is(closing))
            return true;
        if (name.kind != Token::Identifier)
            return fail(name.line, std::string("expected an annotation name or '") + closing + "', found " + describe(name));
        if (annotations.size() == kMaxAnnotations)
            return fail(name.line, "more than " + std::to_string(kMaxAnnotations) + " annotations");
        AnnotationEntry entry;
        entry.name = std::string(name.text);
        Token value;
        if (!expect('=', "after annotation " + quoted(entry.name)) || !take(value))
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
        if (m_lexer->peek().is(closing))
            continue;
        if (!expect(';', "after annotation " + quoted(annotations.back().name)))
            return false;
    }
    return false;
}

bool Parser::parseAnnotationNumbers(AnnotationEntry& entry)
{
    return parseList(true, true, "annotation " + quoted(entry.name), [&] {
        Token token;
        double number = 0.0;
        if (!take(token) || !parseNumber(token, number))
            return false;
        if (entry.numbers.size() == kMaxListNumbers)
            return fail(token.line, "annotation " + quoted(entry.name) + " lists more than " +
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

} // namespace nvFX::detail

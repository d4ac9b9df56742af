// Before any GL header: the sampler-object functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "SamplerStates_p.h"

#include "GLWords_p.h"
#include "Lookup_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdio>
#include <iterator>

namespace nvFX::detail {

namespace {

constexpr GLWord kFilters[] = {{"GL_NEAREST", GL_NEAREST},
                             {"GL_LINEAR", GL_LINEAR},
                             {"GL_NEAREST_MIPMAP_NEAREST", GL_NEAREST_MIPMAP_NEAREST},
                             {"GL_LINEAR_MIPMAP_NEAREST", GL_LINEAR_MIPMAP_NEAREST},
                             {"GL_NEAREST_MIPMAP_LINEAR", GL_NEAREST_MIPMAP_LINEAR},
                             {"GL_LINEAR_MIPMAP_LINEAR", GL_LINEAR_MIPMAP_LINEAR}};
constexpr GLWord kWraps[] = {{"GL_REPEAT", GL_REPEAT},
                           {"GL_MIRRORED_REPEAT", GL_MIRRORED_REPEAT},
                           {"GL_CLAMP_TO_EDGE", GL_CLAMP_TO_EDGE},
                           {"GL_CLAMP_TO_BORDER", GL_CLAMP_TO_BORDER},
                           {"GL_MIRROR_CLAMP_TO_EDGE", GL_MIRROR_CLAMP_TO_EDGE}};

// GL 4.6's name; the extension's has the same value.
constexpr unsigned int kMaxAnisotropy = 0x84FE;
constexpr double kHighestAnisotropy = 16.0;

struct SamplerKey
{
    const char* name;
    unsigned int glName;
    const GLWord* words; // null: takes a number
    std::size_t wordCount;
    const char* takes;
};

constexpr SamplerKey kKeys[] = {
    {"TEXTURE_MIN_FILTER", GL_TEXTURE_MIN_FILTER, kFilters, std::size(kFilters),
     "GL_NEAREST, GL_LINEAR, GL_NEAREST_MIPMAP_NEAREST, GL_LINEAR_MIPMAP_NEAREST, GL_NEAREST_MIPMAP_LINEAR, "
     "GL_LINEAR_MIPMAP_LINEAR"},
    {"TEXTURE_MAG_FILTER", GL_TEXTURE_MAG_FILTER, kFilters, 2, "GL_NEAREST, GL_LINEAR"},
    {"TEXTURE_WRAP_S", GL_TEXTURE_WRAP_S, kWraps, std::size(kWraps),
     "GL_REPEAT, GL_MIRRORED_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_MIRROR_CLAMP_TO_EDGE"},
    {"TEXTURE_WRAP_T", GL_TEXTURE_WRAP_T, kWraps, std::size(kWraps),
     "GL_REPEAT, GL_MIRRORED_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_MIRROR_CLAMP_TO_EDGE"},
    {"TEXTURE_WRAP_R", GL_TEXTURE_WRAP_R, kWraps, std::size(kWraps),
     "GL_REPEAT, GL_MIRRORED_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_MIRROR_CLAMP_TO_EDGE"},
    {"TEXTURE_MAX_ANISOTROPY", kMaxAnisotropy, nullptr, 0, "a number from 1 to 16"},
};

void DeleteSampler(unsigned int name)
{
    glDeleteSamplers(1, &name);
}

} // namespace

bool samplerKeyTakesNumber(std::string_view key)
{
    const SamplerKey* found = inTable(kKeys, &SamplerKey::name, key);
    return found && !found->words;
}

bool parseSamplerParameter(std::string_view key, std::string_view word, double number, bool isNumber,
                           SamplerParameter& parameter, std::string& why)
{
    const SamplerKey* found = inTable(kKeys, &SamplerKey::name, key);
    if (!found) {
        why = "unknown sampler state '" + std::string(key) +
              "' (TEXTURE_MIN_FILTER, TEXTURE_MAG_FILTER, TEXTURE_WRAP_S, TEXTURE_WRAP_T, TEXTURE_WRAP_R, "
              "TEXTURE_MAX_ANISOTROPY)";
        return false;
    }
    parameter.name = found->glName;
    parameter.isNumber = isNumber;
    if (!found->words) {
        if (isNumber && number >= 1.0 && number <= kHighestAnisotropy) {
            parameter.number = static_cast<float>(number);
            return true;
        }
    } else if (!isNumber) {
        if (const GLWord* value = findGLWord(found->words, found->wordCount, word)) {
            parameter.word = value->value;
            return true;
        }
    }
    char written[32];
    std::snprintf(written, sizeof written, "%g", number);
    why = "'" + (isNumber ? std::string(written) : std::string(word)) + "' is not a value of '" + std::string(key) +
          "' (" + found->takes + ")";
    return false;
}

unsigned int SamplerStateObject::sampler()
{
    if (!m_sampler) {
        GLuint name = 0;
        glGenSamplers(1, &name);
        m_sampler = GLObject(name, DeleteSampler);
        for (const SamplerParameter& parameter : m_parameters) {
            if (parameter.isNumber)
                glSamplerParameterf(name, parameter.name, parameter.number);
            else
                glSamplerParameteri(name, parameter.name, parameter.word);
        }
    }
    return m_sampler.get();
}

void SamplerBinding::bind(int unit, unsigned int sampler)
{
    GLint active = GL_TEXTURE0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    GLint before = 0;
    glGetIntegerv(GL_SAMPLER_BINDING, &before);
    glActiveTexture(static_cast<GLenum>(active));
    m_saved.push_back({unit, before});
    glBindSampler(static_cast<GLuint>(unit), sampler);
}

void SamplerBinding::restore()
{
    for (auto saved = m_saved.rbegin(); saved != m_saved.rend(); ++saved)
        glBindSampler(static_cast<GLuint>(saved->unit), static_cast<GLuint>(saved->before));
    m_saved.clear();
}

} // namespace nvFX::detail

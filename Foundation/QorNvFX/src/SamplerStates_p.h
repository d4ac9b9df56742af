/// @file
/// Sampler states: the filters, wraps and anisotropy a pass gives a sampler uniform,
/// as a GL sampler object bound to the sampler's texture units for the pass. Private
/// to QorNvFX.
#pragma once

#include "GLObjects_p.h"

#include <string>
#include <string_view>
#include <vector>

namespace nvFX::detail {

/// One sampler parameter: a GL enum value, or a number for the anisotropy.
struct SamplerParameter
{
    unsigned int name = 0; ///< GL_TEXTURE_MIN_FILTER, ...
    int word = 0;          ///< the GL value of an enum parameter
    float number = 0.0f;   ///< the value of TEXTURE_MAX_ANISOTROPY
    bool isNumber = false;
};

/// Reads `key = value` of a SamplerState block from the key's and the value's words (or
/// `number` for a numeric key, `isNumber` set then); false with `why` for an unknown key
/// or a value the key does not take.
bool parseSamplerParameter(std::string_view key, std::string_view word, double number, bool isNumber,
                           SamplerParameter& parameter, std::string& why);
/// True for the keys that take a number rather than a GL enum.
bool samplerKeyTakesNumber(std::string_view key);

/// A SamplerState block of a loaded effect: its GL sampler object is made at the first
/// bind, in the context current then.
class SamplerStateObject
{
public:
    explicit SamplerStateObject(std::vector<SamplerParameter> parameters) : m_parameters(std::move(parameters)) {}

    /// The GL sampler, made with its parameters at the first call.
    unsigned int sampler();

private:
    std::vector<SamplerParameter> m_parameters;
    GLObject m_sampler;
};

/// The sampler objects a pass binds to texture units at setup, and the ones they
/// replaced, put back at restore.
class SamplerBinding
{
public:
    /// Binds `sampler` to `unit`, remembering what was bound there. The active texture
    /// unit is left as it was.
    void bind(int unit, unsigned int sampler);
    /// Puts back what bind() replaced, in reverse order.
    void restore();

private:
    struct Saved
    {
        int unit;
        int before;
    };
    std::vector<Saved> m_saved;
};

} // namespace nvFX::detail

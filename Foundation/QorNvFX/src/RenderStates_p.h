/// @file
/// The render states a pass may set, how their values are written, and how they are
/// applied to GL and put back. Private to QorNvFX.
#pragma once

#include <string_view>
#include <vector>

namespace nvFX::detail {

struct RenderStateKind;

/// A state's value: ints for booleans and GL enums, floats for numbers; also what GL
/// held before a pass replaced it (the four blend factors, an enable bit and two
/// offsets, the front and back polygon modes).
struct RenderStateValue
{
    int ints[4] = {0, 0, 0, 0};
    float floats[2] = {0.0f, 0.0f};
};

/// How a state's value is written in a pass.
enum class RenderStateSyntax
{
    Boolean,   ///< true, false, GL_TRUE, GL_FALSE
    Enum,      ///< one GL enum name of the state's list, with or without "GL_"
    TwoFloats, ///< a brace list of two numbers
    Count,     ///< a whole number from 1 to 32
};

/// The named state blocks a pass may refer to, each holding states of its family.
enum class StateFamily
{
    Rasterization, ///< RasterizationState: culling, front face, polygon mode and offset
    DepthStencil,  ///< DepthStencilState: depth test, function and mask, stencil test
    ColorSample,   ///< ColorSampleState: blending, its factors and equation
    PassOnly,      ///< set by passes, in no block: PATCH_VERTICES
};

/// The state of `name` (e.g. "DEPTH_FUNC"); null for one this runtime does not know.
const RenderStateKind* findRenderState(std::string_view name);
StateFamily familyOf(const RenderStateKind& kind);
/// The states of `family`, for messages ("CULL_FACE, CULL_FACE_MODE, ...").
std::string_view describeFamily(StateFamily family);
RenderStateSyntax syntaxOf(const RenderStateKind& kind);
/// Reads a Boolean or Enum state's value from its word; false when the word is not one
/// of the values the state takes.
bool parseStateWord(const RenderStateKind& kind, std::string_view word, RenderStateValue& value);
/// The values the state takes, for messages ("GL_LESS, GL_LEQUAL, ...").
std::string_view describeStateWords(const RenderStateKind& kind);

/// One state a pass sets.
struct RenderStateSetting
{
    const RenderStateKind* kind = nullptr;
    RenderStateValue value;
};

/// Applies a pass's states in the current GL context, remembering what each replaced;
/// restore() puts them back in reverse order, so a state set twice ends as it began.
class RenderStateChange
{
public:
    void apply(const std::vector<RenderStateSetting>& settings);
    void restore();

private:
    struct Saved
    {
        const RenderStateKind* kind;
        RenderStateValue before;
    };
    std::vector<Saved> m_saved;
};

} // namespace nvFX::detail

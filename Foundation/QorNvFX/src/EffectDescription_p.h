/// @file
/// An effect as its text describes it, before anything is compiled: what the parser
/// makes and the loader builds a container from. Private to QorNvFX.
#pragma once

#include "Messages_p.h"
#include "RenderStates_p.h"
#include "SamplerStates_p.h"

#include <cstddef>
#include <string>
#include <vector>

namespace nvFX::detail {

struct ValueType;

struct AnnotationEntry
{
    std::string name;
    bool isString = false;
    std::string text;           ///< a string's content, escapes resolved
    std::vector<float> numbers; ///< a number, or a brace list's numbers
};
using AnnotationList = std::vector<AnnotationEntry>;

/// The array size of `uniform vec3 a[] = {...}` while its value is being read.
constexpr int kSizedByValue = -1;

struct UniformDescription
{
    const ValueType* type = nullptr;
    std::string name;
    int arraySize = 0; ///< 0: not an array; kSizedByValue until its value is read
    std::string semantic;
    AnnotationList annotations;
    std::vector<double> values; ///< the default, all components; empty when none
    SourceLocation at;
};

struct BufferDescription
{
    std::string name;
    bool global = false; ///< shared by every effect that declares it (see GlobalBuffers_p.h)
    std::vector<UniformDescription> members;
    SourceLocation at;
};

/// GLSL code: an unnamed piece (shared by every stage) or a named one. `at` is the
/// line of the opening brace, where the text starts.
struct CodePiece
{
    std::string name;
    std::string text;
    SourceLocation at;
};

/// A preprocessor line every stage gets as written (`#define`, `#undef`, `#pragma`,
/// `#extension`), without comments.
struct DirectiveLine
{
    std::string text;
    SourceLocation at;
};

/// A code name a pass assigns to a stage.
struct CodeReference
{
    std::string name;
    SourceLocation at;
};

enum StageIndex
{
    VertexIndex,
    FragmentIndex,
    GeometryIndex,
    TessControlIndex,
    TessEvaluationIndex,
    StageCount,
};

/// `SamplerResource(NAME) = { TEXTURE, STATE };` or `SamplerState(NAME) = STATE;` of a pass.
struct SamplerAssignment
{
    std::string sampler;  ///< an effect-scope sampler uniform
    std::size_t state;    ///< into EffectDescription::samplerStates
    SourceLocation at;
};

struct PassDescription
{
    std::string name;
    AnnotationList annotations;
    std::vector<CodeReference> stages[StageCount];
    std::vector<RenderStateSetting> states;
    std::vector<SamplerAssignment> samplers;
    SourceLocation at;
};

/// A named RasterizationState, DepthStencilState or ColorSampleState block: passes that
/// name it get its states where they name it.
struct StateBlockDescription
{
    std::string name;
    StateFamily family = StateFamily::Rasterization;
    std::vector<RenderStateSetting> states;
    SourceLocation at;
};

struct SamplerStateDescription
{
    std::string name;
    std::vector<SamplerParameter> parameters;
    SourceLocation at;
};

/// A TextureResource block: the texture a sampler of its kind reads, named by its
/// annotations (its "defaultFile"); the host binds the texture itself.
struct TextureResourceDescription
{
    std::string name;
    std::string samplerType; ///< the sampler keyword it fits ("sampler2D", ...)
    AnnotationList annotations;
    SourceLocation at;
};

struct TechniqueDescription
{
    std::string name;
    AnnotationList annotations;
    std::vector<PassDescription> passes;
    SourceLocation at;
};

/// One effect-scope item, in the order the effect (with its includes spliced in) has
/// them; every stage declares them in that order.
struct ScopeItem
{
    enum Kind
    {
        SharedCode,
        Uniform,
        Buffer,
        Directive,
    };
    Kind kind;
    std::size_t index; ///< into sharedCode, uniforms, buffers or directives
};

struct EffectDescription
{
    explicit EffectDescription(std::string effectName) : sources(std::move(effectName)) {}

    SourceNames sources;
    std::vector<ScopeItem> scope;
    std::vector<CodePiece> sharedCode; ///< unnamed pieces, their #version line blanked
    std::vector<CodePiece> namedCode;
    std::vector<UniformDescription> uniforms;
    std::vector<BufferDescription> buffers;
    std::vector<DirectiveLine> directives; ///< in place among the scope's items
    std::vector<DirectiveLine> extensions; ///< every stage has them right after its version
    std::vector<StateBlockDescription> stateBlocks;
    std::vector<SamplerStateDescription> samplerStates;
    std::vector<TextureResourceDescription> textures;
    std::vector<TechniqueDescription> techniques;
    std::string version;   ///< the shared code's "#version ..." line; empty when none
    SourceLocation versionAt;

    const CodePiece* findCode(const std::string& name) const;
};

} // namespace nvFX::detail

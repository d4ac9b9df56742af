// Before any GL header: glBlendFuncSeparate is exported by libGL, which the module links.
#define GL_GLEXT_PROTOTYPES 1

#include "RenderStates_p.h"

#include "GLWords_p.h"
#include "Lookup_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace nvFX::detail {

namespace {

constexpr GLWord kBooleans[] = {{"GL_TRUE", 1}, {"GL_FALSE", 0}, {"true", 1}, {"false", 0}};

constexpr GLWord kDepthFuncs[] = {{"GL_NEVER", GL_NEVER},     {"GL_LESS", GL_LESS},         {"GL_EQUAL", GL_EQUAL},
                                {"GL_LEQUAL", GL_LEQUAL},   {"GL_GREATER", GL_GREATER},   {"GL_NOTEQUAL", GL_NOTEQUAL},
                                {"GL_GEQUAL", GL_GEQUAL},   {"GL_ALWAYS", GL_ALWAYS}};

constexpr GLWord kFaces[] = {{"GL_FRONT", GL_FRONT}, {"GL_BACK", GL_BACK}, {"GL_FRONT_AND_BACK", GL_FRONT_AND_BACK}};

constexpr GLWord kBlendFactors[] = {{"GL_ZERO", GL_ZERO},
                                  {"GL_ONE", GL_ONE},
                                  {"GL_SRC_COLOR", GL_SRC_COLOR},
                                  {"GL_ONE_MINUS_SRC_COLOR", GL_ONE_MINUS_SRC_COLOR},
                                  {"GL_DST_COLOR", GL_DST_COLOR},
                                  {"GL_ONE_MINUS_DST_COLOR", GL_ONE_MINUS_DST_COLOR},
                                  {"GL_SRC_ALPHA", GL_SRC_ALPHA},
                                  {"GL_ONE_MINUS_SRC_ALPHA", GL_ONE_MINUS_SRC_ALPHA},
                                  {"GL_DST_ALPHA", GL_DST_ALPHA},
                                  {"GL_ONE_MINUS_DST_ALPHA", GL_ONE_MINUS_DST_ALPHA},
                                  {"GL_CONSTANT_COLOR", GL_CONSTANT_COLOR},
                                  {"GL_ONE_MINUS_CONSTANT_COLOR", GL_ONE_MINUS_CONSTANT_COLOR},
                                  {"GL_CONSTANT_ALPHA", GL_CONSTANT_ALPHA},
                                  {"GL_ONE_MINUS_CONSTANT_ALPHA", GL_ONE_MINUS_CONSTANT_ALPHA},
                                  {"GL_SRC_ALPHA_SATURATE", GL_SRC_ALPHA_SATURATE}};

constexpr GLWord kPolygonModes[] = {{"GL_POINT", GL_POINT}, {"GL_LINE", GL_LINE}, {"GL_FILL", GL_FILL}};

constexpr GLWord kFrontFaces[] = {{"GL_CW", GL_CW}, {"GL_CCW", GL_CCW}};

constexpr GLWord kBlendEquations[] = {{"GL_FUNC_ADD", GL_FUNC_ADD},
                                    {"GL_FUNC_SUBTRACT", GL_FUNC_SUBTRACT},
                                    {"GL_FUNC_REVERSE_SUBTRACT", GL_FUNC_REVERSE_SUBTRACT},
                                    {"GL_MIN", GL_MIN},
                                    {"GL_MAX", GL_MAX}};

template <std::size_t N>
constexpr std::pair<const GLWord*, std::size_t> Words(const GLWord (&words)[N])
{
    return {words, N};
}

using Capture = RenderStateValue (*)(GLenum name);
using Apply = void (*)(GLenum name, const RenderStateValue& value);

RenderStateValue CaptureEnabled(GLenum cap)
{
    RenderStateValue value;
    value.ints[0] = glIsEnabled(cap) ? 1 : 0;
    return value;
}

void ApplyEnabled(GLenum cap, const RenderStateValue& value)
{
    if (value.ints[0])
        glEnable(cap);
    else
        glDisable(cap);
}

RenderStateValue CaptureInteger(GLenum query)
{
    RenderStateValue value;
    glGetIntegerv(query, value.ints);
    return value;
}

RenderStateValue CaptureDepthMask(GLenum)
{
    GLboolean mask = GL_TRUE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
    RenderStateValue value;
    value.ints[0] = mask ? 1 : 0;
    return value;
}

RenderStateValue CaptureBlendFactors(GLenum)
{
    RenderStateValue value;
    glGetIntegerv(GL_BLEND_SRC_RGB, &value.ints[0]);
    glGetIntegerv(GL_BLEND_DST_RGB, &value.ints[1]);
    glGetIntegerv(GL_BLEND_SRC_ALPHA, &value.ints[2]);
    glGetIntegerv(GL_BLEND_DST_ALPHA, &value.ints[3]);
    return value;
}

void RestoreBlendFactors(GLenum, const RenderStateValue& before)
{
    glBlendFuncSeparate(before.ints[0], before.ints[1], before.ints[2], before.ints[3]);
}

// BLEND_SRC and BLEND_DST each replace one side, for colour and alpha alike.
void ApplyBlendFactor(GLenum side, const RenderStateValue& value)
{
    RenderStateValue factors = CaptureBlendFactors(0);
    const int first = side == GL_BLEND_SRC ? 0 : 1;
    factors.ints[first] = factors.ints[first + 2] = value.ints[0];
    RestoreBlendFactors(0, factors);
}

RenderStateValue CapturePolygonOffset(GLenum)
{
    RenderStateValue value;
    value.ints[0] = glIsEnabled(GL_POLYGON_OFFSET_FILL) ? 1 : 0;
    glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &value.floats[0]);
    glGetFloatv(GL_POLYGON_OFFSET_UNITS, &value.floats[1]);
    return value;
}

void ApplyPolygonOffset(GLenum, const RenderStateValue& value)
{
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(value.floats[0], value.floats[1]);
}

void RestorePolygonOffset(GLenum, const RenderStateValue& before)
{
    ApplyEnabled(GL_POLYGON_OFFSET_FILL, before);
    glPolygonOffset(before.floats[0], before.floats[1]);
}

// The compatibility profile answers the front and the back mode.
void RestorePolygonMode(GLenum, const RenderStateValue& before)
{
    glPolygonMode(GL_FRONT, before.ints[0]);
    glPolygonMode(GL_BACK, before.ints[1]);
}

} // namespace

struct RenderStateKind
{
    const char* name;
    StateFamily family;
    RenderStateSyntax syntax;
    std::pair<const GLWord*, std::size_t> words;
    const char* wordList;
    GLenum glName; // the capability, query or side the functions work on
    Capture capture;
    Apply apply;
    Apply restore;
};

namespace {

void ApplyDepthFunc(GLenum, const RenderStateValue& value) { glDepthFunc(value.ints[0]); }
void ApplyDepthMask(GLenum, const RenderStateValue& value) { glDepthMask(value.ints[0] ? GL_TRUE : GL_FALSE); }
void ApplyCullFace(GLenum, const RenderStateValue& value) { glCullFace(value.ints[0]); }
void ApplyPolygonMode(GLenum, const RenderStateValue& value) { glPolygonMode(GL_FRONT_AND_BACK, value.ints[0]); }
void ApplyFrontFace(GLenum, const RenderStateValue& value) { glFrontFace(value.ints[0]); }
void ApplyPatchVertices(GLenum, const RenderStateValue& value) { glPatchParameteri(GL_PATCH_VERTICES, value.ints[0]); }
// One equation for colour and alpha; the capture keeps both, so a restore puts back each.
RenderStateValue CaptureBlendEquations(GLenum)
{
    RenderStateValue value;
    glGetIntegerv(GL_BLEND_EQUATION_RGB, &value.ints[0]);
    glGetIntegerv(GL_BLEND_EQUATION_ALPHA, &value.ints[1]);
    return value;
}
void ApplyBlendEquation(GLenum, const RenderStateValue& value) { glBlendEquation(value.ints[0]); }
void RestoreBlendEquations(GLenum, const RenderStateValue& before) { glBlendEquationSeparate(before.ints[0], before.ints[1]); }

constexpr StateFamily Rasterization = StateFamily::Rasterization;
constexpr StateFamily DepthStencil = StateFamily::DepthStencil;
constexpr StateFamily ColorSample = StateFamily::ColorSample;

constexpr const char* kBooleanList = "true, false, GL_TRUE, GL_FALSE";
constexpr const char* kDepthFuncList =
    "GL_NEVER, GL_LESS, GL_EQUAL, GL_LEQUAL, GL_GREATER, GL_NOTEQUAL, GL_GEQUAL, GL_ALWAYS";
constexpr const char* kBlendList = "a GL blend factor (GL_ZERO, GL_ONE, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, ...)";

const RenderStateKind kStates[] = {
    {"DEPTH_TEST", DepthStencil, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, GL_DEPTH_TEST,
     CaptureEnabled, ApplyEnabled, ApplyEnabled},
    {"DEPTH_FUNC", DepthStencil, RenderStateSyntax::Enum, Words(kDepthFuncs), kDepthFuncList, GL_DEPTH_FUNC,
     CaptureInteger, ApplyDepthFunc, ApplyDepthFunc},
    {"DEPTH_MASK", DepthStencil, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, 0, CaptureDepthMask,
     ApplyDepthMask, ApplyDepthMask},
    {"DEPTH_WRITEMASK", DepthStencil, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, 0,
     CaptureDepthMask, ApplyDepthMask, ApplyDepthMask},
    {"STENCIL_TEST", DepthStencil, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, GL_STENCIL_TEST,
     CaptureEnabled, ApplyEnabled, ApplyEnabled},
    {"CULL_FACE", Rasterization, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, GL_CULL_FACE,
     CaptureEnabled, ApplyEnabled, ApplyEnabled},
    {"CULL_FACE_MODE", Rasterization, RenderStateSyntax::Enum, Words(kFaces), "GL_FRONT, GL_BACK, GL_FRONT_AND_BACK",
     GL_CULL_FACE_MODE, CaptureInteger, ApplyCullFace, ApplyCullFace},
    {"FRONT_FACE", Rasterization, RenderStateSyntax::Enum, Words(kFrontFaces), "GL_CW, GL_CCW", GL_FRONT_FACE,
     CaptureInteger, ApplyFrontFace, ApplyFrontFace},
    {"POLYGON_OFFSET", Rasterization, RenderStateSyntax::TwoFloats, {nullptr, 0}, "{ factor, units }", 0,
     CapturePolygonOffset, ApplyPolygonOffset, RestorePolygonOffset},
    {"POLYGON_MODE", Rasterization, RenderStateSyntax::Enum, Words(kPolygonModes), "GL_POINT, GL_LINE, GL_FILL",
     GL_POLYGON_MODE, CaptureInteger, ApplyPolygonMode, RestorePolygonMode},
    {"BLEND", ColorSample, RenderStateSyntax::Boolean, Words(kBooleans), kBooleanList, GL_BLEND, CaptureEnabled,
     ApplyEnabled, ApplyEnabled},
    {"BLEND_SRC", ColorSample, RenderStateSyntax::Enum, Words(kBlendFactors), kBlendList, GL_BLEND_SRC,
     CaptureBlendFactors, ApplyBlendFactor, RestoreBlendFactors},
    {"BLEND_DST", ColorSample, RenderStateSyntax::Enum, Words(kBlendFactors), kBlendList, GL_BLEND_DST,
     CaptureBlendFactors, ApplyBlendFactor, RestoreBlendFactors},
    {"BLEND_EQUATION", ColorSample, RenderStateSyntax::Enum, Words(kBlendEquations),
     "GL_FUNC_ADD, GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT, GL_MIN, GL_MAX", 0, CaptureBlendEquations,
     ApplyBlendEquation, RestoreBlendEquations},
    {"PATCH_VERTICES", StateFamily::PassOnly, RenderStateSyntax::Count, {nullptr, 0}, "a whole number from 1 to 32",
     GL_PATCH_VERTICES, CaptureInteger, ApplyPatchVertices, ApplyPatchVertices},
};

} // namespace

const RenderStateKind* findRenderState(std::string_view name)
{
    return inTable(kStates, &RenderStateKind::name, name);
}

RenderStateSyntax syntaxOf(const RenderStateKind& kind)
{
    return kind.syntax;
}

StateFamily familyOf(const RenderStateKind& kind)
{
    return kind.family;
}

std::string_view describeFamily(StateFamily family)
{
    switch (family) {
    case StateFamily::Rasterization:
        return "CULL_FACE, CULL_FACE_MODE, FRONT_FACE, POLYGON_MODE, POLYGON_OFFSET";
    case StateFamily::DepthStencil:
        return "DEPTH_TEST, DEPTH_FUNC, DEPTH_MASK, DEPTH_WRITEMASK, STENCIL_TEST";
    case StateFamily::ColorSample:
    case StateFamily::PassOnly:
        break;
    }
    return "BLEND, BLEND_SRC, BLEND_DST, BLEND_EQUATION";
}

bool parseStateWord(const RenderStateKind& kind, std::string_view word, RenderStateValue& value)
{
    const GLWord* found = findGLWord(kind.words.first, kind.words.second, word);
    if (found)
        value.ints[0] = found->value;
    return found != nullptr;
}

std::string_view describeStateWords(const RenderStateKind& kind)
{
    return kind.wordList;
}

void RenderStateChange::apply(const std::vector<RenderStateSetting>& settings)
{
    m_saved.clear();
    for (const RenderStateSetting& setting : settings) {
        m_saved.push_back({setting.kind, setting.kind->capture(setting.kind->glName)});
        setting.kind->apply(setting.kind->glName, setting.value);
    }
}

void RenderStateChange::restore()
{
    for (auto saved = m_saved.rbegin(); saved != m_saved.rend(); ++saved)
        saved->kind->restore(saved->kind->glName, saved->before);
    m_saved.clear();
}

} // namespace nvFX::detail

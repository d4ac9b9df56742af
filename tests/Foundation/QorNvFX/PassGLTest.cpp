// Passes drawing in a real GL context (Mesa under xvfb-run): values set through the
// uniform interface reach the program, render states are applied for the draw and put
// back after, GL objects go with their container.
// Before any GL header: the GL 2.0 functions are exported by libGL, which GL tests link.
#define GL_GLEXT_PROTOTYPES 1

#include "NvFXTestSupport.h"

#include "nvFX/IPassEx.h"
#include "nvFX/ITechniqueEx.h"
#include "nvFX/IUniform.h"

#include "QorGL/QorGLContext.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace {

const char* const kEffect = R"(
uniform vec4 Colour = {0, 0, 0, 1};
uniform sampler2D Pattern;
ConstantBuffer Material {
    uniform vec4 Scale = {1, 1, 1, 1};
    uniform float Bias;
};
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS {
    void main() { gl_FragColor = Colour * Scale + vec4(vec3(Bias), 0.0) + vec4(texture(Pattern, vec2(0.5)).rgb, 0.0); }
}
Technique Draw {
    Pass Flat { VertexProgram = VS; FragmentProgram = FS; }
    Pass Additive {
        VertexProgram = VS; FragmentProgram = FS;
        BLEND = true; BLEND_SRC = GL_ONE; BLEND_DST = ONE;
        DEPTH_TEST = true; DEPTH_FUNC = GL_ALWAYS; DEPTH_MASK = false;
        CULL_FACE = true; CULL_FACE_MODE = GL_BACK; POLYGON_OFFSET = { 1.5, 2 }; POLYGON_MODE = GL_FILL;
    }
}
)";

using Rgba = std::array<int, 4>;

void Draw(GLenum mode, const std::vector<GLfloat>& corners)
{
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, corners.data());
    glDrawArrays(mode, 0, static_cast<GLsizei>(corners.size() / 2));
    glDisableClientState(GL_VERTEX_ARRAY);
}

// Two front-facing (counter-clockwise) triangles over the whole viewport.
void DrawQuadCoveringClipSpace()
{
    Draw(GL_TRIANGLE_STRIP, {-1.0f, -1.0f, 1.0f, -1.0f, -1.0f, 1.0f, 1.0f, 1.0f});
}

// The pixel in the middle of the context, or in its corner.
Rgba Pixel(const QorGLContext& gl, bool middle = true)
{
    const std::vector<unsigned char> pixels = gl.ReadPixels();
    const std::size_t at = middle ? (static_cast<std::size_t>(gl.GetHeight() / 2) * gl.GetWidth() + gl.GetWidth() / 2) * 4 : 0;
    return {pixels[at], pixels[at + 1], pixels[at + 2], pixels[at + 3]};
}

// Sets the pass up, draws the quad, restores, and reads the middle pixel.
Rgba DrawWith(nvFX::IPass& pass, const QorGLContext& gl)
{
    EXPECT_TRUE(pass.setup());
    DrawQuadCoveringClipSpace();
    EXPECT_TRUE(pass.restore());
    return Pixel(gl);
}

void ExpectNear(const Rgba& actual, const Rgba& expected)
{
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(actual[i], expected[i], 1) << "channel " << i;
}

// Every state a pass of the effect sets, as GL answers it.
std::vector<float> RenderStates()
{
    std::vector<float> states;
    for (GLenum cap : {GL_BLEND, GL_DEPTH_TEST, GL_CULL_FACE, GL_POLYGON_OFFSET_FILL})
        states.push_back(glIsEnabled(cap));
    for (GLenum query : {GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA, GL_DEPTH_FUNC,
                         GL_DEPTH_WRITEMASK, GL_CULL_FACE_MODE, GL_CURRENT_PROGRAM}) {
        GLint value = 0;
        glGetIntegerv(query, &value);
        states.push_back(static_cast<float>(value));
    }
    GLint modes[2] = {};
    glGetIntegerv(GL_POLYGON_MODE, modes);
    GLfloat offsets[2] = {};
    glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &offsets[0]);
    glGetFloatv(GL_POLYGON_OFFSET_UNITS, &offsets[1]);
    states.insert(states.end(), {static_cast<float>(modes[0]), static_cast<float>(modes[1]), offsets[0], offsets[1]});
    return states;
}

// A texture of one row of RGBA texels, deleted with this. Its own parameters would clamp
// and filter linearly: a sampler state overrides them.
struct TextureName
{
    GLuint name = 0;
    explicit TextureName(const std::vector<unsigned char>& texels)
    {
        glGenTextures(1, &name);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        const auto width = static_cast<GLsizei>(texels.size() / 4);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    ~TextureName() { glDeleteTextures(1, &name); }
    TextureName(const TextureName&) = delete;
    TextureName& operator=(const TextureName&) = delete;
};

// A 16 x 16 context.
class PassStateBlocksGLTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(gl.Open(16, 16)) << gl.GetError(); }

    QorGLContext gl;
};

// The context and the effect loaded.
class PassGLTest : public PassStateBlocksGLTest
{
protected:
    void SetUp() override
    {
        PassStateBlocksGLTest::SetUp();
        loaded = NvFXTest::Load(kEffect);
        ASSERT_TRUE(loaded.ok) << loaded.messages;
    }

    NvFXTest::Loaded loaded; // destroyed first, while the context is still current
};

} // namespace

TEST_F(PassGLTest, QuadTakesItsColourFromValuesSetThroughTheInterface)
{
    nvFX::IContainer& effect = *loaded.container;
    nvFX::IPass& pass = *effect.findTechnique("Draw")->getExInterface()->findPass("Flat");

    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    ASSERT_TRUE(effect.findUniform("Colour")->setValue4f(1.0f, 0.0f, 0.0f, 1.0f));
    ASSERT_TRUE(effect.findBufferUniform("Scale")->setValue4f(0.5f, 1.0f, 1.0f, 1.0f));
    ExpectNear(DrawWith(pass, gl), {128, 0, 0, 255});

    // Changed values only are pushed: the uniform and the constant buffer both changed.
    ASSERT_TRUE(effect.findUniform("Colour")->setValue4f(0.0f, 0.0f, 1.0f, 1.0f));
    ASSERT_TRUE(effect.findBufferUniform("Material.Bias")->setValue1f(0.25f));
    ExpectNear(DrawWith(pass, gl), {64, 64, 255, 255});

    const TextureName texture({0, 128, 0, 255});
    glActiveTexture(GL_TEXTURE5);
    ASSERT_TRUE(effect.findUniform("Pattern")->setSamplerResource(texture.name, 2));
    ExpectNear(DrawWith(pass, gl), {64, 192, 255, 255});
    GLint activeUnit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &activeUnit);
    EXPECT_EQ(activeUnit, GL_TEXTURE5) << "binding the pattern left the caller's active unit";
    glActiveTexture(GL_TEXTURE0);

    // One change reaches every pass that holds the uniform, each at its own setup.
    nvFX::IPass& additive = *effect.findTechnique("Draw")->getExInterface()->findPass("Additive");
    glClear(GL_COLOR_BUFFER_BIT);
    ExpectNear(DrawWith(additive, gl), {64, 192, 255, 255});
    ASSERT_TRUE(effect.findUniform("Colour")->setValue4f(1.0f, 0.0f, 0.0f, 1.0f));
    ExpectNear(DrawWith(pass, gl), {191, 191, 64, 255});
    glClear(GL_COLOR_BUFFER_BIT);
    ExpectNear(DrawWith(additive, gl), {191, 191, 64, 255});
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(PassGLTest, RenderStatesHoldForTheDrawAndArePutBackAfter)
{
    nvFX::IContainer& effect = *loaded.container;
    nvFX::IPass& pass = *effect.findTechnique(0)->getPass(1);
    ASSERT_TRUE(pass.validate());

    glDisable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glCullFace(GL_FRONT);
    glPolygonOffset(0.5f, 0.25f);
    glPolygonMode(GL_FRONT, GL_FILL);
    glPolygonMode(GL_BACK, GL_LINE);
    const std::vector<float> before = RenderStates();

    ASSERT_TRUE(pass.setup());
    const std::vector<float> during = RenderStates();
    const std::vector<float> expected = {
        1, 1, 1, 1, GL_ONE, GL_ONE, GL_ONE, GL_ONE, GL_ALWAYS, 0, GL_BACK,
        static_cast<float>(pass.getExInterface()->getProgram()), GL_FILL, GL_FILL, 1.5f, 2.0f};
    EXPECT_EQ(during, expected);

    glClearColor(0.25f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    ASSERT_TRUE(effect.findUniform("Colour")->setValue4f(0.5f, 0.5f, 0.0f, 1.0f));
    EXPECT_TRUE(pass.setup()) << "setting up again first puts back what the first setup replaced";
    DrawQuadCoveringClipSpace();
    EXPECT_TRUE(pass.restore());
    EXPECT_FALSE(pass.restore()) << "nothing left to put back";
    EXPECT_EQ(RenderStates(), before);

    ExpectNear(Pixel(gl, false), {191, 128, 0, 255});
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(PassGLTest, ProgramsAreMadeOnceAndGoWithTheirContainer)
{
    nvFX::ITechnique& technique = *loaded.container->findTechnique(0);
    ASSERT_TRUE(technique.validate());
    nvFX::IPassEx& pass = *technique.getPass(0)->getExInterface();
    const GLuint program = pass.getProgram();
    EXPECT_TRUE(glIsProgram(program));
    EXPECT_TRUE(pass.validate());
    EXPECT_EQ(pass.getProgram(), program);
    EXPECT_NE(technique.getPass(1)->getExInterface()->getProgram(), program);
    loaded.container.reset();
    EXPECT_FALSE(glIsProgram(program));
}

// Named state blocks: the pixel shows each took effect (culling hides a back face, the
// depth function rejects a fragment, blending adds), and after the pass GL is as before.
TEST_F(PassStateBlocksGLTest, BlocksTakeEffectForTheirPassesAndArePutBack)
{
    const NvFXTest::Loaded loaded = NvFXTest::Load(R"(
uniform vec4 Colour = {0.25, 0.5, 0, 1};
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = Colour; } }
RasterizationState CullFronts { CULL_FACE = true; CULL_FACE_MODE = GL_BACK; FRONT_FACE = GL_CW; }
DepthStencilState Never { DEPTH_TEST = true; DEPTH_FUNC = GL_NEVER; DEPTH_WRITEMASK = false; }
ColorSampleState Add { BLEND = true; BLEND_SRC = GL_ONE; BLEND_DST = GL_ONE; BLEND_EQUATION = GL_FUNC_ADD; }
Technique T
{
    Pass Culled { VertexProgram = VS; FragmentProgram = FS; RasterizationState = CullFronts; }
    Pass Rejected { VertexProgram = VS; FragmentProgram = FS; DepthStencilState = Never; }
    Pass Added { VertexProgram = VS; FragmentProgram = FS; ColorSampleState = Add; DEPTH_TEST = false; }
}
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::ITechnique& technique = *loaded.container->findTechnique(0);
    glClearColor(0.5f, 0.0f, 0.0f, 1.0f);
    glDisable(GL_DEPTH_TEST);
    const std::vector<float> before = RenderStates();
    GLint frontFace = 0;
    const Rgba background = {128, 0, 0, 255};
    for (int i = 0; i < 3; ++i) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        const Rgba drawn = DrawWith(*technique.getPass(i), gl);
        SCOPED_TRACE(technique.getPass(i)->getName());
        // The quad is counter-clockwise: with GL_CW it is a back face, and culled.
        ExpectNear(drawn, i == 2 ? Rgba{192, 128, 0, 255} : background);
        EXPECT_EQ(RenderStates(), before);
        glGetIntegerv(GL_FRONT_FACE, &frontFace);
        EXPECT_EQ(frontFace, GL_CCW);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// A sampler state's wrap mode decides the pixel: a two-texel texture (red, green) read
// past its right edge repeats to red, or clamps to green; after the pass the unit has
// no sampler object again.
TEST_F(PassStateBlocksGLTest, SamplerStatesWrapTheTextureForTheirPass)
{
    const NvFXTest::Loaded loaded = NvFXTest::Load(R"(
uniform sampler2D Stripes;
SamplerState Repeat { TEXTURE_MIN_FILTER = NEAREST; TEXTURE_MAG_FILTER = NEAREST; TEXTURE_WRAP_S = REPEAT; }
SamplerState Clamp { TEXTURE_MIN_FILTER = NEAREST; TEXTURE_MAG_FILTER = NEAREST; TEXTURE_WRAP_S = CLAMP_TO_EDGE; }
TextureResource2D Pattern < defaultFile = "stripes.png"; >;
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = texture(Stripes, vec2(1.25, 0.5)); } }
Technique T
{
    Pass Repeated { VertexProgram = VS; FragmentProgram = FS; SamplerResource(Stripes) = { Pattern, Repeat }; }
    Pass Clamped { VertexProgram = VS; FragmentProgram = FS; SamplerResource(Stripes) = { Pattern, Clamp }; }
}
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    const TextureName texture({255, 0, 0, 255, 0, 255, 0, 255}); // red, green
    nvFX::IContainer& effect = *loaded.container;
    ASSERT_TRUE(effect.findUniform("Stripes")->setSamplerResource(texture.name, 3));
    nvFX::ITechnique& technique = *effect.findTechnique(0);
    ExpectNear(DrawWith(*technique.getPass(0), gl), {255, 0, 0, 255});
    ExpectNear(DrawWith(*technique.getPass(1), gl), {0, 255, 0, 255});
    glActiveTexture(GL_TEXTURE3);
    GLint sampler = -1;
    glGetIntegerv(GL_SAMPLER_BINDING, &sampler);
    EXPECT_EQ(sampler, 0) << "the unit's sampler is put back";
    glActiveTexture(GL_TEXTURE0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// A global constant buffer set through one effect draws in another: both passes read
// one GL buffer object at one binding point, uploaded once.
TEST_F(PassStateBlocksGLTest, AGlobalBufferIsOneBufferForEveryEffect)
{
    const std::string effect = R"(
global ConstantBuffer Scene { uniform vec4 Tint = {0, 0, 0, 1}; };
ConstantBuffer Local { uniform float Gain = 1; };
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = Tint * Gain; } }
Technique T { Pass P { VertexProgram = VS; FragmentProgram = FS; } }
)";
    const NvFXTest::Loaded first = NvFXTest::Load(effect, "first");
    const NvFXTest::Loaded second = NvFXTest::Load(effect, "second");
    ASSERT_TRUE(first.ok && second.ok) << first.messages << second.messages;
    ASSERT_TRUE(first.container->findBufferUniform("Tint")->setValue4f(0.0f, 0.5f, 1.0f, 1.0f));
    nvFX::IPass& firstPass = *first.container->findTechnique(0)->getPass(0);
    nvFX::IPass& secondPass = *second.container->findTechnique(0)->getPass(0);
    ExpectNear(DrawWith(secondPass, gl), {0, 128, 255, 255});
    GLint scene[2] = {}, local[2] = {};
    ASSERT_TRUE(firstPass.setup());
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 24, &scene[0]);
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 0, &local[0]);
    ASSERT_TRUE(firstPass.restore());
    ASSERT_TRUE(secondPass.setup());
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 24, &scene[1]);
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 0, &local[1]);
    ASSERT_TRUE(secondPass.restore());
    EXPECT_NE(scene[0], 0);
    EXPECT_EQ(scene[0], scene[1]) << "one buffer object for the global block";
    EXPECT_NE(local[0], local[1]) << "each effect's own block has its own";
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// Tessellation and geometry stages: a patch of three vertices (PATCH_VERTICES) passes
// through control, evaluation and geometry code to the pixel; the patch size GL had
// comes back after the pass.
TEST_F(PassStateBlocksGLTest, TessellationAndGeometryStagesDrawAPatch)
{
    const NvFXTest::Loaded loaded = NvFXTest::Load(R"(
GLSLShader { #version 450 compatibility
}
uniform vec4 Colour = {0, 1, 0, 1};
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader TCS {
    layout(vertices = 3) out;
    void main()
    {
        gl_out[gl_InvocationID].gl_Position = gl_in[gl_InvocationID].gl_Position;
        gl_TessLevelOuter[0] = gl_TessLevelOuter[1] = gl_TessLevelOuter[2] = 2.0;
        gl_TessLevelInner[0] = 2.0;
    }
}
GLSLShader TES {
    layout(triangles) in;
    void main()
    {
        gl_Position = gl_TessCoord.x * gl_in[0].gl_Position + gl_TessCoord.y * gl_in[1].gl_Position +
                      gl_TessCoord.z * gl_in[2].gl_Position;
    }
}
GLSLShader GS {
    layout(triangles) in;
    layout(triangle_strip, max_vertices = 3) out;
    void main() { for (int i = 0; i < 3; ++i) { gl_Position = gl_in[i].gl_Position; EmitVertex(); } EndPrimitive(); }
}
GLSLShader FS { void main() { gl_FragColor = Colour; } }
Technique T { Pass Patch { VertexProgram = VS; TessellationControlProgram = TCS; TessellationEvaluationProgram = TES;
                           GeometryProgram = GS; FragmentProgram = FS; PATCH_VERTICES = 3; } }
)");
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IPass& pass = *loaded.container->findTechnique(0)->getPass(0);
    EXPECT_NE(pass.getExInterface()->getStageSource(nvFX::IPassEx::TessEvaluationStage), nullptr);
    glPatchParameteri(GL_PATCH_VERTICES, 4);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    ASSERT_TRUE(pass.setup());
    Draw(GL_PATCHES, {-1.0f, -1.0f, 3.0f, -1.0f, -1.0f, 3.0f});
    GLint during = 0;
    glGetIntegerv(GL_PATCH_VERTICES, &during);
    EXPECT_TRUE(pass.restore());
    EXPECT_EQ(during, 3);
    GLint after = 0;
    glGetIntegerv(GL_PATCH_VERTICES, &after);
    EXPECT_EQ(after, 4);
    ExpectNear(Pixel(gl), {0, 255, 0, 255});
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// Before any GL header: glBindFramebuffer is exported by libGL, which the GL tests link.
#define GL_GLEXT_PROTOTYPES 1

#include "QorGL/QorGLContext.h"

#include "QorVisShaderCGFX/QorCgHolder.h"
#include "QorTestSupport.h"

#include <Cg/cg.h>
#include <Cg/cgGL.h>
#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace {

using Rgba = std::array<int, 4>;

struct Pixel
{
    int x;
    int yFromTop;
    Rgba rgba;
};

Rgba PixelAt(const std::vector<unsigned char>& pixels, int width, int x, int yFromTop)
{
    const std::size_t at = (static_cast<std::size_t>(yFromTop) * width + x) * 4;
    return {pixels[at], pixels[at + 1], pixels[at + 2], pixels[at + 3]};
}

// One pass that transforms by a WORLDVIEWPROJECTION matrix and paints a flat colour;
// `latest` lets the runtime pick the best profiles the GL context offers.
const char* const kFlatColourEffect = R"(
float4x4 WorldViewProjection : WORLDVIEWPROJECTION;
float4 Colour = { 0, 0, 0, 1 };

float4 MainVS(float4 position : POSITION) : POSITION
{
    return mul(WorldViewProjection, position);
}

float4 MainPS() : COLOR
{
    return Colour;
}

technique FlatColour
{
    pass Main
    {
        DepthTestEnable = false;
        CullFaceEnable = false;
        VertexProgram = compile latest MainVS();
        FragmentProgram = compile latest MainPS();
    }
}
)";

std::string CgFailure(CGcontext context)
{
    const char* listing = cgGetLastListing(context);
    return std::string(cgGetErrorString(cgGetError())) + "\n" + (listing ? listing : "");
}

void DrawQuadCoveringClipSpace()
{
    glBegin(GL_QUADS);
    glVertex3f(-1.0f, -1.0f, 0.0f);
    glVertex3f(1.0f, -1.0f, 0.0f);
    glVertex3f(1.0f, 1.0f, 0.0f);
    glVertex3f(-1.0f, 1.0f, 0.0f);
    glEnd();
}

} // namespace

TEST(QorGLContextGLTest, ClearsItsFramebufferAndReadsItBackTopRowFirst)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(64, 32)) << gl.GetError();
    EXPECT_TRUE(gl.IsOpen());
    EXPECT_EQ(gl.GetError(), "");
    EXPECT_EQ(gl.GetWidth(), 64);
    EXPECT_EQ(gl.GetHeight(), 32);
    EXPECT_NE(gl.GetFramebuffer(), 0u);

    GLint drawFramebuffer = 0;
    GLint viewport[4] = {};
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawFramebuffer);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(static_cast<unsigned int>(drawFramebuffer), gl.GetFramebuffer());
    EXPECT_EQ(viewport[2], 64);
    EXPECT_EQ(viewport[3], 32);
    GLint depthBits = 0;
    glGetIntegerv(GL_DEPTH_BITS, &depthBits);
    EXPECT_GE(depthBits, 24);

    // Whole framebuffer one colour, then GL's bottom rows (y < 8) another: the
    // read-back must put those rows last.
    glClearColor(0.2f, 0.4f, 0.6f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 64, 8);
    glClearColor(1.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    const std::vector<unsigned char> pixels = gl.ReadPixels();
    ASSERT_EQ(pixels.size(), 64u * 32u * 4u);
    EXPECT_EQ(PixelAt(pixels, 64, 0, 0), (Rgba{51, 102, 153, 255}));
    EXPECT_EQ(PixelAt(pixels, 64, 32, 16), (Rgba{51, 102, 153, 255}));
    EXPECT_EQ(PixelAt(pixels, 64, 63, 23), (Rgba{51, 102, 153, 255}));
    EXPECT_EQ(PixelAt(pixels, 64, 0, 24), (Rgba{255, 255, 0, 255}));
    EXPECT_EQ(PixelAt(pixels, 64, 63, 31), (Rgba{255, 255, 0, 255}));

    // Opening again replaces the framebuffer with one of the new size.
    ASSERT_TRUE(gl.Open(16, 8)) << gl.GetError();
    {
        // Another context takes the thread over; MakeCurrent() brings this one back,
        // with its framebuffer object bound again after code switched to the default one.
        QorGLContext other;
        ASSERT_TRUE(other.Open(4, 4)) << other.GetError();
        glClearColor(1.0f, 0.0f, 1.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        ASSERT_TRUE(gl.MakeCurrent());
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        ASSERT_TRUE(gl.MakeCurrent());
        glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        EXPECT_EQ(PixelAt(other.ReadPixels(), 4, 3, 3), (Rgba{255, 0, 255, 255}));
    }
    const std::vector<unsigned char> reopened = gl.ReadPixels();
    ASSERT_EQ(reopened.size(), 16u * 8u * 4u);
    EXPECT_EQ(PixelAt(reopened, 16, 15, 7), (Rgba{0, 0, 255, 255}));

    gl.Close();
    EXPECT_FALSE(gl.IsOpen());
    EXPECT_TRUE(gl.ReadPixels().empty());
    EXPECT_FALSE(gl.MakeCurrent());
}

TEST(QorGLContextGLTest, CgFxEffectDrawsIntoTheFramebuffer)
{
    // Declared first so it goes last: the Cg objects below live in its GL context.
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(64, 64)) << gl.GetError();

    QorCgContextHolder cg{cgCreateContext()};
    ASSERT_NE(cg.Get(), nullptr);
    cgGLRegisterStates(cg.Get());
    cgGLSetManageTextureParameters(cg.Get(), CG_TRUE);

    const CGprofile vertexProfile = cgGLGetLatestProfile(CG_GL_VERTEX);
    const CGprofile fragmentProfile = cgGLGetLatestProfile(CG_GL_FRAGMENT);
    ASSERT_NE(vertexProfile, CG_PROFILE_UNKNOWN);
    ASSERT_NE(fragmentProfile, CG_PROFILE_UNKNOWN);
    EXPECT_TRUE(cgGLIsProfileSupported(vertexProfile)) << cgGetProfileString(vertexProfile);
    EXPECT_TRUE(cgGLIsProfileSupported(fragmentProfile)) << cgGetProfileString(fragmentProfile);

    QorCgEffectHolder effect(cgCreateEffect(cg.Get(), kFlatColourEffect, nullptr));
    ASSERT_NE(effect.Get(), nullptr) << CgFailure(cg.Get());
    const CGtechnique technique = cgGetFirstTechnique(effect.Get());
    ASSERT_NE(technique, nullptr);
    ASSERT_TRUE(cgValidateTechnique(technique)) << CgFailure(cg.Get());
    const CGpass pass = cgGetFirstPass(technique);
    ASSERT_NE(pass, nullptr);

    const CGparameter matrix = cgGetEffectParameterBySemantic(effect.Get(), "WORLDVIEWPROJECTION");
    const CGparameter colour = cgGetNamedEffectParameter(effect.Get(), "Colour");
    ASSERT_NE(matrix, nullptr);
    ASSERT_NE(colour, nullptr);

    // Each draw paints over the last; the second, a row-major translation by +1 in x,
    // leaves the left half to the first, so the matrix reached the program in the layout
    // cgSetMatrixParameterfr promises.
    const Rgba red{255, 0, 0, 255};
    const Rgba green{0, 255, 0, 255};
    const struct
    {
        const char* what;
        float rowMajor[16];
        Rgba colour;
        std::vector<Pixel> pixels;
    } draws[] = {
        {"whole", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, red, {{32, 32, red}, {0, 0, red}, {63, 63, red}}},
        {"right half", {1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, green, {{16, 32, red}, {48, 32, green}}},
    };
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    for (const auto& draw : draws) {
        SCOPED_TRACE(draw.what);
        cgSetMatrixParameterfr(matrix, draw.rowMajor);
        cgSetParameter4f(colour, draw.colour[0] / 255.0f, draw.colour[1] / 255.0f, draw.colour[2] / 255.0f, 1.0f);
        cgSetPassState(pass);
        DrawQuadCoveringClipSpace();
        cgResetPassState(pass);
        ASSERT_EQ(cgGetError(), CG_NO_ERROR) << CgFailure(cg.Get());
        ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        const std::vector<unsigned char> pixels = gl.ReadPixels();
        ASSERT_EQ(pixels.size(), 64u * 64u * 4u);
        for (const Pixel& pixel : draw.pixels)
            EXPECT_EQ(PixelAt(pixels, 64, pixel.x, pixel.yFromTop), pixel.rgba) << pixel.x << ", " << pixel.yFromTop;
    }
}

TEST(QorGLContextGLTest, OpenFailsCleanlyWithoutADisplayOrWithABadSize)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(8, 8)) << gl.GetError();

    {
        const QorScopedEnv noDisplay("DISPLAY", nullptr);
        QorGLContext headless;
        EXPECT_FALSE(headless.Open(8, 8));
        EXPECT_FALSE(headless.IsOpen());
        EXPECT_NE(headless.GetError().find("xvfb-run -a"), std::string::npos) << headless.GetError();
        EXPECT_EQ(headless.GetError().find('\n'), std::string::npos) << headless.GetError();
        EXPECT_EQ(headless.GetWidth(), 0);
        EXPECT_TRUE(headless.ReadPixels().empty());
    }

    QorGLContext zeroSized;
    EXPECT_FALSE(zeroSized.Open(0, 8));
    EXPECT_NE(zeroSized.GetError(), "");
    QorGLContext huge;
    EXPECT_FALSE(huge.Open(1 << 20, 8));
    EXPECT_NE(huge.GetError(), "");

    // The failures left the first context current and drawable.
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    const std::vector<unsigned char> pixels = gl.ReadPixels();
    ASSERT_EQ(pixels.size(), 8u * 8u * 4u);
    EXPECT_EQ(PixelAt(pixels, 8, 4, 4), (Rgba{0, 255, 0, 255}));
}

// The CgFX road in a real GL context (Mesa under Xvfb): techniques validate, and a
// material drawn through a shader object shows its diffuse colour where a light hits.
#include "CgFXShader.h"

#include "QorGL/QorGLContext.h"
#include "QorPlainTexture.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaderCGFX/QorCgFXFactory.h"

#include <Cg/cgGL.h>
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace {

constexpr int kSize = 64;

std::string Sample(const char* relative)
{
    return std::string(QOR_SAMPLES_DIR) + "/" + relative;
}

using ShaderPtr = std::unique_ptr<QorIShader, void (*)(QorIShader*)>;

std::array<int, 4> PixelAt(const std::vector<unsigned char>& pixels, int x, int y)
{
    const unsigned char* p = &pixels[(static_cast<size_t>(y) * kSize + x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

// A quad filling the viewport at z = 0, facing +z.
void DrawWithCurrentTechnique(QorShaderEffect& effect)
{
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    for (CGpass pass = cgGetFirstPass(effect.GetCurrentTechnique()); pass; pass = cgGetNextPass(pass)) {
        cgSetPassState(pass);
        glBegin(GL_QUADS);
        glNormal3f(0, 0, 1);
        glVertex3f(-1, -1, 0);
        glVertex3f(1, -1, 0);
        glVertex3f(1, 1, 0);
        glVertex3f(-1, 1, 0);
        glEnd();
        cgResetPassState(pass);
    }
    glFinish();
}

class QorShaderEffectGLTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_context.Open(kSize, kSize)) << m_context.GetError();
        m_textures[0] = QorPlainTexture(GL_TEXTURE_2D, {255, 255, 255, 255});
        m_textures[1] = QorPlainTexture(GL_TEXTURE_CUBE_MAP, {255, 255, 255, 255});
    }
    // Textures handed back by the materials go, with their GL names, while the context lives.
    void TearDown() override
    {
        QorShaderManager::CleanShaderTextureToDestroyList();
        if (m_textures[0])
            glDeleteTextures(2, m_textures);
    }

    static ShaderPtr Load(const std::string& sample)
    {
        ShaderPtr shader(QorCreateCgFXShader(), [](QorIShader* s) { s->Destroy(); });
        shader->SetFileName(QorString(Sample(("materials/" + sample + ".cgfx").c_str()).c_str()));
        return shader;
    }

    // Feeds what a renderer would: identity matrices with the eye at z = 2, a white point
    // light in front of the quad, a grey cube environment of the white cube, and the white
    // map for every texture parameter.
    void FeedTheScene(QorIShader& shader, QorShaderEffect& effect) const
    {
        Qor4x4Matrix identity;
        Qor4x4Matrix viewInverse;
        viewInverse.At(2, 3) = 2;
        for (int which = QorFeedProjection; which <= QorFeedViewInverse; ++which)
            if (const CGparameter parameter = effect.GetFeedParameter(static_cast<QorFeed>(which)))
                cgSetMatrixParameterfr(parameter, (which == QorFeedViewInverse ? viewInverse : identity).Data());
        const QorShaderLight& light = effect.GetLight(0);
        if (light.position)
            cgSetParameter3f(light.position, 0, 0, 2);
        if (light.color)
            cgSetParameter4f(light.color, 1, 1, 1, 1);
        if (light.axialFalloffConstant)
            cgSetParameter1f(light.axialFalloffConstant, 1);
        if (const CGparameter ambient = effect.GetEnvironmentMember(0))
            cgSetParameter4f(ambient, 0.3f, 0.3f, 0.3f, 1);
        for (int member : {1, 2})
            if (const CGparameter sampler = effect.GetEnvironmentMember(member))
                cgGLSetTextureParameter(sampler, m_textures[1]);
        for (int index = 1; index < shader.GetNbParameters(); ++index)
            if (shader.GetParameterType(index) == 4)
                cgGLSetTextureParameter(effect.GetUserParameter(index), m_textures[0]);
    }

    QorScopedEnv m_graphic{"QorGraphicPath", QOR_SAMPLES_DIR};
    QorGLContext m_context;
    GLuint m_textures[2] = {0, 0}; ///< white 2D, white cube
};

} // namespace

TEST_F(QorShaderEffectGLTest, EveryTechniqueOfEverySampleThatValidatesDrawsItsMaterial)
{
    QorRegistryGuard guard; // the textured sample registers its texture
    int drawn = 0;
    for (const char* sample : {"plastic", "brushed_metal", "textured", "chrome", "toon"}) {
        ShaderPtr shader = Load(sample);
        ASSERT_TRUE(shader->GenerateParameters()) << sample;
        auto& effect = static_cast<QorShaderEffect&>(*shader->GetIShaderEffect());
        ASSERT_TRUE(shader->UpdateLightModel(QorLightPoint));
        effect.updateEnvModel(QorEnvironmentCube);
        cgGLSetManageTextureParameters(effect.GetCgContext(), CG_TRUE);
        shader->SetCurrentParameters();
        for (CGtechnique technique = cgGetFirstTechnique(effect.GetCgEffect()); technique;
             technique = cgGetNextTechnique(technique)) {
            const char* name = cgGetTechniqueName(technique);
            effect.setTechniqueByName(name);
            effect.ForceCompile();
            if (!effect.ValidateTechnique() || effect.GetCurrentTechnique() != technique)
                continue; // a technique this driver cannot run
            effect.UploadCurrentParameters(false);
            FeedTheScene(*shader, effect);
            DrawWithCurrentTechnique(effect);
            const auto centre = PixelAt(m_context.ReadPixels(), kSize / 2, kSize / 2);
            EXPECT_GT(centre[0] + centre[1] + centre[2], 60) << sample << " " << name << " draws nothing";
            ++drawn;
        }
    }
    EXPECT_GE(drawn, 8) << "each sample has a GLSL and an assembly technique that run under Mesa";
}

TEST_F(QorShaderEffectGLTest, OnlyTechniquesTheDriverRunsValidate)
{
    QorShaderEffect* toon = QorShaderEffect::AddShaderEffect("toon-validation");
    toon->setFileName(QorString(Sample("materials/toon.cgfx").c_str()));
    ASSERT_NE(toon->GenerateShader(), nullptr);
    ASSERT_TRUE(toon->updateLightModel(QorLightPoint));
    EXPECT_EQ(toon->ForceCompile(), 1);
    EXPECT_EQ(toon->ValidateTechnique(), 1);
    EXPECT_STREQ(cgGetTechniqueName(toon->GetCurrentTechnique()), "ToonGLSL") << "the vendor-only technique is skipped";
    int index = -1;
    toon->getTechnique(&index);
    EXPECT_EQ(index, 1);
    toon->setTechniqueByName("ToonARB");
    EXPECT_EQ(toon->ValidateShaderEffect(), 1);
    toon->Release();

    QorShaderEffect* vendorOnly = QorShaderEffect::AddShaderEffect(nullptr);
    vendorOnly->setBuffer(R"(
float4 main2() : COLOR { return 1; }
technique a { pass p { FragmentProgram = compile fp40 main2(); } }
technique b { pass p { FragmentProgram = compile gp4fp main2(); } }
)");
    ASSERT_NE(vendorOnly->GenerateShader(), nullptr);
    EXPECT_EQ(vendorOnly->ValidateTechnique(), 0);
    EXPECT_EQ(vendorOnly->GetCurrentTechnique(), nullptr) << "no technique left current";
    EXPECT_EQ(vendorOnly->ValidateTechnique(), 0);
    vendorOnly->Release();
}

TEST_F(QorShaderEffectGLTest, LitPlasticShowsItsDiffuseColourWhereTheLightHits)
{
    ShaderPtr shader = Load("plastic");
    ASSERT_TRUE(shader->GenerateParameters());
    auto& effect = static_cast<QorShaderEffect&>(*shader->GetIShaderEffect());

    // One white spot light above the centre with a narrow cone and no ambient light: the
    // centre is lit, the corners are not.
    ASSERT_TRUE(shader->UpdateLightModel(QorLightSpot));
    effect.ForceCompile();
    ASSERT_EQ(effect.ValidateTechnique(), 1);
    shader->SetParameterColor(shader->GetParameterIndex("Diffuse"), 1, 0, 0, 1);
    shader->SetParameterColor(shader->GetParameterIndex("Specular"), 0, 0, 0, 1);
    shader->SetCurrentParameters();
    effect.UploadCurrentParameters(false);
    FeedTheScene(*shader, effect);
    cgSetParameter4f(effect.GetEnvironmentMember(0), 0, 0, 0, 1);
    const QorShaderLight& spot = effect.GetLight(0);
    cgSetParameter3f(spot.position, 0, 0, 1);
    cgSetParameter3f(spot.direction, 0, 0, -1);
    cgSetParameter1f(spot.radialInnerCone, 0.95f);
    cgSetParameter1f(spot.radialOuterCone, 0.9f);
    cgSetParameter1f(spot.radialFalloffExponent, 0);
    DrawWithCurrentTechnique(effect);
    const std::vector<unsigned char> pixels = m_context.ReadPixels();
    const auto centre = PixelAt(pixels, kSize / 2, kSize / 2);
    EXPECT_GE(centre[0], 240);
    EXPECT_LE(centre[1] + centre[2], 20);
    EXPECT_EQ(PixelAt(pixels, 1, 1), (std::array<int, 4>{0, 0, 0, 255})) << "the corner is outside the cone";
}

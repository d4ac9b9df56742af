// The CgFX road in a real GL context (Mesa under Xvfb): techniques validate, and a
// material drawn through a shader object shows its diffuse colour where a light hits.
#include "CgFXShader.h"

#include "QorGL/QorGLContext.h"
#include "QorTestSupport.h"
#include "QorVisShaders/QorShaderEffect.h"
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

class QorShaderEffectGLTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_context.Open(kSize, kSize)) << m_context.GetError(); }

    QorScopedEnv m_graphic{"QorGraphicPath", QOR_SAMPLES_DIR};
    QorGLContext m_context;
};

std::array<int, 4> PixelAt(const std::vector<unsigned char>& pixels, int x, int y)
{
    const unsigned char* p = &pixels[(static_cast<size_t>(y) * kSize + x) * 4];
    return {p[0], p[1], p[2], p[3]};
}

void SetMatrix(QorShaderEffect& effect, QorEffectMatrix which, const Qor4x4Matrix& matrix)
{
    if (const CGparameter parameter = effect.GetMatrixParameter(which))
        cgSetMatrixParameterfr(parameter, matrix.Data());
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

} // namespace

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
    std::unique_ptr<QorIShader, void (*)(QorIShader*)> shader(QorCreateCgFXShader(),
                                                              [](QorIShader* s) { s->Destroy(); });
    shader->SetFileName(QorString(Sample("materials/plastic.cgfx").c_str()));
    ASSERT_TRUE(shader->GenerateParameters());
    auto& effect = static_cast<QorShaderEffect&>(*shader->GetIShaderEffect());

    // One white spot light above the centre with a narrow cone: the centre is lit, the
    // corners are not.
    ASSERT_TRUE(shader->UpdateLightModel(QorLightSpot));
    const QorShaderLight& spot = effect.GetLight(0);
    cgSetParameter3f(spot.position, 0, 0, 1);
    cgSetParameter3f(spot.direction, 0, 0, -1);
    cgSetParameter4f(spot.color, 1, 1, 1, 1);
    cgSetParameter1f(spot.radialInnerCone, 0.95f);
    cgSetParameter1f(spot.radialOuterCone, 0.9f);
    cgSetParameter1f(spot.radialFalloffExponent, 0);
    effect.ForceCompile();
    ASSERT_EQ(effect.ValidateTechnique(), 1);

    Qor4x4Matrix identity;
    Qor4x4Matrix viewInverse;
    viewInverse.At(2, 3) = 2; // the eye sits at z = 2
    for (QorEffectMatrix which : {QorEffectWorldViewProjection, QorEffectWorld, QorEffectWorldInverseTranspose})
        SetMatrix(effect, which, identity);
    SetMatrix(effect, QorEffectViewInverse, viewInverse);

    const int diffuse = shader->GetParameterIndex("Diffuse");
    const int specular = shader->GetParameterIndex("Specular");
    shader->SetParameterColor(diffuse, 1, 0, 0, 1);
    shader->SetParameterColor(specular, 0, 0, 0, 1);
    shader->SetCurrentParameters();
    effect.UploadCurrentParameters(false);
    DrawWithCurrentTechnique(effect);
    std::vector<unsigned char> pixels = m_context.ReadPixels();
    const auto centre = PixelAt(pixels, kSize / 2, kSize / 2);
    EXPECT_GE(centre[0], 240);
    EXPECT_LE(centre[1], 10);
    EXPECT_LE(centre[2], 10);
    EXPECT_EQ(PixelAt(pixels, 1, 1), (std::array<int, 4>{0, 0, 0, 255})) << "the corner is outside the cone";

    // A new value through the shader object changes what is drawn; unchanged values are skipped.
    shader->SetParameterColor(diffuse, 0, 1, 0, 1);
    effect.UploadCurrentParameters(true);
    DrawWithCurrentTechnique(effect);
    pixels = m_context.ReadPixels();
    const auto green = PixelAt(pixels, kSize / 2, kSize / 2);
    EXPECT_LE(green[0], 10);
    EXPECT_GE(green[1], 240);
}

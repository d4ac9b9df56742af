// The GLSL samples on the QRFX road in a real GL context (Mesa under Xvfb): each loads
// through a shader object, binds what the lighting include declares, validates its one
// technique and draws a lit pixel; the include tells light kinds and switches the
// environment as its comments say.
#include "QorGL/QorGLContext.h"
#include "QorPlainTexture.h"
#include "QorRegistryGuard.h"
#include "QorTestSupport.h"
#include "QorVisShaderQRFX/QorQRFXFactory.h"
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <GL/gl.h>
#include <gtest/gtest.h>
#include <nvFX/IContainer.h>
#include <nvFX/IPass.h>
#include <nvFX/ITechnique.h>
#include <nvFX/IUniformEx.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int kSize = 64;

struct ShaderDestroy
{
    void operator()(QorIShader* shader) const { shader->Destroy(); }
};
using Shader = std::unique_ptr<QorIShader, ShaderDestroy>;

struct Light
{
    std::array<float, 4> position{0, 0, 2, 1};
    std::array<float, 3> direction{0, 0, -1};
    float innerCone = 0;
    float outerCone = 0;
};

class QorNvFXSamplesGLTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_context.Open(kSize, kSize)) << m_context.GetError();
        m_textures[0] = QorPlainTexture(GL_TEXTURE_2D, {255, 255, 255, 255});
        m_textures[1] = QorPlainTexture(GL_TEXTURE_CUBE_MAP, {255, 0, 0, 255});
    }
    void TearDown() override
    {
        if (m_textures[0])
            glDeleteTextures(2, m_textures);
    }

    // A GLSL shader object over the sample, its parameters generated; the include comes
    // from the samples' "shaders" folder.
    Shader Load(const std::string& name)
    {
        Shader shader(QorCreateQRFXShader());
        shader->SetFileName(QorString((std::string(QOR_SAMPLES_DIR) + "/materials/" + name).c_str()));
        if (!shader->GenerateParameters())
            return nullptr;
        shader->SetCurrentParameters();
        return shader;
    }

    // A white plastic without highlights: it shows the diffuse light it receives.
    Shader LoadWhitePlastic()
    {
        Shader plastic = Load("plastic.glslfx");
        if (plastic) {
            plastic->SetParameterColor(1, 1, 1, 1, 1);
            plastic->SetParameterColor(2, 0, 0, 0, 1);
        }
        return plastic;
    }

    static QorNvFXEffect& Effect(QorIShader& shader) { return *static_cast<QorNvFXEffect*>(shader.GetIShaderEffect()); }

    // What a renderer feeds: identity matrices with the eye at z = 2, `lights`, the
    // environment colour, and the red cube map when `cube` is set.
    void Feed(QorNvFXEffect& effect, const std::vector<Light>& lights, std::array<float, 3> ambient, bool cube = false)
    {
        float identity[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        for (QorFeed which : {QorFeedWorldViewProjection, QorFeedWorld, QorFeedWorldInverseTranspose})
            if (nvFX::IUniform* matrix = effect.GetFeedUniform(which))
                matrix->setMatrix4f(identity);
        float viewInverse[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 2, 1}; // columns: translation last
        if (nvFX::IUniform* matrix = effect.GetFeedUniform(QorFeedViewInverse))
            matrix->setMatrix4f(viewInverse);
        std::vector<float> position, direction, color, constant, inner, outer;
        for (const Light& light : lights) {
            position.insert(position.end(), light.position.begin(), light.position.end());
            direction.insert(direction.end(), light.direction.begin(), light.direction.end());
            color.insert(color.end(), {1, 1, 1, 1});
            constant.push_back(1);
            inner.push_back(light.innerCone);
            outer.push_back(light.outerCone);
        }
        const std::pair<QorNvFXNamedUniform, const std::vector<float>*> fed[] = {{QorNvFXLightPosition, &position},
            {QorNvFXLightDirection, &direction}, {QorNvFXLightColor, &color}, {QorNvFXLightSpecularColor, &color},
            {QorNvFXLightAxialFalloffConstant, &constant}, {QorNvFXLightRadialInnerCone, &inner},
            {QorNvFXLightRadialOuterCone, &outer}, {QorNvFXLightRadialFalloffExponent, &constant}};
        for (const auto& [which, values] : fed)
            if (!values->empty()) {
                EXPECT_TRUE(effect.GetNamedUniform(which)->setValuefv(values->data(), static_cast<int>(values->size())));
            }
        const int count = static_cast<int>(lights.size());
        EXPECT_TRUE(effect.GetNamedUniform(QorNvFXLightCount)->setValueiv(&count, 1));
        EXPECT_TRUE(effect.GetFeedUniform(QorFeedGlobalAmbientColor)->setValue4f(ambient[0], ambient[1], ambient[2], 1));
        nvFX::IUniform* environment = effect.GetFeedUniform(QorFeedAutomaticEnvironmentMap);
        environment->setSamplerResource(cube ? m_textures[1] : 0, environment->getExInterface()->getSamplerUnit());
        const int tracking = cube ? 1 : 0;
        EXPECT_TRUE(effect.GetContainer()->findUniform("AutomaticEnvironmentMapTracking")->setValueiv(&tracking, 1));
    }

    // Pushes the shader's values (the white map for its textures) and draws a quad filling
    // the viewport at z = 0, facing the eye, with every pass; the pixels, rows from the bottom.
    std::vector<unsigned char> Draw(QorIShader& shader)
    {
        QorNvFXEffect& effect = Effect(shader);
        effect.UploadCurrentParameters(false);
        auto* parameters = static_cast<QorNvFXShaderParameters*>(shader.GetIShaderParameters());
        for (int index = 1; index < shader.GetNbParameters(); ++index)
            if (shader.GetParameterType(index) == QorValueTexture) {
                nvFX::IUniform* sampler = parameters->GetUniform(index);
                sampler->setSamplerResource(m_textures[0], sampler->getExInterface()->getSamplerUnit());
            }
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        nvFX::ITechnique* technique = effect.GetCurrentTechnique();
        for (int index = 0; index < technique->getNumPasses(); ++index) {
            nvFX::IPass* pass = technique->getPass(index);
            EXPECT_TRUE(pass->setup());
            glBegin(GL_QUADS);
            glNormal3f(0, 0, 1);
            glTexCoord2f(0.5f, 0.5f);
            glVertex3f(-1, -1, 0);
            glVertex3f(1, -1, 0);
            glVertex3f(1, 1, 0);
            glVertex3f(-1, 1, 0);
            glEnd();
            EXPECT_TRUE(pass->restore());
        }
        glFinish();
        return m_context.ReadPixels();
    }

    static std::array<int, 3> At(const std::vector<unsigned char>& pixels, int x, int y)
    {
        const unsigned char* p = &pixels[(static_cast<size_t>(y) * kSize + x) * 4];
        return {p[0], p[1], p[2]};
    }

    QorScopedEnv m_graphic{"QorGraphicPath", QOR_SAMPLES_DIR};
    QorScopedEnv m_startup{"QorStartupPath", nullptr};
    QorGLContext m_context;
    QorRegistryGuard m_registry; // the textured sample registers its texture; it goes while the context is current
    GLuint m_textures[2] = {0, 0}; ///< white 2D, red cube
};

} // namespace

TEST_F(QorNvFXSamplesGLTest, EverySampleLoadsBindsTheIncludeValidatesAndDrawsALitPixel)
{
    for (const char* name : {"plastic.glslfx", "brushed_metal.glslfx", "textured.glslfx", "chrome.glslfx", "toon.glslfx"}) {
        SCOPED_TRACE(name);
        Shader shader = Load(name);
        ASSERT_TRUE(shader);
        QorNvFXEffect& effect = Effect(*shader);
        // Every light uniform the include declares is found by name; the others are not.
        for (int which = 0; which < QorNvFXNamedUniformCount; ++which) {
            const bool declared = (which <= QorNvFXLightRadialFalloffExponent && which != QorNvFXLightAxialFalloffStart &&
                                   which != QorNvFXLightAxialFalloffEnd) ||
                                  which == QorNvFXLightCount;
            EXPECT_EQ(effect.GetNamedUniform(static_cast<QorNvFXNamedUniform>(which)) != nullptr, declared) << which;
        }
        EXPECT_NE(effect.GetFeedUniform(QorFeedWorldViewProjection), nullptr);
        EXPECT_EQ(effect.GetFeedUniform(QorFeedDiffuse), nullptr) << "user colours carry no bound semantic";
        ASSERT_EQ(effect.GetContainer()->findTechnique(1), nullptr) << "one technique";
        ASSERT_TRUE(effect.GetCurrentTechnique()->validate());

        Feed(effect, {Light{}}, {0.3f, 0.3f, 0.3f});
        const auto centre = At(Draw(*shader), kSize / 2, kSize / 2);
        EXPECT_GT(centre[0] + centre[1] + centre[2], 150) << "a lit pixel";
    }
}

TEST_F(QorNvFXSamplesGLTest, TheIncludeTellsLightKindsByTheirValues)
{
    Shader plastic = LoadWhitePlastic();
    ASSERT_TRUE(plastic);
    QorNvFXEffect& effect = Effect(*plastic);
    const int corner = 1, middle = kSize / 2;

    Light point; // at z = 2 with equal cones
    Light spot = point; // a narrow cone around -z: the corners lie outside
    spot.innerCone = 0.99f;
    spot.outerCone = 0.98f;
    for (const Light& light : {point, spot}) {
        Feed(effect, {light}, {0, 0, 0});
        const std::vector<unsigned char> pixels = Draw(*plastic);
        EXPECT_GT(At(pixels, middle, middle)[0], 240);
        const int red = At(pixels, corner, corner)[0];
        EXPECT_TRUE(light.innerCone == 0 ? red > 150 : red < 10) << red << ": a point light reaches the corners, "
                                                                   "which lie outside the spot's cone";
    }

    Light directional; // w = 0: only the direction counts
    directional.position = {0, 0, -5, 0};
    Feed(effect, {directional}, {0, 0, 0});
    EXPECT_GT(At(Draw(*plastic), corner, corner)[0], 240) << "travelling along -z, it lights all alike";
    directional.direction = {0, 0, 1};
    Feed(effect, {directional}, {0, 0, 0});
    EXPECT_LT(At(Draw(*plastic), middle, middle)[0], 10) << "travelling away from the surface";
}

TEST_F(QorNvFXSamplesGLTest, TheIncludeSwitchesBetweenTheColourAndTheCubeEnvironment)
{
    Shader plastic = LoadWhitePlastic();
    ASSERT_TRUE(plastic);
    QorNvFXEffect& effect = Effect(*plastic);

    Feed(effect, {}, {0.4f, 0.6f, 0.8f});
    const auto colour = At(Draw(*plastic), kSize / 2, kSize / 2);
    EXPECT_NEAR(colour[0], 102, 2);
    EXPECT_NEAR(colour[1], 153, 2);
    EXPECT_NEAR(colour[2], 204, 2) << "without the cube, the ambient light is the colour";

    Feed(effect, {}, {0.4f, 0.6f, 0.8f}, true);
    const auto cube = At(Draw(*plastic), kSize / 2, kSize / 2);
    EXPECT_NEAR(cube[0], 102, 2);
    EXPECT_LT(cube[1] + cube[2], 4) << "with it, the colour times the cube's texel";

    Shader chrome = Load("chrome.glslfx");
    ASSERT_TRUE(chrome);
    chrome->SetParameterColor(1, 1, 1, 1, 1);
    Feed(Effect(*chrome), {}, {0.4f, 0.6f, 0.8f}, true);
    const auto reflected = At(Draw(*chrome), kSize / 2, kSize / 2);
    EXPECT_GT(reflected[0], 250);
    EXPECT_LT(reflected[1] + reflected[2], 4) << "reflections are the cube's texel alone";
}

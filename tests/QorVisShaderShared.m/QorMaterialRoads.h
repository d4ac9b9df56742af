/// @file
/// The two roads of the material model, for the typed suites that check once what both
/// share: each makes its shader objects through its back end's factory, writes the same
/// material in its own format (float "gloss" with a UI range, colours "tint", "scale" and
/// "rgb" of 4, 2 and 3 components, texture "diffuse" defaulting to "wood.png", a bound
/// matrix, techniques "first" and "second") and reads back what an upload pushed into
/// the parameter a value mirrors. Loading needs no GL context on either road.
#pragma once

#include "QorRegistryGuard.h"
#include "QorTestSupport.h"

#include "QorVisShaderCGFX/QorCgFXFactory.h"
#include "QorVisShaderQRFX/QorQRFXFactory.h"
#include "QorVisShaderShared/QorMaterialParameters.h"
#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorIShaderEffect.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <Cg/cg.h>
#include <gtest/gtest.h>
#include <nvFX/IUniform.h>

#include <memory>
#include <string>
#include <vector>

struct QorCgFXRoad
{
    static QorIShader* NewShader() { return QorCreateCgFXShader(); }
    static constexpr QorFxImplementation kImplementation = QorFxCgFX;
    static constexpr int kOverlapLine = 1044; ///< where its set reports a misplaced GetValue
    static constexpr const char* kExtension = ".cgfx";
    static constexpr const char* kMaterial = R"(
float gloss < float UIMin = 2; float UIMax = 8; > = 0.5;
float4 tint = {0.25, 0.5, 0.75, 1};
float2 scale = {2, 3};
float3 rgb = {0.5, 0.6, 0.7};
sampler2D diffuse < string File = "wood.png"; >;
float4x4 wvp : WORLDVIEWPROJECTION;
float4 mainVS(float4 p : POSITION) : POSITION { return mul(wvp, p); }
float4 mainPS() : COLOR { return tint * gloss * float4(rgb, 1) * scale.x + tex2D(diffuse, scale); }
technique first { pass p0 { VertexProgram = compile arbvp1 mainVS(); FragmentProgram = compile arbfp1 mainPS(); } }
technique second { pass p0 { VertexProgram = compile arbvp1 mainVS(); FragmentProgram = compile arbfp1 mainPS(); } }
)";
    static std::vector<float> Pushed(void* binding, int count)
    {
        std::vector<float> values(4, 0.0f);
        cgGetParameterValuefr(static_cast<CGparameter>(binding), count, values.data());
        values.resize(static_cast<std::size_t>(count));
        return values;
    }
};

struct QorQRFXRoad
{
    static QorIShader* NewShader() { return QorCreateQRFXShader(); }
    static constexpr QorFxImplementation kImplementation = QorFxQRFX;
    static constexpr int kOverlapLine = 700;
    static constexpr const char* kExtension = ".glslfx";
    static constexpr const char* kMaterial = R"(
uniform float gloss < UIMin = 2; UIMax = 8; > = 0.5;
uniform vec4 tint = {0.25, 0.5, 0.75, 1};
uniform vec2 scale = {2, 3};
uniform vec3 rgb = {0.5, 0.6, 0.7};
uniform sampler2D diffuse < defaultFile = "wood.png"; >;
uniform mat4 WorldViewProj : WORLDVIEWPROJECTION;
GLSLShader VS { void main() { gl_Position = WorldViewProj * gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = tint * gloss * vec4(rgb, 1.0) * scale.x + texture(diffuse, scale); } }
Technique first { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }
Technique second { Pass p0 { VertexProgram = VS; FragmentProgram = FS; } }
)";
    static std::vector<float> Pushed(void* binding, int count)
    {
        std::vector<float> values(static_cast<std::size_t>(count), 0.0f);
        static_cast<nvFX::IUniform*>(binding)->getValuefv(values.data(), count);
        return values;
    }
};

using QorMaterialRoads = testing::Types<QorCgFXRoad, QorQRFXRoad>;

struct QorShaderDestroy
{
    void operator()(QorIShader* shader) const { shader->Destroy(); }
};
using QorShaderPtr = std::unique_ptr<QorIShader, QorShaderDestroy>;

/// The references the registry's texture of that name has; 0 when it has none.
inline unsigned TextureCount(const std::string& name)
{
    const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(name.c_str());
    return texture ? texture->GetRefCount() : 0;
}

/// Positions of the material's user parameters (index = position + 1).
enum QorMaterialPosition
{
    kGloss,
    kTint,
    kScale,
    kRgb,
    kDiffuse,
};

/// A fixture per road: shaders of the material, the registry emptied after the test.
template <typename Road>
class QorMaterialTest : public testing::Test
{
protected:
    /// A shader sharing the effect registered under `name`, its values generated (the
    /// load's output swallowed); a null name gives it an effect of its own.
    QorShaderPtr Generated(const char* name = "material", const char* text = Road::kMaterial)
    {
        QorShaderPtr shader(Road::NewShader());
        if (name)
            shader->SetBuffer(text, (std::string(name) + Road::kExtension).c_str());
        else
            shader->SetBufferWithoutName(text);
        testing::internal::CaptureStdout();
        const bool generated = shader->GenerateParameters();
        testing::internal::GetCapturedStdout();
        EXPECT_TRUE(generated);
        return shader;
    }
    static QorMaterialParameters& Set(QorIShader& shader)
    {
        return *static_cast<QorMaterialParameters*>(shader.GetIShaderParameters());
    }
    /// What the effect's parameter for the value at `position` holds now.
    static std::vector<float> Pushed(QorIShader& shader, int position, int count)
    {
        return Road::Pushed(Set(shader).ValueAtPosition(static_cast<std::size_t>(position))->Binding(), count);
    }

    QorRegistryGuard registry;
    QorScopedEnv startup{"QorStartupPath", nullptr};
    QorScopedEnv graphic{"QorGraphicPath", nullptr};
};

/// Declares `Suite`, a typed suite of QorMaterialTest run on both roads.
#define QOR_MATERIAL_SUITE(Suite)                                                                                      \
    template <typename Road>                                                                                           \
    using Suite = QorMaterialTest<Road>;                                                                               \
    TYPED_TEST_SUITE(Suite, QorMaterialRoads)

#include "QorfxCgFXBackend.h"

#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorShaderEffect.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <Cg/cgGL.h>
#include <GL/gl.h>

#include <cmath>

using nlohmann::json;

namespace {

const char* StringAnnotation(CGparameter parameter, const char* first, const char* second)
{
    for (const char* name : {first, second})
        if (const CGannotation annotation = cgGetNamedParameterAnnotation(parameter, name))
            if (const char* value = cgGetStringAnnotationValue(annotation))
                return value;
    return nullptr;
}

json OptionalText(const char* text)
{
    return text ? json(text) : json(nullptr);
}

void AddBound(json& semantics, CGparameter parameter)
{
    if (parameter)
        semantics.push_back({{"parameter", cgGetParameterName(parameter)},
                             {"semantic", cgGetParameterSemantic(parameter)}});
}

void Set(CGparameter parameter, float x, float y, float z, float w = 1)
{
    if (parameter)
        cgSetParameter4f(parameter, x, y, z, w);
}

void Set(CGparameter parameter, float value)
{
    if (parameter)
        cgSetParameter1f(parameter, value);
}

} // namespace

std::unique_ptr<QorfxBackend> QorfxCgFXBackend::For(QorIShader& shader)
{
    QorIShaderEffect* effect = shader.GetIShaderEffect();
    if (shader.GetImplementation() != QorFxCgFX || !effect || effect->GetImplementation() != QorFxCgFX)
        return nullptr;
    return std::unique_ptr<QorfxBackend>(new QorfxCgFXBackend(shader, *static_cast<QorShaderEffect*>(effect)));
}

json QorfxCgFXBackend::Techniques(bool validate)
{
    json techniques = json::array();
    int index = 0;
    for (CGtechnique technique = cgGetFirstTechnique(m_effect.GetCgEffect()); technique;
         technique = cgGetNextTechnique(technique), ++index) {
        json entry = {{"index", index}, {"name", cgGetTechniqueName(technique)}};
        entry["valid"] = validate ? json(cgValidateTechnique(technique) == CG_TRUE) : json(nullptr);
        techniques.push_back(entry);
    }
    return techniques;
}

void QorfxCgFXBackend::DescribeParameter(int index, json& entry)
{
    const CGparameter parameter = m_effect.GetUserParameter(index);
    entry["widget"] = OptionalText(StringAnnotation(parameter, "UIWidget", "UIwidget"));
    entry["uiName"] = OptionalText(StringAnnotation(parameter, "UIName", "UIname"));
}

void QorfxCgFXBackend::DescribeEffect(json& description)
{
    json semantics = json::array();
    for (int which = 0; which < QorEffectMatrixCount; ++which)
        AddBound(semantics, m_effect.GetMatrixParameter(static_cast<QorEffectMatrix>(which)));
    for (int which = 0; which < QorEffectMaterialCount; ++which)
        AddBound(semantics, m_effect.GetMaterialParameter(static_cast<QorEffectMaterial>(which)));

    json interfaces = json::array();
    for (const auto& entry : m_effect.GetInterfaces()) {
        const char* name = entry.first.c_str();
        const char* base = m_effect.GetBaseType(name);
        interfaces.push_back(
            {{"name", name}, {"base", base ? base : ""}, {"dynamic", OptionalText(m_effect.GetDynamicType(name))}});
    }
    description["semantics"] = semantics;
    description["interfaces"] = interfaces;
    description["environment"] = m_effect.GetEnvironmentState();
    description["lights"] = m_effect.GetLightCount();
    description["hasLightArray"] = cgGetNamedEffectParameter(m_effect.GetCgEffect(), "lights") != nullptr;
}

std::string QorfxCgFXBackend::CompileErrors()
{
    return m_effect.GetCompileErrors().c_str();
}

std::vector<QorfxMissingInclude> QorfxCgFXBackend::MissingIncludes()
{
    std::vector<QorfxMissingInclude> missing;
    for (const QorString& name : m_effect.GetMissingIncludes()) {
        // The CgFX compiler reads names with these suffixes from files, all others from memory.
        const std::string text = name.c_str();
        missing.push_back({text, text.find(".cgh") != std::string::npos || text.find(".hfx") != std::string::npos});
    }
    return missing;
}

void QorfxCgFXBackend::PrepareContext()
{
    // Texture parameters bind their GL textures themselves when a pass is set.
    cgGLSetManageTextureParameters(m_effect.GetCgContext(), CG_TRUE);
}

std::string QorfxCgFXBackend::SetEnvironment(const QorfxView& view, unsigned int skyTexture)
{
    if (m_effect.GetEnvironmentState() == QorEnvironmentNone)
        return "";
    if (view.environment.empty()) {
        if (!m_effect.updateEnvModel(QorEnvironmentCube))
            return "the effect has no cube environment (\"SEnvCUBE\")";
        Set(m_effect.GetEnvironmentMember(0), 0.35f, 0.35f, 0.35f);
        for (int member : {1, 2})
            if (const CGparameter sampler = m_effect.GetEnvironmentMember(member))
                cgGLSetTextureParameter(sampler, skyTexture);
        return "";
    }
    m_effect.updateEnvModel(QorEnvironmentColor);
    Set(m_effect.GetEnvironmentMember(0), view.environment[0], view.environment[1], view.environment[2]);
    return "";
}

void QorfxCgFXBackend::PushValues()
{
    m_effect.UploadCurrentParameters(false);
}

bool QorfxCgFXBackend::Validate()
{
    m_effect.ForceCompile();
    return m_effect.ValidateTechnique() != 0;
}

void QorfxCgFXBackend::SetMatrices(const QorfxView& view)
{
    const Qor4x4Matrix worldView = view.view * view.world;
    const Qor4x4Matrix worldInverse = QorfxInverse(view.world);
    const Qor4x4Matrix viewInverse = QorfxInverse(view.view);
    const Qor4x4Matrix worldViewInverse = QorfxInverse(worldView);
    const std::pair<QorEffectMatrix, Qor4x4Matrix> matrices[] = {
        {QorEffectWorld, view.world},
        {QorEffectWorldInverse, worldInverse},
        {QorEffectWorldInverseTranspose, worldInverse.Transposed()},
        {QorEffectView, view.view},
        {QorEffectViewInverse, viewInverse},
        {QorEffectViewInverseTranspose, viewInverse.Transposed()},
        {QorEffectProjection, view.projection},
        {QorEffectWorldView, worldView},
        {QorEffectWorldViewInverse, worldViewInverse},
        {QorEffectWorldViewInverseTranspose, worldViewInverse.Transposed()},
        {QorEffectWorldViewProjection, view.projection * worldView},
    };
    for (const auto& [which, matrix] : matrices)
        if (const CGparameter parameter = m_effect.GetMatrixParameter(which))
            cgSetMatrixParameterfr(parameter, matrix.Data());
}

// Places each light around the object: a point light up right, a spot from above, a
// directional light from the upper left, rotating further lights around the view axis.
void QorfxCgFXBackend::SetLights()
{
    for (int slot = 0; slot < m_effect.GetLightCount(); ++slot) {
        const QorShaderLight& light = m_effect.GetLight(slot);
        const float angle = slot * 2.4f;
        const float px = 2.5f * std::cos(angle + 0.6f), py = 2.5f * std::sin(angle + 0.6f) + 1.0f, pz = 3.0f;
        const float length = std::sqrt(px * px + py * py + pz * pz);
        Set(light.position, px, py, pz);
        Set(light.direction, -px / length, -py / length, -pz / length, 0);
        const float intensity = light.lightType == QorLightDirectional ? 0.6f : 0.9f;
        Set(light.color, intensity, intensity, intensity);
        Set(light.specularColor, 0.8f, 0.8f, 0.8f);
        Set(light.ambient, 0, 0, 0);
        Set(light.axialFalloffConstant, 1);
        Set(light.radialInnerCone, 0.97f);
        Set(light.radialOuterCone, 0.90f);
        Set(light.radialFalloffExponent, 1);
    }
}

void QorfxCgFXBackend::Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh)
{
    SetLights();
    SetMatrices(view);
    PushValues();
    for (int index = 1; index < m_shader.GetNbParameters(); ++index)
        if (m_shader.GetParameterType(index) == QorValueTexture)
            cgSetSamplerState(m_effect.GetUserParameter(index));
    for (CGpass pass = cgGetFirstPass(m_effect.GetCurrentTechnique()); pass; pass = cgGetNextPass(pass)) {
        cgSetPassState(pass);
        QorfxDrawMesh(mesh);
        cgResetPassState(pass);
    }
}

#include "QorfxCgFXBackend.h"

#include "QorfxSceneFeed.h"

#include "QorVisShaders/QorIShader.h"
#include "QorVisShaderCGFX/QorCgTechniqueValidation.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <Cg/cgGL.h>
#include <GL/gl.h>

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

void Set(CGparameter parameter, const float (&xyz)[3], float w = 1)
{
    Set(parameter, xyz[0], xyz[1], xyz[2], w);
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
        entry["valid"] = validate ? json(QorCgValidateTechnique(technique)) : json(nullptr);
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
    for (int which = 0; which < QorFeedCount; ++which)
        AddBound(semantics, m_effect.GetFeedParameter(static_cast<QorFeed>(which)));

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
    const bool cube = view.environment.empty();
    if (!m_effect.updateEnvModel(cube ? QorEnvironmentCube : QorEnvironmentColor) && cube)
        return "the effect has no cube environment (\"SEnvCUBE\")";
    const auto ambient = QorfxEnvironmentAmbient(view);
    Set(m_effect.GetEnvironmentMember(0), ambient[0], ambient[1], ambient[2]);
    if (cube)
        for (int member : {1, 2})
            if (const CGparameter sampler = m_effect.GetEnvironmentMember(member))
                cgGLSetTextureParameter(sampler, skyTexture);
    return "";
}

bool QorfxCgFXBackend::Validate()
{
    m_effect.ForceCompile();
    return m_effect.ValidateTechnique() != 0;
}

void QorfxCgFXBackend::SetMatrices(const QorfxView& view)
{
    static const std::pair<QorFeed, QorfxMatrix> kFed[] = {
        {QorFeedWorld, QorfxWorld},
        {QorFeedWorldInverse, QorfxWorldInverse},
        {QorFeedWorldInverseTranspose, QorfxWorldInverseTranspose},
        {QorFeedView, QorfxViewMatrix},
        {QorFeedViewInverse, QorfxViewInverse},
        {QorFeedViewInverseTranspose, QorfxViewInverseTranspose},
        {QorFeedProjection, QorfxProjection},
        {QorFeedWorldView, QorfxWorldView},
        {QorFeedWorldViewInverse, QorfxWorldViewInverse},
        {QorFeedWorldViewInverseTranspose, QorfxWorldViewInverseTranspose},
        {QorFeedWorldViewProjection, QorfxWorldViewProjection},
    };
    const auto matrices = QorfxMatrices(view);
    for (const auto& [which, matrix] : kFed)
        if (const CGparameter parameter = m_effect.GetFeedParameter(which))
            cgSetMatrixParameterfr(parameter, matrices[matrix].Data());
}

void QorfxCgFXBackend::SetLights()
{
    for (int slot = 0; slot < m_effect.GetLightCount(); ++slot) {
        const QorShaderLight& light = m_effect.GetLight(slot);
        const QorfxLight placed = QorfxPlaceLight(slot, light.lightType);
        Set(light.position, placed.position);
        Set(light.direction, placed.direction, 0);
        Set(light.color, placed.color);
        Set(light.specularColor, placed.specularColor);
        Set(light.ambient, 0, 0, 0);
        Set(light.axialFalloffConstant, placed.falloffConstant);
        Set(light.radialInnerCone, placed.innerCone);
        Set(light.radialOuterCone, placed.outerCone);
        Set(light.radialFalloffExponent, placed.coneExponent);
    }
}

void QorfxCgFXBackend::Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh)
{
    SetLights();
    SetMatrices(view);
    m_effect.UploadCurrentParameters(false);
    for (int index = 1; index < m_shader.GetNbParameters(); ++index)
        if (m_shader.GetParameterType(index) == QorValueTexture)
            cgSetSamplerState(m_effect.GetUserParameter(index));
    for (CGpass pass = cgGetFirstPass(m_effect.GetCurrentTechnique()); pass; pass = cgGetNextPass(pass)) {
        cgSetPassState(pass);
        QorfxDrawMesh(mesh);
        cgResetPassState(pass);
    }
}

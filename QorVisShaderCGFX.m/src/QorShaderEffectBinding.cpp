// Semantic binding: the parameters the renderer feeds are bound to the effect's handles
// by semantic, the rest become the user values of the default parameter set.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorMath/QorSaturatingInt.h"
#include "QorCgTypes.h"
#include "QorShaderInterface.h"
#include "QorShaderParameters.h"

#include <Cg/cgGL.h>

#include <cstring>

namespace {

// The member of a light record a light semantic feeds.
CGparameter QorShaderLight::*LightMember(QorLightFeed feed)
{
    switch (feed) {
    case QorLightFeed::Color:
        return &QorShaderLight::color;
    case QorLightFeed::SpecularColor:
        return &QorShaderLight::specularColor;
    case QorLightFeed::Position:
        return &QorShaderLight::position;
    case QorLightFeed::Direction:
        return &QorShaderLight::direction;
    default:
        return &QorShaderLight::intensityAndSpot;
    }
}

// The light slot a parameter's name selects: its last character as a digit, 0 for a
// non-digit; 8 and 9 select no slot.
int LightSlotOf(CGparameter parameter)
{
    const char* name = cgGetParameterName(parameter);
    const size_t length = name ? std::strlen(name) : 0;
    const char last = length ? name[length - 1] : '\0';
    return last >= '0' && last <= '9' ? last - '0' : 0;
}

const char* StringAnnotation(CGparameter parameter, const char* name)
{
    const CGannotation annotation = cgGetNamedParameterAnnotation(parameter, name);
    return annotation ? cgGetStringAnnotationValue(annotation) : nullptr;
}

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderEffect";

} // namespace

void QorShaderEffect::bindSemantics()
{
    bool walking = true;
    for (CGparameter parameter = cgGetFirstEffectParameter(m_effect); parameter && walking;
         parameter = cgGetNextParameter(parameter)) {
        const QorSemantic* bound = QorBoundSemantic(QorFxCgFX, cgGetParameterSemantic(parameter));
        if (!bound)
            continue;
        if (bound->light == QorLightFeed::None)
            BindFeed(bound->feed, parameter);
        else
            // The first light parameter with a type annotation ends the walk: later
            // parameters are not bound by semantic.
            walking = !bindLightParameter(parameter, bound->light);
    }
    const CGparameter needTangents = cgGetNamedEffectParameter(m_effect, "NeedTandB");
    float value = 0;
    if (needTangents)
        cgGLGetParameter1f(needTangents, &value);
    m_needTanBin = QorSaturatingInt(value);
}

bool QorShaderEffect::bindLightParameter(CGparameter parameter, QorLightFeed member)
{
    const int slot = LightSlotOf(parameter);
    if (slot >= static_cast<int>(QorMaxLights))
        return false;
    if (m_lightCount < slot + 1)
        m_lightCount = slot + 1;
    QorShaderLight& light = m_lights[slot];
    light.*LightMember(member) = parameter;
    CGannotation typeAnnotation = cgGetNamedParameterAnnotation(parameter, "type");
    if (!typeAnnotation)
        typeAnnotation = cgGetNamedParameterAnnotation(parameter, "Type");
    if (!typeAnnotation)
        return false;
    const char* type = cgGetStringAnnotationValue(typeAnnotation);
    if (type && std::strcmp(type, "LIGHTDIR") == 0)
        light.lightType = QorLightDirectional;
    else if (type && std::strcmp(type, "LIGHTSPOT") == 0)
        light.lightType = QorLightSpot;
    else if (type && std::strcmp(type, "LIGHTPOS") == 0)
        light.lightType = QorLightPoint;
    return true;
}

void QorShaderEffect::buildParameterSet(QorShaderParameters& parameters)
{
    // Cleared once for the whole walk: a shorter vector read after a longer one keeps
    // the longer one's trailing components.
    float components[4] = {0, 0, 0, 0};
    int type = 0;
    for (CGparameter parameter = cgGetFirstEffectParameter(m_effect); parameter;
         parameter = cgGetNextParameter(parameter)) {
        if (checkParameterVisibility(parameter, &type)) {
            if (type == CG_FLOAT || type == CG_INT || type == CG_BOOL) {
                float value = 0;
                cgGLGetParameter1f(parameter, &value);
                parameters.AddFloatParameter(parameter, value);
            } else if (type >= CG_FLOAT2 && type <= CG_FLOAT4) {
                if (type == CG_FLOAT2)
                    cgGLGetParameter2f(parameter, components);
                else if (type == CG_FLOAT3)
                    cgGLGetParameter3f(parameter, components);
                else
                    cgGLGetParameter4f(parameter, components);
                parameters.AddColorParameter(parameter, components, type - CG_FLOAT + 1);
            } else if (QorIsCgTextureType(type)) {
                parameters.AddTextureParameter(parameter, QorShaderParameters::GetTextureFileAnnotation(parameter));
            }
            continue;
        }
        const char* name = cgGetParameterName(parameter);
        if (name && std::strcmp(name, "environment") == 0) {
            bindEnvironment(parameter, parameters);
            continue;
        }
        const char* userType = StringAnnotation(parameter, "UserType");
        const char* dynamicType = StringAnnotation(parameter, "DynamicType");
        if (!userType || !dynamicType)
            continue;
        const CGtype base = cgGetNamedUserType(m_effect, userType);
        if (cgIsInterfaceType(base)) {
            AddInterface(parameter, m_context.Get(), m_effect, base);
            ConnectTypeToInterface(name, dynamicType, &parameters);
        }
    }
}

void QorShaderEffect::bindEnvironment(CGparameter parameter, QorShaderParameters& parameters)
{
    const CGtype environment = cgGetNamedUserType(m_effect, "Environment");
    QorShaderInterface* created = AddInterface(parameter, m_context.Get(), m_effect, environment);
    if (created && ConnectTypeToInterface("environment", "SEnvColor", &parameters)) {
        m_environmentState = QorEnvironmentColor;
        m_environmentInterface = created;
        m_environmentMembers[0] = cgGetNamedStructParameter(created->GetInstance(), "EnvAmbient");
        return;
    }
    CheckFailure__("Variable Environment should be used with the type Environment and with an existing "
                   "implementation - Check your shader code",
                   kSource, 1082);
}

void QorShaderEffect::SetMatrixParam(QorMatrixParam which, const Qor4x4Matrix& matrix)
{
    if (which != QorMatrixViewInverseTranspose && which != QorMatrixShadow)
        return;
    const CGparameter shadow =
        which == QorMatrixShadow && m_effect ? cgGetNamedEffectParameter(m_effect, "shadowMatrix") : nullptr;
    // Both cases feed the VIEW inverse transpose parameter, row-major.
    if (const CGparameter viewInverseTranspose = GetFeedParameter(QorFeedViewInverseTranspose))
        cgSetMatrixParameterfr(viewInverseTranspose, matrix.Data());
    if (shadow)
        cgGLSetMatrixParameterfc(shadow, matrix.Data());
}

// The light and environment model: the light configuration code builds the "lights"
// array from "SLightPoint", "SLightSpot" and "SLightDir" instances of the "Light"
// interface; the environment switches "environment" between "SEnvColor" and "SEnvCUBE".
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorShaderInterface.h"

namespace {

struct LightMember
{
    const char* name;
    CGparameter QorShaderLight::*member;
};

const LightMember kLightMembers[] = {
    {"LightPos", &QorShaderLight::position},
    {"LightDir", &QorShaderLight::direction},
    {"LightUp", &QorShaderLight::up},
    {"LightRight", &QorShaderLight::right},
    {"LightAmbient", &QorShaderLight::ambient},
    {"LightDiffuse", &QorShaderLight::diffuse},
    {"LightSpecular", &QorShaderLight::specular},
    {"LightAxialFalloffStart", &QorShaderLight::axialFalloffStart},
    {"LightAxialFalloffEnd", &QorShaderLight::axialFalloffEnd},
    {"LightAxialFalloffConstant", &QorShaderLight::axialFalloffConstant},
    {"LightAxialFalloffLinear", &QorShaderLight::axialFalloffLinear},
    {"LightAxialFalloffQuadratic", &QorShaderLight::axialFalloffQuadratic},
    {"LightRadialInnerCone", &QorShaderLight::radialInnerCone},
    {"LightRadialOuterCone", &QorShaderLight::radialOuterCone},
    {"LightRadialFalloffExponent", &QorShaderLight::radialFalloffExponent},
    {"LightAreaType", &QorShaderLight::areaType},
    {"LightAreaStatus", &QorShaderLight::areaStatus},
    {"LightAreaGeometry", &QorShaderLight::areaGeometry},
    {"LightColor", &QorShaderLight::color},
    {"LightColorSpec", &QorShaderLight::specularColor},
    {"lightI_SCos_SExp", &QorShaderLight::intensityAndSpot},
    {"LightCastShadowFlag", &QorShaderLight::castsShadow},
    {"LightShadowMap", &QorShaderLight::shadowMap},
    {"LightShadowMapMatrix", &QorShaderLight::shadowMapMatrix},
};

const char* ImplementationOf(unsigned int kind)
{
    switch (kind) {
    case QorLightSpot:
        return "SLightSpot";
    case QorLightDirectional:
        return "SLightDir";
    default:
        return "SLightPoint";
    }
}

} // namespace

bool QorShaderEffect::updateLightModel(unsigned int code)
{
    if (code == m_lightModel)
        return true;
    m_lightModel = code;
    return resolveInterfacesAndArrays();
}

void QorShaderEffect::destroyLightInstances()
{
    if (m_lightsArray) {
        cgDestroyParameter(m_lightsArray);
        m_lightsArray = nullptr;
    }
    for (int slot = 0; slot < m_lightCount; ++slot)
        if (m_lights[slot].instance) {
            cgDestroyParameter(m_lights[slot].instance);
            m_lights[slot] = QorShaderLight{};
        }
}

void QorShaderEffect::buildLightSlot(int slot, unsigned int kind)
{
    QorShaderLight& light = m_lights[slot];
    light.lightType = kind;
    if (!m_effect)
        return; // no effect, no user types to build from
    light.structureType = cgGetNamedUserType(m_effect, ImplementationOf(kind));
    light.instance = cgCreateParameter(m_context.Get(), light.structureType);
    if (!light.instance)
        return;
    for (const LightMember& member : kLightMembers)
        light.*member.member = cgGetNamedStructParameter(light.instance, member.name);
}

bool QorShaderEffect::resolveInterfacesAndArrays()
{
    destroyLightInstances();
    m_lightCount = 0;
    unsigned int code = m_lightModel;
    for (int slot = 0; slot < static_cast<int>(QorMaxLights); ++slot, code >>= 2) {
        const unsigned int kind = code & 3u;
        if (kind == QorLightEnd)
            break;
        buildLightSlot(slot, kind);
        ++m_lightCount;
    }
    if (!m_effect)
        return false;
    const CGtype lightType = cgGetNamedUserType(m_effect, "Light");
    if (lightType == CG_UNKNOWN_TYPE)
        return false;
    m_lightsArray = cgCreateParameterArray(m_context.Get(), lightType, m_lightCount);
    for (int slot = 0; slot < m_lightCount; ++slot)
        if (m_lights[slot].instance)
            cgConnectParameter(m_lights[slot].instance, cgGetArrayParameter(m_lightsArray, slot));
    const CGparameter lights = cgGetNamedEffectParameter(m_effect, "lights");
    if (!lights)
        return false;
    cgConnectParameter(m_lightsArray, lights);
    return true;
}

int QorShaderEffect::updateEnvModel(EnvironmentState state)
{
    if (m_environmentState == QorEnvironmentNone)
        return 0;
    if (state == m_environmentState)
        return 1;
    m_environmentState = state;
    const bool color = state == QorEnvironmentColor;
    return ConnectTypeToInterface("environment", color ? "SEnvColor" : "SEnvCUBE", GetIShaderParameters());
}

void QorShaderEffect::refreshEnvironmentMembers()
{
    // The members of the instance connected now: a new connection (a shader object's
    // GenerateParameters makes one) leaves the former instance's members drawing nothing.
    const CGparameter instance = m_environmentInterface ? m_environmentInterface->GetInstance() : nullptr;
    if (!instance)
        return;
    m_environmentMembers[0] = cgGetNamedStructParameter(instance, "EnvAmbient");
    if (const CGparameter diffuse = cgGetNamedStructParameter(instance, "EnvDiffuse"))
        m_environmentMembers[1] = diffuse;
    if (const CGparameter specular = cgGetNamedStructParameter(instance, "EnvSpecular"))
        m_environmentMembers[2] = specular;
}

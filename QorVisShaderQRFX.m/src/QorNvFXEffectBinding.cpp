// Binding a loaded GLSL effect's uniforms: the light and clip-plane uniforms by name, the
// uniforms the renderer feeds by semantic, and the rest, when the user may edit them,
// into the default parameter set.
#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include "QorVisShaderShared/QorHiddenParameters.h"
#include "QorVisShaderShared/QorSemanticTable.h"

#include <nvFX/IAnnotation.h>
#include <nvFX/IContainer.h>
#include <nvFX/IUniform.h>
#include <nvFX/IUniformEx.h>
#include <nvFX/nvFX.h>

#include <cstdio>
#include <cstring>
#include <new>

namespace {

// In the order they are looked up; "lightData_lightData_" is how effects name them.
const char* const kNamedUniforms[QorNvFXNamedUniformCount] = {
    "lightData_LightPos",
    "lightData_LightDir",
    "lightData_LightColor",
    "lightData_LightColorSpec",
    "lightData_LightAmbient",
    "lightData_lightData_LightAxialFalloffStart",
    "lightData_lightData_LightAxialFalloffEnd",
    "lightData_lightData_LightAxialFalloffConstant",
    "lightData_lightData_LightAxialFalloffLinear",
    "lightData_lightData_LightAxialFalloffQuadratic",
    "lightData_lightData_LightRadialInnerCone",
    "lightData_lightData_LightRadialOuterCone",
    "lightData_lightData_LightRadialFalloffExponent",
    "lightData_lightData_LightAreaType",
    "lightData_lightData_LightAreaStatus",
    "lightData_lightData_LightAreaGeometry",
    "numLights",
    "clipPlanes_equations",
    "clipPlanes_count",
};

// Adds the user parameter `uniform` of nvFX type `type` with its current value.
void AddUserParameter(QorNvFXShaderParameters& parameters, nvFX::IUniform* uniform, int type)
{
    float components[4] = {0, 0, 0, 0};
    switch (type) {
    case nvFX::IUniform::TInt: // refused by the test above; listed as the dispatch names it
    case nvFX::IUniform::TFloat:
        uniform->getValuefv(components, 1);
        parameters.AddFloat(uniform, components[0]);
        break;
    case nvFX::IUniform::TVec2:
    case nvFX::IUniform::TVec3:
    case nvFX::IUniform::TVec4: {
        const int count = type - nvFX::IUniform::TFloat + 1;
        uniform->getValuefv(components, count);
        parameters.AddColor(uniform, components, count);
        break;
    }
    case nvFX::IUniform::TSampler2D:
    case nvFX::IUniform::TSampler2DRect:
    case nvFX::IUniform::TSamplerCube: {
        nvFX::IAnnotation* annotations = uniform->annotations();
        const char* file = annotations ? annotations->getAnnotationString("defaultFile") : nullptr;
        parameters.AddString(uniform, file ? file : "");
        break;
    }
    default:
        break;
    }
}

} // namespace

void QorNvFXEffect::lookUpNamedUniforms()
{
    m_loadWarnings.clear();
    for (int which = 0; which < QorNvFXNamedUniformCount; ++which) {
        const char* name = kNamedUniforms[which];
        nvFX::IUniform* uniform = m_container->findUniform(name);
        if (!uniform)
            uniform = m_container->findBufferUniform(name);
        m_named[which] = uniform;
        warn("Warning : %s might be overidden during runtime", name);
        if (uniform && !uniform->isUsedBy(nvFX::IUniform::TargetAny))
            warn("'''Note''' : %s not connected to any target (shader)", name);
    }
}

void QorNvFXEffect::warn(const char* format, const char* name)
{
    char line[256];
    std::snprintf(line, sizeof line, format, name);
    std::printf("%s\n", line);
    m_loadWarnings.emplace_back(line);
}

void QorNvFXEffect::bindUniforms(QorNvFXShaderParameters& parameters)
{
    for (int index = 0;; ++index) {
        nvFX::IUniform* uniform = m_container->findUniform(index);
        if (!uniform)
            break;
        // The first row of the table stores the uniform; a later uniform of the same
        // semantic replaces the earlier one. A bound uniform is not a user parameter.
        if (const QorSemantic* bound = QorBoundSemantic(QorFxQRFX, uniform->getSemantic())) {
            BindFeed(bound->feed, uniform);
            continue;
        }
        int type = 0;
        if (isUserParameter(uniform, &type))
            AddUserParameter(parameters, uniform, type);
    }
}

bool QorNvFXEffect::isUserParameter(nvFX::IUniform* uniform, int* type) const
{
    if (!uniform)
        return false;
    if (QorHiddenParameters::IsHidden(QorFxQRFX, uniform->getSemantic(), uniform->getName()))
        return false;
    *type = uniform->getType();
    return (*type >= nvFX::IUniform::TFloat && *type <= nvFX::IUniform::TVec4) ||
           *type == nvFX::IUniform::TSampler2D || *type == nvFX::IUniform::TSampler2DRect ||
           *type == nvFX::IUniform::TSamplerCube;
}

namespace {

// How a uniform's type reads in a sentence, for the types no user edits.
std::string KindOf(int type)
{
    using U = nvFX::IUniform;
    if (type >= U::TInt && type <= U::TInt4)
        return "an int uniform: GLSL int and bool uniforms are not user parameters";
    if (type >= U::TBool && type <= U::TBool4)
        return "a bool uniform: GLSL int and bool uniforms are not user parameters";
    if (type >= U::TUInt && type <= U::TUInt4)
        return "an unsigned int uniform: GLSL int and bool uniforms are not user parameters";
    if (type >= U::TDouble && type <= U::TDVec4)
        return "a double uniform, which no user edits";
    if ((type >= U::TMat2 && type <= U::TMat4) || (type >= U::TMat2x3 && type <= U::TDMat4x3))
        return "a matrix uniform, which no user edits";
    if (type == U::TSampler1D || type == U::TSampler3D)
        return "a 1D or 3D sampler, which takes no texture file";
    if (type >= U::TSampler1DArray)
        return "a sampler of a kind that takes no texture file";
    return "a uniform of a type no user edits";
}

} // namespace

std::string QorNvFXEffect::WhyNotUserParameter(const char* name) const
{
    nvFX::IUniform* uniform = m_container && name ? m_container->findUniform(name) : nullptr;
    if (!uniform && m_container && name)
        uniform = m_container->findBufferUniform(name);
    if (!uniform)
        return "";
    const char* semantic = uniform->getSemantic();
    if (QorBoundSemantic(QorFxQRFX, semantic) || QorHidesSemantic(QorFxQRFX, semantic))
        return "the GLSL effect feeds it from the renderer (semantic \"" + std::string(semantic) + "\")";
    if (QorHiddenParameters::IsHiddenName(name))
        return "the GLSL effect keeps a uniform of this name from the user's values";
    const nvFX::IUniformEx* extended = uniform->getExInterface();
    if (extended && extended->getBufferName())
        return "the GLSL effect declares it in the constant buffer \"" + std::string(extended->getBufferName()) +
               "\", whose members are not user parameters";
    return "the GLSL effect declares it as " + KindOf(uniform->getType());
}

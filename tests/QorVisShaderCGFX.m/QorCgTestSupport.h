/// @file
/// Helpers of the CgFX parameter tests: move-only holders of Cg objects, an effect with a
/// parameter of every kind a parameter set takes (reflection and defaults need no GL
/// context), and a guard that leaves the process-wide texture registry and image lists empty.
#pragma once

#include "QorVisShaderCGFX/QorCgHolder.h"
#include "QorRegistryGuard.h"
#include "QorShaderParameters.h"

#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"


#include <Cg/cg.h>

#include <utility>

/// An effect with floats, colours of 4, 2 and 3 components, two samplers (one annotated
/// "wood.png") and an interface implemented by a structure (whose members cannot have
/// initial values in Cg) with members of kinds a set does not take (int, structure).
/// The context is declared first so it is destroyed last.
struct QorCgTestEffect
{
    QorCgContextHolder context{cgCreateContext()};
    QorCgEffectHolder effect{cgCreateEffect(context.Get(), R"(
interface Light { float3 illuminate(float3 p); };
struct Falloff { float start; };
struct PointLight : Light {
    float3 color;
    float intensity;
    float2 uv;
    float4 rgba;
    int count;
    Falloff falloff;
    sampler2D tex <string File = "member.png";>;
    float3 illuminate(float3 p) { return color * intensity; }
};
PointLight declaredLight;
float gloss = 0.5;
float4 tint = {0.1, 0.2, 0.3, 0.4};
float2 scale = {2, 3};
float3 rgb = {0.5, 0.6, 0.7};
sampler2D diffuse <string File = "wood.png";>;
sampler2D bump;
)", nullptr)};

    CGparameter Parameter(const char* name) const { return cgGetNamedEffectParameter(effect.Get(), name); }

    /// As the effect fills its default set: gloss 1, tint 2, scale 3, rgb 4.
    void AddNumbers(QorShaderParameters& set) const
    {
        const float tint[4] = {0.1f, 0.2f, 0.3f, 0.4f};
        const float scale[4] = {2, 3, 0, 0};
        const float rgb[4] = {0.5f, 0.6f, 0.7f, 0};
        set.AddFloatParameter(Parameter("gloss"), 0.5f);
        set.AddColorParameter(Parameter("tint"), tint, 4);
        set.AddColorParameter(Parameter("scale"), scale, 2);
        set.AddColorParameter(Parameter("rgb"), rgb, 3);
    }
    /// The numbers, then diffuse 5 ("wood.png") and bump 6 (no file).
    void Fill(QorShaderParameters& set) const
    {
        AddNumbers(set);
        set.AddTextureParameter(Parameter("diffuse"), "wood.png");
        set.AddTextureParameter(Parameter("bump"), nullptr);
    }
    /// A record of a new PointLight instance, as the effect makes when it connects a type.
    QorShaderInterfaceRecord* InstanceRecord() const
    {
        return QorShaderParameters::BuildInterfaceRecord(
            cgCreateParameter(context.Get(), cgGetNamedUserType(effect.Get(), "PointLight")));
    }
};


/// The registry's count of the texture of that name, 0 when it is not registered.
inline unsigned QorTextureCount(const char* name)
{
    const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(name);
    return texture ? texture->GetRefCount() : 0;
}

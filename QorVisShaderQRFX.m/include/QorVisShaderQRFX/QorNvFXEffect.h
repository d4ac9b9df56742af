/// @file
/// The GLSL (QRFX) effect: the material model's effect (QorMaterialEffect) over the nvFX
/// runtime. One ".glslfx" source is loaded once into an nvFX container and shared by
/// every shader object that names it; effects are made through AddShaderEffect, which
/// keeps a process-wide registry by name (apart from the CgFX one). The back end's own:
/// the container, the uniforms bound by semantic and by name, techniques, and pushing
/// values into uniforms. Loading needs no GL context; drawing needs the current
/// technique's passes set up in one. Use from the rendering thread.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorMaterialEffect.h"

#include "QorSystem/QorString.h"

#include <string>
#include <vector>

class QorNvFXShaderParameters;

namespace nvFX {
class IContainer;
class ITechnique;
class IUniform;
} // namespace nvFX

/// Light and clip-plane uniforms, found by their names ("lightData_LightPos", ...,
/// "numLights", "clipPlanes_equations", "clipPlanes_count"), in the order looked up.
enum QorNvFXNamedUniform
{
    QorNvFXLightPosition,
    QorNvFXLightDirection,
    QorNvFXLightColor,
    QorNvFXLightSpecularColor,
    QorNvFXLightAmbient,
    QorNvFXLightAxialFalloffStart,
    QorNvFXLightAxialFalloffEnd,
    QorNvFXLightAxialFalloffConstant,
    QorNvFXLightAxialFalloffLinear,
    QorNvFXLightAxialFalloffQuadratic,
    QorNvFXLightRadialInnerCone,
    QorNvFXLightRadialOuterCone,
    QorNvFXLightRadialFalloffExponent,
    QorNvFXLightAreaType,
    QorNvFXLightAreaStatus,
    QorNvFXLightAreaGeometry,
    QorNvFXLightCount,
    QorNvFXClipPlaneEquations,
    QorNvFXClipPlaneCount,
    QorNvFXNamedUniformCount
};

class QOR_VISSHADERS_API QorNvFXEffect final : public QorMaterialEffect
{
public:
    /// Returns the effect to its state before any load. The container and parameter set
    /// of a load are kept until the effect goes: the values of shader objects copied from
    /// them still mirror their uniforms.
    void Init() override;
    /// Writes 0, or -1 when the effect has no technique 0. When it has one but none is
    /// current, it writes -1 into the integer after `index`: callers pass room for two.
    void getTechnique(int* index) override;
    void setTechnique(int index) override;
    void setTechniqueByName(const char* name) override;
    int Generated() override { return m_container != nullptr; }
    /// Stores the light mask and counts its lights (leading non-zero two-bit groups, at
    /// most 8); always true.
    bool updateLightModel(unsigned int mask) override;
    int NeedTanBin() override { return 1; }
    /// 1: a GLSL effect's passes validate when set up (GetCurrentTechnique).
    int ValidateTechnique() override { return 1; }
    void SetMatrixParam(QorMatrixParam, const Qor4x4Matrix&) override {}
    int ValidateShaderEffect() override { return 0; }
    int ForceCompile() override { return 0; }
    /// GLSL effects have no interfaces.
    int ConnectTypeToInterface(const char*, const char*, QorIShaderParameters*) override { return 0; }
    const char* GetBaseType(const char*) const override { return nullptr; }
    const char* GetDynamicType(const char*) const override { return nullptr; }
    int GetNumInterface(int&) const override { return 0; }
    int updateEnvModel(EnvironmentState) override { return 0; }
    /// Texture values bind their registry texture on the unit their sampler reads.
    void UploadCurrentParameters(bool onlyIfModified) override;
    ~QorNvFXEffect() override;

    /// The effect registered under `name` with one more reference, or a new one (count 1)
    /// registered under it. A null or empty name gives a new, unregistered effect.
    static QorNvFXEffect* AddShaderEffect(const char* name);

    /// Load.
    QorMaterialParameters* Compile() override;
    /// True once a load has bound its uniforms: shader objects copy the default set.
    bool HasDefaults() const override { return m_compiled != 0 && GetParameters(); }

    /// Finds the file (when a file name is set), reads it, loads the buffer into a new
    /// nvFX container with the include callback, makes technique 0 current and binds the
    /// uniforms into a new default parameter set, which it returns (owned by the effect).
    /// Null when the file is found nowhere, the container cannot be made or the load
    /// fails ("Error>> failed to load the effect\n" on standard output).
    QorNvFXShaderParameters* Load();

    // What binding found, for the renderer's drawing code.
    nvFX::IContainer* GetContainer() const { return m_container; }
    nvFX::ITechnique* GetCurrentTechnique() const { return m_technique; }
    /// The uniform bound to `feed` (see QorSemanticTable); null when none is.
    nvFX::IUniform* GetFeedUniform(QorFeed feed) const { return static_cast<nvFX::IUniform*>(GetFeed(feed)); }
    nvFX::IUniform* GetNamedUniform(QorNvFXNamedUniform which) const { return m_named[which]; }
    unsigned int GetLightModel() const { return m_lightMask; }
    /// The warnings and notes the last load printed about the light and clip-plane
    /// uniforms, one line each, without their newline.
    const std::vector<QorString>& GetLoadWarnings() const { return m_loadWarnings; }
    int GetLightCount() const { return m_lightCount; }
    /// Why the uniform `name` of the loaded effect is none of its user parameters: the
    /// renderer feeds it by semantic, its name keeps it from the user, or its type is none
    /// a user edits. Empty when the effect declares no uniform of that name.
    std::string WhyNotUserParameter(const char* name) const;

private:
    QorNvFXEffect();

    void Unregister() override;
    /// The lights of the mask: its leading non-zero two-bit groups, at most 8.
    void countLights();
    void bindUniforms(QorNvFXShaderParameters& parameters);
    void lookUpNamedUniforms();
    /// Prints a load message about the uniform `name` and keeps it (GetLoadWarnings).
    void warn(const char* format, const char* name);
    /// True when the uniform becomes a user parameter; its type code is written to `type`
    /// whenever the test reaches the type.
    bool isUserParameter(nvFX::IUniform* uniform, int* type) const;
    /// Keeps the container until the effect goes and clears what came from it.
    void retireContainer();

    unsigned int m_lightMask = 0;
    unsigned char m_compiled = 0;
    nvFX::IContainer* m_container = nullptr;  // owned
    nvFX::ITechnique* m_technique = nullptr;  // borrowed from m_container
    nvFX::IUniform* m_named[QorNvFXNamedUniformCount] = {}; // borrowed from m_container
    int m_lightCount = 0;
    // Containers of earlier loads: the values of shader objects copied from their sets
    // mirror their uniforms, so they go with the effect, not at a reload or Init.
    std::vector<nvFX::IContainer*> m_retiredContainers;
    std::vector<QorString> m_loadWarnings;
};

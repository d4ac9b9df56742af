/// @file
/// The CgFX effect: the material model's effect (QorMaterialEffect) over the Cg runtime.
/// One effect source (a file or an in-memory text) is compiled once and shared by every
/// shader object that names it; effects are made only through AddShaderEffect, which
/// keeps a process-wide registry by name (apart from the QRFX one). The back end's own:
/// the Cg context and effect, the parameters bound by semantic (matrices, lights,
/// material, environment), Cg interfaces, techniques, and pushing values with the Cg
/// setters. Use from the rendering thread.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorMaterialEffect.h"

#include "QorSystem/QorString.h"
#include "QorVisShaderCGFX/QorCgHolder.h"

#include <Cg/cg.h>

#include <map>
#include <vector>

class QorShaderInterface;
class QorShaderParameters;

/// The Cg handles of one light slot: the members of its structure instance, plus what
/// semantic binding stored there.
struct QorShaderLight
{
    CGparameter position, direction, up, right, ambient, diffuse, specular;
    CGparameter axialFalloffStart, axialFalloffEnd, axialFalloffConstant, axialFalloffLinear, axialFalloffQuadratic;
    CGparameter radialInnerCone, radialOuterCone, radialFalloffExponent;
    CGparameter areaType, areaStatus, areaGeometry;
    CGparameter color, specularColor, intensityAndSpot, castsShadow, shadowMap, shadowMapMatrix;
    unsigned int lightType;   ///< 1 point, 2 spot, 3 directional
    CGtype structureType;     ///< the user type of the implementation
    CGparameter instance;     ///< created in the effect's context; owned by the effect
};

class QOR_VISSHADERS_API QorShaderEffect final : public QorMaterialEffect
{
public:
    void Init() override;
    void getTechnique(int* index) override;
    void setTechnique(int index) override;
    void setTechniqueByName(const char* name) override;
    /// Non-zero when the Cg effect exists (not the bound flag).
    int Generated() override { return m_effect != nullptr; }
    bool updateLightModel(unsigned int code) override;
    /// Also lifts the confinement of the previous text's includes.
    void setBuffer(const char* text) override;
    int NeedTanBin() override { return m_needTanBin; }
    int ValidateTechnique() override;
    void SetMatrixParam(QorMatrixParam which, const Qor4x4Matrix& matrix) override;
    int ValidateShaderEffect() override;
    int ForceCompile() override;
    int ConnectTypeToInterface(const char* name, const char* type, QorIShaderParameters* parameters) override;
    const char* GetBaseType(const char* name) const override;
    const char* GetDynamicType(const char* name) const override;
    int GetNumInterface(int& count) const override;
    int updateEnvModel(EnvironmentState state) override;
    /// Texture values bind the GL texture their registry record names with
    /// cgGLSetTextureParameter (nothing while its ID is 0).
    void UploadCurrentParameters(bool onlyIfModified) override;
    ~QorShaderEffect() override;

    /// The effect registered under `name` with one more reference, or a new one (count 1)
    /// registered under it. A null or empty name gives a new, unregistered effect.
    static QorShaderEffect* AddShaderEffect(const char* name);

    /// GenerateShader.
    QorMaterialParameters* Compile() override;
    /// True once semantic binding has walked every parameter of the current compilation.
    bool HasDefaults() const override { return m_bound != 0 && GetParameters(); }
    /// Connects, in a shader object's copy of the default set, each interface to its
    /// current type, so that the copy holds its own interface records.
    void ConnectInterfaces(QorMaterialParameters& parameters) override;

    /// Finds the source, compiles it and binds semantics. Returns the effect's own
    /// parameter set (owned by the effect, replaced by the next compilation) or null.
    QorShaderParameters* GenerateShader();
    /// Slider range of a parameter; a null parameter asks for the technique range.
    int getParameterFloatMinMaxStep(CGparameter parameter, float& min, float& max, float& step, char** widget,
                                    char** name);

    /// The Cg parameter behind user parameter `index` (from 1, as in the parameter sets
    /// built from this effect); null when out of range or before binding. Lets tools read
    /// annotations such as "UIWidget" and "UIName".
    CGparameter GetUserParameter(int index) const;
    const std::map<QorString, QorShaderInterface*>& GetInterfaces() const { return m_interfaces; }
    QorShaderInterface* AddInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base);
    QorShaderInterface* AddInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base,
                                     CGtype dynamic);

    // What binding found, for the renderer's drawing code.
    CGeffect GetCgEffect() const { return m_effect; }
    CGcontext GetCgContext() const { return m_context.Get(); }
    CGtechnique GetCurrentTechnique() const { return m_technique; }
    /// The Cg parameter bound to `feed` (see QorSemanticTable); null when none is.
    CGparameter GetFeedParameter(QorFeed feed) const { return static_cast<CGparameter>(GetFeed(feed)); }
    const QorShaderLight& GetLight(int slot) const { return m_lights[slot]; }
    int GetLightCount() const { return m_lightCount; }
    unsigned int GetLightModel() const { return m_lightModel; }
    EnvironmentState GetEnvironmentState() const { return m_environmentState; }
    CGparameter GetEnvironmentMember(int member) const { return m_environmentMembers[member]; }
    /// Confines the includes of the current text (until the next setBuffer) to the search
    /// paths: for a text that came from a package, which must not read the host's files
    /// through absolute names or "..". Names that cannot be resolved there fail the
    /// compilation with an #error naming them.
    void ConfineIncludesToSearchPaths() { m_includesConfined = true; }
    /// What the last compilation reported when it failed: the Cg runtime's message and
    /// the compiler's listing, the text the error file receives; empty after a success.
    const QorString& GetCompileErrors() const { return m_compileErrors; }
    /// The includes the last compilation asked for and could not find, as the effect
    /// names them: files ending ".cgh"/".hfx" found nowhere under "shaders\" of
    /// "QorGraphicPath" or "QorStartupPath", or other names not in QorShaderIncludeManager.
    const std::vector<QorString>& GetMissingIncludes() const { return m_missingIncludes; }

private:
    QorShaderEffect();

    void Unregister() override;

    QorShaderParameters* createEffectAndBindSemantics();
    bool resolveInterfacesAndArrays();
    void bindSemantics();
    void buildParameterSet(QorShaderParameters& parameters);
    bool checkParameterVisibility(CGparameter parameter, int* type);
    /// Stores a light parameter in its slot; true when its type annotation ends the walk.
    bool bindLightParameter(CGparameter parameter, QorLightFeed member);
    void bindEnvironment(CGparameter parameter, QorShaderParameters& parameters);
    void refreshEnvironmentMembers();
    void destroyLightInstances();
    void buildLightSlot(int slot, unsigned int kind);
    void writeErrorFile(const char* message, const char* listing);
    int validateFromCurrentTechnique(bool fetchErrorText);

    unsigned int m_lightModel = 0;
    int m_needTanBin = 0;
    unsigned char m_bound = 0;
    CGtechnique m_technique = nullptr;  // borrowed from m_effect
    int m_techniqueIndex = 0;
    QorCgContextHolder m_context{nullptr}; // see m_retiredContexts
    CGeffect m_effect = nullptr;        // owned
    QorShaderInterface* m_environmentInterface = nullptr; // borrowed from m_interfaces
    CGparameter m_environmentMembers[3] = {};             // EnvAmbient, EnvDiffuse, EnvSpecular
    EnvironmentState m_environmentState = QorEnvironmentNone;
    QorShaderLight m_lights[QorMaxLights] = {};
    int m_lightCount = 0;
    CGparameter m_lightsArray = nullptr; // created in m_context
    std::map<QorString, QorShaderInterface*> m_interfaces; // owns the interfaces
    // Contexts of earlier compilations. Interfaces made then still point into them, so
    // they are destroyed with the effect rather than at recompilation.
    std::vector<QorCgContextHolder> m_retiredContexts;
    QorString m_compileErrors;
    std::vector<QorString> m_missingIncludes;
    bool m_includesConfined = false;
};

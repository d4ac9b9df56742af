/// @file
/// The CgFX effect: one effect source (a file or an in-memory text), compiled once by
/// the Cg runtime and shared by every shader object that names it. Effects are made only
/// through AddShaderEffect, which keeps a process-wide registry by name; they are
/// reference-counted and destroyed by the last Release. Use from the rendering thread.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"
#include "QorVisShaders/QorCgHolder.h"
#include "QorSystem/QorUnicodeString.h"
#include "QorVisShaders/QorIShaderEffect.h"

#include <Cg/cg.h>

#include <map>
#include <vector>

class QorShaderEffectAndName;
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

/// Matrices the renderer feeds, by the semantic that bound them.
enum QorEffectMatrix
{
    QorEffectProjection,
    QorEffectView,
    QorEffectWorld,
    QorEffectWorldInverseTranspose,
    QorEffectWorldInverse,
    QorEffectWorldViewProjection,
    QorEffectWorldView,
    QorEffectWorldViewInverseTranspose,
    QorEffectWorldViewInverse,
    QorEffectViewInverseTranspose,
    QorEffectViewInverse,
    QorEffectMatrixCount
};

/// Material and environment parameters the renderer feeds, by semantic.
enum QorEffectMaterial
{
    QorEffectAmbientCoeff,
    QorEffectDiffuseCoeff,
    QorEffectSpecularCoeff,
    QorEffectEmissiveCoeff,
    QorEffectTransparencyCoeff,
    QorEffectShininessCoeff,
    QorEffectPowerCoeff,
    QorEffectDiffuse,
    QorEffectSpecular,
    QorEffectGlobalAmbientColor,
    QorEffectAmbient,
    QorEffectUseDiffuseTexture,
    QorEffectDiffuseTexture,
    QorEffectDiffuseTextureFunction,
    QorEffectDiffuseTextureMappingFunction,
    QorEffectAutomaticEnvironmentMap,
    QorEffectAutomaticColorAttribute,
    QorEffectMaterialCount
};

class QOR_VISSHADERS_API QorShaderEffect : public QorIShaderEffect
{
public:
    unsigned int AddRef() override;
    unsigned int Release() override;
    void Init() override;
    const QorString& GetPathName() const override { return m_pathName; }
    const QorString& GetFileName() const override { return m_fileName; }
    void getTechnique(int* index) override;
    void setTechnique(int index) override;
    void setTechniqueByName(const char* name) override;
    void setFileName(const QorString& name) override;
    QorIShaderParameters* Generate() override;
    int Generated() override { return m_effect != nullptr; }
    bool updateLightModel(unsigned int code) override;
    void setBuffer(const char* text) override;
    char* getBuffer() override { return m_buffer; }
    const char* GetName() override { return m_name; }
    void SetName(char* name) override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    QorIShaderParameters* GetIShaderParameters() override { return m_interfaceParameters; }
    int NeedTanBin() override { return m_needTanBin; }
    int ValidateTechnique() override;
    void SetMatrixParam(QorMatrixParam which, const Qor4x4Matrix& matrix) override;
    int ValidateShaderEffect() override;
    int ForceCompile() override;
    const char* GetProvider() override { return m_provider; }
    const char* GetUUID() override { return m_uuid; }
    int ConnectTypeToInterface(const char* name, const char* type, QorIShaderParameters* parameters) override;
    const char* GetBaseType(const char* name) const override;
    const char* GetDynamicType(const char* name) const override;
    int GetNumInterface(int& count) const override;
    QorFxImplementation GetImplementation() const override { return QorFxCgFX; }
    int updateEnvModel(EnvironmentState state) override;
    ~QorShaderEffect() override;

    /// The effect registered under `name` with one more reference, or a new one (count 1)
    /// registered under it. A null or empty name gives a new, unregistered effect.
    static QorShaderEffect* AddShaderEffect(const char* name);

    /// Finds the source, compiles it and binds semantics. Returns the effect's own
    /// parameter set (owned by the effect, replaced by the next compilation) or null.
    QorShaderParameters* GenerateShader();
    /// Slider range of a parameter; a null parameter asks for the technique range.
    int getParameterFloatMinMaxStep(CGparameter parameter, float& min, float& max, float& step, char** widget,
                                    char** name);

    /// Pushes the values of the current parameter set (see SetIShaderParameters) into
    /// the Cg parameters they mirror; texture values bind the GL texture their registry
    /// record names (nothing while its ID is 0). With onlyIfModified, values not changed
    /// since the last push are skipped. Each pushed value is marked unmodified.
    void UploadCurrentParameters(bool onlyIfModified);
    /// Stores the set drawing uses (a shader object's own set); not owned.
    void SetIShaderParameters(QorIShaderParameters* parameters);
    /// The same for a CgFX shader object's own set, known without asking its type: it
    /// lists its modified values, so that an upload visits only those.
    void SelectParameters(QorShaderParameters* parameters);
    /// The default parameter set built by the last binding; null before.
    QorShaderParameters* GetParameters() const { return m_parameters; }
    /// The Cg parameter behind user parameter `index` (from 1, as in the parameter sets
    /// built from this effect); null when out of range or before binding. Lets tools read
    /// annotations such as "UIWidget" and "UIName".
    CGparameter GetUserParameter(int index) const;
    /// True once semantic binding has walked every parameter of the current compilation.
    bool IsBound() const { return m_bound != 0; }
    const std::map<QorString, QorShaderInterface*>& GetInterfaces() const { return m_interfaces; }
    QorShaderInterface* AddInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base);
    QorShaderInterface* AddInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base,
                                     CGtype dynamic);

    // What binding found, for the renderer's drawing code.
    CGeffect GetCgEffect() const { return m_effect; }
    CGcontext GetCgContext() const { return m_context.Get(); }
    CGtechnique GetCurrentTechnique() const { return m_technique; }
    CGparameter GetMatrixParameter(QorEffectMatrix which) const { return m_matrices[which]; }
    CGparameter GetMaterialParameter(QorEffectMaterial which) const { return m_material[which]; }
    const QorShaderLight& GetLight(int slot) const { return m_lights[slot]; }
    int GetLightCount() const { return m_lightCount; }
    unsigned int GetLightModel() const { return m_lightModel; }
    EnvironmentState GetEnvironmentState() const { return m_environmentState; }
    CGparameter GetEnvironmentMember(int member) const { return m_environmentMembers[member]; }
    const QorUnicodeString& GetSource() const { return m_source; }
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

    QorShaderEffect(const QorShaderEffect&) = delete;
    QorShaderEffect& operator=(const QorShaderEffect&) = delete;

private:
    QorShaderEffect();

    static QorShaderEffectAndName* GetShaderEffect(const char* name);
    static QorShaderEffectAndName* GetShaderEffect(const QorShaderEffect* effect);
    static void RemoveShaderEffect(const QorShaderEffect* effect);

    QorShaderParameters* createEffectAndBindSemantics();
    bool resolveInterfacesAndArrays();
    void bindSemantics();
    void buildParameterSet();
    bool checkParameterVisibility(CGparameter parameter, int* type);
    /// Stores a light parameter in its slot; true when its type annotation ends the walk.
    bool bindLightParameter(CGparameter parameter, CGparameter QorShaderLight::*member);
    void bindEnvironment(CGparameter parameter);
    void refreshEnvironmentMembers();
    void destroyLightInstances();
    void buildLightSlot(int slot, unsigned int kind);
    void writeErrorFile(const char* message, const char* listing);
    int validateFromCurrentTechnique(bool fetchErrorText);

    QorIShaderParameters* m_interfaceParameters = nullptr; // not owned: the current shader's set
    QorShaderParameters* m_currentOwnSet = nullptr;        // the same when it is a CgFX set, else null
    QorShaderParameters* m_parameters = nullptr;            // owned: the default set from binding
    unsigned int m_lightModel = 0;
    int m_needTanBin = 0;
    unsigned char m_techniqueValidated = 0;
    unsigned char m_bound = 0;
    CGtechnique m_technique = nullptr;  // borrowed from m_effect
    int m_techniqueIndex = 0;
    QorCgContextHolder m_context{nullptr}; // see m_retiredContexts
    CGeffect m_effect = nullptr;        // owned
    CGparameter m_matrices[QorEffectMatrixCount] = {};
    QorShaderInterface* m_environmentInterface = nullptr; // borrowed from m_interfaces
    CGparameter m_environmentMembers[3] = {};             // EnvAmbient, EnvDiffuse, EnvSpecular
    CGparameter m_iblDiffuse = nullptr;
    CGparameter m_iblSpecular = nullptr;
    EnvironmentState m_environmentState = QorEnvironmentNone;
    QorShaderLight m_lights[QorMaxLights] = {};
    int m_lightCount = 0;
    CGparameter m_lightsArray = nullptr; // created in m_context
    CGparameter m_material[QorEffectMaterialCount] = {};
    QorUnicodeString m_source;
    QorString m_fileName;
    QorString m_pathName;
    char* m_buffer = nullptr;            // owned, C heap
    std::map<QorString, QorShaderInterface*> m_interfaces; // owns the interfaces
    unsigned int m_refCount = 1;
    char* m_name = nullptr;              // owned, C heap
    char* m_uuid = nullptr;              // owned, array
    char* m_provider = nullptr;          // owned, array
    // Contexts of earlier compilations. Interfaces made then still point into them, so
    // they are destroyed with the effect rather than at recompilation.
    std::vector<QorCgContextHolder> m_retiredContexts;
    QorString m_compileErrors;
    std::vector<QorString> m_missingIncludes;
    bool m_includesConfined = false;
};

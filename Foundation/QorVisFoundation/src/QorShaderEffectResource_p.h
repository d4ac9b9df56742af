/// @file
/// The effect objects QorResourceZPKContainer hands out. Private to QorVisFoundation.
#pragma once

#include "QorVisShaders/QorIShaderEffect.h"

#include <atomic>
#include <string>

class QorResourceZPKContainer;

/// This object only carries a name and a source text: apart from GetName, getBuffer,
/// AddRef, Release and GetImplementation (CgFX), every slot answers a neutral value
/// (0, null, false, empty strings) or does nothing. Counted like every effect; while its
/// container lives the container knows it, and it tells the container when it goes.
class QorShaderEffectResource final : public QorIShaderEffect
{
public:
    /// Copies the texts; may throw std::bad_alloc, which the container catches.
    QorShaderEffectResource(QorResourceZPKContainer* container, const std::string& name, const std::string& source,
                            bool hasSource);
    QorShaderEffectResource(const QorShaderEffectResource&) = delete;
    QorShaderEffectResource& operator=(const QorShaderEffectResource&) = delete;

    /// The container forgets this object or is going away; no call back afterwards.
    void DetachFromContainer() { m_container = nullptr; }

    unsigned int AddRef() override;
    unsigned int Release() override;
    char* getBuffer() override;
    const char* GetName() override;
    QorFxImplementation GetImplementation() const override;

    void Init() override {}
    const QorString& GetPathName() const override;
    const QorString& GetFileName() const override;
    void getTechnique(int* index) override;
    void setTechnique(int) override {}
    void setTechniqueByName(const char*) override {}
    void setFileName(const QorString&) override {}
    QorIShaderParameters* Generate() override { return nullptr; }
    int Generated() override { return 0; }
    bool updateLightModel(unsigned int) override { return false; }
    void setBuffer(const char*) override {}
    void SetName(char* name) override;
    void Stream(QorStreamer&) override {}
    void UnStream(QorStreamer&) override {}
    QorIShaderParameters* GetIShaderParameters() override { return nullptr; }
    int NeedTanBin() override { return 0; }
    int ValidateTechnique() override { return 0; }
    void SetMatrixParam(QorMatrixParam, const Qor4x4Matrix&) override {}
    int ValidateShaderEffect() override { return 0; }
    int ForceCompile() override { return 0; }
    const char* GetProvider() override { return ""; }
    const char* GetUUID() override { return ""; }
    int ConnectTypeToInterface(const char*, const char*, QorIShaderParameters*) override { return 0; }
    const char* GetBaseType(const char*) const override { return nullptr; }
    const char* GetDynamicType(const char*) const override { return nullptr; }
    int GetNumInterface(int& count) const override;
    int updateEnvModel(EnvironmentState) override { return 0; }

private:
    ~QorShaderEffectResource() override;

    std::atomic<unsigned int> m_refCount{1};
    QorResourceZPKContainer* m_container;
    std::string m_name;
    std::string m_source;
    bool m_hasSource;
};

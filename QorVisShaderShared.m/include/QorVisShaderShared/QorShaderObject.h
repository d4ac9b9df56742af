/// @file
/// The shader object of the material model, written once for both back ends: one
/// material, pairing one counted reference of a shared effect with a parameter set it
/// owns. The value queries, the technique pseudo-parameter at index 0, generating the
/// values, releasing the effect and finding and reading an effect file are the same
/// whichever back end the effect is; where the two answer differently on purpose, the
/// object follows its back end's profile. A back end supplies which registry shares its
/// effects, the slider ranges, the stream and the environment map.
#pragma once

#include "QorVisShaderShared/QorMaterialEffect.h"
#include "QorVisShaderShared/QorMaterialParameters.h"

#include "QorVisShaders/QorIShader.h"

#include <memory>

class QorShaderObject : public QorIShader
{
public:
    int Detach() final;
    /// Releases the effect, after taking this shader's values back from it when they are
    /// the ones it draws with.
    void ReleaseEffect() final;
    const QorString& GetPathName() override { return m_pathName; }
    const QorString& GetFileName() override { return m_fileName; }
    int GetParameterIndex(const char* name) final;
    int GetNbParameters() final;
    int GetParameterType(int index) final;
    const char* GetParameterName(int index) final;
    /// Index 0 reads the effect's technique; the set must exist all the same.
    int GetParameterFloat(int index, float* value) final;
    /// Index 0 selects the effect's technique by position.
    int SetParameterFloat(int index, float value) final;
    /// -1 without a set or below index 1. The back end's profile says whether a value
    /// whose modified mark is set answers that mark with the outputs untouched.
    int GetParameterColor(int index, float* r, float* g, float* b, float* a) final;
    int SetParameterColor(int index, float r, float g, float b, float a) final;
    int Reserved1() override { return -1; }
    int Reserved2() override { return -1; }
    /// Copies the texture value's file name into `buffer` (QorMaxParameterStringLength
    /// bytes); -1 without a set or below index 1, else the profile's answer.
    int GetParameterString(int index, char* buffer) final;
    /// Index 0 selects the effect's technique by name.
    int SetParameterString(int index, const char* value) final;
    /// Stores the name and its directory, finds the file (QorShaderSearch::FindShaderFile),
    /// reads it and gives its text to SetBuffer under the name, so that every shader given
    /// that name shares its effect. A file found nowhere leaves the shader as it was; one
    /// found but not readable too (printing "Shader %s not found \n" where the profile says).
    void SetFileName(const QorString& name) final;
    /// Rebuilds the values from the effect: a copy of its default set, compiled first when
    /// it has none, with the effect's interfaces connected in the copy.
    bool GenerateParameters() final;
    bool HasEffect() override { return m_effect != nullptr; }
    bool UpdateLightModel(unsigned int lightModel) final;
    /// Shares the effect registered under `name` in the back end's registry (created at
    /// first use) and gives it the text.
    void SetBuffer(const char* text, const char* name) final;
    void SetBufferWithoutName(const char* text) override { SetBuffer(text, nullptr); }
    char* GetBuffer() final;
    QorIShaderEffect* GetIShaderEffect() override { return m_effect; }
    QorIShaderEffect* GetIShaderEffect() const override { return m_effect; }
    QorIShaderParameters* GetIShaderParameters() override { return m_parameters; }
    QorIShaderParameters* GetIShaderParameters() const override { return m_parameters; }
    void SetCurrentParameters() final;
    QorFxImplementation GetImplementation() override { return m_profile.implementation; }
    void Destroy() override { delete this; }
    /// Releases the effect and deletes the parameter set.
    ~QorShaderObject() override;

    /// Names this shader while it lives and null once it is gone, for holders that may
    /// outlive it (a stream's migration keeps the shaders it will migrate until the
    /// document is read). Each call hands out the same handle.
    std::shared_ptr<QorIShader* const> Lifetime();
    /// Takes a copy of `parameters` as the shader's values; false when out of memory.
    bool AdoptParameters(QorMaterialParameters& parameters);

protected:
    explicit QorShaderObject(const QorBackEndProfile& profile) : m_profile(profile) {}
    /// Shares the other's names and effect (one more reference) and copies its values.
    QorShaderObject(const QorShaderObject& other);
    QorShaderObject& operator=(const QorShaderObject&) = delete;

    /// The effect registered under `name` in the back end's registry, with one more
    /// reference (see AddShaderEffect); null when out of memory.
    virtual QorMaterialEffect* ShareEffect(const char* name) = 0;
    /// Deletes the parameter set, taking it back from the effect first.
    void DeleteParameters();

    QorMaterialEffect* m_effect = nullptr;         // counted reference
    QorMaterialParameters* m_parameters = nullptr; // owned
    QorString m_fileName;
    QorString m_pathName;

private:
    const QorBackEndProfile& m_profile;
    // Made on first request, cleared by the destructor; a copy of the shader gets its own.
    std::shared_ptr<QorIShader*> m_lifetime;
};

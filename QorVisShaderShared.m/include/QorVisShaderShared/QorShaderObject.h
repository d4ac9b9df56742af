/// @file
/// What the shader objects of both implementations do alike. A shader object pairs one
/// counted reference of a shared effect with a parameter set it owns; the value queries,
/// the technique pseudo-parameter at index 0, the effect's release and the search and
/// reading of an effect file are the same whichever implementation the effect is.
#pragma once

#include "QorVisShaders/QorIShader.h"

#include <memory>

class QorShaderObject : public QorIShader
{
public:
    int Detach() override;
    /// Releases the effect, after taking this shader's values back from it when they are
    /// the ones it draws with.
    void ReleaseEffect() override;
    const QorString& GetPathName() override { return m_pathName; }
    const QorString& GetFileName() override { return m_fileName; }
    int GetParameterIndex(const char* name) override;
    int GetNbParameters() override;
    int GetParameterType(int index) override;
    const char* GetParameterName(int index) override;
    /// Index 0 reads the effect's technique; the set must exist all the same.
    int GetParameterFloat(int index, float* value) override;
    /// Index 0 selects the effect's technique by position.
    int SetParameterFloat(int index, float value) override;
    int SetParameterColor(int index, float r, float g, float b, float a) override;
    int Reserved1() override { return -1; }
    int Reserved2() override { return -1; }
    /// Index 0 selects the effect's technique by name.
    int SetParameterString(int index, const char* value) override;
    bool HasEffect() override { return m_effect != nullptr; }
    bool UpdateLightModel(unsigned int lightModel) override;
    void SetBufferWithoutName(const char* text) override { SetBuffer(text, nullptr); }
    char* GetBuffer() override;
    QorIShaderEffect* GetIShaderEffect() override { return m_effect; }
    QorIShaderEffect* GetIShaderEffect() const override { return m_effect; }
    QorIShaderParameters* GetIShaderParameters() override { return m_parameters; }
    QorIShaderParameters* GetIShaderParameters() const override { return m_parameters; }
    void SetCurrentParameters() override;
    void Destroy() override { delete this; }

    /// Names this shader while it lives and null once it is gone, for holders that may
    /// outlive it (a stream's migration keeps the shaders it will migrate until the
    /// document is read). Each call hands out the same handle.
    std::shared_ptr<QorIShader* const> Lifetime();

    /// Deletes the parameter set. Derived shaders release their effect in their own
    /// destructor (ReleaseEffect), while they can still take their values back from it.
    ~QorShaderObject() override;

protected:
    QorShaderObject() = default;
    /// Shares the other's names and effect (one more reference, handed back by the derived
    /// destructor's ReleaseEffect); the values are the derived copy's to copy.
    QorShaderObject(const QorShaderObject& other);
    QorShaderObject& operator=(const QorShaderObject&) = delete;

    /// Makes `parameters` (null to forget) the set the effect draws with; the effect only
    /// borrows it.
    virtual void SelectParameters(QorIShaderParameters* parameters) = 0;
    /// Deletes the parameter set, taking it back from the effect first.
    void DeleteParameters();

    /// Stores the name and its directory, finds the file as a shader object does
    /// (QorShaderSearch::FindShaderFile), reads it and gives its text to SetBuffer under
    /// the name, so that every shader given that name shares its effect. A file found
    /// nowhere leaves the shader as it was; one found but not readable too, after
    /// printing "Shader %s not found \n" when `reportUnreadable`.
    void LoadFile(const QorString& name, bool reportUnreadable);

    QorIShaderEffect* m_effect = nullptr;         // counted reference
    QorIShaderParameters* m_parameters = nullptr; // owned
    QorString m_fileName;
    QorString m_pathName;

private:
    // Made on first request, cleared by the destructor; a copy of the shader gets its own.
    std::shared_ptr<QorIShader*> m_lifetime;
};

/// @file
/// The CgFX shader object: one material, pairing a shared QorShaderEffect with its own
/// parameter set. Renderers reach it through QorIShader only.
#pragma once

#include "QorVisShaders/QorIShader.h"

#include <Cg/cg.h>

class QorShaderEffect;
class QorShaderParameters;

class CgFXShader : public QorIShader
{
public:
    CgFXShader() = default;
    /// Shares the effect (one more reference) and deep-copies the values.
    CgFXShader(const CgFXShader& other);
    CgFXShader& operator=(const CgFXShader&) = delete;

    QorIShader* Clone() override;
    int Detach() override;
    void ReleaseEffect() override;
    const QorString& GetPathName() override { return m_pathName; }
    const QorString& GetFileName() override { return m_fileName; }
    int GetParameterIndex(const char* name) override;
    int GetNbParameters() override;
    int GetParameterType(int index) override;
    const char* GetParameterName(int index) override;
    int GetParameterFloat(int index, float* value) override;
    int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step, char** widget,
                                         char** name) override;
    int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                    char** name) override;
    int SetParameterFloat(int index, float value) override;
    int GetParameterColor(int index, float* r, float* g, float* b, float* a) override;
    int SetParameterColor(int index, float r, float g, float b, float a) override;
    int Reserved1() override { return -1; }
    int Reserved2() override { return -1; }
    int GetParameterString(int index, char* buffer) override;
    int SetParameterString(int index, const char* value) override;
    void SetFileName(const QorString& name) override;
    bool GenerateParameters() override;
    bool HasEffect() override { return m_effect != nullptr; }
    bool UpdateLightModel(unsigned int lightModel) override;
    void SetBuffer(const char* text, const char* name) override;
    void SetBufferWithoutName(const char* text) override { SetBuffer(text, nullptr); }
    char* GetBuffer() override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    int SetEnvironmentMap(const char* file, int first, int second) override;
    int UsesAutomaticEnvironmentMap() override;
    QorIShaderEffect* GetIShaderEffect() override;
    QorIShaderEffect* GetIShaderEffect() const override;
    QorIShaderParameters* GetIShaderParameters() override;
    QorIShaderParameters* GetIShaderParameters() const override;
    void SetCurrentParameters() override;
    QorFxImplementation GetImplementation() override { return QorFxCgFX; }
    void Destroy() override { delete this; }
    ~CgFXShader() override;

private:
    /// Clears the effect's current parameter set when it is this shader's.
    void deselectParameters();
    int rangeOfHandle(CGparameter handle, float& min, float& max, float& step, char** widget, char** name);
    void copyValuesFrom(QorShaderParameters& streamed);

    QorShaderEffect* m_effect = nullptr;         // counted reference
    QorShaderParameters* m_parameters = nullptr; // owned
    QorString m_fileName;
    QorString m_pathName;
};

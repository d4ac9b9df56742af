/// @file
/// The CgFX shader object: one material, pairing a shared QorShaderEffect with its own
/// QorShaderParameters. Renderers reach it through QorIShader only; what it shares with
/// the other implementation's shader object is QorShaderObject's.
#pragma once

#include "QorVisShaderShared/QorShaderObject.h"

#include <Cg/cg.h>

class QorShaderEffect;
class QorShaderParameters;

class CgFXShader final : public QorShaderObject
{
public:
    CgFXShader() = default;
    /// Shares the effect (one more reference) and deep-copies the values.
    CgFXShader(const CgFXShader& other);
    CgFXShader& operator=(const CgFXShader&) = delete;
    ~CgFXShader() override;

    QorIShader* Clone() override;
    int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step, char** widget,
                                         char** name) override;
    int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                    char** name) override;
    int GetParameterColor(int index, float* r, float* g, float* b, float* a) override;
    int GetParameterString(int index, char* buffer) override;
    void SetFileName(const QorString& name) override { LoadFile(name, false); }
    bool GenerateParameters() override;
    void SetBuffer(const char* text, const char* name) override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    int SetEnvironmentMap(const char* file, int first, int second) override;
    int UsesAutomaticEnvironmentMap() override;
    QorFxImplementation GetImplementation() override { return QorFxCgFX; }

private:
    void SelectParameters(QorIShaderParameters* parameters) override;
    // This shader only ever holds a CgFX effect and a CgFX set.
    QorShaderEffect* Effect() const;
    QorShaderParameters* Parameters() const;
    void TakeParameters(QorShaderParameters* parameters);
    int rangeOfHandle(CGparameter handle, float& min, float& max, float& step, char** widget, char** name);
    void copyValuesFrom(QorShaderParameters& streamed);
};

/// @file
/// The GLSL-effect shader object: one material, pairing a shared QorNvFXEffect with its
/// own QorNvFXShaderParameters. Renderers reach it through QorIShader only; what it shares
/// with the CgFX shader object is QorShaderObject's.
#pragma once

#include "QorVisShaderShared/QorShaderObject.h"

class QorNvFXEffect;
class QorNvFXShaderParameters;

class QorNvFXShader final : public QorShaderObject
{
public:
    QorNvFXShader() = default;
    /// Shares the effect (one more reference) and deep-copies the values.
    QorNvFXShader(const QorNvFXShader& other);
    QorNvFXShader& operator=(const QorNvFXShader&) = delete;
    ~QorNvFXShader() override;

    QorIShader* Clone() override;
    /// Groups are interface structures, which GLSL effects do not have: reported, 0.
    int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step, char** widget,
                                         char** name) override;
    /// GLSL effects carry no slider ranges here: -1.
    int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                    char** name) override;
    /// -1 without a set or below index 1. A value whose changed mark is set answers 1 and
    /// leaves the outputs alone; otherwise its components go to the outputs and 0.
    int GetParameterColor(int index, float* r, float* g, float* b, float* a) override;
    /// Copies the texture value's file name into `buffer` (QorMaxParameterStringLength
    /// bytes); 0, or -1 without a set or below index 1.
    int GetParameterString(int index, char* buffer) override;
    /// As a CgFX shader, but a file found and not readable prints "Shader %s not found".
    void SetFileName(const QorString& name) override { LoadFile(name, true); }
    bool GenerateParameters() override;
    void SetBuffer(const char* text, const char* name) override;
    /// GLSL materials are not written to streams: nothing is written.
    void Stream(QorStreamer& streamer) override;
    /// Reads a stored (CgFX-era) material's values and effect name and hands them to the
    /// stream's migration, which loads the GLSL counterpart later. The shader itself is
    /// left as it was.
    void UnStream(QorStreamer& streamer) override;
    int SetEnvironmentMap(const char*, int, int) override { return 0; }
    int UsesAutomaticEnvironmentMap() override { return 0; }
    QorFxImplementation GetImplementation() override { return QorFxQRFX; }

    /// Takes a copy of `parameters` as the shader's values; false when out of memory.
    bool AdoptParameters(const QorNvFXShaderParameters& parameters);

private:
    void SelectParameters(QorIShaderParameters* parameters) override;
    // This shader only ever holds a GLSL effect and a GLSL set.
    QorNvFXEffect* Effect() const;
    QorNvFXShaderParameters* Parameters() const;
};

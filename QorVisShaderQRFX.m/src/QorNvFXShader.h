/// @file
/// The GLSL-effect (QRFX) shader object: the material model's shader object
/// (QorShaderObject) over a shared QorNvFXEffect, with its own QorNvFXShaderParameters.
/// Its own: no slider ranges or environment map, no stream, and un-streaming hands the
/// stored material to the stream's migration. Renderers reach it through QorIShader only.
#pragma once

#include "QorVisShaderShared/QorShaderObject.h"

class QorNvFXShader final : public QorShaderObject
{
public:
    QorNvFXShader();
    QorNvFXShader(const QorNvFXShader& other) = default;
    QorNvFXShader& operator=(const QorNvFXShader&) = delete;

    QorIShader* Clone() override;
    /// Groups are interface structures, which GLSL effects do not have: reported, 0.
    int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step, char** widget,
                                         char** name) override;
    /// GLSL effects carry no slider ranges here: -1.
    int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                    char** name) override;
    /// GLSL materials are not written to streams: nothing is written.
    void Stream(QorStreamer& streamer) override;
    /// Reads a stored (CgFX-era) material's values and effect name and hands them to the
    /// stream's migration, which loads the GLSL counterpart later. The shader itself is
    /// left as it was.
    void UnStream(QorStreamer& streamer) override;
    int SetEnvironmentMap(const char*, int, int) override { return 0; }
    int UsesAutomaticEnvironmentMap() override { return 0; }

private:
    QorMaterialEffect* ShareEffect(const char* name) override;
};

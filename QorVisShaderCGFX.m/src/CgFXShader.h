/// @file
/// The CgFX shader object: the material model's shader object (QorShaderObject) over a
/// shared QorShaderEffect, with its own QorShaderParameters. Its own: slider ranges from
/// the effect's annotations, the stream of values and effect, the environment map.
/// Renderers reach it through QorIShader only.
#pragma once

#include "QorVisShaderShared/QorShaderObject.h"

#include <Cg/cg.h>

class QorShaderEffect;
class QorShaderParameters;

class CgFXShader final : public QorShaderObject
{
public:
    CgFXShader();
    CgFXShader(const CgFXShader& other) = default;
    CgFXShader& operator=(const CgFXShader&) = delete;

    QorIShader* Clone() override;
    int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step, char** widget,
                                         char** name) override;
    int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                    char** name) override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    int SetEnvironmentMap(const char* file, int first, int second) override;
    int UsesAutomaticEnvironmentMap() override;

private:
    QorMaterialEffect* ShareEffect(const char* name) override;
    // This shader only ever holds a CgFX effect and a CgFX set.
    QorShaderEffect* Effect() const;
    QorShaderParameters* Parameters() const;
    int rangeOfHandle(CGparameter handle, float& min, float& max, float& step, char** widget, char** name);
};

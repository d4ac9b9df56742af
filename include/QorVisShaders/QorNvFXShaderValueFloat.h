/// @file
/// A float value of a GLSL-effect parameter set (type 1).
#pragma once

#include "QorVisShaders/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueFloat final : public QorNvFXShaderValue
{
public:
    QorNvFXShaderValueFloat() = default;
    QorNvFXShaderValueFloat(nvFX::IUniform* uniform, float value) : QorNvFXShaderValue(uniform), m_value(value) {}
    QorNvFXShaderValueFloat(const QorNvFXShaderValueFloat& other) = default;

    void GetType(int* type) override;
    int GetFloat(float* value) override { return Get(value); }
    void SetFloat(float value) override { Set(&value); }
    /// Writes the value at the float `out`; answers the changed mark.
    int Get(void* out) override;
    /// Takes the float at `in`.
    void Set(const void* in) override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    void Push(int textureUnit) override;

private:
    float m_value = 0.0f;
};

/// @file
/// A colour value of a GLSL-effect parameter set: 2, 3 or 4 floats (type 5, 6 or 2).
#pragma once

#include "QorVisShaders/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueColor final : public QorNvFXShaderValue
{
public:
    /// All four components 0, no uniform.
    explicit QorNvFXShaderValueColor(int count = 4) : m_count(count) {}
    /// Copies `count` floats of `values` (at most the four stored); null leaves them 0.
    QorNvFXShaderValueColor(nvFX::IUniform* uniform, const float* values, int count);
    QorNvFXShaderValueColor(const QorNvFXShaderValueColor& other) = default;

    /// 5 for two components, 6 for three, 2 otherwise.
    void GetType(int* type) override;
    int GetColor(float* values) override { return Get(values); }
    void SetColor(const float* values) override { Set(values); }
    /// Copies the components (as many as the count, at most four) to the float array
    /// `out`; answers the changed mark.
    int Get(void* out) override;
    /// Takes as many floats from `in` as the count (at most four).
    void Set(const void* in) override;
    /// All four components go whatever the count; reading one back keeps the count.
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    void Push(int textureUnit) override;

    int GetComponentCount() const { return m_count; }

private:
    /// How many floats move: a count above four stays visible (type 2) but reads and
    /// writes stop at the storage.
    int MovedCount() const;

    int m_count;
    float m_components[4] = {};
};

/// @file
/// A colour value of a GLSL-effect parameter set: 2, 3 or 4 floats (type 5, 6 or 2).
#pragma once

#include "QorVisShaderQRFX/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueColor final : public QorNvFXShaderValue
{
public:
    /// All four components 0, no uniform.
    explicit QorNvFXShaderValueColor(int count = 4) : QorNvFXShaderValueColor(nullptr, nullptr, count) {}
    /// Copies `count` floats of `values` (at most the four stored); null leaves them 0.
    QorNvFXShaderValueColor(nvFX::IUniform* uniform, const float* values, int count)
        : QorNvFXShaderValue(QorColorTypeOf(count), count, uniform, values, nullptr)
    {
    }
    QorNvFXShaderValueColor(const QorNvFXShaderValueColor& other) = default;

    QorMaterialValue* Clone() const override;
};

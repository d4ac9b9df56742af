/// @file
/// A float value of a GLSL-effect parameter set (type 1).
#pragma once

#include "QorVisShaderQRFX/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueFloat final : public QorNvFXShaderValue
{
public:
    QorNvFXShaderValueFloat() : QorNvFXShaderValueFloat(nullptr, 0.0f) {}
    QorNvFXShaderValueFloat(nvFX::IUniform* uniform, float value)
        : QorNvFXShaderValue(QorValueFloat, 1, uniform, &value, nullptr)
    {
    }
    QorNvFXShaderValueFloat(const QorNvFXShaderValueFloat& other) = default;

    QorMaterialValue* Clone() const override;
};

/// @file
/// A texture value of a GLSL-effect parameter set: the file name of a texture (type 4);
/// "" for none.
#pragma once

#include "QorVisShaderQRFX/QorNvFXShaderValue.h"

class QOR_VISSHADERS_API QorNvFXShaderValueString final : public QorNvFXShaderValue
{
public:
    /// Holds "".
    QorNvFXShaderValueString() : QorNvFXShaderValueString(nullptr, nullptr) {}
    /// Holds a copy of `text`, or "" for null.
    QorNvFXShaderValueString(nvFX::IUniform* uniform, const char* text)
        : QorNvFXShaderValue(QorValueTexture, 0, uniform, nullptr, text ? text : "")
    {
    }
    QorNvFXShaderValueString(const QorNvFXShaderValueString& other) = default;

    QorMaterialValue* Clone() const override;
};

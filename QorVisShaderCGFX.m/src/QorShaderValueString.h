/// @file
/// A CgFX texture value (type 4): the file name of a texture, null for none.
#pragma once

#include "QorShaderValue.h"

#include "QorVisShaders/QorShaderValueType.h"

class QorShaderValueString final : public QorShaderValue
{
public:
    QorShaderValueString() : QorShaderValueString(nullptr, nullptr) {}
    /// Keeps a copy of `file` (null stays null).
    QorShaderValueString(CGparameter parameter, const char* file)
        : QorShaderValue(QorValueTexture, 0, parameter, nullptr, file)
    {
    }
    QorShaderValueString(const QorShaderValueString& other) = default;

    QorMaterialValue* Clone() const override;
};

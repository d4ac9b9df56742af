/// @file
/// A CgFX float value (type 1).
#pragma once

#include "QorShaderValue.h"

#include "QorVisShaders/QorShaderValueType.h"

class QorShaderValueFloat final : public QorShaderValue
{
public:
    QorShaderValueFloat() : QorShaderValueFloat(nullptr, 0.0f) {}
    QorShaderValueFloat(CGparameter parameter, float value) : QorShaderValue(QorValueFloat, 1, parameter, &value, nullptr)
    {
    }
    QorShaderValueFloat(const QorShaderValueFloat& other) = default;

    QorMaterialValue* Clone() const override;
};

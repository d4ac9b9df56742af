/// @file
/// The CgFX values: the material model's values (QorMaterialValue) of the CgFX back end,
/// each mirroring a Cg parameter of its effect. Private to the library; callers reach
/// values through QorIShaderValue.
#pragma once

#include "QorVisShaderShared/QorMaterialValue.h"

#include <Cg/cg.h>

class QorShaderValue : public QorMaterialValue
{
public:
    const QorBackEndProfile& Profile() const final;
    /// The mirrored effect parameter, borrowed from the shared effect; null when unknown.
    /// Copies of a set keep the same handle on purpose: they mirror the same parameter.
    CGparameter GetParameter() const { return static_cast<CGparameter>(Binding()); }

protected:
    QorShaderValue(int type, int count, CGparameter parameter, const float* numbers, const char* file)
        : QorMaterialValue(type, count, parameter, numbers, file)
    {
    }
    QorShaderValue(const QorShaderValue& other) = default;
};

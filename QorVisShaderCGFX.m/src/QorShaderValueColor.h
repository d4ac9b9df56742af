/// @file
/// A CgFX colour value of two, three or four floats (type 5, 6 or 2).
#pragma once

#include "QorShaderValue.h"

#include "QorVisShaders/QorShaderValueType.h"

class QorShaderValueColor final : public QorShaderValue
{
public:
    /// All four components 0, no handle.
    explicit QorShaderValueColor(int count) : QorShaderValueColor(nullptr, nullptr, count) {}
    /// Copies the first count floats (at most four) of `values`; null leaves them 0. A
    /// count above 4 stays visible (type 2, ComponentCount) but reads and writes stop at
    /// the four stored floats.
    QorShaderValueColor(CGparameter parameter, const float* values, int count)
        : QorShaderValue(QorColorTypeOf(count), count, parameter, values, nullptr)
    {
    }
    QorShaderValueColor(const QorShaderValueColor& other) = default;

    QorMaterialValue* Clone() const override;
};

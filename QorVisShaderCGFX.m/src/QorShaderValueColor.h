/// @file
/// A colour value of two, three or four floats (type 5, 6 or 2).
#pragma once

#include "QorShaderValue.h"

class QorShaderValueColor final : public QorShaderValue
{
public:
    /// All four components 0, no handle.
    explicit QorShaderValueColor(int count);
    /// Copies the first count floats (at most four) of `values`; null leaves them 0.
    QorShaderValueColor(CGparameter parameter, const float* values, int count);
    QorShaderValueColor(const QorShaderValueColor& other);

    void GetType(int* type) override;
    int GetColor(float* values) override;
    /// Copies component-count floats from `values`.
    void SetColor(const float* values) override;
    /// Copies component-count floats into the float array `out`.
    int Get(void* out) override;

    int GetComponentCount() const { return m_count; }

private:
    /// How many floats a read or a write moves.
    int MovedCount() const;

    float m_components[4] = {};
    int m_count;
};

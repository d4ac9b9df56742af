/// @file
/// A single float value (type 1).
#pragma once

#include "QorShaderValue.h"

class QorShaderValueFloat final : public QorShaderValue
{
public:
    QorShaderValueFloat() : QorShaderValueFloat(nullptr, 0.0f) {}
    QorShaderValueFloat(CGparameter parameter, float value);
    QorShaderValueFloat(const QorShaderValueFloat& other) : QorShaderValue(other), m_value(other.m_value) {}

    void GetType(int* type) override;
    int GetFloat(float* value) override;
    void SetFloat(float value) override;
    /// Stores the value at the float `out`.
    int Get(void* out) override;

private:
    float m_value;
};

/// @file
/// A single float value (type 1).
#pragma once

#include "QorShaderValue.h"

class QorShaderValueFloat final : public QorShaderValue
{
public:
    QorShaderValueFloat() = default;
    QorShaderValueFloat(CGparameter parameter, float value) : QorShaderValue(parameter), m_value(value) {}
    QorShaderValueFloat(const QorShaderValueFloat& other) : QorShaderValue(other), m_value(other.m_value) {}
    ~QorShaderValueFloat() override = default;

    void GetType(int* type) override;
    int GetFloat(float* value) override;
    int GetColor(float* values) override;
    int GetString(char** file) override;
    void SetString(const char* file) override;
    void SetColor(const float* values) override;
    void SetFloat(float value) override;
    /// Stores the value at the float `out`.
    int Get(void* out) override;

private:
    float m_value = 0.0f;
};

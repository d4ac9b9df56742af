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

    int GetFloat(float* value) override;
    /// Inline: it runs for every float a renderer changes, every frame.
    void SetFloat(float value) override
    {
        m_value = value;
        MarkModified();
    }
    /// Stores the value at the float `out`.
    int Get(void* out) override;

    float Value() const { return m_value; }

private:
    const QorShaderValueGuards& Guards() const override;
    float m_value;
};

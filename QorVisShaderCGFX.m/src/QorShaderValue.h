/// @file
/// Common base of the CgFX parameter values: the modified flag and the Cg parameter the
/// value mirrors. Private to the library; callers reach values through QorIShaderValue.
#pragma once

#include "QorVisShaders/QorIShaderValue.h"

#include <Cg/cg.h>

class QorShaderValue : public QorIShaderValue
{
public:
    QorShaderValue& operator=(const QorShaderValue&) = delete;
    ~QorShaderValue() override;

    /// Stores the handle; the same for every kind of value.
    void SetParameter(CGparameter parameter) final { m_parameter = parameter; }

    /// The mirrored effect parameter, borrowed from the shared effect; null when unknown.
    CGparameter GetParameter() const { return m_parameter; }
    /// The handle as the 32-bit token that GetParameterHandle and the stream carry. A token
    /// only names a parameter while the same effect lives: nothing ever turns it back into
    /// a handle.
    int GetParameterToken() const;

    /// 1 after construction, copy and every set; 0 after the set's ResetModified.
    int GetModified() const { return m_modified; }
    void ResetModified() { m_modified = 0; }

protected:
    QorShaderValue() = default;
    explicit QorShaderValue(CGparameter parameter) : m_parameter(parameter) {}
    /// A copy counts as modified whatever the source's flag, and shares the handle.
    QorShaderValue(const QorShaderValue& other) : QorIShaderValue(), m_parameter(other.m_parameter) {}

    /// Reports an operation that does not fit the value's kind; the caller then returns.
    static void ReportShouldNotHappen(const char* source, int line);

    int m_modified = 1;
    // Borrowed: a parameter of the one shared effect. Copies of a set keep the same raw
    // handle on purpose, as they mirror the same parameter; it is never destroyed here.
    CGparameter m_parameter = nullptr;
};

/// @file
/// Common base of the CgFX parameter values: the modified flag and the Cg parameter the
/// value mirrors. Private to the library; callers reach values through QorIShaderValue.
#pragma once

#include "QorVisShaders/QorIShaderValue.h"

#include <Cg/cg.h>

#include <vector>

/// Where one kind of value reports an operation that does not fit it: the kind's source
/// path and the fixed line of each such operation (0 for those the kind performs).
struct QorShaderValueGuards
{
    const char* source;
    int getFloat, getColor, getString, setString, setColor, setFloat;
};

class QorShaderValue : public QorIShaderValue
{
public:
    QorShaderValue& operator=(const QorShaderValue&) = delete;
    ~QorShaderValue() override;

    /// Writes the kind's type code, fixed when the value is made.
    void GetType(int* type) final
    {
        if (type)
            *type = m_type;
    }
    /// The type code without a call through the interface, for the hot paths.
    int Type() const { return m_type; }

    // The typed operations a kind does not perform report "Should not happen" at the
    // kind's place, change nothing and read as 0; each kind overrides its own.
    int GetFloat(float* value) override;
    int GetColor(float* values) override;
    int GetString(char** file) override;
    void SetString(const char* file) override;
    void SetColor(const float* values) override;
    void SetFloat(float value) override;

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

    /// The changed-position list of the set that lists this value at `position` (from
    /// 0); the value adds its position there each time it becomes modified, so that an
    /// upload visits only modified values.
    void SetOwner(std::vector<int>* changedPositions, int position)
    {
        m_changedPositions = changedPositions;
        m_position = position;
    }

protected:
    QorShaderValue(int type, CGparameter parameter) : m_parameter(parameter), m_type(type) {}
    /// A copy counts as modified whatever the source's flag, shares the handle and
    /// belongs to no set until one lists it.
    QorShaderValue(const QorShaderValue& other)
        : QorIShaderValue(), m_parameter(other.m_parameter), m_type(other.m_type)
    {
    }

    /// What every setter does last: the value is modified, and its set learns it once.
    /// Inline: it runs for every value a renderer changes, every frame.
    void MarkModified()
    {
        if (m_modified)
            return;
        m_modified = 1;
        if (m_changedPositions)
            m_changedPositions->push_back(m_position);
    }

    /// The kind's static table of misplaced operations.
    virtual const QorShaderValueGuards& Guards() const = 0;

    // Ordered so that a float value fits 40 bytes: a set's values sit densely in memory,
    // and a frame touches some of every material's.
    // Borrowed: a parameter of the one shared effect. Copies of a set keep the same raw
    // handle on purpose, as they mirror the same parameter; it is never destroyed here.
    CGparameter m_parameter = nullptr;
    std::vector<int>* m_changedPositions = nullptr; // borrowed from the set that lists the value
    const int m_type;
    int m_modified = 1;
    int m_position = 0;
};

/// @file
/// A colour value of two, three or four floats (type 5, 6 or 2).
#pragma once

#include "QorShaderValue.h"

#include <algorithm>

class QorShaderValueColor final : public QorShaderValue
{
public:
    /// All four components 0, no handle.
    explicit QorShaderValueColor(int count);
    /// Copies the first count floats (at most four) of `values`; null leaves them 0.
    QorShaderValueColor(CGparameter parameter, const float* values, int count);
    QorShaderValueColor(const QorShaderValueColor& other);

    int GetColor(float* values) override;
    /// Copies component-count floats from `values`. Inline: it runs for every colour a
    /// renderer changes, every frame.
    void SetColor(const float* values) override
    {
        if (!values)
            return;
        Move(values, m_components);
        MarkModified();
    }
    /// Copies component-count floats into the float array `out`.
    int Get(void* out) override;

    int GetComponentCount() const { return m_count; }
    /// The four stored components (those beyond the count are 0).
    const float* Components() const { return m_components; }

private:
    const QorShaderValueGuards& Guards() const override;

    /// How many floats a read or a write moves. A count above 4 stays visible (type 2,
    /// GetComponentCount) but reads and writes stop at the four stored floats: moving more
    /// would run past the storage.
    int MovedCount() const { return std::clamp(m_count, 0, 4); }
    /// Copies MovedCount() floats. Unrolled: a copy of a variable count becomes a call to
    /// memmove, which costs more than the four moves themselves.
    void Move(const float* from, float* to) const
    {
        switch (MovedCount()) {
        case 4:
            to[3] = from[3];
            [[fallthrough]];
        case 3:
            to[2] = from[2];
            [[fallthrough]];
        case 2:
            to[1] = from[1];
            [[fallthrough]];
        case 1:
            to[0] = from[0];
            break;
        default:
            break;
        }
    }

    float m_components[4] = {};
    int m_count;
};

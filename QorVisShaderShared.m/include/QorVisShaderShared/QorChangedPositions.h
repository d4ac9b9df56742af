/// @file
/// The positions (from 0) of a parameter set's values changed since the last upload, in
/// the order they changed, so that an upload visits only those instead of every value.
/// Each implementation's set keeps the list in a std::vector<int>; each value it lists
/// holds that list and its own position, and appends the position when it goes from
/// unchanged to changed. Every changed value is therefore listed; an upload clears every
/// mark it visits and then the list. Readers test each listed value's own mark: a
/// position may be listed whose mark was cleared since.
///
/// `changed` is the value kind's mark (as &QorNvFXShaderValue::GetChanged); a value kind
/// also offers SetOwner(list, position), through which it reaches its set's list.
#pragma once

#include "QorVisShaders/QorIShaderParameters.h"

#include <cstddef>
#include <vector>

namespace QorChangedPositions {

/// Gives `value`, listed at `position` of its set's values, the set's list, and lists it
/// when it comes changed. An empty place (null) has nothing to list.
template <typename Value>
void Adopt(std::vector<int>& positions, Value* value, int position, int (Value::*changed)() const)
{
    if (!value)
        return;
    value->SetOwner(&positions, position);
    if ((value->*changed)())
        positions.push_back(position);
}

/// Appends `value` to the set's `values` and adopts it at that position.
template <typename Value>
void Append(QorShaderValueList& values, std::vector<int>& positions, Value* value, int (Value::*changed)() const)
{
    values.push_back(value);
    Adopt(positions, value, static_cast<int>(values.size() - 1), changed);
}

/// Called where a mark is cleared outside an upload: only such a clear lets a value be
/// listed twice, when it changes again before the next upload. Past a bound the list is
/// made anew from the marks, so it never outgrows the set however often a renderer
/// clears and changes values between uploads.
template <typename Value>
void Bound(std::vector<int>& positions, const QorShaderValueList& values, int (Value::*changed)() const)
{
    if (positions.size() < 2 * values.size() + 16)
        return;
    positions.clear();
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i] && (static_cast<const Value*>(values[i])->*changed)())
            positions.push_back(static_cast<int>(i));
}

} // namespace QorChangedPositions

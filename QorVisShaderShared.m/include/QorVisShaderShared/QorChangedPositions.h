/// @file
/// The positions (from 0) of a parameter set's values changed since the last upload, in
/// the order they changed, so that an upload visits only those instead of every value.
/// Each implementation's set keeps the list in a std::vector<int>; its values tell the
/// set when they go from unchanged to changed, so a value is listed once between uploads
/// unless its mark was cleared and set again in between. Readers test each listed
/// value's own mark: a position may be listed whose mark was cleared since.
///
/// `changed` is the value kind's mark (as &QorNvFXShaderValue::GetChanged); a value kind
/// also offers SetOwner(set, position), through which it reaches its set's list.
#pragma once

#include "QorVisShaders/QorIShaderParameters.h"

#include <cstddef>
#include <vector>

namespace QorChangedPositions {

/// Appends `value` at the next position of the set's `values`, makes `set` its owner and
/// lists it when it comes changed.
template <typename Set, typename Value>
void Adopt(QorShaderValueList& values, std::vector<int>& positions, Set* set, Value* value,
           int (Value::*changed)() const)
{
    const int position = static_cast<int>(values.size());
    values.push_back(value);
    value->SetOwner(set, position);
    if ((value->*changed)())
        positions.push_back(position);
}

/// Lists `position`. Values cleared and changed again between uploads are listed again;
/// past a bound the list is made anew from the marks, so it never outgrows the set.
template <typename Value>
void Note(std::vector<int>& positions, int position, const QorShaderValueList& values,
          int (Value::*changed)() const)
{
    if (positions.size() < 2 * values.size() + 16) {
        positions.push_back(position);
        return;
    }
    positions.clear();
    for (std::size_t i = 0; i < values.size(); ++i)
        if (values[i] && (static_cast<const Value*>(values[i])->*changed)())
            positions.push_back(static_cast<int>(i));
}

} // namespace QorChangedPositions

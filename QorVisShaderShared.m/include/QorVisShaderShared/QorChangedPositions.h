/// @file
/// The positions (from 0) of a parameter set's values changed since the last upload, in
/// the order they changed, so that an upload visits only those instead of every value.
/// Each implementation's set keeps the list in a std::vector<int>; its values tell the
/// set when they go from unchanged to changed, so a value is listed once between uploads
/// unless its mark was cleared and set again in between. Readers test each listed
/// value's own mark: a position may be listed whose mark was cleared since.
#pragma once

#include <cstddef>
#include <vector>

namespace QorChangedPositions {

/// Lists `position`. Values cleared and changed again between uploads are listed again;
/// past a bound the list is made anew from the marks (`changed(i)` answers the mark of
/// value i of the set's `count`), so it never outgrows the set.
template <typename Changed>
void Note(std::vector<int>& positions, int position, std::size_t count, Changed changed)
{
    if (positions.size() < 2 * count + 16) {
        positions.push_back(position);
        return;
    }
    positions.clear();
    for (std::size_t i = 0; i < count; ++i)
        if (changed(i))
            positions.push_back(static_cast<int>(i));
}

} // namespace QorChangedPositions

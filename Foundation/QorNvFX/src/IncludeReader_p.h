/// @file
/// What the host's include callback answers for a name. Private to QorNvFX.
#pragma once

#include <cstddef>
#include <string>

namespace nvFX::detail {

enum class IncludeStatus
{
    Found,
    Missing,  ///< no callback, or it answered neither a file nor a text
    TooLarge, ///< more than kMaxIncludeBytes
    Unreadable,
};

constexpr std::size_t kMaxIncludeBytes = 16u << 20;

/// Asks the installed callback for `name` and reads its answer into `content`: a file
/// is read whole and closed (a file wins when the callback answers both), a text is
/// copied.
IncludeStatus readInclude(const std::string& name, std::string& content);

} // namespace nvFX::detail

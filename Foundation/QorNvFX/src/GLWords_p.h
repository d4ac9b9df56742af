/// @file
/// GL enum names as effects write them, with or without their "GL_" prefix. Private to
/// QorNvFX.
#pragma once

#include <cstddef>
#include <string_view>

namespace nvFX::detail {

struct GLWord
{
    const char* name; ///< the GL name, with its "GL_" prefix
    int value;
};

/// The word of `words` that `written` names ("GL_LEQUAL" or "LEQUAL"); null when none.
inline const GLWord* findGLWord(const GLWord* words, std::size_t count, std::string_view written)
{
    constexpr std::string_view prefix = "GL_";
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view name = words[i].name;
        const bool bare = name.compare(0, prefix.size(), prefix) == 0 && written == name.substr(prefix.size());
        if (written == name || bare)
            return &words[i];
    }
    return nullptr;
}

} // namespace nvFX::detail

/// @file
/// Which parameters of an effect never become user values, for both implementations:
/// those the renderer feeds by semantic (each implementation names its own semantics)
/// and those whose name carries the material's description or a switch the renderer
/// reads.
#pragma once

#include <cstddef>
#include <cstring>

namespace QorHiddenParameters {

/// Whether `name` is "Category", "keywords", "description", "NeedTandB" or
/// "AutomaticEnvironmentMapTracking". A null name is not.
bool IsHiddenName(const char* name);

/// Whether a parameter is kept from the user's values: its non-empty semantic is among
/// `fedSemantics`, or its name is hidden.
template <std::size_t N>
bool IsHidden(const char* semantic, const char* name, const char* const (&fedSemantics)[N])
{
    if (semantic && *semantic)
        for (const char* fed : fedSemantics)
            if (std::strcmp(fed, semantic) == 0)
                return true;
    return IsHiddenName(name);
}

} // namespace QorHiddenParameters

/// @file
/// Which effect technology a shader object or effect belongs to.
#pragma once

#include <cstdint>

enum QorFxImplementation : std::uint32_t
{
    QorFxUndecided = 0, ///< only the initial value of the manager's cache
    QorFxCgFX = 1,      ///< CgFX effects through the Cg runtime (the default)
    QorFxQRFX = 2,      ///< GLSL effects (".glslfx") through nvFX
    QorFxQRFX0 = 3,     ///< the framework's own newer effect path
};

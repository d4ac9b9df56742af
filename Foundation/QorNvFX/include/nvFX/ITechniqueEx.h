/// @file
/// The technique's extended interface: passes by name.
#pragma once

#include "nvFX/ITechnique.h"

namespace nvFX {

class ITechniqueEx : public ITechnique
{
public:
    /// Null when the technique has no pass of that name.
    virtual IPass* findPass(const char* name) = 0;
};

} // namespace nvFX

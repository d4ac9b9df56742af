/// @file
/// The container's extended interface: counts, for tools that list an effect.
#pragma once

#include "nvFX/IContainer.h"

namespace nvFX {

class IContainerEx : public IContainer
{
public:
    virtual int getNumTechniques() const = 0;
    /// Effect-scope uniforms, as findUniform(int) runs over them.
    virtual int getNumUniforms() const = 0;
};

} // namespace nvFX

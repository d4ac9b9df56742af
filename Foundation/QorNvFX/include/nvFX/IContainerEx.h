/// @file
/// The container's extended interface: counts and constant buffers, for tools that list
/// an effect.
#pragma once

#include "nvFX/IContainer.h"

namespace nvFX {

class IContainerEx : public IContainer
{
public:
    virtual int getNumTechniques() const = 0;
    /// Effect-scope uniforms, as findUniform(int) runs over them.
    virtual int getNumUniforms() const = 0;
    /// Constant buffers in declaration order (global ones among them).
    virtual int getNumBuffers() const = 0;
    /// The name of buffer `buffer`; null for an index out of range.
    virtual const char* getBufferName(int buffer) const = 0;
    /// True when buffer `buffer` is declared `global`, shared with the other effects that
    /// declare it; false for an effect's own or an index out of range.
    virtual bool isBufferGlobal(int buffer) const = 0;
    /// Member `member` of buffer `buffer`, in declaration order; null out of range.
    virtual IUniform* getBufferMember(int buffer, int member) = 0;
};

} // namespace nvFX

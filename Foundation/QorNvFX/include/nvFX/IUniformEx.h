/// @file
/// The uniform's extended interface: its size and where it is declared.
#pragma once

#include "nvFX/IUniform.h"

namespace nvFX {

class IUniformEx : public IUniform
{
public:
    /// Components of one element: 1 to 4 for scalars and vectors, 4, 9 or 16 for
    /// matrices, 1 for samplers.
    virtual int getComponentCount() const = 0;
    /// The constant buffer that declares the uniform; null for an effect-scope uniform.
    virtual const char* getBufferName() const = 0;
    /// The texture unit a sampler reads (its first element's); -1 for other uniforms.
    virtual int getSamplerUnit() const = 0;
};

} // namespace nvFX

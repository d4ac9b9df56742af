/// @file
/// A pass: one GL program and the render states it draws with.
#pragma once

namespace nvFX {

class IAnnotation;
class IPassEx;

/// Borrowed from its container, valid until the container is destroyed.
///
/// The pass's program was compiled and linked with glslang when the effect loaded. Its
/// GL program is made in the GL context current at the first validate() or setup(),
/// and the pass must be used in that context (or one sharing its objects) afterwards.
class IPass
{
public:
    virtual IPassEx* getExInterface() = 0;
    virtual const char* getName() const = 0;
    /// The annotations written after the pass's name; never null.
    virtual IAnnotation* annotations() = 0;
    /// Compiles and links the GL program if not done yet. False, with a message, when
    /// no GLX context is current or GL refuses the program; a refusal is remembered.
    virtual bool validate() = 0;
    /// Before drawing: validates, makes the program current, pushes the values of the
    /// uniforms it uses that changed since its last setup, binds sampler textures and
    /// constant buffers, and applies the pass's render states, remembering the ones it
    /// replaces. False when validation fails; nothing is changed then.
    virtual bool setup() = 0;
    /// After drawing: puts back the render states and the program that setup()
    /// replaced. False when the pass is not set up.
    virtual bool restore() = 0;

protected:
    IPass() = default;
    virtual ~IPass() = default;
    IPass(const IPass&) = delete;
    IPass& operator=(const IPass&) = delete;
};

} // namespace nvFX

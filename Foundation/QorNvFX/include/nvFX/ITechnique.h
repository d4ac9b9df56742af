/// @file
/// A technique of an effect: its passes, in order.
#pragma once

namespace nvFX {

class IAnnotation;
class IPass;
class ITechniqueEx;

/// Borrowed from its container, valid until the container is destroyed.
class ITechnique
{
public:
    virtual ITechniqueEx* getExInterface() = 0;
    virtual const char* getName() const = 0;
    virtual int getNumPasses() const = 0;
    /// Null for a bad index.
    virtual IPass* getPass(int index) = 0;
    /// The annotations written after the technique's name; never null.
    virtual IAnnotation* annotations() = 0;
    /// Validates every pass (IPass::validate); true when all of them are valid.
    virtual bool validate() = 0;

protected:
    ITechnique() = default;
    virtual ~ITechnique() = default;
    ITechnique(const ITechnique&) = delete;
    ITechnique& operator=(const ITechnique&) = delete;
};

} // namespace nvFX

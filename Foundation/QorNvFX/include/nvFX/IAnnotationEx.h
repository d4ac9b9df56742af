/// @file
/// The annotations' extended interface: listing them and reading brace lists.
#pragma once

#include "nvFX/IAnnotation.h"

namespace nvFX {

class IAnnotationEx : public IAnnotation
{
public:
    /// Annotations in the order written.
    virtual int getNumAnnotations() const = 0;
    /// Null for a bad index.
    virtual const char* getAnnotationName(int index) const = 0;
    /// Copies up to `capacity` numbers of the annotation (one for a plain number) into
    /// `values` and returns how many it has; 0 when absent or a string.
    virtual int getAnnotationFloatv(const char* name, float* values, int capacity) const = 0;
};

} // namespace nvFX

/// @file
/// The annotations of a technique, a pass or a uniform.
#pragma once

namespace nvFX {

class IAnnotationEx;

/// Name-value pairs written between '<' and '>': a string, a number or a brace list of
/// numbers. Borrowed from its container, valid until the container is destroyed.
class IAnnotation
{
public:
    virtual IAnnotationEx* getExInterface() = 0;
    /// Null when there is no annotation of that name or it is not a string.
    virtual const char* getAnnotationString(const char* name) const = 0;
    /// A number, or the first of a brace list; 0 when absent or a string.
    virtual float getAnnotationFloat(const char* name) const = 0;
    /// As getAnnotationFloat, truncated toward zero.
    virtual int getAnnotationInt(const char* name) const = 0;

protected:
    IAnnotation() = default;
    virtual ~IAnnotation() = default;
    IAnnotation(const IAnnotation&) = delete;
    IAnnotation& operator=(const IAnnotation&) = delete;
};

} // namespace nvFX

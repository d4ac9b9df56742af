/// @file
/// The annotations of a technique, a pass or a uniform. Private to QorNvFX.
#pragma once

#include "nvFX/IAnnotationEx.h"

#include "EffectDescription_p.h"

namespace nvFX::detail {

class Annotations final : public IAnnotationEx
{
public:
    explicit Annotations(AnnotationList entries) : m_entries(std::move(entries)) {}

    IAnnotationEx* getExInterface() override { return this; }
    const char* getAnnotationString(const char* name) const override;
    float getAnnotationFloat(const char* name) const override;
    int getAnnotationInt(const char* name) const override;
    int getNumAnnotations() const override;
    const char* getAnnotationName(int index) const override;
    int getAnnotationFloatv(const char* name, float* values, int capacity) const override;

private:
    const AnnotationEntry* find(const char* name) const;

    AnnotationList m_entries;
};

} // namespace nvFX::detail

/// @file
/// A technique of a loaded effect: its passes in order. Private to QorNvFX.
#pragma once

#include "nvFX/ITechniqueEx.h"

#include "Annotations_p.h"
#include "Pass_p.h"

#include <memory>
#include <string>
#include <vector>

namespace nvFX::detail {

class Technique final : public ITechniqueEx
{
public:
    Technique(std::string name, AnnotationList annotations, std::vector<std::unique_ptr<Pass>> passes);

    ITechniqueEx* getExInterface() override { return this; }
    const char* getName() const override { return m_name.c_str(); }
    int getNumPasses() const override { return static_cast<int>(m_passes.size()); }
    IPass* getPass(int index) override;
    IAnnotation* annotations() override { return &m_annotations; }
    bool validate() override;
    IPass* findPass(const char* name) override;

private:
    std::string m_name;
    Annotations m_annotations;
    std::vector<std::unique_ptr<Pass>> m_passes;
};

} // namespace nvFX::detail

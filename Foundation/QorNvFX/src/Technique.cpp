#include "Technique_p.h"

#include "Lookup_p.h"

namespace nvFX::detail {

Technique::Technique(std::string name, AnnotationList annotations, std::vector<std::unique_ptr<Pass>> passes)
    : m_name(std::move(name)), m_annotations(std::move(annotations)), m_passes(std::move(passes))
{
}

IPass* Technique::getPass(int index)
{
    return atIndex(m_passes, index);
}

bool Technique::validate()
{
    bool valid = true;
    for (const std::unique_ptr<Pass>& pass : m_passes)
        valid = pass->validate() && valid;
    return valid;
}

IPass* Technique::findPass(const char* name)
{
    return byName(m_passes, name);
}

} // namespace nvFX::detail

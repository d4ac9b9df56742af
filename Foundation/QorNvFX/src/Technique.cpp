#include "Technique_p.h"

#include <cstring>

namespace nvFX::detail {

Technique::Technique(std::string name, AnnotationList annotations, std::vector<std::unique_ptr<Pass>> passes)
    : m_name(std::move(name)), m_annotations(std::move(annotations)), m_passes(std::move(passes))
{
}

IPass* Technique::getPass(int index)
{
    return index >= 0 && index < getNumPasses() ? m_passes[static_cast<std::size_t>(index)].get() : nullptr;
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
    if (!name)
        return nullptr;
    for (const std::unique_ptr<Pass>& pass : m_passes)
        if (std::strcmp(pass->getName(), name) == 0)
            return pass.get();
    return nullptr;
}

} // namespace nvFX::detail

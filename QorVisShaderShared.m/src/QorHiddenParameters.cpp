#include "QorVisShaderShared/QorHiddenParameters.h"

#include "QorVisShaderShared/QorSemanticTable.h"

#include <cstring>

namespace {

const char* const kHiddenNames[] = {"Category", "keywords", "description", "NeedTandB",
                                    "AutomaticEnvironmentMapTracking"};

} // namespace

bool QorHiddenParameters::IsHiddenName(const char* name)
{
    if (!name)
        return false;
    for (const char* hidden : kHiddenNames)
        if (std::strcmp(hidden, name) == 0)
            return true;
    return false;
}

bool QorHiddenParameters::IsHidden(QorFxImplementation implementation, const char* semantic, const char* name)
{
    return QorHidesSemantic(implementation, semantic) || IsHiddenName(name);
}

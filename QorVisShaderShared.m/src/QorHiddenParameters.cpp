#include "QorVisShaderShared/QorHiddenParameters.h"

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

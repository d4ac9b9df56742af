#include "QorfxIncludes.h"

#include "QorSystem/QorEnvironment.h"

namespace {

std::string Folders(const char* variable)
{
    const char* value = QorGetEnv(variable);
    return std::string(variable) + (value && *value ? " (" + std::string(value) + ")" : " (unset)");
}

} // namespace

std::string QorfxIncludeAdvice(const std::vector<QorfxMissingInclude>& missing)
{
    std::string advice;
    for (const QorfxMissingInclude& include : missing) {
        advice += "include \"" + include.name + "\" was not found: ";
        if (include.isFile)
            advice += "looked for as it stands and under shaders/ of each folder of " + Folders("QorGraphicPath") +
                      " and " + Folders("QorStartupPath") +
                      "; add --path DIR for the folder whose shaders/ holds it (or that shaders/ folder itself)\n";
        else
            advice += "it is no include file, so it must be registered in memory, and no include of that name "
                      "is; register one with --include " +
                      include.name + "=FILE\n";
    }
    return advice;
}

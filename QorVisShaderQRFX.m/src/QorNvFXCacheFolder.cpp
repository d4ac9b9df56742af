#include "QorNvFXCacheFolder.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"

#include "nvFX/nvFX.h"

#include <mutex>
#include <string>

void QorNvFXUseCacheFolderOfEnvironment()
{
    std::string folder;
    if (const char* named = QorGetEnv("QorShaderCache"))
        folder = *named ? QorNativePath(named) : std::string();
    else if (const char* temp = QorGetEnv("QorTemp"))
        folder = QorNativePath((std::string(temp) + "\\GLSLFXCache").c_str());
    static std::mutex lock;
    static std::string applied;
    const std::lock_guard<std::mutex> guard(lock);
    if (folder != applied) {
        nvFX::setCacheFolder(folder.c_str());
        applied = folder;
    }
}

#include "QorSystem/QorFiles.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

std::string QorNativePath(const char* path)
{
    std::string native(path ? path : "");
    for (char& c : native)
        if (c == '\\')
            c = '/';
    return native;
}

int QorFileAccess(const char* path, int mode)
{
    if (!path || !*path)
        return -1;
    int posixMode = F_OK;
    if (mode & 2)
        posixMode |= W_OK;
    if (mode & 4)
        posixMode |= R_OK;
    return access(QorNativePath(path).c_str(), posixMode) == 0 ? 0 : -1;
}

FILE* QorFopen(const char* path, const char* mode)
{
    if (!path || !*path || !mode)
        return nullptr;
    return std::fopen(QorNativePath(path).c_str(), mode);
}

namespace {

bool IsDirectory(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool HasParentComponent(const std::string& path)
{
    size_t start = 0;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        if (path.compare(start, end - start, "..") == 0)
            return true;
        start = end + 1;
    }
    return false;
}

} // namespace

int QorCreateDirectory(const char* path)
{
    const std::string native = QorNativePath(path);
    if (native.empty() || HasParentComponent(native))
        return -1;
    // Make each missing level from the root down; an existing level is fine.
    for (size_t slash = native.find('/', 1); ; slash = native.find('/', slash + 1)) {
        const std::string level = native.substr(0, slash);
        if (!level.empty() && mkdir(level.c_str(), 0777) != 0 && errno != EEXIST)
            return -1;
        if (slash == std::string::npos)
            break;
    }
    return IsDirectory(native) ? 0 : -1;
}

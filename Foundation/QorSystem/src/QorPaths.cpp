#include "QorSystem/QorPaths.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"

std::vector<QorString> QorSplitPathList(const char* list)
{
    std::vector<QorString> entries;
    if (!list)
        return entries;
    const char* start = list;
    for (const char* p = list;; ++p) {
        if (*p == ';' || *p == '\0') {
            if (p > start)
                entries.emplace_back(start, static_cast<int>(p - start));
            if (*p == '\0')
                break;
            start = p + 1;
        }
    }
    return entries;
}

QorString QorMakePath(const char* directory, const char* file)
{
    QorString path(directory);
    const int length = path.GetLength();
    if (length > 0 && path[length - 1] != '\\' && path[length - 1] != '/')
        path += "\\";
    return path += file;
}

int QorSplitPath(const char* path, QorString& directory, QorString& file)
{
    const QorString whole(path);
    const int separator = whole.ReverseFindOneOf("\\/");
    directory = whole.Left(separator + 1);
    file = whole.Mid(separator + 1);
    return separator >= 0 ? 1 : 0;
}

namespace {

// The first "directory + name" of the variable's list that passes the access test.
bool SearchVariable(const char* name, const char* variable, int mode, QorString& found)
{
    for (const QorString& directory : QorSplitPathList(QorGetEnv(variable))) {
        QorString candidate = QorMakePath(directory.c_str(), name);
        if (QorFileAccess(candidate.c_str(), mode) == 0) {
            found = candidate;
            return true;
        }
    }
    return false;
}

} // namespace

QorString QorFindPath(const char* name, const char* variable)
{
    QorString found(name);
    SearchVariable(name, variable, 0, found);
    return found;
}

int QorGetFilePathFromOfficialVariable(QorString& path, const char* variable, int mode)
{
    if (path.IsEmpty())
        return -1;
    if (QorFileAccess(path.c_str(), mode) == 0)
        return 0;
    return SearchVariable(path.c_str(), variable, mode, path) ? 0 : -1;
}

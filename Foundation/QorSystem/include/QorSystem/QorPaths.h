/// @file
/// Path building and search along the framework's path variables, which hold
/// ";"-separated directory lists ("QorGraphicPath", "QorStartupPath").
#pragma once

#include "QorSystem/QorString.h"

#include <vector>

/// The directories of a ";"-separated list, empty entries dropped.
std::vector<QorString> QorSplitPathList(const char* list);

/// Joins a directory and a file name with "\" unless the directory is empty or
/// already ends with "\" or "/".
QorString QorMakePath(const char* directory, const char* file);

/// Splits at the last "\" or "/": the directory keeps its separator, the file is the
/// rest. Returns 1 when the path had a directory part, 0 when it had none.
int QorSplitPath(const char* path, QorString& directory, QorString& file);

/// The first directory of the variable's list that holds `name` (directory + name),
/// or the name unchanged when none does or the variable is unset.
QorString QorFindPath(const char* name, const char* variable);

/// Resolves `path` along the variable's directories. When `path` itself passes
/// QorFileAccess(path, mode) it is kept; otherwise the first directory + path that
/// passes replaces it. Returns 0 when resolved, -1 when found nowhere.
int QorGetFilePathFromOfficialVariable(QorString& path, const char* variable, int mode);

/// @file
/// File access with the framework's paths. The framework builds Windows-style paths
/// ("\materials\shaders\"); every function here accepts "\" and "/" alike and maps "\"
/// to "/" before touching the file system. Third-party code that opens files itself
/// (the Cg runtime, image and zip libraries) must be given QorNativePath().
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

/// The path with every "\" turned into "/"; a null path gives "".
std::string QorNativePath(const char* path);

/// Like _access: mode 0 tests existence, 2 write, 4 read, 6 both.
/// Returns 0 when the file allows it, -1 otherwise (also for a null or empty path).
int QorFileAccess(const char* path, int mode);

/// fopen() on the native form of the path; null on failure or a null argument.
FILE* QorFopen(const char* path, const char* mode);

struct QorFileCloser
{
    void operator()(FILE* file) const { std::fclose(file); }
};
/// An open C stream closed when it goes out of scope.
using QorFile = std::unique_ptr<FILE, QorFileCloser>;

/// True when the path names a regular file (not a FIFO, a device or a folder): the files
/// the framework opens for reading must be such, or opening them could wait forever.
bool QorIsRegularFile(const char* path);

/// Reads a whole regular file of at most `maxBytes` bytes into `content`. A FIFO, a device,
/// a folder or a larger file is refused without waiting or reading on, so that a special
/// file named where a file is expected can neither hang the caller nor fill its memory.
/// False, with `content` untouched and `why` (when given) saying what was wrong, on any
/// refusal or read error.
bool QorReadRegularFile(const char* path, std::string& content, std::size_t maxBytes, std::string* why = nullptr);

/// Creates the directory and any missing parents. Returns 0 when it exists afterwards,
/// -1 when it cannot be made, when a component is "..", or when the path is empty.
int QorCreateDirectory(const char* path);

#include "QorSystem/QorFiles.h"

#include <cerrno>
#include <utility>
#include <fcntl.h>
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

bool Refuse(std::string* why, const char* reason)
{
    if (why)
        *why = reason;
    return false;
}

struct Descriptor
{
    explicit Descriptor(int value) : fd(value) {}
    ~Descriptor()
    {
        if (fd >= 0)
            close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int fd;
};

} // namespace

bool QorIsRegularFile(const char* path)
{
    struct stat info;
    return path && *path && stat(QorNativePath(path).c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool QorReadRegularFile(const char* path, std::string& content, std::size_t maxBytes, std::string* why)
{
    if (!path || !*path)
        return Refuse(why, "no file name");
    // Non-blocking, so that opening a FIFO without a writer returns at once.
    const Descriptor file(open(QorNativePath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.fd < 0)
        return Refuse(why, "cannot open the file");
    struct stat info;
    if (fstat(file.fd, &info) != 0 || !S_ISREG(info.st_mode))
        return Refuse(why, "not a regular file");
    if (static_cast<unsigned long long>(info.st_size) > maxBytes)
        return Refuse(why, "the file is too large");
    std::string read(static_cast<std::size_t>(info.st_size), '\0');
    std::size_t done = 0;
    while (done < read.size()) {
        const ssize_t got = ::read(file.fd, &read[done], read.size() - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return Refuse(why, "cannot read the file");
        if (got == 0)
            break; // the file shrank while read: keep what is there
        done += static_cast<std::size_t>(got);
    }
    read.resize(done);
    content = std::move(read);
    return true;
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

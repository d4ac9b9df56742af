#include "QorSystem/QorFiles.h"

#include <atomic>
#include <cerrno>
#include <cstring>
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

int RefuseOpen(std::string* why, const char* reason)
{
    Refuse(why, reason);
    return -1;
}

} // namespace

QorFileDescriptor::~QorFileDescriptor()
{
    if (m_fd >= 0)
        close(m_fd);
}

int QorFileDescriptor::Release()
{
    return std::exchange(m_fd, -1);
}

namespace {

// QorOpenRegularFile, also giving the size it checked: a reader sizes its buffer with it
// instead of asking the system again.
int OpenRegularFile(const char* path, std::uint64_t maxBytes, std::string* why, std::uint64_t& size)
{
    if (!path || !*path)
        return RefuseOpen(why, "no file name");
    // Non-blocking, so that opening a FIFO without a writer returns at once.
    QorFileDescriptor file(open(QorNativePath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.Get() < 0)
        return RefuseOpen(why, std::strerror(errno));
    struct stat info;
    if (fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode))
        return RefuseOpen(why, "not a regular file");
    size = static_cast<std::uint64_t>(info.st_size);
    if (size > maxBytes)
        return RefuseOpen(why, "the file is too large");
    return file.Release();
}

} // namespace

int QorOpenRegularFile(const char* path, std::uint64_t maxBytes, std::string* why)
{
    std::uint64_t size = 0;
    return OpenRegularFile(path, maxBytes, why, size);
}

bool QorIsRegularFile(const char* path, std::uint64_t maxBytes, std::string* why)
{
    return QorFileDescriptor(QorOpenRegularFile(path, maxBytes, why)).Get() >= 0;
}

bool QorReadRegularFile(const char* path, std::string& content, std::size_t maxBytes, std::string* why)
{
    std::uint64_t size = 0;
    const QorFileDescriptor file(OpenRegularFile(path, maxBytes, why, size));
    if (file.Get() < 0)
        return false;
    std::string read(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    while (done < read.size()) {
        const ssize_t got = ::read(file.Get(), &read[done], read.size() - done);
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

QorPartialFile::QorPartialFile(const char* destination) : QorPartialFile(AT_FDCWD, destination) {}

QorPartialFile::QorPartialFile(int folder, const char* name) : m_folder(folder), m_destination(QorNativePath(name))
{
    static std::atomic<unsigned> counter{0};
    m_path = m_destination + ".part-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
}

QorPartialFile::~QorPartialFile()
{
    if (m_written && !m_committed)
        unlinkat(m_folder, m_path.c_str(), 0);
}

bool QorPartialFile::Write(const void* data, std::size_t size, std::string* why)
{
    if (m_written || m_destination.empty())
        return Refuse(why, "nothing to write to");
    // O_EXCL | O_NOFOLLOW: a file or link planted under the partial name is never written through.
    QorFileDescriptor file(openat(m_folder, m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (file.Get() < 0)
        return Refuse(why, "cannot be created");
    m_written = true;
    const char* bytes = static_cast<const char*>(data);
    for (std::size_t done = 0; done < size;) {
        const ssize_t put = ::write(file.Get(), bytes + done, size - done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return Refuse(why, errno == EFBIG ? "cannot be written (beyond the file-size limit)"
                                              : "cannot be written (disk full?)");
        done += static_cast<std::size_t>(put);
    }
    struct stat info;
    if (fsync(file.Get()) != 0 || fstat(file.Get(), &info) != 0 || static_cast<std::size_t>(info.st_size) != size)
        return Refuse(why, "cannot be written (disk full?)");
    if (close(file.Release()) != 0)
        return Refuse(why, "cannot be closed");
    return true;
}

bool QorPartialFile::Commit(std::string* why)
{
    if (!m_written || m_committed)
        return Refuse(why, "was not written");
    if (renameat(m_folder, m_path.c_str(), m_folder, m_destination.c_str()) != 0)
        return Refuse(why, "cannot be renamed into place");
    m_committed = true;
    return true;
}

bool QorWriteFileAtomically(const char* path, const void* data, std::size_t size, std::string* why)
{
    QorPartialFile file(path);
    return file.Write(data, size, why) && file.Commit(why);
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

/// @file
/// File access with the framework's paths. The framework builds Windows-style paths
/// ("\materials\shaders\"); every function here accepts "\" and "/" alike and maps "\"
/// to "/" before touching the file system. Third-party code that opens files itself
/// (the Cg runtime, image and zip libraries) must be given QorNativePath().
#pragma once

#include <cstddef>
#include <cstdint>
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

/// An open file descriptor, closed when it goes out of scope; -1 holds none.
class QorFileDescriptor
{
public:
    explicit QorFileDescriptor(int fd) : m_fd(fd) {}
    ~QorFileDescriptor();
    QorFileDescriptor(const QorFileDescriptor&) = delete;
    QorFileDescriptor& operator=(const QorFileDescriptor&) = delete;

    int Get() const { return m_fd; }
    /// Hands the descriptor over without closing it.
    int Release();

private:
    int m_fd;
};

/// Opens a regular file of at most `maxBytes` bytes for reading and returns its descriptor,
/// which the caller closes; -1, with `why` (when given) saying what was wrong, for a FIFO,
/// a device, a folder, a larger file or one that cannot be opened. Never waits: a FIFO
/// without a writer is refused at once.
int QorOpenRegularFile(const char* path, std::uint64_t maxBytes, std::string* why = nullptr);

/// Whether QorOpenRegularFile would open the file; for callers whose third-party reader
/// opens the file by name.
bool QorIsRegularFile(const char* path, std::uint64_t maxBytes, std::string* why = nullptr);

/// Reads a whole regular file of at most `maxBytes` bytes into `content`. A FIFO, a device,
/// a folder or a larger file is refused without waiting or reading on, so that a special
/// file named where a file is expected can neither hang the caller nor fill its memory.
/// False, with `content` untouched and `why` (when given) saying what was wrong, on any
/// refusal or read error.
bool QorReadRegularFile(const char* path, std::string& content, std::size_t maxBytes, std::string* why = nullptr);

/// A file written beside its destination and renamed over it, so that the destination
/// only ever holds a complete file: a failed write leaves any earlier file as it was.
/// The partial file is removed unless committed.
class QorPartialFile
{
public:
    explicit QorPartialFile(const char* destination);
    /// The file `name` (no folder part) inside the open folder `folder`, a descriptor the
    /// caller keeps open until the file is committed or dropped: the write and the rename
    /// stay in that very folder even if its path is changed meanwhile.
    QorPartialFile(int folder, const char* name);
    ~QorPartialFile();
    QorPartialFile(const QorPartialFile&) = delete;
    QorPartialFile& operator=(const QorPartialFile&) = delete;

    /// Writes the bytes into a new file beside the destination, made for this write only
    /// (never through an existing file or link). A full disk or a file-size limit must not
    /// pass for success, so every write, the flush to the disk, the close and the
    /// resulting size are checked. False, with `why`, on any failure.
    bool Write(const void* data, std::size_t size, std::string* why = nullptr);
    /// Renames the written file over the destination; a link there is replaced, not
    /// followed. False, with `why`, when nothing was written or the rename fails.
    bool Commit(std::string* why = nullptr);

private:
    int m_folder; // AT_FDCWD, or the caller's open folder
    std::string m_destination;
    std::string m_path;
    bool m_written = false;
    bool m_committed = false;
};

/// QorPartialFile's Write and Commit in one call.
bool QorWriteFileAtomically(const char* path, const void* data, std::size_t size, std::string* why = nullptr);

/// Creates the directory and any missing parents. Returns 0 when it exists afterwards,
/// -1 when it cannot be made, when a component is "..", or when the path is empty.
int QorCreateDirectory(const char* path);

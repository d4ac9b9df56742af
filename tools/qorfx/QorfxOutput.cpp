#include "QorfxOutput.h"

#include "QorSystem/QorFiles.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// The folders of `folder` that do not exist yet, innermost first.
std::vector<fs::path> MissingFolders(const fs::path& folder)
{
    std::vector<fs::path> missing;
    std::error_code failure;
    for (fs::path at = fs::absolute(folder, failure).lexically_normal(); !at.empty() && !fs::exists(at, failure);
         at = at.parent_path()) {
        missing.push_back(at);
        if (at == at.parent_path())
            break;
    }
    return missing;
}

bool Fail(std::string& why, const std::string& reason)
{
    why = reason;
    return false;
}

// Opens the tool's own folder `sub` inside the open folder `parent`, making it when
// missing; `made` tells whether it was made here. -1, with `why`, for a link or a file.
int OpenOwnFolder(int parent, const std::string& sub, const std::string& shown, bool& made, std::string& why)
{
    made = mkdirat(parent, sub.c_str(), 0777) == 0;
    if (!made && errno != EEXIST) {
        why = shown + ": cannot create the folder (" + std::strerror(errno) + ")";
        return -1;
    }
    // O_NOFOLLOW: a link planted under the name the tool chose is never followed.
    const int fd = openat(parent, sub.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        why = shown + (errno == ELOOP || errno == ENOTDIR ? ": is a symbolic link or not a folder; not written through"
                                                           : ": cannot open the folder");
    return fd;
}

} // namespace

namespace QorfxOutput {

bool WriteFile(const std::string& path, const std::string& bytes, std::string& why)
{
    std::string reason;
    if (!QorWriteFileAtomically(path.c_str(), bytes.data(), bytes.size(), &reason))
        return Fail(why, path + ": cannot write the file (" + reason + ")");
    return true;
}

bool WriteFolder(const std::string& folder, const std::string& sub, const Files& files, std::string& why)
{
    const std::vector<fs::path> missing = MissingFolders(folder);
    std::error_code failure;
    fs::create_directories(folder, failure);
    const auto undo = [&] {
        for (const fs::path& made : missing)
            fs::remove(made, failure); // only empty folders go
    };
    const QorFileDescriptor root(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (root.Get() < 0) {
        undo();
        return Fail(why, folder + ": cannot create or open the folder");
    }
    const std::string shown = sub.empty() ? folder : (fs::path(folder) / sub).string();
    bool madeSub = false;
    const QorFileDescriptor target(sub.empty() ? dup(root.Get()) : OpenOwnFolder(root.Get(), sub, shown, madeSub, why));
    const auto undoAll = [&] {
        if (madeSub)
            unlinkat(root.Get(), sub.c_str(), AT_REMOVEDIR);
        undo();
    };
    if (target.Get() < 0) {
        undoAll();
        return false;
    }
    std::vector<std::unique_ptr<QorPartialFile>> written;
    std::string reason;
    for (const auto& [name, bytes] : files) {
        written.push_back(std::make_unique<QorPartialFile>(target.Get(), name.c_str()));
        if (name.find('/') != std::string::npos || !written.back()->Write(bytes.data(), bytes.size(), &reason)) {
            written.clear();
            undoAll();
            return Fail(why, (fs::path(shown) / name).string() + ": " + (reason.empty() ? "not a plain name" : reason));
        }
    }
    for (std::size_t i = 0; i < written.size(); ++i)
        if (!written[i]->Commit(&reason))
            return Fail(why, (fs::path(shown) / files[i].first).string() + ": " + reason);
    return true;
}

} // namespace QorfxOutput

#include "QorfxViewWatch.h"

#include "QorfxMaterial.h"

#include "QorSystem/QorFiles.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// Includes nest; a file that includes itself must not loop.
constexpr int kMaxIncludeDepth = 16;

// The file an "#include" line names, or "" for any other line.
std::string IncludedName(const std::string& line)
{
    std::size_t at = line.find_first_not_of(" \t");
    if (at == std::string::npos || line[at] != '#')
        return {};
    at = line.find_first_not_of(" \t", at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0)
        return {};
    at = line.find_first_not_of(" \t", at + 7);
    if (at == std::string::npos || (line[at] != '"' && line[at] != '<'))
        return {};
    const std::size_t end = line.find(line[at] == '"' ? '"' : '>', at + 1);
    return end == std::string::npos ? std::string() : line.substr(at + 1, end - at - 1);
}

} // namespace

QorfxViewWatch::Stamp QorfxViewWatch::Take(const std::string& file)
{
    struct stat info;
    Stamp stamp;
    if (stat(file.c_str(), &info) != 0)
        return stamp;
    stamp.kind = S_ISREG(info.st_mode) ? 1 : 2;
    stamp.size = info.st_size;
    stamp.modified = static_cast<long long>(info.st_mtim.tv_sec) * 1000000000LL + info.st_mtim.tv_nsec;
    return stamp;
}

void QorfxViewWatch::Watch(const std::string& file)
{
    m_files.clear();
    m_stamps.clear();
    m_files.push_back(file);
    m_stamps.push_back(Take(file));
    if (fs::path(file).extension() != ".zpk")
        AddIncludes(file, fs::path(file).parent_path().string(), 0);
}

void QorfxViewWatch::AddIncludes(const std::string& file, const std::string& effectFolder, int depth)
{
    std::string text;
    if (depth >= kMaxIncludeDepth || !QorReadRegularFile(file.c_str(), text, kQorfxMaxSourceBytes))
        return;
    const fs::path effect(effectFolder);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::string name = IncludedName(line);
        if (name.empty())
            continue;
        for (const fs::path& folder :
             {fs::path(file).parent_path(), effect / "shaders", effect.parent_path() / "shaders"}) {
            const std::string candidate = (folder / name).lexically_normal().string();
            if (Take(candidate).kind != 1)
                continue;
            if (std::find(m_files.begin(), m_files.end(), candidate) == m_files.end()) {
                m_files.push_back(candidate);
                m_stamps.push_back(Take(candidate));
                AddIncludes(candidate, effectFolder, depth + 1);
            }
            break;
        }
    }
}

bool QorfxViewWatch::Changed() const
{
    for (std::size_t i = 0; i < m_files.size(); ++i)
        if (Take(m_files[i]) != m_stamps[i])
            return true;
    return false;
}

#include "QorTestSupport.h"

#include "QorDiagnostics/CheckFailure.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

QorCapturingSink::QorCapturingSink()
{
    m_previous = QorSetDiagnosticSink([this](const char* message, const char* source, int line) {
        m_records.push_back({message, source, line});
    });
}

QorCapturingSink::~QorCapturingSink()
{
    QorSetDiagnosticSink(m_previous);
}

QorTempDir::QorTempDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "qortest-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot create a temporary folder");
    m_path = pattern;
}

QorTempDir::~QorTempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string QorTempDir::File(const std::string& relative) const
{
    return m_path + "/" + relative;
}

std::string QorTempDir::Write(const std::string& relative, const std::string& content) const
{
    const std::filesystem::path path = File(relative);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
}

QorScopedEnv::QorScopedEnv(const char* name, const char* value) : m_name(name)
{
    const char* old = std::getenv(name);
    m_hadOld = old != nullptr;
    m_old = old ? old : "";
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

QorScopedEnv::~QorScopedEnv()
{
    if (m_hadOld)
        setenv(m_name.c_str(), m_old.c_str(), 1);
    else
        unsetenv(m_name.c_str());
}

std::string QorReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::string QorCacheKeyOf(const std::string& value, const std::string& cacheFolder, const std::string& file)
{
    const std::string prefix = cacheFolder + "\\ZPKResources\\", suffix = "\\" + file;
    if (value.size() != prefix.size() + 16 + suffix.size() || value.compare(0, prefix.size(), prefix) != 0 ||
        value.compare(prefix.size() + 16, std::string::npos, suffix) != 0)
        return "";
    const std::string key = value.substr(prefix.size(), 16);
    return key.find_first_not_of("0123456789abcdef") == std::string::npos ? key : "";
}

std::vector<std::string> QorFolderContent(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& item : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(item.path().lexically_relative(folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

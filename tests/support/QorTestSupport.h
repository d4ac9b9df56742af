/// @file
/// Helpers shared by the tests: a capturing diagnostics sink, temporary folders,
/// environment variables restored on scope exit, and reading files and folders.
#pragma once

#include "QorDiagnostics/CheckFailure.h"

#include <string>
#include <vector>

struct QorDiagnosticRecord
{
    std::string message;
    std::string source;
    int line = 0;
};

/// Captures every CheckFailure__ report while alive; restores the previous sink after.
class QorCapturingSink
{
public:
    QorCapturingSink();
    ~QorCapturingSink();
    QorCapturingSink(const QorCapturingSink&) = delete;
    QorCapturingSink& operator=(const QorCapturingSink&) = delete;

    const std::vector<QorDiagnosticRecord>& Records() const { return m_records; }
    void Clear() { m_records.clear(); }

private:
    std::vector<QorDiagnosticRecord> m_records;
    QorDiagnosticSink m_previous;
};

/// A fresh folder under the system's temporary directory, removed with its content.
class QorTempDir
{
public:
    QorTempDir();
    ~QorTempDir();
    QorTempDir(const QorTempDir&) = delete;
    QorTempDir& operator=(const QorTempDir&) = delete;

    const std::string& Path() const { return m_path; }
    /// Path() + "/" + relative.
    std::string File(const std::string& relative) const;
    /// Writes `content` to Path()/relative, creating folders on the way; returns the path.
    std::string Write(const std::string& relative, const std::string& content) const;

private:
    std::string m_path;
};

/// Sets (or, with null, unsets) an environment variable; restores its old state after.
class QorScopedEnv
{
public:
    QorScopedEnv(const char* name, const char* value);
    ~QorScopedEnv();
    QorScopedEnv(const QorScopedEnv&) = delete;
    QorScopedEnv& operator=(const QorScopedEnv&) = delete;

private:
    std::string m_name;
    std::string m_old;
    bool m_hadOld;
};

/// Reads a whole file; "" when missing.
std::string QorReadFile(const std::string& path);

/// The content key of a texture value that names a cached file,
/// "<cacheFolder>\ZPKResources\<key>\<file>" with a key of 16 hexadecimal digits; "" when
/// the value is not such a name.
std::string QorCacheKeyOf(const std::string& value, const std::string& cacheFolder, const std::string& file);

/// Everything below `folder`, files and folders at any depth, as sorted paths relative to it.
std::vector<std::string> QorFolderContent(const std::string& folder);

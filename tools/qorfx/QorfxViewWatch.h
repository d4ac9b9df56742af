/// @file
/// Which files a material window watches for saves: the effect file and the includes it
/// names, found where effects find them, each known by its kind, size and modification
/// time, compared once a frame.
#pragma once

#include <string>
#include <vector>

class QorfxViewWatch
{
public:
    /// Watches `file` and, unless it is a package, the includes its text names (and
    /// theirs): `#include "NAME"` looked for beside the including file and in the
    /// "shaders" folder of the effect's folder and of its parent. Replaces what was watched.
    void Watch(const std::string& file);
    /// True when a watched file was saved, removed, made, or became something other than
    /// a regular file since Watch().
    bool Changed() const;
    const std::vector<std::string>& Files() const { return m_files; }

private:
    struct Stamp
    {
        int kind = 0; ///< 0 missing, 1 regular file, 2 something else
        long long size = 0;
        long long modified = 0; ///< nanoseconds
        bool operator!=(const Stamp& other) const
        {
            return kind != other.kind || size != other.size || modified != other.modified;
        }
    };
    static Stamp Take(const std::string& file);
    void AddIncludes(const std::string& file, const std::string& effectFolder, int depth);

    std::vector<std::string> m_files;
    std::vector<Stamp> m_stamps;
};

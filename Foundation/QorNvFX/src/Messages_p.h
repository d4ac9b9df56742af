/// @file
/// Message formatting for the runtime's own reports. Private to QorNvFX.
#pragma once

#include <cstdarg>
#include <string>
#include <vector>

namespace nvFX::detail {

/// Where a construct stands: a source of the effect (see SourceNames) and its line.
struct SourceLocation
{
    int source = 0;
    int line = 0;
};

/// The names of an effect's sources, so that a message can say which file a line is
/// in: source 0 is what the runtime generates itself, 1 the effect's text (named after
/// its container), 2 and up its includes in the order they were read.
class SourceNames
{
public:
    explicit SourceNames(std::string effectName);
    /// Adds an include and returns its source number.
    int add(std::string name);
    const std::string& name(int source) const;
    int count() const { return static_cast<int>(m_names.size()); }

private:
    std::vector<std::string> m_names;
};

/// vsnprintf into a string; empty when the format cannot be formatted.
std::string formatv(const char* format, std::va_list arguments);

/// Prints "<source>(<line>): error: <what>" through nvFX::printf.
void reportError(const SourceNames& names, SourceLocation at, const std::string& what);

} // namespace nvFX::detail

/// @file
/// What the tool tells a user about includes an effect could not find.
#pragma once

#include <string>
#include <vector>

/// An include the last compilation could not find.
struct QorfxMissingInclude
{
    std::string name; ///< as the effect writes it
    bool isFile;      ///< looked for as a file on the search paths, else as an in-memory include
};

/// One line per missing include: which one, where it was looked for, and how to supply it
/// ("--include NAME=FILE" for in-memory includes). Empty for none.
std::string QorfxIncludeAdvice(const std::vector<QorfxMissingInclude>& missing);

/// @file
/// Every file qorfx writes goes through here: written whole or not at all, and never
/// through a symbolic link the tool did not make. A path the user names is taken as
/// named; each file is written beside its place and renamed over it, so a link at that
/// name is replaced, never followed; a folder the tool names inside the user's (one per
/// migrated material) must be a real folder or a new one.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace QorfxOutput {

/// The files of a folder: a plain name (no folder part) and the bytes of each.
using Files = std::vector<std::pair<std::string, std::string>>;

/// Writes `bytes` to `path`, whose folder must exist. False with `why` naming the file.
bool WriteFile(const std::string& path, const std::string& bytes, std::string& why);

/// Writes `files` into `folder`/`sub`, or into `folder` itself when `sub` is empty, all or
/// none. `folder` is the user's: made with its parents when missing. `sub` is a name the
/// tool chose: made when missing, refused when it is a link or not a folder. On failure
/// the partial files and the folders made for them are removed again. False with `why`.
bool WriteFolder(const std::string& folder, const std::string& sub, const Files& files, std::string& why);

} // namespace QorfxOutput

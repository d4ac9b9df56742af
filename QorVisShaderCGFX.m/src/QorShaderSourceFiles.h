/// @file
/// Finding and reading effect source files, shared by the shader object and the effect.
#pragma once

#include "QorSystem/QorString.h"
#include "QorSystem/QorUnicodeString.h"

namespace QorShaderSourceFiles {

/// The first "<entry>\materials\shaders\<name>" that exists, over the entries of
/// "QorStartupPath": the first split at `firstDelimiters`, the later ones at
/// `laterDelimiters`. False when the variable is unset or no entry holds the file.
bool FindUnderStartupPath(const QorString& name, const char* firstDelimiters, const char* laterDelimiters,
                          QorString& found);

/// Replaces `text` with the file's content, read in text mode in chunks of at most
/// 255 bytes. False (and `text` untouched) when the file cannot be opened.
bool ReadSource(const QorString& path, QorUnicodeString& text);

} // namespace QorShaderSourceFiles

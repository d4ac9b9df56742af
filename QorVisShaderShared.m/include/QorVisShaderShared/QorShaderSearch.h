/// @file
/// Where effect files and include files are found along the framework's search paths,
/// and how an effect source is read. Shader objects and effects of both implementations
/// search alike by role; the roles differ on purpose (a shader object and an effect
/// split "QorStartupPath" differently, includes look under "\shaders\" of
/// "QorGraphicPath" before "QorStartupPath" while effect files try "QorStartupPath"
/// first), so each role is one function here.
#pragma once

#include "QorSystem/QorString.h"
#include "QorSystem/QorUnicodeString.h"

#include <cstddef>
#include <initializer_list>

namespace QorShaderSearch {

/// The effect file a shader object is given: the name as it stands; else
/// "<entry>\materials\shaders\<name>" over "QorStartupPath" (its first entry split at
/// ";", the later ones at " ;"); else the name, then "shaders\<name>", along
/// "QorGraphicPath". False when the file is found nowhere.
bool FindShaderFile(const QorString& name, QorString& path);

/// The effect file an effect compiles from: the name as it stands; else
/// "<entry>\materials\shaders\<name>" over the ";"-separated "QorStartupPath"; else the
/// name resolved along "QorGraphicPath". False when the file is found nowhere.
bool FindEffectFile(const QorString& name, QorString& path);

/// True when the include name contains one of the suffixes: such includes are files on
/// disk, every other name is an in-memory include.
bool IsFileInclude(const char* name, std::initializer_list<const char*> suffixes);

/// An include file: `name` as it stands; else "<entry>\shaders\<relative>" over
/// "QorGraphicPath", then over "QorStartupPath". `lastTried`, when given, receives the
/// last candidate tested (`name` itself when no directory was tried).
bool FindIncludeFile(const char* name, const char* relative, QorString& found, QorString* lastTried = nullptr);

/// FindIncludeFile without trying the name as it stands: only
/// "<entry>\shaders\<relative>" over "QorGraphicPath", then over "QorStartupPath".
bool FindIncludeOnSearchPaths(const char* relative, QorString& found, QorString* lastTried = nullptr);

/// The most bytes an effect or include file may have; no real one comes near it.
constexpr std::size_t kMaxSourceBytes = 16u << 20;

/// Replaces `text` with the file's content, up to its first NUL byte. False (and `text`
/// untouched) when the file cannot be read, is not a regular file (a FIFO, a device or a
/// folder, which could hang the caller or fill its memory) or has more than
/// kMaxSourceBytes.
bool ReadSource(const QorString& path, QorUnicodeString& text);

} // namespace QorShaderSearch

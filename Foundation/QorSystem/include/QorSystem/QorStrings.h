/// @file
/// C string helpers under the framework's names, as thin aliases of the POSIX functions,
/// so the library's code reads as the framework's does. `_strdup` copies are released
/// with free().
#pragma once

#include <cstring>
#include <strings.h>

inline char* _strdup(const char* text) { return strdup(text); }
inline int _stricmp(const char* a, const char* b) { return strcasecmp(a, b); }
inline int _strnicmp(const char* a, const char* b, size_t count) { return strncasecmp(a, b, count); }

/// Re-entrant tokenizer (strtok_r): pass the string first, then null with the same context.
inline char* QorSysStrtok(char* text, const char* delimiters, char** context)
{
    return strtok_r(text, delimiters, context);
}

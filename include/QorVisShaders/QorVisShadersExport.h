/// @file
/// Marks what the shader library exports. The library is built with hidden symbols, so
/// only the classes and functions carrying QOR_VISSHADERS_API are part of its ABI; the
/// rest of its code stays internal.
#pragma once

#define QOR_VISSHADERS_API __attribute__((visibility("default")))

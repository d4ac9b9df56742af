/// @file
/// Entry points of the GLSL effect runtime: loading an effect into a container, the
/// include callback, and the message channel every load error and warning goes through.
#pragma once

#include <cstdio>
#include <functional>

namespace nvFX {

class IContainer;

/// Answers an `#include "name"` of an effect: set `file` to a stream opened for reading
/// (the runtime reads it whole and closes it) or `text` to the included text (borrowed:
/// it must stay valid until the callback is called again or the load ends). Leaving
/// both null means the include is missing, which fails the load. Both start null.
using IncludeCallback = void (*)(const char* name, FILE*& file, const char*& text);

/// Installs the include callback for the whole process; null removes it, and then every
/// include is missing. Safe to call from any thread.
void setIncludeCallback(IncludeCallback callback);

/// Parses `text` as a ".glslfx" effect into an empty container, then assembles, compiles,
/// links and reflects every pass with glslang. Needs no GL context. Returns false, with
/// a message naming the effect's own line through nvFX::printf, when the text is
/// refused, a pass does not compile or link, the container is null or already holds an
/// effect; the container is left empty then. A null text fails too.
bool loadEffect(IContainer* container, const char* text);

/// loadEffect, with messages about the effect's own text naming `sourceName` (its file,
/// as the host knows it) instead of the container's name, which stays as it was
/// created. Null or empty: the container's name.
bool loadEffect(IContainer* container, const char* text, const char* sourceName);

/// Names the folder of a persistent cache of what loads compute (glslang's check of each
/// pass, GL program binaries), for the whole process; null or "" turns it off, as it
/// starts. A missing folder is made, readable by its owner only; a folder another user
/// owns or may write to is refused with a message, and the cache stays off. Entries are
/// keyed by everything they depend on; one that is missing, damaged or foreign is
/// computed again from source. Returns whether the cache is on. Safe from any thread.
bool setCacheFolder(const char* folder);

/// Formats like std::printf and hands the result, as one message, to the message sink.
/// Returns the message's length, or -1 when the format cannot be formatted.
int printf(const char* format, ...);

/// Receives every message as plain text (never a format). Called with the sink lock
/// held, so messages arrive one at a time; a sink may print or install a sink itself.
using MessageSink = std::function<void(const char* message)>;

/// Installs the sink for the whole process and returns the previous one; an empty
/// function restores the default, which writes each message to standard output. When
/// it returns, the previous sink is no longer running and is never called again, also
/// while other threads print.
MessageSink setMessageSink(MessageSink sink);

} // namespace nvFX

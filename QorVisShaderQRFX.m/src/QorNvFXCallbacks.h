/// @file
/// The callbacks this module offers the nvFX runtime. The effect loading installs the
/// include callback; the error callback is there for hosts that want nvFX's messages on
/// their debugger channel and standard output (nvFX::setMessageSink(myErrorCb)).
#pragma once

#include <cstdio>

/// Finds ".hfx" and ".glslfxh" includes on the search paths and opens them; other names
/// are left to nvFX (the outputs untouched). The text output is never written.
void myIncludeCb(const char* name, FILE*& file, const char*& text);

/// Writes the message to the debugger channel (OutputDebugStringA), then to standard output.
void myErrorCb(const char* message);

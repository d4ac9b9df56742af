/// @file
/// The host's debugger channel, under the framework's name for it. On this platform the
/// text goes to standard error as it stands (no newline added), where a debugger or a
/// log collector reads it.
#pragma once

void OutputDebugStringA(const char* text);

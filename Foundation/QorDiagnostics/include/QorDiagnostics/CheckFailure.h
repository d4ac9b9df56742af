/// @file
/// Programming-error reports of the framework: a message, the source path of the
/// reporting class and a line. Reports never stop the caller.
#pragma once

#include <functional>

/// Receives every report. The default sink writes one line to stderr:
/// "<source>:<line>: <message>".
using QorDiagnosticSink = std::function<void(const char* message, const char* source, int line)>;

/// Sends one report to the process-wide sink. Null texts are reported as "".
void CheckFailure__(const char* message, const char* source, int line);

/// Installs a sink for the whole process and returns the previous one.
/// An empty function restores the default stderr sink.
QorDiagnosticSink QorSetDiagnosticSink(QorDiagnosticSink sink);

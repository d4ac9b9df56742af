/// @file
/// Programming-error reports of the framework: a message, the source path of the
/// reporting class and a line. Reports never stop the caller.
///
/// The shader library's reports carry fixed source paths and line numbers (for example
/// "QorVisShaderCGFX.m/src/QorShaderEffect", 178 for a missing in-memory include): each
/// report keeps the place that renderers, their logs and their tests have always seen
/// for it, so the numbers do not follow the lines of the file that makes the report.
#pragma once

#include <functional>

/// Receives every report. The default sink writes one line to stderr:
/// "<source>:<line>: <message>".
using QorDiagnosticSink = std::function<void(const char* message, const char* source, int line)>;

/// Sends one report to the process-wide sink. Null texts are reported as "".
void CheckFailure__(const char* message, const char* source, int line);

/// Installs a sink for the whole process and returns the previous one.
/// An empty function restores the default stderr sink. Safe while other threads report:
/// a report that began with the previous sink finishes with it.
QorDiagnosticSink QorSetDiagnosticSink(QorDiagnosticSink sink);

#include "QorDiagnostics/CheckFailure.h"

#include <cstdio>
#include <utility>

namespace {

void WriteToStderr(const char* message, const char* source, int line)
{
    std::fprintf(stderr, "%s:%d: %s\n", source, line, message);
}

QorDiagnosticSink& Sink()
{
    static QorDiagnosticSink sink = WriteToStderr;
    return sink;
}

} // namespace

void CheckFailure__(const char* message, const char* source, int line)
{
    Sink()(message ? message : "", source ? source : "", line);
}

QorDiagnosticSink QorSetDiagnosticSink(QorDiagnosticSink sink)
{
    QorDiagnosticSink previous = std::move(Sink());
    Sink() = sink ? std::move(sink) : QorDiagnosticSink(WriteToStderr);
    return previous;
}

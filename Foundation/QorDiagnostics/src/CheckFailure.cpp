#include "QorDiagnostics/CheckFailure.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <utility>

namespace {

void WriteToStderr(const char* message, const char* source, int line)
{
    std::fprintf(stderr, "%s:%d: %s\n", source, line, message);
}

// The sink is replaced as a whole, never changed in place: a report takes its own
// reference under the lock and calls the sink outside it, so a sink replaced meanwhile
// stays alive until that report is done, and a sink may itself report or replace the sink.
struct SinkSlot
{
    std::mutex mutex;
    std::shared_ptr<const QorDiagnosticSink> sink = std::make_shared<const QorDiagnosticSink>(WriteToStderr);
};

SinkSlot& Slot()
{
    static SinkSlot slot;
    return slot;
}

std::shared_ptr<const QorDiagnosticSink> CurrentSink()
{
    SinkSlot& slot = Slot();
    std::lock_guard<std::mutex> lock(slot.mutex);
    return slot.sink;
}

} // namespace

void CheckFailure__(const char* message, const char* source, int line)
{
    (*CurrentSink())(message ? message : "", source ? source : "", line);
}

QorDiagnosticSink QorSetDiagnosticSink(QorDiagnosticSink sink)
{
    auto replacement = std::make_shared<const QorDiagnosticSink>(sink ? std::move(sink) : QorDiagnosticSink(WriteToStderr));
    SinkSlot& slot = Slot();
    {
        std::lock_guard<std::mutex> lock(slot.mutex);
        replacement.swap(slot.sink);
    }
    // `replacement` now holds the previous sink; reports still running keep their own reference.
    return *replacement;
}

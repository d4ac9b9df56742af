#include "nvFX/nvFX.h"

#include "Messages_p.h"

#include <cstdio>
#include <mutex>
#include <new>
#include <utility>

namespace nvFX {

namespace {

// Recursive so that a sink may print or install a sink; held while the sink runs, so
// that a replaced sink is never called after setMessageSink returned.
std::recursive_mutex& SinkMutex()
{
    static std::recursive_mutex mutex;
    return mutex;
}

MessageSink& Sink()
{
    static MessageSink sink;
    return sink;
}

void Deliver(const std::string& message)
{
    std::lock_guard<std::recursive_mutex> lock(SinkMutex());
    if (Sink())
        Sink()(message.c_str());
    else
        std::fputs(message.c_str(), stdout);
}

} // namespace

int printf(const char* format, ...)
{
    if (!format)
        return -1;
    std::string message;
    std::va_list arguments;
    va_start(arguments, format);
    try {
        message = detail::formatv(format, arguments);
    } catch (const std::bad_alloc&) {
        message.clear(); // no memory for the text: reported as a format failure
    }
    va_end(arguments);
    if (message.empty() && *format)
        return -1;
    try {
        Deliver(message);
    } catch (...) {
        return -1; // a sink that throws does not take the caller with it
    }
    return static_cast<int>(message.size());
}

MessageSink setMessageSink(MessageSink sink)
{
    std::lock_guard<std::recursive_mutex> lock(SinkMutex());
    return std::exchange(Sink(), std::move(sink));
}

namespace detail {

SourceNames::SourceNames(std::string effectName)
{
    m_names.emplace_back("<generated>");
    m_names.push_back(effectName.empty() ? std::string("effect") : std::move(effectName));
}

int SourceNames::add(std::string name)
{
    m_names.push_back(std::move(name));
    return count() - 1;
}

const std::string& SourceNames::name(int source) const
{
    return m_names[source >= 0 && source < count() ? static_cast<std::size_t>(source) : 0];
}

std::string formatv(const char* format, std::va_list arguments)
{
    std::va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0)
        return std::string();
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

void reportError(const SourceNames& names, SourceLocation at, const std::string& what)
{
    nvFX::printf("%s(%d): error: %s\n", names.name(at.source).c_str(), at.line, what.c_str());
}

} // namespace detail
} // namespace nvFX

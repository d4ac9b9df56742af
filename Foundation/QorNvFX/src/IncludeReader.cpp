#include "IncludeReader_p.h"

#include "nvFX/nvFX.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>

namespace nvFX {

namespace {

std::atomic<IncludeCallback>& Callback()
{
    static std::atomic<IncludeCallback> callback{nullptr};
    return callback;
}

struct FileClose
{
    void operator()(FILE* file) const { std::fclose(file); }
};

detail::IncludeStatus ReadFile(FILE* file, std::string& content)
{
    char chunk[64 * 1024];
    std::size_t count;
    while ((count = std::fread(chunk, 1, sizeof chunk, file)) > 0) {
        if (content.size() + count > detail::kMaxIncludeBytes)
            return detail::IncludeStatus::TooLarge;
        content.append(chunk, count);
    }
    return std::ferror(file) ? detail::IncludeStatus::Unreadable : detail::IncludeStatus::Found;
}

} // namespace

void setIncludeCallback(IncludeCallback callback)
{
    Callback().store(callback);
}

namespace detail {

IncludeStatus readInclude(const std::string& name, std::string& content)
{
    content.clear();
    const IncludeCallback callback = Callback().load();
    if (!callback)
        return IncludeStatus::Missing;
    FILE* file = nullptr;
    const char* text = nullptr;
    callback(name.c_str(), file, text);
    const std::unique_ptr<FILE, FileClose> owned(file);
    if (owned)
        return ReadFile(owned.get(), content);
    if (!text)
        return IncludeStatus::Missing;
    const std::size_t length = strnlen(text, kMaxIncludeBytes + 1);
    if (length > kMaxIncludeBytes)
        return IncludeStatus::TooLarge;
    content.assign(text, length);
    return IncludeStatus::Found;
}

} // namespace detail
} // namespace nvFX

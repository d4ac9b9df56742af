// libFuzzer target: the package manifest's reader on arbitrary text. A manifest is either
// refused with a message, or read into entries that the writer turns back into a text
// the reader accepts again with the same entries; never a crash, a leak or a blow-up of
// memory or time (deep nesting is refused before parsing).
#include "QorPackageManifest_p.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QorPackageManifest manifest;
    std::string error;
    if (!manifest.Read(std::string(reinterpret_cast<const char*>(data), size), error)) {
        if (error.empty())
            std::abort();
        return 0;
    }
    QorPackageManifest again;
    if (!again.Read(manifest.Write(), error) || again.entries.size() != manifest.entries.size())
        std::abort();
    for (std::size_t i = 0; i < manifest.entries.size(); ++i)
        if (again.entries[i].name != manifest.entries[i].name || again.entries[i].file.path != manifest.entries[i].file.path)
            std::abort();
    return 0;
}

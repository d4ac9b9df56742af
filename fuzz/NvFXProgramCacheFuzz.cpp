// The GLSL program cache's readers on any bytes: an entry (its header, key, length and
// digest checked) and, behind it, the stored usage of a pass. The first byte chooses
// which, since mutated entries rarely keep a valid digest for the usage reader to see.
#include "GlslangProgram_p.h"
#include "ProgramCache_p.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    nvFX::detail::ProgramUsage usage;
    if (data[0] & 1) {
        nvFX::detail::decodeProgramUsage(bytes, usage);
        return 0;
    }
    const nvFX::detail::CacheKey key = nvFX::detail::CacheKeyBuilder("fuzz").finish();
    std::string payload, why;
    if (nvFX::detail::decodeCacheEntry(bytes, nvFX::detail::CacheKind::ProgramUsage, key, payload, why))
        nvFX::detail::decodeProgramUsage(payload, usage);
    return 0;
}

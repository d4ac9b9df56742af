/// @file
/// The persistent cache of what loading and drawing an effect computes (glslang's check
/// of a pass, a GL program binary), in a folder the host names. An entry is a file named
/// after its key; it carries the key again and a digest of itself, so an entry that is
/// truncated, damaged or renamed from another key is never trusted. Private to QorNvFX.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace nvFX::detail {

/// SHA-256 of everything an entry's content depends on.
using CacheKey = std::array<unsigned char, 32>;

/// Builds a key from parts fed in order; each part is length-prefixed, so no two lists
/// of parts give the same bytes.
class CacheKeyBuilder
{
public:
    explicit CacheKeyBuilder(std::string_view kind);
    CacheKeyBuilder& add(std::string_view part);
    CacheKey finish() const;

private:
    std::string m_bytes;
};

/// What kind of content an entry holds; part of the entry, checked on reading.
enum class CacheKind : unsigned char { ProgramUsage = 'U', ProgramBinary = 'B' };

/// The bytes of an entry holding `payload`.
std::string encodeCacheEntry(CacheKind kind, const CacheKey& key, std::string_view payload);
/// The payload of an entry read back; false, with `why`, when the bytes are not an
/// entry of `kind` for `key` written whole by this runtime.
bool decodeCacheEntry(std::string_view bytes, CacheKind kind, const CacheKey& key, std::string& payload,
                      std::string& why);

/// Whether a cache folder is in use: what is costly to gather for an entry is gathered
/// only then.
bool cacheIsOn();
/// Reads the entry of `key` from the cache folder: false when there is no folder, no
/// entry, or an entry that is not trusted (the load then computes what it needs from
/// source; a message says why an existing entry was passed over).
bool readCacheEntry(CacheKind kind, const CacheKey& key, std::string& payload);
/// Stores `payload` under `key`: written to a name of its own and renamed into place,
/// so another process reading at the same time sees the whole entry or none. A failure
/// (a full disk) is reported and leaves no file behind.
void writeCacheEntry(CacheKind kind, const CacheKey& key, std::string_view payload);

/// Plain little-endian lengths and strings, for payloads.
void appendU32(std::string& out, std::uint32_t value);
void appendString(std::string& out, std::string_view text);
/// Reads from `in` (advanced past what was read); false when it is too short.
bool readU32(std::string_view& in, std::uint32_t& value);
bool readString(std::string_view& in, std::string& text);

} // namespace nvFX::detail

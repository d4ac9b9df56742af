#include "ProgramCache_p.h"

#include "nvFX/nvFX.h"

#include "QorSystem/QorFiles.h"

#include <openssl/evp.h>
#include <openssl/sha.h>

#include <cerrno>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nvFX {

namespace {

std::mutex g_folderLock;
std::string g_folder; // empty: no cache

constexpr std::string_view kMagic = "QorNvFXCache";
constexpr unsigned char kFormat = 1;
constexpr std::size_t kHeader = kMagic.size() + 2 + sizeof(detail::CacheKey) + 8;
constexpr std::size_t kDigest = SHA256_DIGEST_LENGTH;
// No entry this runtime writes comes near it: a larger file is not read into memory.
constexpr std::size_t kLargestEntry = 256 << 20;

void AppendU64(std::string& out, std::uint64_t value)
{
    for (int shift = 0; shift < 64; shift += 8)
        out += static_cast<char>((value >> shift) & 0xFF);
}

std::string CurrentFolder()
{
    const std::lock_guard<std::mutex> lock(g_folderLock);
    return g_folder;
}

// Why `folder` (made owner-only when missing) cannot hold entries another user could not
// have planted; empty when it can.
std::string RefuseFolder(const std::string& folder)
{
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        return std::string("cannot make it: ") + std::strerror(errno);
    struct stat info {};
    if (lstat(folder.c_str(), &info) != 0)
        return std::strerror(errno);
    if (!S_ISDIR(info.st_mode))
        return "it is not a folder";
    if (info.st_uid != geteuid())
        return "another user owns it";
    if (info.st_mode & (S_IWGRP | S_IWOTH))
        return "others can write to it";
    return {};
}

std::string HexName(const detail::CacheKey& key)
{
    static const char digits[] = "0123456789abcdef";
    std::string name;
    for (unsigned char byte : key) {
        name += digits[byte >> 4];
        name += digits[byte & 15];
    }
    return name;
}

// The algorithm is looked up once: looking it up for every digest (what SHA256() does)
// cost a warm load more than hashing its texts.
const EVP_MD* Sha256()
{
    static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return algorithm;
}

detail::CacheKey Digest(std::string_view bytes)
{
    detail::CacheKey digest{};
    const EVP_MD* algorithm = Sha256();
    if (!algorithm || !EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, algorithm, nullptr))
        SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    return digest;
}

// The whole of a regular file this user owns, never a link; false when there is none.
// `why` says why a file that exists was not read.
bool ReadOwnFile(const std::string& path, std::string& bytes, std::string& why)
{
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        if (errno != ENOENT)
            why = std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode) || info.st_uid != geteuid()) {
        why = "not a file of this user's";
        return false;
    }
    return QorReadRegularFile(path.c_str(), bytes, kLargestEntry, &why);
}

} // namespace

bool setCacheFolder(const char* folder)
{
    std::string chosen = folder ? folder : "";
    if (!chosen.empty()) {
        const std::string why = RefuseFolder(chosen);
        if (!why.empty()) {
            nvFX::printf("nvFX: cache folder %s refused (%s); effects are compiled from source\n", chosen.c_str(),
                         why.c_str());
            chosen.clear();
        }
    }
    const std::lock_guard<std::mutex> lock(g_folderLock);
    g_folder = std::move(chosen);
    return !g_folder.empty();
}

namespace detail {

CacheKeyBuilder::CacheKeyBuilder(std::string_view kind)
{
    add(kMagic);
    add(std::string_view(reinterpret_cast<const char*>(&kFormat), 1));
    add(kind);
}

CacheKeyBuilder& CacheKeyBuilder::add(std::string_view part)
{
    AppendU64(m_bytes, part.size());
    m_bytes += part;
    return *this;
}

CacheKey CacheKeyBuilder::finish() const
{
    return Digest(m_bytes);
}

std::string encodeCacheEntry(CacheKind kind, const CacheKey& key, std::string_view payload)
{
    std::string bytes(kMagic);
    bytes += static_cast<char>(kFormat);
    bytes += static_cast<char>(kind);
    bytes.append(reinterpret_cast<const char*>(key.data()), key.size());
    AppendU64(bytes, payload.size());
    bytes += payload;
    const CacheKey digest = Digest(bytes);
    bytes.append(reinterpret_cast<const char*>(digest.data()), digest.size());
    return bytes;
}

bool decodeCacheEntry(std::string_view bytes, CacheKind kind, const CacheKey& key, std::string& payload,
                      std::string& why)
{
    if (bytes.size() < kHeader + kDigest || bytes.substr(0, kMagic.size()) != kMagic) {
        why = "not an entry";
        return false;
    }
    const auto* header = reinterpret_cast<const unsigned char*>(bytes.data()) + kMagic.size();
    if (header[0] != kFormat || header[1] != static_cast<unsigned char>(kind)) {
        why = "written by another version";
        return false;
    }
    if (std::memcmp(header + 2, key.data(), key.size()) != 0) {
        why = "it belongs to another effect";
        return false;
    }
    std::uint64_t length = 0;
    for (int i = 7; i >= 0; --i)
        length = length << 8 | header[2 + key.size() + static_cast<std::size_t>(i)];
    const std::size_t body = bytes.size() - kHeader - kDigest;
    const CacheKey digest = Digest(bytes.substr(0, bytes.size() - kDigest));
    if (length != body || std::memcmp(digest.data(), bytes.data() + bytes.size() - kDigest, kDigest) != 0) {
        why = "truncated or damaged";
        return false;
    }
    payload.assign(bytes.substr(kHeader, body));
    return true;
}

bool cacheIsOn()
{
    return !CurrentFolder().empty();
}

bool readCacheEntry(CacheKind kind, const CacheKey& key, std::string& payload)
{
    const std::string folder = CurrentFolder();
    if (folder.empty())
        return false;
    const std::string name = HexName(key);
    std::string bytes, why;
    if (ReadOwnFile(folder + "/" + name, bytes, why) && decodeCacheEntry(bytes, kind, key, payload, why))
        return true;
    if (!why.empty())
        nvFX::printf("nvFX: cache entry %s not used (%s); compiled from source\n", name.c_str(), why.c_str());
    return false;
}

void writeCacheEntry(CacheKind kind, const CacheKey& key, std::string_view payload)
{
    const std::string folder = CurrentFolder();
    if (folder.empty())
        return;
    const std::string name = HexName(key);
    // Written inside the very folder checked when it was chosen, whole or not at all.
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string why = fd < 0 ? std::strerror(errno) : std::string();
    if (fd >= 0) {
        {
            // Gone before the folder is closed: a partial file is removed through it.
            const std::string bytes = encodeCacheEntry(kind, key, payload);
            QorPartialFile entry(fd, name.c_str());
            if (entry.Write(bytes.data(), bytes.size(), &why))
                entry.Commit(&why);
        }
        close(fd);
    }
    if (!why.empty())
        nvFX::printf("nvFX: cache entry %s not written (%s)\n", name.c_str(), why.c_str());
}

void appendU32(std::string& out, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out += static_cast<char>((value >> shift) & 0xFF);
}

void appendString(std::string& out, std::string_view text)
{
    appendU32(out, static_cast<std::uint32_t>(text.size()));
    out += text;
}

bool readU32(std::string_view& in, std::uint32_t& value)
{
    if (in.size() < 4)
        return false;
    value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(in[static_cast<std::size_t>(i)]);
    in.remove_prefix(4);
    return true;
}

bool readString(std::string_view& in, std::string& text)
{
    std::uint32_t length = 0;
    if (!readU32(in, length) || in.size() < length)
        return false;
    text.assign(in.substr(0, length));
    in.remove_prefix(length);
    return true;
}

} // namespace detail

} // namespace nvFX

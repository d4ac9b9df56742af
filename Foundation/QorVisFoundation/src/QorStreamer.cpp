#include "QorVisFoundation/QorStreamer.h"

#include "QorDiagnostics/CheckFailure.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

const char* const kSource = "QorVisFoundation/src/QorStreamer";

// Byte count of an integer width, 0 for a width the wire format does not have.
std::size_t IntWidthBytes(int width)
{
    switch (width) {
    case 0:
    case 4:
        return 4;
    case 1:
        return 1;
    case 2:
        return 2;
    default:
        return 0;
    }
}

void StoreLittleEndian(unsigned char* data, std::uint32_t value, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        data[i] = static_cast<unsigned char>(value >> (8 * i));
}

std::uint32_t LoadLittleEndian(const unsigned char* data, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value |= static_cast<std::uint32_t>(data[i]) << (8 * i);
    return value;
}

std::uint32_t FloatBits(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float BitsFloat(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace

QorStreamer::QorStreamer(const unsigned char* data, std::size_t size)
{
    if (unsigned char* copy = data ? Grow(size) : nullptr)
        std::memcpy(copy, data, size);
}

QorStreamer::QorStreamer(std::vector<unsigned char> bytes) : m_bytes(std::move(bytes)) {}

QorStreamer::QorStreamer(QorStreamer&& other) noexcept
    : m_bytes(std::move(other.m_bytes)), m_readPosition(other.m_readPosition), m_failed(other.m_failed),
      m_container(other.m_container), m_migration(std::move(other.m_migration)), m_migrated(other.m_migrated)
{
    other.m_bytes.clear();
    other.m_readPosition = 0;
    other.m_failed = false;
    other.m_container = nullptr;
}

QorStreamer& QorStreamer::operator=(QorStreamer&& other) noexcept
{
    if (this != &other) {
        m_bytes = std::move(other.m_bytes);
        m_readPosition = other.m_readPosition;
        m_failed = other.m_failed;
        m_container = other.m_container;
        m_migration = std::move(other.m_migration);
        m_migrated = other.m_migrated;
        other.m_bytes.clear();
        other.m_readPosition = 0;
        other.m_failed = false;
        other.m_container = nullptr;
    }
    return *this;
}

unsigned char* QorStreamer::Grow(std::size_t count)
{
    try {
        const std::size_t old = m_bytes.size();
        m_bytes.resize(old + count);
        return m_bytes.data() + old;
    } catch (...) {
        Fail();
        return nullptr;
    }
}

const unsigned char* QorStreamer::Take(std::size_t count)
{
    if (m_failed || count > GetRemainingSize()) {
        Fail();
        return nullptr;
    }
    const unsigned char* data = m_bytes.data() + m_readPosition;
    m_readPosition += count;
    return data;
}

void QorStreamer::WriteInt(int value, int width)
{
    const std::size_t count = IntWidthBytes(width);
    if (!count) {
        CheckFailure__("WriteInt: unsupported integer width", kSource, __LINE__);
        return;
    }
    if (unsigned char* data = Grow(count))
        StoreLittleEndian(data, static_cast<std::uint32_t>(value), count);
}

bool QorStreamer::ReadInt(int& value, int width)
{
    value = 0;
    const std::size_t count = IntWidthBytes(width);
    if (!count) {
        Fail();
        return false;
    }
    const unsigned char* data = Take(count);
    if (!data)
        return false;
    const std::uint32_t bits = LoadLittleEndian(data, count);
    switch (count) {
    case 1:
        value = static_cast<std::int8_t>(bits);
        break;
    case 2:
        value = static_cast<std::int16_t>(bits);
        break;
    default:
        value = static_cast<std::int32_t>(bits);
        break;
    }
    return true;
}

void QorStreamer::WriteFloat(float value)
{
    if (unsigned char* data = Grow(4))
        StoreLittleEndian(data, FloatBits(value), 4);
}

void QorStreamer::WriteFloat(const float* values, int count)
{
    if (count < 0 || (count > 0 && !values)) {
        CheckFailure__("WriteFloat: negative count or null values", kSource, __LINE__);
        return;
    }
    unsigned char* data = Grow(static_cast<std::size_t>(count) * 4);
    for (int i = 0; data && i < count; ++i)
        StoreLittleEndian(data + 4 * i, FloatBits(values[i]), 4);
}

bool QorStreamer::ReadFloat(float& value)
{
    value = 0.0f;
    const unsigned char* data = Take(4);
    if (!data)
        return false;
    value = BitsFloat(LoadLittleEndian(data, 4));
    return true;
}

bool QorStreamer::ReadFloat(float* values, int count)
{
    if (count < 0 || (count > 0 && !values)) {
        Fail();
        return false;
    }
    const std::size_t total = static_cast<std::size_t>(count);
    // Checked against the bytes left before the product is formed, so a huge count
    // can neither overflow nor read past the data.
    const unsigned char* data = nullptr;
    if (total <= GetRemainingSize() / 4)
        data = Take(total * 4);
    else
        Fail();
    if (!data) {
        std::fill(values, values + total, 0.0f);
        return false;
    }
    for (std::size_t i = 0; i < total; ++i)
        values[i] = BitsFloat(LoadLittleEndian(data + 4 * i, 4));
    return true;
}

void QorStreamer::WriteString(const char* text)
{
    if (!text) {
        WriteInt(-1, 4);
        return;
    }
    const std::size_t length = std::strlen(text);
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        // The wire length is 32 bits; writing a null keeps the stream readable.
        CheckFailure__("WriteString: text longer than the stream format allows", kSource, __LINE__);
        WriteInt(-1, 4);
        return;
    }
    WriteInt(static_cast<int>(length), 4);
    if (unsigned char* data = Grow(length))
        std::memcpy(data, text, length);
}

bool QorStreamer::ReadString(char*& text)
{
    text = nullptr;
    int length = 0;
    if (!ReadInt(length, 4))
        return false;
    if (length == -1)
        return true;
    // The length is checked against the bytes present before anything is allocated.
    if (length < 0 || static_cast<std::size_t>(length) > GetRemainingSize()) {
        Fail();
        return false;
    }
    const unsigned char* data = Take(static_cast<std::size_t>(length));
    text = new (std::nothrow) char[static_cast<std::size_t>(length) + 1];
    if (!text) {
        Fail();
        return false;
    }
    std::memcpy(text, data, static_cast<std::size_t>(length));
    text[length] = '\0';
    return true;
}

void QorStreamer::SetMigration(std::unique_ptr<QorStreamMigration> migration)
{
    m_migration = std::move(migration);
    m_migrated = false;
}

void QorStreamer::FinishReading()
{
    if (!m_migration || m_migrated)
        return;
    m_migrated = true;
    m_migration->Migrate();
}

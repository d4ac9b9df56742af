/// @file
/// The framework's binary serialisation stream, held in memory. Values are written
/// little-endian with fixed widths; strings carry a 32-bit length (-1 for a null string)
/// followed by their bytes without a terminator.
#pragma once

#include "QorVisFoundation/QorStreamMigration.h"

#include <cstddef>
#include <memory>
#include <vector>

class QorResourceZPKContainer;

/// One byte buffer with a write end and a read cursor: writes append to the end, reads
/// consume from the cursor. A read that cannot be satisfied (past the end, a negative
/// count, an impossible length) zeroes its output and marks the streamer failed; from
/// then on every read fails, so a caller may check IsFailed() once after a sequence of
/// reads. Reads never touch or allocate beyond the bytes actually present. A write that
/// cannot get memory marks the streamer failed as well instead of throwing.
class QorStreamer
{
public:
    QorStreamer() = default;
    /// A streamer for reading `size` bytes copied from `data`; null data gives an empty one.
    QorStreamer(const unsigned char* data, std::size_t size);
    explicit QorStreamer(std::vector<unsigned char> bytes);

    QorStreamer(const QorStreamer&) = delete;
    QorStreamer& operator=(const QorStreamer&) = delete;
    /// The moved-from streamer is left empty and not failed.
    QorStreamer(QorStreamer&& other) noexcept;
    QorStreamer& operator=(QorStreamer&& other) noexcept;
    ~QorStreamer() = default;

    /// Everything written or given so far, including what has been read.
    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }
    /// Moves the read cursor back to the start. A failure stays recorded.
    void Rewind() { m_readPosition = 0; }
    bool IsFailed() const { return m_failed; }
    /// Bytes between the read cursor and the end.
    std::size_t GetRemainingSize() const { return m_bytes.size() - m_readPosition; }

    /// Width 0 or 4 writes 4 bytes; 1 or 2 write that many low bytes of the value.
    /// Any other width is a programming error: it is reported and nothing is written.
    void WriteInt(int value, int width);
    /// Reads an integer written with the same width, sign-extended to int.
    bool ReadInt(int& value, int width = 0);

    void WriteFloat(float value);
    /// Writes `count` floats with no count prefix; the reader must know the count.
    void WriteFloat(const float* values, int count);
    bool ReadFloat(float& value);
    /// On failure all `count` values are zeroed (when count is not negative).
    bool ReadFloat(float* values, int count);

    /// A null string and an empty string stay distinct on the wire.
    void WriteString(const char* text);
    /// `text` receives a new[] NUL-terminated copy that the caller frees with delete[],
    /// or null for a null string and on failure.
    bool ReadString(char*& text);

    /// The container resources are written to and read from; borrowed, null by default.
    QorResourceZPKContainer* GetResourceZPKContainer() const { return m_container; }
    void SetResourceZPKContainer(QorResourceZPKContainer* container) { m_container = container; }

    /// The migration objects read from this stream hand themselves to; owned by the
    /// streamer, null until one is given.
    QorStreamMigration* GetMigration() const { return m_migration.get(); }
    /// Gives the streamer its migration (a former one goes).
    void SetMigration(std::unique_ptr<QorStreamMigration> migration);
    /// Ends the reading of a document: runs the migration, once (a second call does
    /// nothing). Every reader of documents calls it after un-streaming the document's objects.
    void FinishReading();

private:
    /// Appends `count` bytes and points at them, or fails the streamer and returns null.
    unsigned char* Grow(std::size_t count);
    /// Points at `count` readable bytes and advances the cursor, or fails the streamer
    /// and returns null.
    const unsigned char* Take(std::size_t count);
    void Fail() { m_failed = true; }

    std::vector<unsigned char> m_bytes;
    std::size_t m_readPosition = 0;
    bool m_failed = false;
    QorResourceZPKContainer* m_container = nullptr;
    std::unique_ptr<QorStreamMigration> m_migration;
    bool m_migrated = false;
};

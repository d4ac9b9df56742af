/// @file
/// The framework's 8-bit string: a value type ordered by byte comparison.
#pragma once

#include <string>

class QorString
{
public:
    QorString() = default;
    /// A null pointer makes the empty string.
    QorString(const char* text);
    QorString(const char* text, int length);
    explicit QorString(std::string text) : m_text(std::move(text)) {}

    const char* c_str() const { return m_text.c_str(); }
    const std::string& str() const { return m_text; }
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    char operator[](int index) const { return m_text[static_cast<size_t>(index)]; }

    /// Position of the last occurrence of any character of `characters`, or -1.
    int ReverseFindOneOf(const char* characters) const;
    /// Position of the first occurrence of `text` at or after `start`, or -1.
    int Find(const char* text, int start = 0) const;
    /// The first `count` characters (all of them when count is larger).
    QorString Left(int count) const;
    /// From `start` to the end, or `count` characters when count >= 0.
    QorString Mid(int start, int count = -1) const;
    /// Upper-cases ASCII letters in place.
    void MakeUpper();

    QorString& operator+=(const QorString& other);
    QorString& operator+=(const char* text);

    friend QorString operator+(QorString left, const QorString& right) { return left += right; }
    friend QorString operator+(QorString left, const char* right) { return left += right; }
    friend bool operator==(const QorString& a, const QorString& b) { return a.m_text == b.m_text; }
    friend bool operator!=(const QorString& a, const QorString& b) { return a.m_text != b.m_text; }
    /// Byte-wise order (unsigned bytes), as the registries sort their names.
    friend bool operator<(const QorString& a, const QorString& b) { return a.m_text < b.m_text; }

private:
    std::string m_text;
};

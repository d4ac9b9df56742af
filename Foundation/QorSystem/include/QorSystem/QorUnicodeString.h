/// @file
/// The framework's Unicode text, stored as UTF-8. Positions are byte offsets into
/// that text; the searches take ASCII characters, which never split a UTF-8 sequence,
/// so text appended in arbitrary chunks (a file read 255 bytes at a time) stays intact.
#pragma once

#include "QorSystem/QorString.h"

class QorUnicodeString
{
public:
    QorUnicodeString() = default;
    /// UTF-8 text; a null pointer makes the empty string.
    QorUnicodeString(const char* utf8) : m_text(utf8) {}
    explicit QorUnicodeString(const QorString& utf8) : m_text(utf8) {}

    const char* c_str() const { return m_text.c_str(); }
    /// The UTF-8 bytes as the framework's 8-bit string.
    const QorString& ToQorString() const { return m_text; }
    int GetLength() const { return m_text.GetLength(); }
    bool IsEmpty() const { return m_text.IsEmpty(); }
    /// Number of Unicode characters (code points) in the text.
    int GetCharacterCount() const;

    /// Byte offset of the last `character` (ASCII) at or before `before`, or -1.
    /// A negative `before` searches from the end.
    int ReverseFind(char character, int before = -1) const;
    QorUnicodeString Mid(int start, int count = -1) const;
    void MakeUpper() { m_text.MakeUpper(); }
    void Empty() { m_text = QorString(); }

    QorUnicodeString& operator+=(const char* utf8)
    {
        m_text += utf8;
        return *this;
    }
    QorUnicodeString& operator+=(const QorUnicodeString& other)
    {
        m_text += other.m_text;
        return *this;
    }
    friend bool operator==(const QorUnicodeString& a, const QorUnicodeString& b) { return a.m_text == b.m_text; }
    friend bool operator!=(const QorUnicodeString& a, const QorUnicodeString& b) { return a.m_text != b.m_text; }

private:
    QorString m_text;
};

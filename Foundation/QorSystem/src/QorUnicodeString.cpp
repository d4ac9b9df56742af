#include "QorSystem/QorUnicodeString.h"

int QorUnicodeString::GetCharacterCount() const
{
    int count = 0;
    for (const char c : m_text.str())
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) // not a continuation byte
            ++count;
    return count;
}

int QorUnicodeString::ReverseFind(char character, int before) const
{
    const std::string& text = m_text.str();
    if (text.empty())
        return -1;
    const size_t from = before < 0 ? std::string::npos : static_cast<size_t>(before);
    const size_t position = text.rfind(character, from);
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

QorUnicodeString QorUnicodeString::Mid(int start, int count) const
{
    return QorUnicodeString(m_text.Mid(start, count));
}

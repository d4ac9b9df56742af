#include "QorSystem/QorString.h"

#include <algorithm>

QorString::QorString(const char* text) : m_text(text ? text : "") {}

QorString::QorString(const char* text, int length)
    : m_text(text && length > 0 ? std::string(text, static_cast<size_t>(length)) : std::string())
{
}

int QorString::ReverseFindOneOf(const char* characters) const
{
    if (!characters)
        return -1;
    const size_t position = m_text.find_last_of(characters);
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

int QorString::Find(const char* text, int start) const
{
    if (!text || start < 0)
        return -1;
    const size_t position = m_text.find(text, static_cast<size_t>(start));
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

QorString QorString::Left(int count) const
{
    return QorString(m_text.substr(0, static_cast<size_t>(std::max(count, 0))));
}

QorString QorString::Mid(int start, int count) const
{
    if (start < 0 || static_cast<size_t>(start) >= m_text.size())
        return QorString();
    return QorString(m_text.substr(static_cast<size_t>(start), count < 0 ? std::string::npos : static_cast<size_t>(count)));
}

void QorString::MakeUpper()
{
    for (char& c : m_text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
}

QorString& QorString::operator+=(const QorString& other)
{
    m_text += other.m_text;
    return *this;
}

QorString& QorString::operator+=(const char* text)
{
    if (text)
        m_text += text;
    return *this;
}

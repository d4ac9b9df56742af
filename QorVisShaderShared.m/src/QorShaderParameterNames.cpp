#include "QorVisShaderShared/QorShaderParameterNames.h"

#include "QorSystem/QorStrings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

const int kInitialCapacity = 20;
const int kCapacityStep = 10;

} // namespace

QorShaderParameterNames::QorShaderParameterNames()
    : m_names(static_cast<char**>(std::calloc(kInitialCapacity, sizeof(char*)))),
      m_capacity(m_names ? kInitialCapacity : 0)
{
}

QorShaderParameterNames::QorShaderParameterNames(const QorShaderParameterNames& other)
{
    if (other.m_count > 0)
        m_names = static_cast<char**>(std::calloc(static_cast<size_t>(other.m_count), sizeof(char*)));
    if (!m_names)
        return;
    m_count = m_capacity = other.m_count;
    for (int i = 0; i < m_count; ++i)
        m_names[i] = other.m_names[i] ? _strdup(other.m_names[i]) : nullptr;
}

QorShaderParameterNames::~QorShaderParameterNames()
{
    Free();
}

void QorShaderParameterNames::Free()
{
    for (int i = 0; i < m_count; ++i)
        std::free(m_names[i]);
    std::free(m_names);
    m_names = nullptr;
    m_count = m_capacity = 0;
}

int QorShaderParameterNames::Add(const char* name)
{
    if (!name)
        return -1;
    if (m_count + 1 > m_capacity) {
        const int capacity = m_capacity + kCapacityStep;
        auto* grown = static_cast<char**>(std::realloc(m_names, static_cast<size_t>(capacity) * sizeof(char*)));
        if (!grown)
            return -1;
        std::fill(grown + m_capacity, grown + capacity, nullptr);
        m_names = grown;
        m_capacity = capacity;
    }
    m_names[m_count] = _strdup(name);
    return m_count++;
}

int QorShaderParameterNames::IndexOf(const char* name) const
{
    if (!name)
        return -1;
    for (int i = 0; i < m_count; ++i)
        if (m_names[i] && std::strcmp(m_names[i], name) == 0)
            return i + 1;
    return -1;
}

const char* QorShaderParameterNames::At(int index) const
{
    if (index == 0)
        return "Technique";
    // A negative index would read before the array.
    if (index < 0 || index - 1 >= m_count)
        return nullptr;
    return m_names[index - 1];
}

void QorShaderParameterNames::Stream(QorStreamer& streamer) const
{
    QorShaderValueRecords::WriteNames(streamer, m_names, m_count);
}

bool QorShaderParameterNames::UnStream(QorStreamer& streamer)
{
    std::vector<QorShaderValueRecords::Name> names;
    if (!QorShaderValueRecords::ReadNames(streamer, names))
        return false;
    Free();
    if (names.empty())
        return true;
    m_names = static_cast<char**>(std::calloc(names.size(), sizeof(char*)));
    if (!m_names)
        return true;
    m_count = m_capacity = static_cast<int>(names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        m_names[i] = names[i].release();
    return true;
}

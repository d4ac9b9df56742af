#include "QorVisShaderShared/QorMaterialEffect.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorStreamer.h"

#include <cstdlib>

QorMaterialEffect::~QorMaterialEffect()
{
    std::free(m_buffer);
    std::free(m_name);
    delete[] m_uuid;
    delete[] m_provider;
    delete m_parameters;
}

unsigned int QorMaterialEffect::AddRef()
{
    return ++m_refCount;
}

unsigned int QorMaterialEffect::Release()
{
    if (m_refCount > 1)
        return --m_refCount;
    Unregister();
    delete this;
    return 0;
}

void QorMaterialEffect::setFileName(const QorString& name)
{
    m_fileName = name;
    const int separator = name.ReverseFindOneOf("\\/");
    if (separator >= 1)
        m_pathName = name.Left(separator + 1);
}

void QorMaterialEffect::setBuffer(const char* text)
{
    std::free(m_buffer);
    m_buffer = nullptr;
    if (text) {
        m_buffer = _strdup(text);
        m_fileName = QorString("");
    }
}

void QorMaterialEffect::SetName(char* name)
{
    // The name handed over before is freed, not forgotten: a renamed effect leaks nothing.
    std::free(m_name);
    m_name = name;
}

void QorMaterialEffect::Stream(QorStreamer& streamer)
{
    if (!m_profile.effectStreamsItsText)
        return;
    streamer.WriteString(m_name);
    streamer.WriteString(m_buffer);
}

void QorMaterialEffect::UnStream(QorStreamer& streamer)
{
    char* readName = nullptr;
    char* readBuffer = nullptr;
    streamer.ReadString(readName);
    streamer.ReadString(readBuffer);
    if (readName)
        SetName(_strdup(readName));
    if (readBuffer) {
        std::free(m_buffer);
        m_buffer = _strdup(readBuffer);
    }
    delete[] readName;
    delete[] readBuffer;
}

void QorMaterialEffect::ConnectInterfaces(QorMaterialParameters&) {}

void QorMaterialEffect::ForgetFeeds(QorFeed first, QorFeed last)
{
    for (int feed = first; feed < last; ++feed)
        m_feeds[feed] = nullptr;
}

void QorMaterialEffect::ReplaceParameters(QorMaterialParameters* parameters)
{
    delete m_parameters;
    m_parameters = parameters;
    ForgetUploads();
}

void QorMaterialEffect::ResetModel()
{
    ReplaceParameters(nullptr);
    m_current = nullptr;
    std::free(m_buffer);
    m_buffer = nullptr;
}

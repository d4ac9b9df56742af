#include "QorVisShaders/QorNvFXShaderValueString.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <nvFX/IUniform.h>

#include <cstdlib>

namespace {

char* CopyText(const char* text)
{
    return _strdup(text ? text : "");
}

} // namespace

QorNvFXShaderValueString::QorNvFXShaderValueString(nvFX::IUniform* uniform, const char* text)
    : QorNvFXShaderValue(uniform), m_text(CopyText(text))
{
}

QorNvFXShaderValueString::QorNvFXShaderValueString(const QorNvFXShaderValueString& other)
    : QorNvFXShaderValue(other), m_text(CopyText(other.m_text))
{
}

QorNvFXShaderValueString::~QorNvFXShaderValueString()
{
    std::free(m_text);
}

void QorNvFXShaderValueString::GetType(int* type)
{
    if (type)
        *type = QorValueTexture;
}

int QorNvFXShaderValueString::Get(void* out)
{
    if (out)
        *static_cast<char**>(out) = m_text;
    return m_changed;
}

void QorNvFXShaderValueString::Set(const void* in)
{
    // Copied before the old text goes, so setting the value's own text is safe.
    char* copy = CopyText(static_cast<const char*>(in));
    std::free(m_text);
    m_text = copy;
    MarkChanged();
}

void QorNvFXShaderValueString::Stream(QorStreamer& streamer)
{
    streamer.WriteInt(GetParameterToken(), 0);
    streamer.WriteString(m_text);
}

void QorNvFXShaderValueString::UnStream(QorStreamer& streamer)
{
    int token = 0;
    char* text = nullptr;
    streamer.ReadInt(token, 0);
    streamer.ReadString(text);
    if (streamer.IsFailed()) {
        delete[] text;
        return;
    }
    if (text) {
        std::free(m_text);
        m_text = _strdup(text);
        delete[] text;
    }
    m_streamedToken = token;
    m_streamed = true;
}

void QorNvFXShaderValueString::Push(int textureUnit)
{
    const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(m_text);
    if (m_uniform && texture && texture->GetID() != 0)
        m_uniform->setSamplerResource(texture->GetID(), textureUnit);
}

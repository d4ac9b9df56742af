#include "QorVisShaders/QorNvFXShaderValueFloat.h"

#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <nvFX/IUniform.h>

void QorNvFXShaderValueFloat::GetType(int* type)
{
    if (type)
        *type = QorValueFloat;
}

int QorNvFXShaderValueFloat::Get(void* out)
{
    if (out)
        *static_cast<float*>(out) = m_value;
    return m_changed;
}

void QorNvFXShaderValueFloat::Set(const void* in)
{
    if (in)
        m_value = *static_cast<const float*>(in);
    MarkChanged();
}

void QorNvFXShaderValueFloat::Stream(QorStreamer& streamer)
{
    QorShaderValueRecords::WriteFloat(streamer, GetParameterToken(), m_value);
}

void QorNvFXShaderValueFloat::UnStream(QorStreamer& streamer)
{
    int token = 0;
    float value = 0;
    if (!QorShaderValueRecords::ReadFloat(streamer, token, value))
        return;
    m_value = value;
    m_streamedToken = token;
    m_streamed = true;
}

void QorNvFXShaderValueFloat::Push(int)
{
    if (m_uniform)
        m_uniform->setValue1f(m_value);
}

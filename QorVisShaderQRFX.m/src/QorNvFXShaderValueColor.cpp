#include "QorVisShaders/QorNvFXShaderValueColor.h"

#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <nvFX/IUniform.h>

#include <algorithm>

QorNvFXShaderValueColor::QorNvFXShaderValueColor(nvFX::IUniform* uniform, const float* values, int count)
    : QorNvFXShaderValue(uniform), m_count(count)
{
    if (values)
        std::copy(values, values + MovedCount(), m_components);
}

int QorNvFXShaderValueColor::MovedCount() const
{
    return std::clamp(m_count, 0, 4);
}

void QorNvFXShaderValueColor::GetType(int* type)
{
    if (type)
        *type = QorColorTypeOf(m_count);
}

int QorNvFXShaderValueColor::Get(void* out)
{
    if (out)
        std::copy(m_components, m_components + MovedCount(), static_cast<float*>(out));
    return m_changed;
}

void QorNvFXShaderValueColor::Set(const void* in)
{
    if (in)
        std::copy(static_cast<const float*>(in), static_cast<const float*>(in) + MovedCount(), m_components);
    MarkChanged();
}

void QorNvFXShaderValueColor::Stream(QorStreamer& streamer)
{
    QorShaderValueRecords::WriteColor(streamer, GetParameterToken(), m_components);
}

void QorNvFXShaderValueColor::UnStream(QorStreamer& streamer)
{
    int token = 0;
    float components[4] = {};
    if (!QorShaderValueRecords::ReadColor(streamer, token, components))
        return;
    std::copy(components, components + 4, m_components);
    m_streamedToken = token;
    m_streamed = true;
}

void QorNvFXShaderValueColor::Push(int)
{
    if (m_uniform && MovedCount() > 0)
        m_uniform->setValuefv(m_components, MovedCount());
}

#include "QorVisFoundation/QorVisPixelImage.h"

#include "QorVisFoundation/VisResourceManager.h"

#include <new>
#include <utility>

QorVisPixelImage::QorVisPixelImage(const QorString& name, QorTexturePixelImage* pixels, int syncMode)
    : m_name(name), m_syncMode(syncMode)
{
    SetPixelImage(pixels);
}

QorVisPixelImage::~QorVisPixelImage() = default;

void QorVisPixelImage::SetPixelImage(QorTexturePixelImage* pixels)
{
    if (pixels)
        pixels->AddRef();
    m_pixels.reset(pixels);
    if (!pixels)
        m_implementation.reset();
    else if (!m_implementation)
        m_implementation.reset(new (std::nothrow) l_QorVisPixelImage(*this));
}

bool l_QorVisPixelImage::QueueBuffer()
{
    VisResourceManager* host = VisResourceManager::Get();
    const QorTexturePixelImage* pixels = m_owner.GetPixelImage();
    if (!host || !pixels)
        return false;
    VisResourceManager::QueuedBuffer buffer;
    try {
        buffer.name = m_owner.GetName();
        const unsigned char* bytes = pixels->IsFloatFormat() ? pixels->GetFloatPixels() : pixels->GetPixels();
        buffer.bytes.assign(bytes, bytes + pixels->GetByteCount());
    } catch (...) {
        return false;
    }
    buffer.format = pixels->GetPixelFormat();
    buffer.width = pixels->GetWidth();
    buffer.height = pixels->GetHeight();
    host->QueuePixelBuffer(std::move(buffer));
    return true;
}

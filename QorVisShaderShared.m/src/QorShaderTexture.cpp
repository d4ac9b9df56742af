#include "QorVisShaders/QorShaderTexture.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorVisPixelImage.h"
#include "QorVisFoundation/VisResourceManager.h"

#include <cstdlib>

namespace {

unsigned int HostHoldsPixelImage(const char* name)
{
    VisResourceManager* host = VisResourceManager::Get();
    return host && name && host->GivePixelImage(name) ? 1 : 0;
}

char* CopyName(const char* name)
{
    return name ? _strdup(name) : nullptr;
}

} // namespace

QorShaderTexture::QorShaderTexture(const char* name)
    : m_name(CopyName(name)), m_storedInManager(HostHoldsPixelImage(name))
{
}

QorShaderTexture::QorShaderTexture(const QorShaderTexture& other)
    : m_name(CopyName(other.m_name)), m_id(other.m_id), m_type(other.m_type), m_refCount(other.m_refCount),
      m_storedInManager(other.m_storedInManager)
{
}

QorShaderTexture& QorShaderTexture::operator=(const QorShaderTexture& other)
{
    if (this != &other) {
        std::free(m_name);
        m_name = CopyName(other.m_name);
        m_id = other.m_id;
        m_type = other.m_type;
        m_refCount = other.m_refCount;
        m_storedInManager = other.m_storedInManager;
    }
    return *this;
}

QorShaderTexture::~QorShaderTexture()
{
    std::free(m_name);
}

void QorShaderTexture::ForgetName()
{
    std::free(m_name);
    m_name = nullptr;
}

void QorShaderTexture::Release()
{
    if (m_refCount-- == 1)
        delete this;
}

unsigned int QorShaderTexture::SaveBufferForDrawing()
{
    VisResourceManager* host = VisResourceManager::Get();
    QorVisPixelImage* image = host && m_name ? host->GiveVisPixelImage(m_name) : nullptr;
    if (!image || image->GetSyncMode() == 0 || !image->GetImplementation())
        return 0;
    image->GetImplementation()->QueueBuffer();
    return 1;
}

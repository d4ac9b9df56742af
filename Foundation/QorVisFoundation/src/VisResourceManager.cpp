#include "QorVisFoundation/VisResourceManager.h"

#include "QorVisFoundation/QorVisPixelImage.h"

#include <new>
#include <utility>

namespace {

std::mutex g_instanceMutex;
std::unique_ptr<VisResourceManager> g_instance;

// The newest of the objects stored under a name; null when there is none.
template <typename Owner>
typename Owner::pointer Newest(const std::map<QorString, std::vector<Owner>>& stored, const char* name)
{
    if (!name)
        return nullptr;
    const auto found = stored.find(QorString(name));
    return found == stored.end() || found->second.empty() ? nullptr : found->second.back().get();
}

} // namespace

VisResourceManager::~VisResourceManager() = default;

VisResourceManager* VisResourceManager::Get()
{
    std::lock_guard<std::mutex> lock(g_instanceMutex);
    return g_instance.get();
}

VisResourceManager* VisResourceManager::Create()
{
    std::lock_guard<std::mutex> lock(g_instanceMutex);
    if (!g_instance)
        g_instance.reset(new (std::nothrow) VisResourceManager());
    return g_instance.get();
}

void VisResourceManager::Destroy()
{
    std::unique_ptr<VisResourceManager> destroyed;
    {
        std::lock_guard<std::mutex> lock(g_instanceMutex);
        destroyed = std::move(g_instance);
    }
    // Destroyed outside the lock: releasing images must not wait on Get().
}

void VisResourceManager::AddPixelImage(QorTexturePixelImage* image)
{
    if (!image)
        return;
    QorTexturePixelImage::Ptr reference(image);
    std::lock_guard<std::mutex> lock(m_mutex);
    try {
        m_pixelImages[image->GetName()].push_back(std::move(reference));
    } catch (...) {
        // Out of memory: the reference is released by its holder rather than leaked.
    }
}

QorVisPixelImage* VisResourceManager::AddVisPixelImage(std::unique_ptr<QorVisPixelImage> image)
{
    if (!image)
        return nullptr;
    QorVisPixelImage* borrowed = image.get();
    std::lock_guard<std::mutex> lock(m_mutex);
    try {
        m_visPixelImages[image->GetName()].push_back(std::move(image));
        return borrowed;
    } catch (...) {
        return nullptr;
    }
}

QorTexturePixelImage* VisResourceManager::GivePixelImage(const char* name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return Newest(m_pixelImages, name);
}

QorVisPixelImage* VisResourceManager::GiveVisPixelImage(const char* name)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return Newest(m_visPixelImages, name);
}

void VisResourceManager::QueuePixelBuffer(QueuedBuffer buffer)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (QueuedBuffer& queued : m_queue) {
        if (queued.name == buffer.name) {
            queued = std::move(buffer);
            return;
        }
    }
    try {
        m_queue.push_back(std::move(buffer));
    } catch (...) {
        // Out of memory: this upload is dropped; the renderer keeps the previous pixels.
    }
}

std::size_t VisResourceManager::GetQueuedBufferCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.size();
}

std::vector<VisResourceManager::QueuedBuffer> VisResourceManager::TakeQueuedBuffers()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<QueuedBuffer> taken;
    taken.swap(m_queue);
    return taken;
}

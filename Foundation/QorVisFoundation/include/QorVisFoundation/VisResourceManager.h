/// @file
/// The host application's resource manager. A host may run without one: Get() stays
/// null until the host calls Create(), and the shader library checks before using it.
#pragma once

#include "QorSystem/QorString.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

class QorVisPixelImage;

/// Pointers it returns are borrowed and stay valid until Destroy(). Lookups, additions and
/// the upload queue may be used from several threads.
class VisResourceManager
{
public:
    /// A copy of an image's pixels waiting for the renderer's next upload.
    struct QueuedBuffer
    {
        QorString name;
        QorPixelImageFormat format = QorPixelRGBA8;
        unsigned width = 0;
        unsigned height = 0;
        std::vector<unsigned char> bytes; ///< rows top first, as in QorTexturePixelImage
    };

    /// The manager, or null when the host has none.
    static VisResourceManager* Get();
    /// Makes the manager if there is none yet and returns it; null when out of memory.
    static VisResourceManager* Create();
    /// Destroys the manager with everything it holds; Get() is null afterwards.
    static void Destroy();

    /// Takes over the caller's reference (null is ignored); the image is found under its
    /// own name. A later image of the same name shadows the earlier one for lookups; both
    /// stay alive until Destroy(), so pointers already handed out stay valid.
    void AddPixelImage(QorTexturePixelImage* image);
    /// Takes ownership; returns the image, borrowed (null for null). Names shadow as for
    /// AddPixelImage.
    QorVisPixelImage* AddVisPixelImage(std::unique_ptr<QorVisPixelImage> image);

    /// The pixel image of that name, borrowed; null when none.
    QorTexturePixelImage* GivePixelImage(const char* name);
    /// The host image of that name, borrowed; null when none.
    QorVisPixelImage* GiveVisPixelImage(const char* name);

    /// Adds a buffer to the upload queue, replacing a queued buffer of the same name.
    void QueuePixelBuffer(QueuedBuffer buffer);
    std::size_t GetQueuedBufferCount() const;
    /// Empties the queue and gives its buffers to the caller, oldest first.
    std::vector<QueuedBuffer> TakeQueuedBuffers();

    VisResourceManager(const VisResourceManager&) = delete;
    VisResourceManager& operator=(const VisResourceManager&) = delete;

private:
    VisResourceManager() = default;
    ~VisResourceManager();
    friend struct std::default_delete<VisResourceManager>;

    mutable std::mutex m_mutex;
    std::map<QorString, std::vector<QorTexturePixelImage::Ptr>> m_pixelImages;
    std::map<QorString, std::vector<std::unique_ptr<QorVisPixelImage>>> m_visPixelImages;
    std::vector<QueuedBuffer> m_queue;
};

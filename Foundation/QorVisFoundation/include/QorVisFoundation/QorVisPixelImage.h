/// @file
/// The host's image object: a named pixel image plus how the renderer should pick up
/// changes to it.
#pragma once

#include "QorSystem/QorString.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisFoundation/l_QorVisPixelImage.h"

#include <memory>

class QorVisPixelImage
{
public:
    /// Sync mode 0: the renderer picks pixel changes up on its own (asynchronous); any
    /// other value: whoever changes the pixels queues them for upload (synchronous).
    enum : int
    {
        QorSyncAsynchronous = 0,
        QorSyncSynchronous = 1,
    };

    /// Keeps its own reference on `pixels` (may be null: an image without pixels has no
    /// implementation object).
    QorVisPixelImage(const QorString& name, QorTexturePixelImage* pixels, int syncMode = QorSyncAsynchronous);
    ~QorVisPixelImage();
    QorVisPixelImage(const QorVisPixelImage&) = delete;
    QorVisPixelImage& operator=(const QorVisPixelImage&) = delete;

    const QorString& GetName() const { return m_name; }
    int GetSyncMode() const { return m_syncMode; }
    void SetSyncMode(int syncMode) { m_syncMode = syncMode; }

    /// The pixels, borrowed; null when none.
    QorTexturePixelImage* GetPixelImage() const { return m_pixels.get(); }
    /// Replaces the pixels (its own reference taken on the new, released on the old); the
    /// implementation object exists exactly while there are pixels.
    void SetPixelImage(QorTexturePixelImage* pixels);

    /// The renderer-side object, owned by this image; null when the image has no pixels.
    l_QorVisPixelImage* GetImplementation() { return m_implementation.get(); }

private:
    QorString m_name;
    int m_syncMode;
    QorTexturePixelImage::Ptr m_pixels;
    std::unique_ptr<l_QorVisPixelImage> m_implementation;
};

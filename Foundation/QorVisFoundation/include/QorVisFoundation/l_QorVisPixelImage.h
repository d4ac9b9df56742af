/// @file
/// The renderer side of a host image: what the drawing code uses to hand the image's
/// pixels over for uploading.
#pragma once

class QorVisPixelImage;

/// Made and owned by its QorVisPixelImage; lives exactly as long as that image has pixels.
class l_QorVisPixelImage
{
public:
    /// Queues a copy of the owner's pixels, as they are now, for the renderer's next upload
    /// through the host's VisResourceManager; a copy, so the image may change or go away
    /// before the upload. Queueing again before the upload replaces the earlier copy of
    /// the same image name. Returns false when no VisResourceManager exists (nothing is
    /// queued) or the copy cannot be made.
    bool QueueBuffer();

    QorVisPixelImage& GetOwner() const { return m_owner; }

    l_QorVisPixelImage(const l_QorVisPixelImage&) = delete;
    l_QorVisPixelImage& operator=(const l_QorVisPixelImage&) = delete;

private:
    friend class QorVisPixelImage;
    explicit l_QorVisPixelImage(QorVisPixelImage& owner) : m_owner(owner) {}

    QorVisPixelImage& m_owner;
};

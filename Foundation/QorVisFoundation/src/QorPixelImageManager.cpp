#include "QorVisFoundation/QorPixelImageManager.h"

#include <map>
#include <mutex>

namespace {

struct GeneratedImages
{
    std::mutex mutex;
    std::map<QorString, QorTexturePixelImage::Ptr> images;
};

GeneratedImages& Generated()
{
    static GeneratedImages generated;
    return generated;
}

} // namespace

QorTexturePixelImage* QorPixelImageManager::GenerateImage(const QorString& name, unsigned width, unsigned height,
                                                          QorPixelImageFormat format)
{
    GeneratedImages& generated = Generated();
    std::lock_guard<std::mutex> lock(generated.mutex);
    if (generated.images.count(name))
        return nullptr;
    QorTexturePixelImage::Ptr image(QorTexturePixelImage::Create(name, format, width, height));
    if (!image)
        return nullptr;
    try {
        QorTexturePixelImage* borrowed = image.get();
        generated.images.emplace(name, std::move(image));
        return borrowed;
    } catch (...) {
        return nullptr;
    }
}

QorTexturePixelImage* QorPixelImageManager::GetImage(const QorString& name)
{
    GeneratedImages& generated = Generated();
    std::lock_guard<std::mutex> lock(generated.mutex);
    const auto found = generated.images.find(name);
    return found == generated.images.end() ? nullptr : found->second.get();
}

void QorPixelImageManager::Clear()
{
    std::map<QorString, QorTexturePixelImage::Ptr> released;
    {
        GeneratedImages& generated = Generated();
        std::lock_guard<std::mutex> lock(generated.mutex);
        released.swap(generated.images);
    }
}

#include "QorShaderTextureCache.h"

#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorVisFoundation/QorPixelImageManager.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"

#include <cstring>

namespace QorShaderTextureCache {
namespace {

// The image of that name in the process's list: an image listed already replaces the
// streamed one (in the container too), a new one joins the list.
QorTexturePixelImage& JoinList(QorStreamer& streamer, QorTexturePixelImage& image)
{
    QorTexturePixelImage* existing = QorTexturePixelImage::GetImageFromList(image.GetName());
    if (existing == &image) {
        // Listed already (an image read a second time): the list's reference keeps it,
        // and the one the container gave goes back so it does not leak.
        image.Release();
        return *existing;
    }
    if (existing) {
        if (QorResourceZPKContainer* container = streamer.GetResourceZPKContainer())
            container->ReplaceResource(&image, existing);
        image.Release();
        return *existing;
    }
    QorTexturePixelImage::AddList(&image);
    return image;
}

void CopyIntoGeneratedImage(QorTexturePixelImage& image)
{
    const QorPixelImageFormat format = image.GetPixelFormat();
    QorTexturePixelImage* target =
        QorPixelImageManager::GenerateImage(image.GetName(), image.GetWidth(), image.GetHeight(), format);
    if (!target)
        target = QorPixelImageManager::GetImage(image.GetName());
    if (!target)
        return;
    const bool floats = QorTexturePixelImage::IsFloatFormat(format);
    const unsigned char* from = floats ? image.GetFloatPixels() : image.GetPixels();
    unsigned char* to = floats ? target->GetFloatPixels() : target->GetPixels();
    const std::size_t bytes =
        static_cast<std::size_t>(image.GetBytesPerPixel()) * image.GetHeight() * image.GetWidth();
    // An image generated earlier under the name may differ in size or format: nothing is
    // copied beyond either buffer.
    if (from && to && bytes <= image.GetByteCount() && bytes <= target->GetByteCount())
        std::memcpy(to, from, bytes);
}

} // namespace

QorString Adopt(QorStreamer& streamer, QorTexturePixelImage& streamed)
{
    QorTexturePixelImage& image = JoinList(streamer, streamed);
    const QorString name = image.GetName();
    const QorUnicodeString extension = QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(name));
    // Without a cache folder the texture keeps the image's own name.
    const char* temp = QorGetEnv("QorTemp");
    const QorString folder = temp ? QorString(temp) + "\\ZPKResources" : QorString();
    if (!temp || QorCreateDirectory(folder.c_str()) < 0) {
        QorShaderTextureBookkeeping::Take(name.c_str());
        return name;
    }
    QorString directoryPart;
    QorString filePart;
    QorSplitPath(name.c_str(), directoryPart, filePart);
    const QorString path = QorMakePath(folder.c_str(), filePart.c_str());

    QorString file = name;
    if (extension != QorUnicodeString("PROCEDURAL"))
        file = path;
    else
        CopyIntoGeneratedImage(image);
    QorShaderTextureBookkeeping::Take(file.c_str());
    // An earlier reading may have cached the file already.
    if (QorFileAccess(path.c_str(), 0) != 0)
        image.WriteToFile(extension.c_str(), path.c_str());
    return file;
}

} // namespace QorShaderTextureCache

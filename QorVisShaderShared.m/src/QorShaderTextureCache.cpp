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

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

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

// Cache folders tried for one content key before the texture keeps its image's name.
constexpr int kCacheSlots = 8;

std::string ContentKey(const std::string& bytes)
{
    // FNV-1a, 64 bits: a folder name per content; equal keys are still compared byte by byte.
    std::uint64_t hash = 14695981039346656037ull;
    for (unsigned char byte : bytes)
        hash = (hash ^ byte) * 1099511628211ull;
    char key[17];
    std::snprintf(key, sizeof key, "%016llx", static_cast<unsigned long long>(hash));
    return key;
}

// The cached file of the image: "<folder>\<key>\<its file name>", where the key names
// the bytes of the file. A file already there is taken only when it holds exactly these
// bytes, so that images of other packages sharing the file name, or files planted in
// the folder, are never taken for this one. Empty when it cannot be cached.
QorString CachedFile(const QorString& folder, const QorTexturePixelImage& image, const char* format)
{
    std::string bytes;
    if (!image.Encode(format, bytes))
        return QorString();
    QorString directoryPart;
    QorString filePart;
    QorSplitPath(image.GetName().c_str(), directoryPart, filePart);
    const std::string key = ContentKey(bytes);
    for (int slot = 0; slot < kCacheSlots; ++slot) {
        const std::string name = slot == 0 ? key : key + "-" + std::to_string(slot);
        const QorString keyFolder = QorMakePath(folder.c_str(), name.c_str());
        const QorString path = QorMakePath(keyFolder.c_str(), filePart.c_str());
        if (QorFileAccess(path.c_str(), 0) == 0) {
            std::string cached;
            if (QorReadRegularFile(path.c_str(), cached, bytes.size()) && cached == bytes)
                return path;
            continue;
        }
        const bool written = QorCreateDirectory(keyFolder.c_str()) == 0 &&
                             QorWriteFileAtomically(path.c_str(), bytes.data(), bytes.size());
        return written ? path : QorString();
    }
    return QorString();
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
    QorString file = name;
    if (temp && QorCreateDirectory(folder.c_str()) == 0) {
        if (extension == QorUnicodeString("PROCEDURAL"))
            CopyIntoGeneratedImage(image);
        else if (const QorString cached = CachedFile(folder, image, extension.c_str()); !cached.IsEmpty())
            file = cached;
    }
    QorShaderTextureBookkeeping::Take(file.c_str());
    return file;
}

} // namespace QorShaderTextureCache

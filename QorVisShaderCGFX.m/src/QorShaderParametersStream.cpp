// The parameter set's stream: names and values, with the images of texture values carried
// by the stream's resource container and cached again under "QorTemp"\ZPKResources.
#include "QorShaderParameters.h"

#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorVisShaders/QorShaderManager.h"

#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorPixelImageManager.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

// The smallest record of a name: its 32-bit length.
const std::size_t kMinimumNameBytes = 4;

int ColorComponentCount(int type)
{
    return type == 5 ? 2 : type == 6 ? 3 : 4;
}

} // namespace

void QorShaderParameters::Stream(QorStreamer& streamer)
{
    streamer.WriteInt(m_nameCount, 0);
    for (int i = 0; i < m_nameCount; ++i)
        streamer.WriteString(m_names[i]);

    // Null and unknown entries are counted but write nothing, as the framework's readers
    // expect of this record.
    streamer.WriteInt(static_cast<int>(m_values.size()), 0);
    for (QorIShaderValue* value : m_values) {
        if (!value)
            continue;
        int type = 0;
        value->GetType(&type);
        const int token = static_cast<QorShaderValue*>(value)->GetParameterToken();
        switch (type) {
        case 1: {
            float number = 0.0f;
            value->Get(&number);
            streamer.WriteInt(type, 0);
            streamer.WriteInt(token, 0);
            streamer.WriteFloat(number);
            break;
        }
        case 2:
        case 5:
        case 6: {
            // Components beyond the count are 0, so four floats go whatever the count.
            float components[4] = {};
            value->Get(components);
            streamer.WriteInt(type, 0);
            streamer.WriteInt(token, 0);
            streamer.WriteFloat(components, 4);
            break;
        }
        case 4:
            streamer.WriteInt(type, 0);
            streamer.WriteInt(token, 0);
            StreamTexture(streamer, *static_cast<QorShaderValueString*>(value));
            break;
        default:
            break;
        }
    }
}

void QorShaderParameters::StreamTexture(QorStreamer& streamer, QorShaderValueString& value)
{
    QorResourceZPKContainer* container = streamer.GetResourceZPKContainer();
    if (!container)
        return;
    QorTexturePixelImage* image = container->GetImage(QorString(value.GetFile()), QorReadWrite);
    container->AddResource(streamer, image);
}

void QorShaderParameters::UnStream(QorStreamer& streamer)
{
    if (!UnStreamNames(streamer))
        return;
    int count = 0;
    if (!streamer.ReadInt(count, 0) || count < 1)
        return;
    // Values already in the set stay; read ones follow them. Every record reads at least
    // its type, so a huge count ends with the data.
    for (int i = 0; i < count; ++i) {
        int type = 0;
        if (!streamer.ReadInt(type, 0))
            return;
        if (type == 4)
            UnStreamTexture(streamer);
        else if ((type == 1 || type == 2 || type == 5 || type == 6) && !UnStreamValue(streamer, type))
            return;
        if (streamer.IsFailed())
            return;
    }
}

bool QorShaderParameters::UnStreamNames(QorStreamer& streamer)
{
    int count = 0;
    if (!streamer.ReadInt(count, 0))
        return false;
    // Refused before anything is allocated: a count the remaining bytes cannot hold.
    if (count < 0 || static_cast<std::size_t>(count) > streamer.GetRemainingSize() / kMinimumNameBytes)
        return false;
    char** names = nullptr;
    if (count > 0 && !(names = static_cast<char**>(std::calloc(static_cast<std::size_t>(count), sizeof(char*)))))
        return false;
    for (int i = 0; i < count; ++i) {
        char* text = nullptr;
        streamer.ReadString(text);
        if (text) {
            names[i] = _strdup(text);
            delete[] text;
        }
    }
    // A name list cut short is dropped whole and the set keeps the names it had.
    if (streamer.IsFailed()) {
        for (int i = 0; i < count; ++i)
            std::free(names[i]);
        std::free(names);
        return false;
    }
    FreeNames();
    m_names = names;
    m_nameCount = m_nameCapacity = count;
    return true;
}

bool QorShaderParameters::UnStreamValue(QorStreamer& streamer, int type)
{
    std::unique_ptr<QorShaderValue> value;
    if (type == 1)
        value.reset(new (std::nothrow) QorShaderValueFloat());
    else
        value.reset(new (std::nothrow) QorShaderValueColor(ColorComponentCount(type)));
    // A value that cannot be made is skipped without reading its record.
    if (!value)
        return true;
    // The streamed handle is a 32-bit token of the writer's effect, not a live handle:
    // it is read past and the value keeps a null handle until the effect binds it again.
    int token = 0;
    streamer.ReadInt(token, 0);
    if (type == 1) {
        float number = 0.0f;
        streamer.ReadFloat(number);
        value->SetFloat(number);
    } else {
        float components[4] = {};
        streamer.ReadFloat(components, 4);
        value->SetColor(components);
    }
    if (streamer.IsFailed())
        return false;
    AppendValue(value.release());
    return true;
}

void QorShaderParameters::UnStreamTexture(QorStreamer& streamer)
{
    std::unique_ptr<QorShaderValueString> value(new (std::nothrow) QorShaderValueString());
    if (!value)
        return;
    // A token only, never a handle (see UnStreamValue).
    int token = 0;
    if (!streamer.ReadInt(token, 0))
        return;
    QorTexturePixelImage* image = nullptr;
    if (QorResourceZPKContainer* container = streamer.GetResourceZPKContainer())
        container->GetResource(streamer, image);
    if (!image)
        return;
    image = AdoptStreamedImage(streamer, image);
    value->SetString(image->GetName().c_str());
    QorShaderValueString& texture = *value;
    AppendValue(value.release());
    CacheStreamedImage(texture, *image);
}

QorTexturePixelImage* QorShaderParameters::AdoptStreamedImage(QorStreamer& streamer, QorTexturePixelImage* image)
{
    QorTexturePixelImage* existing = QorTexturePixelImage::GetImageFromList(image->GetName());
    if (existing == image) {
        // Listed already (an image read a second time): the list's reference keeps it,
        // and the one the container gave goes back so it does not leak.
        image->Release();
        return existing;
    }
    if (existing) {
        if (QorResourceZPKContainer* container = streamer.GetResourceZPKContainer())
            container->ReplaceResource(image, existing);
        image->Release();
        return existing;
    }
    QorTexturePixelImage::AddList(image);
    return image;
}

void QorShaderParameters::CacheStreamedImage(QorShaderValueString& value, QorTexturePixelImage& image)
{
    const QorString name = image.GetName();
    const QorUnicodeString extension = QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(name));
    // The value holds the reference of whatever name it ends with: the image's name when
    // there is no cache folder or the image is procedural, else the cached file's path.
    const char* temp = QorGetEnv("QorTemp");
    if (!temp) {
        QorShaderManager::AddShaderTexture(name.c_str());
        return;
    }
    const QorString folder = QorString(temp) + "\\ZPKResources";
    if (QorCreateDirectory(folder.c_str()) < 0) {
        QorShaderManager::AddShaderTexture(name.c_str());
        return;
    }
    QorString directoryPart;
    QorString filePart;
    QorSplitPath(value.GetFile(), directoryPart, filePart);
    const QorString path = QorMakePath(folder.c_str(), filePart.c_str());

    if (extension != QorUnicodeString("PROCEDURAL")) {
        value.SetString(path.c_str());
        QorShaderManager::AddShaderTexture(path.c_str());
    } else {
        CopyIntoGeneratedImage(image);
        QorShaderManager::AddShaderTexture(name.c_str());
    }
    // An earlier reading may have cached the file already.
    if (QorFileAccess(path.c_str(), 0) != 0)
        image.WriteToFile(extension.c_str(), path.c_str());
}

void QorShaderParameters::CopyIntoGeneratedImage(QorTexturePixelImage& image)
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

// libFuzzer target: the ".zpk" package loader on arbitrary bytes. Whatever they are, a load
// either succeeds with a document the container can hand out, or is refused with a message
// and leaves the container and stream exactly as they were.
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorIShaderEffect.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QorResourceZPKContainer container;
    QorStreamer stream;
    // An earlier document, which a refused load must keep.
    QorTexturePixelImage::Ptr earlier(QorTexturePixelImage::Create("earlier.png", QorPixelRGB8, 1, 1));
    container.AddResource(stream, earlier.get());
    const std::vector<unsigned char> earlierBytes = stream.GetBytes();

    std::string error;
    if (container.LoadFromMemory(data, size, stream, &error) != 0) {
        if (error.empty() || container.GetEntryCount() != 1 || container.GetEntry(0)->image.get() != earlier.get() ||
            stream.GetBytes() != earlierBytes)
            std::abort();
        return 0;
    }
    // Hand out every entry the way the shaders' UnStream does, and read the stream's
    // integers as ids.
    for (int id = 0; id < container.GetEntryCount(); ++id) {
        QorStreamer idStream;
        idStream.WriteInt(id, 0);
        QorResourceZPKContainer::EffectSource effect;
        container.GetResourceShader(idStream, effect);
        idStream.Rewind();
        QorTexturePixelImage* image = nullptr;
        if (container.GetResource(idStream, image))
            image->Release();
    }
    while (stream.GetRemainingSize() >= 4) {
        QorTexturePixelImage* image = nullptr;
        if (container.GetResource(stream, image))
            image->Release();
    }
    return 0;
}

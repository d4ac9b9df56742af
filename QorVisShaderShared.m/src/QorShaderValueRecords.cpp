#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorShaderTextureCache.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorShaderValueType.h"

namespace QorShaderValueRecords {
namespace {

// The smallest record of a name: its 32-bit length.
const std::size_t kMinimumNameBytes = 4;

void ReadTexture(QorStreamer& streamer, QorShaderValueRecordSink& sink)
{
    int token = 0;
    if (!streamer.ReadInt(token, 0))
        return;
    QorTexturePixelImage* image = nullptr;
    if (QorResourceZPKContainer* container = streamer.GetResourceZPKContainer())
        container->GetResource(streamer, image);
    if (!image) {
        // Stored without its image (a value without a file, or one whose file could not
        // be read when it was written): the place stays, with nothing to take.
        if (!streamer.IsFailed())
            sink.OnTexture(token, nullptr);
        return;
    }
    const QorString file = QorShaderTextureCache::Adopt(streamer, *image);
    sink.OnTexture(token, file.c_str());
}

} // namespace

void WriteNames(QorStreamer& streamer, const char* const* names, int count)
{
    streamer.WriteInt(count, 0);
    for (int i = 0; i < count; ++i)
        streamer.WriteString(names[i]);
}

bool ReadNames(QorStreamer& streamer, std::vector<Name>& names)
{
    int count = 0;
    if (!streamer.ReadInt(count, 0))
        return false;
    // Refused before anything is allocated: a count the remaining bytes cannot hold.
    if (count < 0 || static_cast<std::size_t>(count) > streamer.GetRemainingSize() / kMinimumNameBytes)
        return false;
    std::vector<Name> read;
    read.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        char* text = nullptr;
        streamer.ReadString(text);
        read.emplace_back(text ? _strdup(text) : nullptr);
        delete[] text;
    }
    // A name list cut short is dropped whole.
    if (streamer.IsFailed())
        return false;
    names = std::move(read);
    return true;
}

void WriteCount(QorStreamer& streamer, int count)
{
    streamer.WriteInt(count, 0);
}

void WriteFloat(QorStreamer& streamer, int token, float value)
{
    streamer.WriteInt(token, 0);
    streamer.WriteFloat(value);
}

void WriteColor(QorStreamer& streamer, int token, const float* components)
{
    streamer.WriteInt(token, 0);
    streamer.WriteFloat(components, 4);
}

bool ReadFloat(QorStreamer& streamer, int& token, float& value)
{
    streamer.ReadInt(token, 0);
    streamer.ReadFloat(value);
    return !streamer.IsFailed();
}

bool ReadColor(QorStreamer& streamer, int& token, float* components)
{
    streamer.ReadInt(token, 0);
    streamer.ReadFloat(components, 4);
    return !streamer.IsFailed();
}

void WriteRecord(QorStreamer& streamer, int type, int token, const float* numbers, const char* file)
{
    streamer.WriteInt(type, 0);
    if (type == QorValueFloat) {
        WriteFloat(streamer, token, numbers[0]);
    } else if (QorIsColorType(type)) {
        WriteColor(streamer, token, numbers);
    } else if (type == QorValueTexture) {
        streamer.WriteInt(token, 0);
        if (QorResourceZPKContainer* container = streamer.GetResourceZPKContainer())
            container->AddResource(streamer, container->GetImage(QorString(file), QorReadWrite));
    }
}

void ReadValues(QorStreamer& streamer, QorShaderValueRecordSink& sink)
{
    int count = 0;
    if (!streamer.ReadInt(count, 0) || count < 1)
        return;
    // Every record reads at least its type, so a huge count ends with the data.
    for (int i = 0; i < count && !streamer.IsFailed(); ++i) {
        int type = 0;
        if (!streamer.ReadInt(type, 0))
            return;
        int token = 0;
        float numbers[4] = {};
        if (type == QorValueTexture) {
            ReadTexture(streamer, sink);
        } else if (type == QorValueFloat) {
            if (ReadFloat(streamer, token, numbers[0]))
                sink.OnFloat(token, numbers[0]);
        } else if (QorIsColorType(type)) {
            if (ReadColor(streamer, token, numbers))
                sink.OnColor(token, type, numbers);
        } else {
            sink.OnEmpty();
        }
    }
}

} // namespace QorShaderValueRecords

#include "QorVisShaderShared/QorShaderEffectText.h"

#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorStreamer.h"

#include <cstdlib>

namespace QorShaderEffectText {

void SetFileName(const QorString& name, QorString& fileName, QorString& path)
{
    fileName = name;
    const int separator = name.ReverseFindOneOf("\\/");
    if (separator >= 1)
        path = name.Left(separator + 1);
}

void SetBuffer(char*& buffer, QorString& fileName, const char* text)
{
    std::free(buffer);
    buffer = nullptr;
    if (text) {
        buffer = _strdup(text);
        fileName = QorString("");
    }
}

void SetName(char*& name, char* newName)
{
    std::free(name);
    name = newName;
}

void Stream(QorStreamer& streamer, const char* name, const char* buffer)
{
    streamer.WriteString(name);
    streamer.WriteString(buffer);
}

void UnStream(QorStreamer& streamer, char*& name, char*& buffer)
{
    char* readName = nullptr;
    char* readBuffer = nullptr;
    streamer.ReadString(readName);
    streamer.ReadString(readBuffer);
    if (readName)
        SetName(name, _strdup(readName));
    if (readBuffer) {
        std::free(buffer);
        buffer = _strdup(readBuffer);
    }
    delete[] readName;
    delete[] readBuffer;
}

} // namespace QorShaderEffectText

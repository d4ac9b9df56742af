// The image format word of a texture file name, used to cache streamed textures.
#include "QorVisShaders/QorShaderTextureRegistry.h"

#include <cstdio>

QorUnicodeString QorShaderTextureRegistry::ShaderParamRetrieveTextureExtension(const QorUnicodeString& fileName)
{
    QorUnicodeString extension;
    const int lastDot = fileName.ReverseFind('.');
    if (lastDot >= 0) {
        extension = fileName.Mid(lastDot + 1);
        int number = 0;
        // A numbered copy ("wood.tif.2") takes the word before the number.
        if (std::sscanf(extension.c_str(), "%d", &number) == 1 && lastDot > 0) {
            const int previousDot = fileName.ReverseFind('.', lastDot - 1);
            if (previousDot >= 0)
                extension = fileName.Mid(previousDot + 1, lastDot - previousDot - 1);
        }
    }
    extension.MakeUpper();
    if (extension == QorUnicodeString("JPG"))
        return QorUnicodeString("JPEG");
    if (extension == QorUnicodeString("TIF"))
        return QorUnicodeString("TIFF");
    return extension;
}

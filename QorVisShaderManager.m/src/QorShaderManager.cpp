#include "QorVisShaders/QorShaderManager.h"

#include "CgFXShader.h"
#include "QorVisShaders/QorShaderEffect.h"
#include "QorSystem/QorEnvironment.h"
#include "QorVisFoundation/QorQRFX0Factory.h"
#include "QorVisFoundation/QorVisBaseEnv.h"

#include <cstdio>
#include <cstring>
#include <new>

QorFxImplementation QorShaderManager::s_ShaderVersion = QorFxUndecided;

QorFxImplementation QorShaderManager::GetShaderVersion()
{
    if (s_ShaderVersion != QorFxUndecided)
        return s_ShaderVersion;
    // The host's newer path wins without even reading the variable.
    if (QorVisBaseEnv::IsNewVisu())
        return s_ShaderVersion = QorFxQRFX0;
    const char* requested = QorGetEnv("ShaderVersion");
    s_ShaderVersion = QorFxCgFX;
    // Only the exact word counts: no case folding, nothing after it.
    if (requested && std::strcmp(requested, "QRFX") == 0)
        s_ShaderVersion = QorFxQRFX;
    return s_ShaderVersion;
}

void QorShaderManager::setFxImplementation(QorFxImplementation implementation)
{
    s_ShaderVersion = implementation;
}

QorIShader* QorShaderManager::CreateShader()
{
    switch (GetShaderVersion()) {
    case QorFxCgFX:
        return new (std::nothrow) CgFXShader();
    case QorFxQRFX0:
        return CreateQRFX0Effect();
    default:
        // GLSL effects have no shader object in this build yet; callers test for null.
        return nullptr;
    }
}

QorIShaderEffect* QorShaderManager::CreateShaderEffect()
{
    switch (GetShaderVersion()) {
    case QorFxCgFX:
        return QorShaderEffect::AddShaderEffect(nullptr);
    case QorFxQRFX0:
        // On the host's newer path effects are not made by this library.
        return nullptr;
    default:
        // GLSL effects have no effect object in this build yet; callers test for null.
        return nullptr;
    }
}

QorUnicodeString QorShaderManager::ShaderParamRetrieveTextureExtension(const QorUnicodeString& fileName)
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

void QorShaderManager::Init_Light_Properties(_LightsParameters& lights)
{
    for (std::uint64_t& word : lights.lightProperties)
        word = 0;
}

#include "QorVisShaders/QorShaderFactory.h"

// The manager reaches each implementation through its factory header only.
#include "QorVisShaderCGFX/QorCgFXFactory.h"
#include "QorVisShaderQRFX/QorQRFXFactory.h"

#include "QorSystem/QorEnvironment.h"
#include "QorVisFoundation/QorQRFX0Factory.h"
#include "QorVisFoundation/QorVisBaseEnv.h"

#include <cstring>

QorFxImplementation QorShaderFactory::s_ShaderVersion = QorFxUndecided;

QorFxImplementation QorShaderFactory::GetShaderVersion()
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

void QorShaderFactory::setFxImplementation(QorFxImplementation implementation)
{
    s_ShaderVersion = implementation;
}

QorIShader* QorShaderFactory::CreateShader()
{
    const QorFxImplementation chosen = GetShaderVersion();
    // 2, or any value forced through setFxImplementation: GLSL effects.
    return CreateShader(chosen == QorFxCgFX || chosen == QorFxQRFX0 ? chosen : QorFxQRFX);
}

QorIShader* QorShaderFactory::CreateShader(QorFxImplementation implementation)
{
    switch (implementation) {
    case QorFxCgFX:
        return QorCreateCgFXShader();
    case QorFxQRFX:
        return QorCreateQRFXShader();
    case QorFxQRFX0:
        return CreateQRFX0Effect();
    default:
        return nullptr;
    }
}

QorIShaderEffect* QorShaderFactory::CreateShaderEffect()
{
    switch (GetShaderVersion()) {
    case QorFxCgFX:
        return QorCreateCgFXEffect();
    case QorFxQRFX0:
        // On the host's newer path effects are not made by this library.
        return nullptr;
    default:
        return QorCreateQRFXEffect();
    }
}

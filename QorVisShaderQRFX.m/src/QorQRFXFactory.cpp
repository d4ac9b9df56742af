#include "QorVisShaderQRFX/QorQRFXFactory.h"

#include "QorNvFXShader.h"

#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include <new>

QorIShader* QorCreateQRFXShader()
{
    return new (std::nothrow) QorNvFXShader();
}

QorIShaderEffect* QorCreateQRFXEffect()
{
    return QorNvFXEffect::AddShaderEffect(nullptr);
}

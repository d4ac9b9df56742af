#include "QorVisShaderCGFX/QorCgFXFactory.h"

#include "CgFXShader.h"

#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <new>

QorIShader* QorCreateCgFXShader()
{
    return new (std::nothrow) CgFXShader();
}

QorIShaderEffect* QorCreateCgFXEffect()
{
    return QorShaderEffect::AddShaderEffect(nullptr);
}

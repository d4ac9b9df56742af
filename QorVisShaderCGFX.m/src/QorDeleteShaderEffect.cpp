#include "QorDeleteShaderEffect.h"

#include "QorVisFoundation/QorGLServices.h"

#include <cstdint>

void DeleteShaderEffect(CGeffect effect)
{
    QorNotifyGLService(QorGLService::DeleteShaderEffect, reinterpret_cast<std::uintptr_t>(effect));
    if (effect)
        cgDestroyEffect(effect);
}

// Pushing a shader object's values into the Cg parameters of the effect. This runs for
// every material of every frame.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <Cg/cgGL.h>

namespace {

// Feeds one value to the Cg parameter it mirrors. Colours go through the sized vector
// setters: their component count always matches the parameter the effect made them from.
inline void PushValue(const QorMaterialValue& value)
{
    auto* parameter = static_cast<CGparameter>(value.Binding());
    switch (value.Type()) {
    case QorValueFloat:
        cgSetParameter1f(parameter, value.Components()[0]);
        break;
    case QorValueColor2:
        cgSetParameter2fv(parameter, value.Components());
        break;
    case QorValueColor3:
        cgSetParameter3fv(parameter, value.Components());
        break;
    case QorValueColor4:
        cgSetParameter4fv(parameter, value.Components());
        break;
    case QorValueTexture: {
        const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(value.File());
        if (texture && texture->GetID() != 0)
            cgGLSetTextureParameter(parameter, texture->GetID());
        break;
    }
    default:
        break;
    }
}

} // namespace

void QorShaderEffect::UploadCurrentParameters(bool onlyIfModified)
{
    Upload(onlyIfModified, PushValue);
}

// Pushing a shader object's values into the uniforms of the effect before drawing. This
// runs for every material of every frame.
#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <nvFX/IUniformEx.h>

namespace {

// Writes one value into the uniform it mirrors; a texture binds the GL texture the
// registry holds for its file (nothing while it has none) on the unit its sampler reads.
void PushValue(const QorMaterialValue& value)
{
    auto* uniform = static_cast<nvFX::IUniform*>(value.Binding());
    if (value.Type() == QorValueTexture) {
        const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(value.File());
        nvFX::IUniformEx* extended = uniform->getExInterface();
        if (texture && texture->GetID() != 0)
            uniform->setSamplerResource(texture->GetID(), extended ? extended->getSamplerUnit() : 0);
        return;
    }
    const int count = value.Type() == QorValueFloat ? 1 : value.ComponentCount();
    if (count > 0)
        uniform->setValuefv(value.Components(), count > 4 ? 4 : count);
}

} // namespace

void QorNvFXEffect::UploadCurrentParameters(bool onlyIfModified)
{
    Upload(onlyIfModified, PushValue);
}

// Pushing a shader object's values into the uniforms of the effect before drawing. This
// runs for every material of every frame: unchanged values cost one test each.
#include "QorVisShaders/QorNvFXEffect.h"

#include "QorVisShaders/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorNvFXShaderValue.h"

#include <nvFX/IUniformEx.h>

void QorNvFXEffect::UploadCurrentParameters(bool onlyIfModified)
{
    if (!m_currentParameters || !m_container)
        return;
    const QorShaderValueList* values = m_currentParameters->GetValueList();
    for (QorIShaderValue* listed : *values) {
        auto* value = static_cast<QorNvFXShaderValue*>(listed);
        // Values read back from a stream mirror no uniform: nothing to feed.
        if (!value || (onlyIfModified && !value->GetChanged()) || !value->GetParameter())
            continue;
        // A texture goes on the unit its sampler reads.
        nvFX::IUniformEx* uniform = value->GetParameter()->getExInterface();
        value->Push(uniform ? uniform->getSamplerUnit() : 0);
        value->ClearChanged();
    }
}

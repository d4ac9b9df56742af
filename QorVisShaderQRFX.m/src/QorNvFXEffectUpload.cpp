// Pushing a shader object's values into the uniforms of the effect before drawing. This
// runs for every material of every frame, so it visits only the values changed since the
// last upload, as the set lists them.
#include "QorVisShaders/QorNvFXEffect.h"

#include "QorVisShaders/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorNvFXShaderValue.h"

#include <nvFX/IUniformEx.h>

#include <cstddef>

namespace {

void Push(QorIShaderValue* listed, bool onlyIfChanged)
{
    auto* value = static_cast<QorNvFXShaderValue*>(listed);
    // Values read back from a stream mirror no uniform: nothing to feed.
    if (!value || (onlyIfChanged && !value->GetChanged()) || !value->GetParameter())
        return;
    // A texture goes on the unit its sampler reads.
    nvFX::IUniformEx* uniform = value->GetParameter()->getExInterface();
    value->Push(uniform ? uniform->getSamplerUnit() : 0);
    value->ClearChanged();
}

} // namespace

void QorNvFXEffect::UploadCurrentParameters(bool onlyIfModified)
{
    if (!m_currentParameters || !m_container)
        return;
    const QorShaderValueList& values = *m_currentParameters->GetValueList();
    if (onlyIfModified) {
        for (int position : m_currentParameters->GetChangedPositions())
            if (static_cast<std::size_t>(position) < values.size())
                Push(values[static_cast<std::size_t>(position)], true);
    } else {
        for (QorIShaderValue* listed : values)
            Push(listed, false);
    }
    m_currentParameters->ClearChangedPositions();
}

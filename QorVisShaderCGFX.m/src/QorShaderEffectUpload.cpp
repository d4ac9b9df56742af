// Pushing a parameter set's values into the Cg parameters of the effect. This runs for
// every material of every frame, so it visits only the values modified since the last
// push when the set keeps their list.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorShaderParameters.h"
#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"
#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderValueType.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <Cg/cgGL.h>

namespace {

// Feeds one value to the Cg parameter it mirrors. Colours go through the sized vector
// setters: their component count always matches the parameter the effect made them from.
// Inlined into the upload loop, which runs for every changed value of every frame.
[[gnu::always_inline]] inline void PushValue(QorShaderValue& value, CGparameter parameter)
{
    switch (value.Type()) {
    case QorValueFloat:
        cgSetParameter1f(parameter, static_cast<QorShaderValueFloat&>(value).Value());
        break;
    case QorValueColor2:
        cgSetParameter2fv(parameter, static_cast<QorShaderValueColor&>(value).Components());
        break;
    case QorValueColor3:
        cgSetParameter3fv(parameter, static_cast<QorShaderValueColor&>(value).Components());
        break;
    case QorValueColor4:
        cgSetParameter4fv(parameter, static_cast<QorShaderValueColor&>(value).Components());
        break;
    case QorValueTexture: {
        const QorShaderTexture* texture =
            QorShaderManager::GetShaderTexture(static_cast<QorShaderValueString&>(value).GetFile());
        if (texture && texture->GetID() != 0)
            cgGLSetTextureParameter(parameter, texture->GetID());
        break;
    }
    default:
        break;
    }
}

// Feeds a value that needs it and marks it unmodified: the listed value itself, what
// the set's ResetModified(position + 1) reaches, without a second look-up.
void Push(QorShaderValue* value, bool onlyIfModified)
{
    // Handles read back from a stream are null: such values have nothing to feed.
    if (!value || (onlyIfModified && !value->GetModified()) || !value->GetParameter())
        return;
    PushValue(*value, value->GetParameter());
    value->ResetModified();
}

} // namespace

void QorShaderEffect::UploadCurrentParameters(bool onlyIfModified)
{
    QorIShaderParameters* parameters = m_interfaceParameters;
    if (!parameters || !m_effect)
        return;
    const QorShaderValueList* values = parameters->GetValueList();
    if (!values)
        return;
    // A CgFX set lists the values modified since the last upload: only those are visited.
    QorShaderParameters* ownSet = m_currentOwnSet;
    if (onlyIfModified && ownSet) {
        for (int position : ownSet->GetModifiedPositions())
            Push(static_cast<QorShaderValue*>((*values)[static_cast<std::size_t>(position)]), true);
    } else {
        for (QorIShaderValue* listed : *values)
            Push(static_cast<QorShaderValue*>(listed), onlyIfModified);
    }
    if (ownSet)
        ownSet->ClearModifiedPositions();
}

// Pushing a parameter set's values into the Cg parameters of the effect. This runs for
// every material of every frame, so the walk does the least work on values that need no
// push: one flag test each.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorShaderValue.h"
#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderValueType.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <Cg/cgGL.h>

namespace {

// Feeds one value to the Cg parameter it mirrors. Colours go through the sized vector
// setters: their component count always matches the parameter the effect made them from.
void PushValue(QorShaderValue& value, CGparameter parameter)
{
    int type = 0;
    value.GetType(&type);
    if (type == QorValueFloat) {
        float number = 0;
        value.Get(&number);
        cgSetParameter1f(parameter, number);
    } else if (QorIsColorType(type)) {
        float components[4] = {0, 0, 0, 0};
        value.Get(components);
        if (type == QorValueColor2)
            cgSetParameter2fv(parameter, components);
        else if (type == QorValueColor3)
            cgSetParameter3fv(parameter, components);
        else
            cgSetParameter4fv(parameter, components);
    } else if (type == QorValueTexture) {
        char* file = nullptr;
        value.Get(&file);
        const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(file);
        if (texture && texture->GetID() != 0)
            cgGLSetTextureParameter(parameter, texture->GetID());
    }
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
    for (QorIShaderValue* listed : *values) {
        auto* value = static_cast<QorShaderValue*>(listed);
        // Handles read back from a stream are null: such values have nothing to feed.
        if (!value || (onlyIfModified && !value->GetModified()) || !value->GetParameter())
            continue;
        PushValue(*value, value->GetParameter());
        // The listed value itself: what the set's ResetModified(position + 1) reaches,
        // without a second look-up per pushed value.
        value->ResetModified();
    }
}

// Pushing a parameter set's values into the Cg parameters of the effect.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorShaderValue.h"
#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include <Cg/cgGL.h>

void QorShaderEffect::UploadCurrentParameters(bool onlyIfModified)
{
    QorIShaderParameters* parameters = m_interfaceParameters;
    if (!parameters || !m_effect)
        return;
    const QorShaderValueList* values = parameters->GetValueList();
    for (size_t position = 0; values && position < values->size(); ++position) {
        auto* value = static_cast<QorShaderValue*>((*values)[position]);
        // Handles read back from a stream are null: such values have nothing to feed.
        if (!value || !value->GetParameter() || (onlyIfModified && !value->GetModified()))
            continue;
        const CGparameter parameter = value->GetParameter();
        int type = 0;
        value->GetType(&type);
        if (type == 1) {
            float number = 0;
            value->Get(&number);
            cgSetParameter1f(parameter, number);
        } else if (type == 2 || type == 5 || type == 6) {
            float components[4] = {0, 0, 0, 0};
            value->Get(components);
            cgSetParameterValuefr(parameter, type == 5 ? 2 : type == 6 ? 3 : 4, components);
        } else if (type == 4) {
            char* file = nullptr;
            value->Get(&file);
            const QorShaderTexture* texture = QorShaderManager::GetShaderTexture(file);
            if (texture && texture->GetID() != 0)
                cgGLSetTextureParameter(parameter, texture->GetID());
        }
        parameters->ResetModified(static_cast<int>(position) + 1);
    }
}

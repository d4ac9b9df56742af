#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

void QorCopyParameterValue(QorIShaderParameters& from, int fromIndex, QorIShaderParameters& to, int toIndex)
{
    const int type = from.GetParameterType(fromIndex);
    if (type == QorValueFloat) {
        float value = 0;
        from.GetFloatValue(fromIndex, &value, 0);
        to.SetFloatValue(toIndex, value);
    } else if (QorIsColorType(type)) {
        float rgba[4] = {0, 0, 0, 0};
        from.GetColorValue(fromIndex, rgba, 0);
        to.SetColorValue(toIndex, rgba);
    } else if (type == QorValueTexture) {
        char* file = nullptr;
        from.GetTextureValue(fromIndex, &file, 0);
        to.SetTextureValue(toIndex, file, 0);
    }
}

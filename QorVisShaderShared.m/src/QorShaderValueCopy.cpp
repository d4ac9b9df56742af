#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

namespace {

QorValueCopy CopyColor(QorIShaderParameters& from, int fromIndex, QorIShaderParameters& to, int toIndex, int type)
{
    const int targetType = to.GetParameterType(toIndex);
    // The target's own components first: a stored colour of fewer components leaves the
    // rest as the target has them rather than zero.
    float rgba[4] = {0, 0, 0, 0};
    if (QorIsColorType(targetType))
        to.GetColorValue(toIndex, rgba, 0);
    from.GetColorValue(fromIndex, rgba, 0);
    // A target of another kind answers the write as its own setter does.
    if (to.SetColorValue(toIndex, rgba) != 0 || !QorIsColorType(targetType))
        return QorValueCopy::Refused;
    const int stored = QorColorComponentCount(type);
    const int taken = QorColorComponentCount(targetType);
    return stored == taken ? QorValueCopy::Copied : stored > taken ? QorValueCopy::Narrowed : QorValueCopy::Widened;
}

} // namespace

QorValueCopy QorCopyParameterValue(QorIShaderParameters& from, int fromIndex, QorIShaderParameters& to, int toIndex)
{
    const int type = from.GetParameterType(fromIndex);
    if (type == QorValueFloat) {
        float value = 0;
        from.GetFloatValue(fromIndex, &value, 0);
        return to.SetFloatValue(toIndex, value) == 0 ? QorValueCopy::Copied : QorValueCopy::Refused;
    }
    if (QorIsColorType(type))
        return CopyColor(from, fromIndex, to, toIndex, type);
    if (type == QorValueTexture) {
        char* file = nullptr;
        from.GetTextureValue(fromIndex, &file, 0);
        if (!file || !*file)
            return QorValueCopy::Empty;
        return to.SetTextureValue(toIndex, file, 0) == 0 ? QorValueCopy::Copied : QorValueCopy::Refused;
    }
    return QorValueCopy::NotAValue;
}

// What the user sees of a parameter: whether it becomes a user value, and its slider
// range from the UI annotations.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorCgTypes.h"
#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorHiddenParameters.h"

#include <initializer_list>

namespace {

// The first float of the first annotation present among `names`; `value` stays otherwise.
void ReadFirstFloatAnnotation(CGparameter parameter, std::initializer_list<const char*> names, float& value)
{
    for (const char* name : names) {
        const CGannotation annotation = cgGetNamedParameterAnnotation(parameter, name);
        if (!annotation)
            continue;
        int count = 0;
        const float* values = cgGetFloatAnnotationValues(annotation, &count);
        if (values && count > 0)
            value = values[0];
        return;
    }
}

} // namespace

bool QorShaderEffect::checkParameterVisibility(CGparameter parameter, int* type)
{
    if (QorHiddenParameters::IsHidden(QorFxCgFX, cgGetParameterSemantic(parameter), cgGetParameterName(parameter)))
        return false;
    const CGtype parameterType = cgGetParameterType(parameter);
    *type = parameterType;
    return parameterType == CG_BOOL || parameterType == CG_INT ||
           (parameterType >= CG_FLOAT && parameterType <= CG_FLOAT4) || QorIsCgTextureType(parameterType);
}

int QorShaderEffect::getParameterFloatMinMaxStep(CGparameter parameter, float& min, float& max, float& step,
                                                 char** widget, char** name)
{
    if (!m_effect)
        return -1;
    if (!parameter) {
        // The technique selector: max grows by one per technique from what the caller passed.
        min = 0;
        for (CGtechnique technique = cgGetFirstTechnique(m_effect); technique;
             technique = cgGetNextTechnique(technique))
            max += 1.0f;
        step = 1.0f;
        return 0;
    }
    if (cgGetParameterType(parameter) == CG_BOOL) {
        min = 0;
        max = 1.0f;
        step = 1.0f;
        return 1;
    }
    min = 0;
    max = 1.0f;
    step = 0.1f;
    ReadFirstFloatAnnotation(parameter, {"UIMin", "UImin", "uimin", "min", "MIN", "Min"}, min);
    ReadFirstFloatAnnotation(parameter, {"UIMax", "UImax", "uimax", "max", "MAX", "Max"}, max);
    ReadFirstFloatAnnotation(parameter, {"UIStep", "UIstep", "uistep", "step", "STEP", "Step"}, step);
    // The widget and name annotations are looked up but, in this implementation, never
    // written back: both outputs stay as the caller set them.
    (void)widget;
    (void)name;
    return 1;
}

CGparameter QorShaderEffect::GetUserParameter(int index) const
{
    // A CgFX effect builds CgFX sets only.
    const auto* parameters = static_cast<const QorShaderParameters*>(GetParameters());
    return parameters ? parameters->GetCgParameter(index) : nullptr;
}

// The QRFX parameter set: its values made from the effect's uniforms.
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include "QorQRFXProfile.h"

#include "QorVisShaderQRFX/QorNvFXShaderValueColor.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueFloat.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueString.h"

#include <nvFX/IUniform.h>

#include <new>

QorNvFXShaderParameters::QorNvFXShaderParameters() : QorMaterialParameters(kQorQRFXProfile) {}

QorIShaderParameters* QorNvFXShaderParameters::Clone()
{
    return new (std::nothrow) QorNvFXShaderParameters(*this);
}

QorMaterialValue* QorNvFXShaderParameters::MakeValue(int type, int count, void* binding, const float* numbers,
                                                     const char* file) const
{
    return QorNewValue<QorNvFXShaderValueFloat, QorNvFXShaderValueColor, QorNvFXShaderValueString>(
        type, count, static_cast<nvFX::IUniform*>(binding), numbers, file);
}

void QorNvFXShaderParameters::AddFloat(nvFX::IUniform* uniform, float value)
{
    if (uniform)
        AddParameter(MakeValue(QorValueFloat, 1, uniform, &value, nullptr), uniform->getName());
}

void QorNvFXShaderParameters::AddColor(nvFX::IUniform* uniform, const float* components, int count)
{
    if (uniform)
        AddParameter(MakeValue(QorColorTypeOf(count), count, uniform, components, nullptr), uniform->getName());
}

void QorNvFXShaderParameters::AddString(nvFX::IUniform* uniform, const char* text)
{
    if (uniform)
        AddParameter(MakeValue(QorValueTexture, 0, uniform, nullptr, text), uniform->getName());
}

nvFX::IUniform* QorNvFXShaderParameters::GetUniform(int index) const
{
    const QorMaterialValue* value = ValueAt(index);
    return value ? static_cast<nvFX::IUniform*>(value->Binding()) : nullptr;
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueFloat()
{
    return new (std::nothrow) QorNvFXShaderValueFloat();
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueColor()
{
    return new (std::nothrow) QorNvFXShaderValueColor(4);
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueString()
{
    return new (std::nothrow) QorNvFXShaderValueString();
}

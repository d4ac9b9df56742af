// The QRFX values: their back end, their copies and their own records.
#include "QorVisShaderQRFX/QorNvFXShaderValue.h"

#include "QorQRFXProfile.h"

#include "QorVisShaderShared/QorShaderValueRecords.h"

#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueColor.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueFloat.h"
#include "QorVisShaderQRFX/QorNvFXShaderValueString.h"

#include <new>

const QorBackEndProfile& QorNvFXShaderValue::Profile() const
{
    return kQorQRFXProfile;
}

void QorNvFXShaderValue::Set(const void* in)
{
    if (Type() == QorValueFloat)
        SetFloat(in ? *static_cast<const float*>(in) : Components()[0]);
    else if (Type() == QorValueTexture)
        SetString(static_cast<const char*>(in));
    else
        SetColor(static_cast<const float*>(in));
}

void QorNvFXShaderValue::Stream(QorStreamer& streamer) const
{
    if (Type() == QorValueFloat) {
        QorShaderValueRecords::WriteFloat(streamer, GetParameterToken(), Components()[0]);
    } else if (Type() == QorValueTexture) {
        streamer.WriteInt(GetParameterToken(), 0);
        streamer.WriteString(File());
    } else {
        QorShaderValueRecords::WriteColor(streamer, GetParameterToken(), Components());
    }
}

void QorNvFXShaderValue::UnStream(QorStreamer& streamer)
{
    int token = 0;
    float numbers[4] = {};
    char* text = nullptr;
    bool read = false;
    if (Type() == QorValueFloat) {
        read = QorShaderValueRecords::ReadFloat(streamer, token, numbers[0]);
    } else if (Type() == QorValueTexture) {
        streamer.ReadInt(token, 0);
        streamer.ReadString(text);
        read = !streamer.IsFailed();
    } else {
        read = QorShaderValueRecords::ReadColor(streamer, token, numbers);
    }
    if (read) {
        SetParameterToken(token);
        SetBinding(nullptr);
        // What a record carries is the value's content; read back, it counts as set.
        if (Type() != QorValueTexture)
            Set(numbers);
        else if (text)
            SetString(text);
    }
    delete[] text;
}

QorMaterialValue* QorNvFXShaderValueFloat::Clone() const
{
    return new (std::nothrow) QorNvFXShaderValueFloat(*this);
}

QorMaterialValue* QorNvFXShaderValueColor::Clone() const
{
    return new (std::nothrow) QorNvFXShaderValueColor(*this);
}

QorMaterialValue* QorNvFXShaderValueString::Clone() const
{
    return new (std::nothrow) QorNvFXShaderValueString(*this);
}

/// @file
/// A value of a GLSL-effect (QRFX) parameter set: the material model's value
/// (QorMaterialValue) of the QRFX back end, mirroring an nvFX uniform of its effect. The
/// kinds are QorNvFXShaderValueFloat, QorNvFXShaderValueColor and QorNvFXShaderValueString.
/// A value also writes and reads its own record: a token of its uniform, then its content.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorMaterialValue.h"

class QorStreamer;

namespace nvFX {
class IUniform;
}

class QOR_VISSHADERS_API QorNvFXShaderValue : public QorMaterialValue
{
public:
    const QorBackEndProfile& Profile() const final;

    /// Writes the value's record: the token of its uniform, then its content (one float,
    /// four floats whatever the colour's count, or the text).
    void Stream(QorStreamer& streamer) const;
    /// Reads a record Stream wrote. The token is kept as data (GetParameterToken) and is
    /// never turned back into a uniform: it only named one in the writer's process. A
    /// colour keeps its count; a texture record without a text leaves the text as it was.
    void UnStream(QorStreamer& streamer);
    /// Takes new content from `in` (a float, the count's floats, or a char* text) and
    /// marks the value modified, also when the content is the same.
    void Set(const void* in);

    using QorMaterialValue::SetParameter;
    /// The uniform the value mirrors, borrowed from its effect's container; null when
    /// unknown (a value read from a stream).
    void SetParameter(nvFX::IUniform* uniform) { SetBinding(uniform); }
    nvFX::IUniform* GetParameter() const { return static_cast<nvFX::IUniform*>(Binding()); }

protected:
    QorNvFXShaderValue(int type, int count, nvFX::IUniform* uniform, const float* numbers, const char* text)
        : QorMaterialValue(type, count, uniform, numbers, text)
    {
    }
    QorNvFXShaderValue(const QorNvFXShaderValue& other) = default;
};

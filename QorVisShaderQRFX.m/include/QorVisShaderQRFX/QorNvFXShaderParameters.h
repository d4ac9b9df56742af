/// @file
/// The parameter set of GLSL (QRFX) effects: the material model's set
/// (QorMaterialParameters) of the QRFX back end, built by the effect from its user
/// uniforms while it binds, in the order binding found them. The contract's interface
/// operations have no meaning for GLSL effects: they report "This method is not supposed
/// to be called when using nvfx" and answer 0. The set cannot be written to a stream
/// ("Not implemented"); it reads the parameter stream CgFX sets write, to carry stored
/// materials over to GLSL effects.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorMaterialParameters.h"

class QorNvFXShaderValue;

namespace nvFX {
class IUniform;
}

class QOR_VISSHADERS_API QorNvFXShaderParameters final : public QorMaterialParameters
{
public:
    /// No values, room for 20 names, flag 1.
    QorNvFXShaderParameters();
    QorNvFXShaderParameters(const QorNvFXShaderParameters& other) = default;

    QorIShaderParameters* Clone() override;

    // Binding fills the set. A null uniform adds nothing; otherwise the value and the
    // uniform's name are added. A texture value takes a registry reference for its file.
    void AddFloat(nvFX::IUniform* uniform, float value);
    void AddColor(nvFX::IUniform* uniform, const float* components, int count);
    void AddString(nvFX::IUniform* uniform, const char* text);
    /// The uniform of the value at `index` (from 1); null for a bad index.
    nvFX::IUniform* GetUniform(int index) const;
    /// Stores a copy of the name; its position, or -1 for a null name.
    int AddName(const char* name) { return AddParameterName(name); }

    static QorNvFXShaderValue* CreateValueFloat();
    /// A colour of four components.
    static QorNvFXShaderValue* CreateValueColor();
    static QorNvFXShaderValue* CreateValueString();

private:
    QorMaterialValue* MakeValue(int type, int count, void* binding, const float* numbers,
                                const char* file) const override;
};

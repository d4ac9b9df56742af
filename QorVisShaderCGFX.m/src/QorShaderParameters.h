/// @file
/// The CgFX parameter set: the material model's set (QorMaterialParameters) of the CgFX
/// back end, built by the effect from its Cg parameters while it binds semantics, with
/// the values of its Cg interface structures. Private to the library: callers reach it
/// through QorIShaderParameters.
#pragma once

#include "QorVisShaderShared/QorMaterialParameters.h"

#include <Cg/cg.h>

class QorShaderParameters final : public QorMaterialParameters
{
public:
    /// No values, room for 20 names, default-texture flag 1.
    QorShaderParameters();
    QorShaderParameters(const QorShaderParameters& other) = default;

    QorIShaderParameters* Clone() override;

    // Used by the effect while it builds its default set. Each adds the parameter's
    // name (cgGetParameterName) even when its value cannot be made; a null parameter adds
    // nothing.
    void AddFloatParameter(CGparameter parameter, float value);
    void AddColorParameter(CGparameter parameter, const float* values, int count);
    /// A non-null file also registers its texture (the value holds that reference).
    void AddTextureParameter(CGparameter parameter, const char* file);

    /// A new record of the structure instance's float, vector and texture members with
    /// their defaults, owned by the caller until handed to SetInterface; null only when
    /// out of memory. Texture members register their annotated file names.
    static QorShaderInterfaceRecord* BuildInterfaceRecord(CGparameter structParameter);
    /// The live Cg handle of the value at parameter index `index` (from 1), for reading the
    /// effect's annotations; null for a bad index or a value read from a stream.
    CGparameter GetCgParameter(int index) const;
    /// The live Cg handle of an interface member's value; null when there is none.
    CGparameter GetInterfaceMemberHandle(int interfaceIndex, int member) const;
    /// The string of the first of the annotations "File", "file", "Default", "default"
    /// present on the parameter; null when none is present or it is not a string.
    /// Borrowed from the Cg runtime.
    static const char* GetTextureFileAnnotation(CGparameter parameter);

private:
    QorMaterialValue* MakeValue(int type, int count, void* binding, const float* numbers,
                                const char* file) const override;
};

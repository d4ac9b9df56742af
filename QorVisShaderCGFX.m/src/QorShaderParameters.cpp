// The CgFX parameter set: its values made from the effect's Cg parameters and their
// interface structures.
#include "QorShaderParameters.h"

#include "QorCgFXProfile.h"
#include "QorCgTypes.h"
#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include <cstring>
#include <new>

namespace {

// A structure instance's members are named "<instance>$.<member>". A member of a
// structure declared in the effect ("light.color") has no "$.": its own name after the
// first "." is used, so such records can still be looked up by member name.
const char* MemberName(const char* fullName)
{
    if (!fullName)
        return nullptr;
    if (const char* marker = std::strstr(fullName, "$."))
        return marker + 2;
    const char* dot = std::strchr(fullName, '.');
    return dot ? dot + 1 : fullName;
}

QorMaterialValue* NewValue(int type, int count, CGparameter parameter, const float* numbers, const char* file)
{
    return QorNewValue<QorShaderValueFloat, QorShaderValueColor, QorShaderValueString>(type, count, parameter, numbers,
                                                                                      file);
}

// The value of an interface structure's member with its default: floats, vectors of two
// to four floats, and textures named by their file annotation; null for other members.
QorMaterialValue* MakeMemberValue(CGparameter member)
{
    const CGtype type = cgGetParameterType(member);
    float values[4] = {};
    if (type == CG_FLOAT || type == CG_FLOAT2 || type == CG_FLOAT3 || type == CG_FLOAT4) {
        const int count = type - CG_FLOAT + 1;
        cgGetParameterDefaultValuefc(member, count, values);
        return NewValue(count == 1 ? QorValueFloat : QorColorTypeOf(count), count, member, values, nullptr);
    }
    if (!QorIsCgTextureType(type))
        return nullptr;
    const char* file = QorShaderParameters::GetTextureFileAnnotation(member);
    QorMaterialValue* value = NewValue(QorValueTexture, 0, member, nullptr, file);
    // The member holds this reference; the record hands it back when it goes.
    if (value)
        QorShaderTextureBookkeeping::Take(file);
    return value;
}

} // namespace

QorShaderParameters::QorShaderParameters() : QorMaterialParameters(kQorCgFXProfile) {}

QorIShaderParameters* QorShaderParameters::Clone()
{
    return new (std::nothrow) QorShaderParameters(*this);
}

QorMaterialValue* QorShaderParameters::MakeValue(int type, int count, void* binding, const float* numbers,
                                                 const char* file) const
{
    return NewValue(type, count, static_cast<CGparameter>(binding), numbers, file);
}

void QorShaderParameters::AddFloatParameter(CGparameter parameter, float value)
{
    if (parameter)
        AddParameter(MakeValue(QorValueFloat, 1, parameter, &value, nullptr), cgGetParameterName(parameter));
}

void QorShaderParameters::AddColorParameter(CGparameter parameter, const float* values, int count)
{
    if (parameter)
        AddParameter(MakeValue(QorColorTypeOf(count), count, parameter, values, nullptr),
                     cgGetParameterName(parameter));
}

void QorShaderParameters::AddTextureParameter(CGparameter parameter, const char* file)
{
    if (parameter)
        AddParameter(MakeValue(QorValueTexture, 0, parameter, nullptr, file), cgGetParameterName(parameter));
}

CGparameter QorShaderParameters::GetCgParameter(int index) const
{
    const QorMaterialValue* value = ValueAt(index);
    return value ? static_cast<CGparameter>(value->Binding()) : nullptr;
}

CGparameter QorShaderParameters::GetInterfaceMemberHandle(int interfaceIndex, int member) const
{
    const QorMaterialValue* value = MemberValueAt(interfaceIndex, member);
    return value ? static_cast<CGparameter>(value->Binding()) : nullptr;
}

const char* QorShaderParameters::GetTextureFileAnnotation(CGparameter parameter)
{
    if (!parameter)
        return nullptr;
    for (const char* name : {"File", "file", "Default", "default"}) {
        CGannotation annotation = cgGetNamedParameterAnnotation(parameter, name);
        if (annotation)
            return cgGetAnnotationType(annotation) == CG_STRING ? cgGetStringAnnotationValue(annotation) : nullptr;
    }
    return nullptr;
}

QorShaderInterfaceRecord* QorShaderParameters::BuildInterfaceRecord(CGparameter structParameter)
{
    auto* record = new (std::nothrow) QorShaderInterfaceRecord();
    if (!record || !structParameter)
        return record;
    for (CGparameter member = cgGetFirstStructParameter(structParameter); member; member = cgGetNextParameter(member))
        if (QorIShaderValue* value = MakeMemberValue(member))
            record->AddMember(MemberName(cgGetParameterName(member)), value);
    return record;
}

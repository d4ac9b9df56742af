// The parameter set's interface records: the values of the effect's Cg interface
// structures, reached by interface and member name or index.
#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorCgTypes.h"
#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorSystem/QorStrings.h"

#include <cstdlib>
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

QorIShaderValue* MakeMemberValue(CGparameter member)
{
    const CGtype type = cgGetParameterType(member);
    if (type == CG_FLOAT) {
        float value = 0.0f;
        cgGetParameterDefaultValuefc(member, 1, &value);
        return new (std::nothrow) QorShaderValueFloat(member, value);
    }
    if (type == CG_FLOAT2 || type == CG_FLOAT3 || type == CG_FLOAT4) {
        const int count = type - CG_FLOAT2 + 2;
        float values[4] = {};
        cgGetParameterDefaultValuefc(member, count, values);
        return new (std::nothrow) QorShaderValueColor(member, values, count);
    }
    if (QorIsCgTextureType(type)) {
        const char* file = QorShaderParameters::GetTextureFileAnnotation(member);
        auto* value = new (std::nothrow) QorShaderValueString(member, file);
        // The member holds this reference; the record hands it back when it goes.
        if (value)
            QorShaderTextureBookkeeping::Take(file);
        return value;
    }
    return nullptr;
}

// Runs an operation on a member's value: 0 when there is none, else 1.
template <typename Operation>
int WithMember(QorIShaderValue* value, Operation operation)
{
    if (!value)
        return 0;
    operation(*value);
    return 1;
}

} // namespace

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

QorShaderInterfaceRecord* QorShaderParameters::CopyRecord(const QorShaderInterfaceRecord* record)
{
    if (!record)
        return nullptr;
    auto* copy = new (std::nothrow) QorShaderInterfaceRecord();
    if (!copy)
        return nullptr;
    // A member whose value cannot be copied keeps its place, so member indexes agree.
    for (int i = 0; i < record->GetMemberCount(); ++i)
        copy->AddMember(record->GetMemberName(i), CopyValue(record->GetMemberValue(i)));
    return copy;
}

void QorShaderParameters::DestroyInterface(InterfaceEntry& entry)
{
    delete entry.second;
    entry.second = nullptr;
    std::free(entry.first);
    entry.first = nullptr;
}

int QorShaderParameters::SetInterface(const char* name, QorShaderInterfaceRecord* record)
{
    // The set owns the record from here on, also when it cannot be stored.
    if (!name) {
        delete record;
        return 0;
    }
    for (InterfaceEntry& entry : m_interfaces) {
        if (!entry.first || std::strcmp(entry.first, name) != 0)
            continue;
        // Handing in the stored record again must not destroy it.
        if (entry.second != record) {
            delete entry.second;
            entry.second = record;
        }
        return 1;
    }
    m_interfaces.emplace_back(_strdup(name), record);
    return 1;
}

QorShaderInterfaceRecord* QorShaderParameters::RecordAt(int interfaceIndex) const
{
    if (interfaceIndex < 0 || static_cast<size_t>(interfaceIndex) >= m_interfaces.size())
        return nullptr;
    return m_interfaces[static_cast<size_t>(interfaceIndex)].second;
}

QorShaderInterfaceRecord* QorShaderParameters::FindRecord(const char* interfaceName) const
{
    if (!interfaceName)
        return nullptr;
    for (const InterfaceEntry& entry : m_interfaces)
        if (entry.first && std::strcmp(entry.first, interfaceName) == 0)
            return entry.second;
    return nullptr;
}

QorIShaderValue* QorShaderParameters::FindMemberValue(const char* interfaceName, const char* member, bool touch) const
{
    QorShaderInterfaceRecord* record = FindRecord(interfaceName);
    if (!record)
        return nullptr;
    QorIShaderValue* value = record->GetMemberValue(record->FindMember(member));
    if (touch)
        record->Touch(value);
    return value;
}

QorIShaderValue* QorShaderParameters::MemberValueAt(int interfaceIndex, int member, bool touch) const
{
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    if (!record)
        return nullptr;
    QorIShaderValue* value = record->GetMemberValue(member);
    if (touch)
        record->Touch(value);
    return value;
}

int QorShaderParameters::SetInterfaceTexture(const char* interfaceName, const char* member, const char* file,
                                             int reload)
{
    return ChangeMemberTexture(FindMemberValue(interfaceName, member, true), file, reload);
}

int QorShaderParameters::SetInterfaceColor(const char* interfaceName, const char* member, const float* values)
{
    return WithMember(FindMemberValue(interfaceName, member, true),
                      [values](QorIShaderValue& value) { value.SetColor(values); });
}

int QorShaderParameters::SetInterfaceFloat(const char* interfaceName, const char* member, float value)
{
    return WithMember(FindMemberValue(interfaceName, member, true),
                      [value](QorIShaderValue& memberValue) { memberValue.SetFloat(value); });
}

int QorShaderParameters::GetInterfaceTexture(const char* interfaceName, const char* member, char** file)
{
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [file](QorIShaderValue& value) { value.GetString(file); });
}

int QorShaderParameters::GetInterfaceColor(const char* interfaceName, const char* member, float** values)
{
    // The colour goes into the buffer that *values points to.
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [values](QorIShaderValue& value) { value.GetColor(values ? *values : nullptr); });
}

int QorShaderParameters::GetInterfaceFloat(const char* interfaceName, const char* member, float* value)
{
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [value](QorIShaderValue& memberValue) { memberValue.GetFloat(value); });
}

int QorShaderParameters::GetNbInterfaceMembers(int interfaceIndex, int* count)
{
    if (!count)
        return 0;
    *count = 0;
    // An index equal to the number of interfaces passes the range test; it has no
    // record to read, so it answers as a null record does.
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    if (!record)
        return 0;
    *count = record->GetMemberCount();
    return 1;
}

const char* QorShaderParameters::GetInterfaceMemberName(int interfaceIndex, int member)
{
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    return record ? record->GetMemberName(member) : nullptr;
}

const char* QorShaderParameters::GetInterfaceParameterName(int interfaceIndex, int member)
{
    // Without bounds on both indexes this would read outside the records; bounded, it is
    // the member name query.
    return GetInterfaceMemberName(interfaceIndex, member);
}

CGparameter QorShaderParameters::GetInterfaceMemberHandle(int interfaceIndex, int member) const
{
    auto* value = static_cast<QorShaderValue*>(MemberValueAt(interfaceIndex, member, false));
    return value ? value->GetParameter() : nullptr;
}

int QorShaderParameters::FindInterface(const char* name, int* interfaceIndex)
{
    int found = -1;
    for (size_t i = 0; name && found < 0 && i < m_interfaces.size(); ++i)
        if (m_interfaces[i].first && std::strcmp(m_interfaces[i].first, name) == 0)
            found = static_cast<int>(i);
    if (interfaceIndex)
        *interfaceIndex = found;
    return found >= 0 ? 1 : 0;
}

int QorShaderParameters::FindInterfaceMember(int interfaceIndex, const char* name, int* member)
{
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    const int found = record ? record->FindMember(name) : -1;
    if (member)
        *member = found;
    return found >= 0 ? 1 : 0;
}

int QorShaderParameters::GetInterfaceMemberType(int interfaceIndex, int member, int* type)
{
    return WithMember(MemberValueAt(interfaceIndex, member, false),
                      [type](QorIShaderValue& value) { value.GetType(type); });
}

int QorShaderParameters::SetInterfaceTextureAt(int interfaceIndex, int member, const char* file, int reload)
{
    return ChangeMemberTexture(MemberValueAt(interfaceIndex, member, true), file, reload);
}

int QorShaderParameters::SetInterfaceColorAt(int interfaceIndex, int member, const float* values)
{
    return WithMember(MemberValueAt(interfaceIndex, member, true),
                      [values](QorIShaderValue& value) { value.SetColor(values); });
}

int QorShaderParameters::SetInterfaceFloatAt(int interfaceIndex, int member, float value)
{
    return WithMember(MemberValueAt(interfaceIndex, member, true),
                      [value](QorIShaderValue& memberValue) { memberValue.SetFloat(value); });
}

int QorShaderParameters::GetInterfaceTextureAt(int interfaceIndex, int member, char** file)
{
    return WithMember(MemberValueAt(interfaceIndex, member, false),
                      [file](QorIShaderValue& value) { value.GetString(file); });
}

int QorShaderParameters::GetInterfaceColorAt(int interfaceIndex, int member, float** values)
{
    return WithMember(MemberValueAt(interfaceIndex, member, false),
                      [values](QorIShaderValue& value) { value.GetColor(values ? *values : nullptr); });
}

int QorShaderParameters::GetInterfaceFloatAt(int interfaceIndex, int member, float* value)
{
    return WithMember(MemberValueAt(interfaceIndex, member, false),
                      [value](QorIShaderValue& memberValue) { memberValue.GetFloat(value); });
}

// The parameter set's interface records: the values of the effect's interface
// structures, reached by interface and member name or index. A back end without
// interfaces reports every such call.
#include "QorVisShaderShared/QorMaterialParameters.h"

#include "QorVisShaderShared/QorShaderInterfaceRecord.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorStrings.h"

#include <cstdlib>
#include <cstring>

int QorMaterialParameters::NoInterfaces(int QorInterfaceGuardLines::*line) const
{
    CheckFailure__("This method is not supposed to be called when using nvfx", m_profile.setSource,
                   m_profile.interfaceGuards->*line);
    return 0;
}

QorShaderInterfaceRecord* QorMaterialParameters::CopyRecord(const QorShaderInterfaceRecord* record)
{
    if (!record)
        return nullptr;
    auto* copy = new (std::nothrow) QorShaderInterfaceRecord();
    if (!copy)
        return nullptr;
    // A member whose value cannot be copied keeps its place, so member indexes agree.
    for (int i = 0; i < record->GetMemberCount(); ++i)
        copy->AddMember(record->GetMemberName(i), Copy(static_cast<QorMaterialValue*>(record->GetMemberValue(i))));
    return copy;
}

int QorMaterialParameters::SetInterface(const char* name, QorShaderInterfaceRecord* record)
{
    // The set owns the record from here on, also when it cannot be stored.
    if (m_profile.interfaceGuards) {
        delete record;
        return 1;
    }
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

QorShaderInterfaceRecord* QorMaterialParameters::RecordAt(int interfaceIndex) const
{
    if (interfaceIndex < 0 || static_cast<std::size_t>(interfaceIndex) >= m_interfaces.size())
        return nullptr;
    return m_interfaces[static_cast<std::size_t>(interfaceIndex)].second;
}

QorMaterialValue* QorMaterialParameters::FindMemberValue(const char* interfaceName, const char* member,
                                                         bool touch) const
{
    int interfaceIndex = -1;
    for (std::size_t i = 0; interfaceName && interfaceIndex < 0 && i < m_interfaces.size(); ++i)
        if (m_interfaces[i].first && std::strcmp(m_interfaces[i].first, interfaceName) == 0)
            interfaceIndex = static_cast<int>(i);
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    return record ? MemberValueAt(interfaceIndex, record->FindMember(member), touch) : nullptr;
}

QorMaterialValue* QorMaterialParameters::MemberValueAt(int interfaceIndex, int member, bool touch) const
{
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    if (!record)
        return nullptr;
    auto* value = static_cast<QorMaterialValue*>(record->GetMemberValue(member));
    if (touch)
        record->Touch(value);
    return value;
}

int QorMaterialParameters::SetInterfaceTexture(const char* interfaceName, const char* member, const char* file,
                                               int reload)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setTexture);
    return ChangeMemberTexture(FindMemberValue(interfaceName, member, true), file, reload);
}

int QorMaterialParameters::SetInterfaceColor(const char* interfaceName, const char* member, const float* values)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setColor);
    return WithMember(FindMemberValue(interfaceName, member, true),
                      [values](QorMaterialValue& value) { value.SetColor(values); });
}

int QorMaterialParameters::SetInterfaceFloat(const char* interfaceName, const char* member, float value)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setFloat);
    return WithMember(FindMemberValue(interfaceName, member, true),
                      [value](QorMaterialValue& memberValue) { memberValue.SetFloat(value); });
}

int QorMaterialParameters::GetInterfaceTexture(const char* interfaceName, const char* member, char** file)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getTexture);
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [file](QorMaterialValue& value) { value.GetString(file); });
}

int QorMaterialParameters::GetInterfaceColor(const char* interfaceName, const char* member, float** values)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getColor);
    // The colour goes into the buffer that *values points to.
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [values](QorMaterialValue& value) { value.GetColor(values ? *values : nullptr); });
}

int QorMaterialParameters::GetInterfaceFloat(const char* interfaceName, const char* member, float* value)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getFloat);
    return WithMember(FindMemberValue(interfaceName, member, false),
                      [value](QorMaterialValue& memberValue) { memberValue.GetFloat(value); });
}

int QorMaterialParameters::GetNbInterfaceMembers(int interfaceIndex, int* count)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::memberCount);
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

const char* QorMaterialParameters::MemberNameAt(int interfaceIndex, int member, int QorInterfaceGuardLines::*line) const
{
    if (m_profile.interfaceGuards) {
        NoInterfaces(line);
        return nullptr;
    }
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    return record ? record->GetMemberName(member) : nullptr;
}

const char* QorMaterialParameters::GetInterfaceMemberName(int interfaceIndex, int member)
{
    return MemberNameAt(interfaceIndex, member, &QorInterfaceGuardLines::memberName);
}

const char* QorMaterialParameters::GetInterfaceParameterName(int interfaceIndex, int member)
{
    // Without bounds on both indexes this would read outside the records; bounded, it is
    // the member name query.
    return MemberNameAt(interfaceIndex, member, &QorInterfaceGuardLines::parameterName);
}

int QorMaterialParameters::FindInterface(const char* name, int* interfaceIndex)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::find);
    int found = -1;
    for (std::size_t i = 0; name && found < 0 && i < m_interfaces.size(); ++i)
        if (m_interfaces[i].first && std::strcmp(m_interfaces[i].first, name) == 0)
            found = static_cast<int>(i);
    if (interfaceIndex)
        *interfaceIndex = found;
    return found >= 0 ? 1 : 0;
}

int QorMaterialParameters::FindInterfaceMember(int interfaceIndex, const char* name, int* member)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::findMember);
    QorShaderInterfaceRecord* record = RecordAt(interfaceIndex);
    const int found = record ? record->FindMember(name) : -1;
    if (member)
        *member = found;
    return found >= 0 ? 1 : 0;
}

int QorMaterialParameters::GetInterfaceMemberType(int interfaceIndex, int member, int* type)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::memberType);
    return WithMember(MemberValueAt(interfaceIndex, member), [type](QorMaterialValue& value) { value.GetType(type); });
}

int QorMaterialParameters::SetInterfaceTextureAt(int interfaceIndex, int member, const char* file, int reload)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setTextureAt);
    return ChangeMemberTexture(MemberValueAt(interfaceIndex, member, true), file, reload);
}

int QorMaterialParameters::SetInterfaceColorAt(int interfaceIndex, int member, const float* values)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setColorAt);
    return WithMember(MemberValueAt(interfaceIndex, member, true),
                      [values](QorMaterialValue& value) { value.SetColor(values); });
}

int QorMaterialParameters::SetInterfaceFloatAt(int interfaceIndex, int member, float value)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::setFloatAt);
    return WithMember(MemberValueAt(interfaceIndex, member, true),
                      [value](QorMaterialValue& memberValue) { memberValue.SetFloat(value); });
}

int QorMaterialParameters::GetInterfaceTextureAt(int interfaceIndex, int member, char** file)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getTextureAt);
    return WithMember(MemberValueAt(interfaceIndex, member),
                      [file](QorMaterialValue& value) { value.GetString(file); });
}

int QorMaterialParameters::GetInterfaceColorAt(int interfaceIndex, int member, float** values)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getColorAt);
    return WithMember(MemberValueAt(interfaceIndex, member),
                      [values](QorMaterialValue& value) { value.GetColor(values ? *values : nullptr); });
}

int QorMaterialParameters::GetInterfaceFloatAt(int interfaceIndex, int member, float* value)
{
    if (m_profile.interfaceGuards)
        return NoInterfaces(&QorInterfaceGuardLines::getFloatAt);
    return WithMember(MemberValueAt(interfaceIndex, member),
                      [value](QorMaterialValue& memberValue) { memberValue.GetFloat(value); });
}

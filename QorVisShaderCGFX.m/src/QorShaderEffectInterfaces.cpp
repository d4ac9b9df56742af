// The effect's Cg interfaces, by the name of their interface parameter.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorShaderInterface.h"
#include "QorShaderParameters.h"

#include <new>

namespace {

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderEffect";

using InterfaceMap = std::map<QorString, QorShaderInterface*>;

// Enters a new interface under its parameter's name, unless that name is taken.
template <typename Make>
QorShaderInterface* RegisterInterface(InterfaceMap& interfaces, CGparameter parameter, int line, Make make)
{
    const QorString name(cgGetParameterName(parameter));
    if (interfaces.count(name)) {
        CheckFailure__("The interface already exists", kSource, line);
        return nullptr;
    }
    return interfaces[name] = make();
}

QorShaderInterface* FindInterface(const InterfaceMap& interfaces, const char* name)
{
    const auto found = name ? interfaces.find(QorString(name)) : interfaces.end();
    return found == interfaces.end() ? nullptr : found->second;
}

} // namespace

QorShaderInterface* QorShaderEffect::AddInterface(CGparameter parameter, CGcontext context, CGeffect effect,
                                                  CGtype base)
{
    return RegisterInterface(m_interfaces, parameter, 1604, [&] {
        return new (std::nothrow) QorShaderInterface(parameter, context, effect, base);
    });
}

QorShaderInterface* QorShaderEffect::AddInterface(CGparameter parameter, CGcontext context, CGeffect effect,
                                                  CGtype base, CGtype dynamic)
{
    return RegisterInterface(m_interfaces, parameter, 1622, [&] {
        return new (std::nothrow) QorShaderInterface(parameter, context, effect, base, dynamic);
    });
}

int QorShaderEffect::ConnectTypeToInterface(const char* name, const char* type, QorIShaderParameters* parameters)
{
    QorShaderInterface* connected = FindInterface(m_interfaces, name);
    if (!connected) {
        CheckFailure__("Could not find the interfaces given by name_param", kSource, 1639);
        return 0;
    }
    const int result = connected->ConnectTypeByName(type);
    if (result && connected == m_environmentInterface)
        refreshEnvironmentMembers();
    if (!result || !parameters)
        return result;
    return parameters->SetInterface(name, QorShaderParameters::BuildInterfaceRecord(connected->GetInstance()));
}

const char* QorShaderEffect::GetBaseType(const char* name) const
{
    const QorShaderInterface* found = FindInterface(m_interfaces, name);
    return found ? found->GetBaseTypeString() : nullptr;
}

const char* QorShaderEffect::GetDynamicType(const char* name) const
{
    const QorShaderInterface* found = FindInterface(m_interfaces, name);
    return found ? found->GetDynamicTypeString() : nullptr;
}

void QorShaderEffect::ConnectInterfaces(QorMaterialParameters& parameters)
{
    // A copy: connecting can add interfaces to the map while it is walked.
    const std::map<QorString, QorShaderInterface*> interfaces = m_interfaces;
    for (const auto& entry : interfaces)
        if (entry.second)
            ConnectTypeToInterface(entry.first.c_str(), GetDynamicType(entry.first.c_str()), &parameters);
}

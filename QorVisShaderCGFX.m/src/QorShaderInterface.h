/// @file
/// One Cg interface parameter of an effect ("Light", "Environment", or a type the effect
/// names) and the concrete structure instance currently connected to it.
#pragma once

#include <Cg/cg.h>

class QorShaderInterface
{
public:
    /// Reports when `base` is not an interface type; the object is made all the same.
    QorShaderInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base);
    /// Reports and connects nothing when `base` is not an interface type; otherwise
    /// connects a new instance of `dynamic` when it is not 0.
    QorShaderInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base, CGtype dynamic);
    /// Instances live in the effect's context and go with it.
    virtual ~QorShaderInterface() = default;

    QorShaderInterface(const QorShaderInterface&) = delete;
    QorShaderInterface& operator=(const QorShaderInterface&) = delete;

    /// Connects a new instance of the effect's user type `type`. Returns 1, or 0 for a
    /// null or unknown type name (the current instance stays connected).
    int ConnectTypeByName(const char* type);

    CGparameter GetParameter() const { return m_parameter; }
    CGparameter GetInstance() const { return m_instance; }
    CGtype GetBaseType() const { return m_baseType; }
    CGtype GetDynamicType() const { return m_dynamicType; }
    const char* GetBaseTypeString() const { return cgGetTypeString(m_baseType); }
    const char* GetDynamicTypeString() const { return cgGetTypeString(m_dynamicType); }

private:
    void ConnectInstanceOf(CGtype type);

    CGparameter m_parameter;            // the effect's interface parameter
    CGparameter m_instance = nullptr;   // created in m_context; the context owns it
    CGcontext m_context;
    CGeffect m_effect;
    CGtype m_baseType;
    CGtype m_dynamicType = CG_UNKNOWN_TYPE;
};

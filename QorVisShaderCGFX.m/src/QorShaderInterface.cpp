#include "QorShaderInterface.h"

#include "QorDiagnostics/CheckFailure.h"

namespace {
const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderInterface";
const char* const kWrongTypeMessage =
    "Something is wrong when specifying the type of your interfaces - check your annotations in your fx file";
} // namespace

QorShaderInterface::QorShaderInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base)
    : m_parameter(parameter), m_context(context), m_effect(effect), m_baseType(base)
{
    if (!cgIsInterfaceType(base))
        CheckFailure__(kWrongTypeMessage, kSource, 40);
}

QorShaderInterface::QorShaderInterface(CGparameter parameter, CGcontext context, CGeffect effect, CGtype base,
                                       CGtype dynamic)
    : m_parameter(parameter), m_context(context), m_effect(effect), m_baseType(base), m_dynamicType(dynamic)
{
    if (!cgIsInterfaceType(base)) {
        CheckFailure__(kWrongTypeMessage, kSource, 27);
        return;
    }
    if (dynamic != CG_UNKNOWN_TYPE)
        ConnectInstanceOf(dynamic);
}

int QorShaderInterface::ConnectTypeByName(const char* type)
{
    if (!type)
        return 0;
    const CGtype userType = cgGetNamedUserType(m_effect, type);
    if (userType == CG_UNKNOWN_TYPE)
        return 0;
    m_dynamicType = userType;
    ConnectInstanceOf(userType);
    return 1;
}

void QorShaderInterface::ConnectInstanceOf(CGtype type)
{
    // The previous instance stays in the context: values copied from its members may
    // still name it until their sets are rebuilt.
    m_instance = cgCreateParameter(m_context, type);
    if (m_instance)
        cgConnectParameter(m_instance, m_parameter);
}

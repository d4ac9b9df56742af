#include "QorShaderValueFloat.h"

#include <new>

QorMaterialValue* QorShaderValueFloat::Clone() const
{
    return new (std::nothrow) QorShaderValueFloat(*this);
}

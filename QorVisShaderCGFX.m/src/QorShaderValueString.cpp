#include "QorShaderValueString.h"

#include <new>

QorMaterialValue* QorShaderValueString::Clone() const
{
    return new (std::nothrow) QorShaderValueString(*this);
}

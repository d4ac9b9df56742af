#include "QorShaderValueColor.h"

#include <new>

QorMaterialValue* QorShaderValueColor::Clone() const
{
    return new (std::nothrow) QorShaderValueColor(*this);
}

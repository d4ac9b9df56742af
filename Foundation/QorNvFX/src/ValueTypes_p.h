/// @file
/// The uniform types an effect may declare. Private to QorNvFX.
#pragma once

#include "nvFX/IUniform.h"

#include <string_view>

namespace nvFX::detail {

/// What a uniform's components are.
enum class ValueBase
{
    Float,
    Double, ///< kept as floats, as every value setter takes them; pushed as doubles
    Int,
    UInt, ///< kept as the ints of the same bits
    Bool,
    Sampler,
};

/// Float and double values are kept as floats.
inline bool isFloating(ValueBase base)
{
    return base == ValueBase::Float || base == ValueBase::Double;
}

/// One declarable type: its GLSL keyword, its nvFX code, and how GL takes its value.
struct ValueType
{
    const char* keyword;
    IUniform::Type code;
    ValueBase base;
    int components;              ///< per element: 1 to 4, or columns times rows for matrices
    int columns;                 ///< matrix columns (2 to 4); 0 for everything else
    unsigned int textureTarget;  ///< GL texture target of a sampler; 0 otherwise
};

/// The type of a keyword; null for one that is not declarable.
const ValueType* findValueType(std::string_view keyword);

} // namespace nvFX::detail

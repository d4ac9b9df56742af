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
    Int,
    Bool,
    Sampler,
};

/// One declarable type: its GLSL keyword, its nvFX code, and how GL takes its value.
struct ValueType
{
    const char* keyword;
    IUniform::Type code;
    ValueBase base;
    int components;              ///< per element: 1 to 4, or 4, 9, 16 for matrices
    int columns;                 ///< matrix columns (2 to 4); 0 for everything else
    unsigned int textureTarget;  ///< GL texture target of a sampler; 0 otherwise
};

/// The type of a keyword; null for one that is not declarable.
const ValueType* findValueType(std::string_view keyword);

} // namespace nvFX::detail

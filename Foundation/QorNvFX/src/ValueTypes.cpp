#include "ValueTypes_p.h"

#include "Lookup_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace nvFX::detail {

namespace {

using T = IUniform;

constexpr ValueType kTypes[] = {
    {"int", T::TInt, ValueBase::Int, 1, 0, 0},
    {"ivec2", T::TInt2, ValueBase::Int, 2, 0, 0},
    {"ivec3", T::TInt3, ValueBase::Int, 3, 0, 0},
    {"ivec4", T::TInt4, ValueBase::Int, 4, 0, 0},
    {"bool", T::TBool, ValueBase::Bool, 1, 0, 0},
    {"bvec2", T::TBool2, ValueBase::Bool, 2, 0, 0},
    {"bvec3", T::TBool3, ValueBase::Bool, 3, 0, 0},
    {"bvec4", T::TBool4, ValueBase::Bool, 4, 0, 0},
    {"float", T::TFloat, ValueBase::Float, 1, 0, 0},
    {"vec2", T::TVec2, ValueBase::Float, 2, 0, 0},
    {"vec3", T::TVec3, ValueBase::Float, 3, 0, 0},
    {"vec4", T::TVec4, ValueBase::Float, 4, 0, 0},
    {"mat2", T::TMat2, ValueBase::Float, 4, 2, 0},
    {"mat3", T::TMat3, ValueBase::Float, 9, 3, 0},
    {"mat4", T::TMat4, ValueBase::Float, 16, 4, 0},
    {"sampler1D", T::TSampler1D, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D},
    {"sampler2D", T::TSampler2D, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D},
    {"sampler2DRect", T::TSampler2DRect, ValueBase::Sampler, 1, 0, GL_TEXTURE_RECTANGLE},
    {"sampler3D", T::TSampler3D, ValueBase::Sampler, 1, 0, GL_TEXTURE_3D},
    {"samplerCube", T::TSamplerCube, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP},
};

} // namespace

const ValueType* findValueType(std::string_view keyword)
{
    return inTable(kTypes, &ValueType::keyword, keyword);
}

} // namespace nvFX::detail

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
    {"uint", T::TUInt, ValueBase::UInt, 1, 0, 0},
    {"uvec2", T::TUInt2, ValueBase::UInt, 2, 0, 0},
    {"uvec3", T::TUInt3, ValueBase::UInt, 3, 0, 0},
    {"uvec4", T::TUInt4, ValueBase::UInt, 4, 0, 0},
    {"double", T::TDouble, ValueBase::Double, 1, 0, 0},
    {"dvec2", T::TDVec2, ValueBase::Double, 2, 0, 0},
    {"dvec3", T::TDVec3, ValueBase::Double, 3, 0, 0},
    {"dvec4", T::TDVec4, ValueBase::Double, 4, 0, 0},
    {"mat2x3", T::TMat2x3, ValueBase::Float, 6, 2, 0},
    {"mat2x4", T::TMat2x4, ValueBase::Float, 8, 2, 0},
    {"mat3x2", T::TMat3x2, ValueBase::Float, 6, 3, 0},
    {"mat3x4", T::TMat3x4, ValueBase::Float, 12, 3, 0},
    {"mat4x2", T::TMat4x2, ValueBase::Float, 8, 4, 0},
    {"mat4x3", T::TMat4x3, ValueBase::Float, 12, 4, 0},
    {"dmat2", T::TDMat2, ValueBase::Double, 4, 2, 0},
    {"dmat3", T::TDMat3, ValueBase::Double, 9, 3, 0},
    {"dmat4", T::TDMat4, ValueBase::Double, 16, 4, 0},
    {"dmat2x3", T::TDMat2x3, ValueBase::Double, 6, 2, 0},
    {"dmat2x4", T::TDMat2x4, ValueBase::Double, 8, 2, 0},
    {"dmat3x2", T::TDMat3x2, ValueBase::Double, 6, 3, 0},
    {"dmat3x4", T::TDMat3x4, ValueBase::Double, 12, 3, 0},
    {"dmat4x2", T::TDMat4x2, ValueBase::Double, 8, 4, 0},
    {"dmat4x3", T::TDMat4x3, ValueBase::Double, 12, 4, 0},
    {"sampler1DArray", T::TSampler1DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D_ARRAY},
    {"sampler2DArray", T::TSampler2DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_ARRAY},
    {"samplerCubeArray", T::TSamplerCubeArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP_ARRAY},
    {"sampler2DMS", T::TSampler2DMS, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE},
    {"sampler2DMSArray", T::TSampler2DMSArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE_ARRAY},
    {"samplerBuffer", T::TSamplerBuffer, ValueBase::Sampler, 1, 0, GL_TEXTURE_BUFFER},
    {"sampler1DShadow", T::TSampler1DShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D},
    {"sampler2DShadow", T::TSampler2DShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D},
    {"sampler2DRectShadow", T::TSampler2DRectShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_RECTANGLE},
    {"sampler1DArrayShadow", T::TSampler1DArrayShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D_ARRAY},
    {"sampler2DArrayShadow", T::TSampler2DArrayShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_ARRAY},
    {"samplerCubeShadow", T::TSamplerCubeShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP},
    {"samplerCubeArrayShadow", T::TSamplerCubeArrayShadow, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP_ARRAY},
    {"isampler1D", T::TISampler1D, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D},
    {"isampler2D", T::TISampler2D, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D},
    {"isampler2DRect", T::TISampler2DRect, ValueBase::Sampler, 1, 0, GL_TEXTURE_RECTANGLE},
    {"isampler3D", T::TISampler3D, ValueBase::Sampler, 1, 0, GL_TEXTURE_3D},
    {"isamplerCube", T::TISamplerCube, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP},
    {"isampler1DArray", T::TISampler1DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D_ARRAY},
    {"isampler2DArray", T::TISampler2DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_ARRAY},
    {"isamplerCubeArray", T::TISamplerCubeArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP_ARRAY},
    {"isampler2DMS", T::TISampler2DMS, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE},
    {"isampler2DMSArray", T::TISampler2DMSArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE_ARRAY},
    {"isamplerBuffer", T::TISamplerBuffer, ValueBase::Sampler, 1, 0, GL_TEXTURE_BUFFER},
    {"usampler1D", T::TUSampler1D, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D},
    {"usampler2D", T::TUSampler2D, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D},
    {"usampler2DRect", T::TUSampler2DRect, ValueBase::Sampler, 1, 0, GL_TEXTURE_RECTANGLE},
    {"usampler3D", T::TUSampler3D, ValueBase::Sampler, 1, 0, GL_TEXTURE_3D},
    {"usamplerCube", T::TUSamplerCube, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP},
    {"usampler1DArray", T::TUSampler1DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_1D_ARRAY},
    {"usampler2DArray", T::TUSampler2DArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_ARRAY},
    {"usamplerCubeArray", T::TUSamplerCubeArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_CUBE_MAP_ARRAY},
    {"usampler2DMS", T::TUSampler2DMS, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE},
    {"usampler2DMSArray", T::TUSampler2DMSArray, ValueBase::Sampler, 1, 0, GL_TEXTURE_2D_MULTISAMPLE_ARRAY},
    {"usamplerBuffer", T::TUSamplerBuffer, ValueBase::Sampler, 1, 0, GL_TEXTURE_BUFFER},
    // Square matrices by their long names.
    {"mat2x2", T::TMat2, ValueBase::Float, 4, 2, 0},
    {"dmat2x2", T::TDMat2, ValueBase::Double, 4, 2, 0},
    {"mat3x3", T::TMat3, ValueBase::Float, 9, 3, 0},
    {"dmat3x3", T::TDMat3, ValueBase::Double, 9, 3, 0},
    {"mat4x4", T::TMat4, ValueBase::Float, 16, 4, 0},
    {"dmat4x4", T::TDMat4, ValueBase::Double, 16, 4, 0},
};

} // namespace

const ValueType* findValueType(std::string_view keyword)
{
    return inTable(kTypes, &ValueType::keyword, keyword);
}

} // namespace nvFX::detail

/// @file
/// A uniform of an effect: its declaration, its value, and which programs use it.
#pragma once

namespace nvFX {

class IAnnotation;
class IUniformEx;

/// Borrowed from its container, valid until the container is destroyed.
///
/// A uniform holds one value, its declared default until set, for every pass of the
/// effect; a pass's setup() pushes it to the pass's program when it changed since that
/// program last received it. Setters and getters check the uniform's type and the count
/// they are given, and on a mismatch print why through nvFX::printf and return false
/// without changing anything. Matrices are column-major, as GLSL constructors and
/// glUniformMatrix* take them; arrays are flat, element after element.
class IUniform
{
public:
    /// The type codes of the nvFX runtime. Uniforms declared in effects answer 1 to 15,
    /// 20 to 24 and 26 to 83; 16 to 19 and 25 name kinds of objects this runtime has no
    /// uniform of.
    enum Type
    {
        TUndefined = 0,
        TInt = 1,
        TInt2 = 2,
        TInt3 = 3,
        TInt4 = 4,
        TBool = 5,
        TBool2 = 6,
        TBool3 = 7,
        TBool4 = 8,
        TFloat = 9,
        TVec2 = 10,
        TVec3 = 11,
        TVec4 = 12,
        TMat2 = 13,
        TMat3 = 14,
        TMat4 = 15,
        TUniformBlock = 16,
        TConstantBuffer = 17,
        TUniform = 18,
        TTexture = 19,
        TSampler1D = 20,
        TSampler2D = 21,
        TSampler2DRect = 22,
        TSampler3D = 23,
        TSamplerCube = 24,
        TTextureUnit = 25,
        // The other uniform types of GLSL 4.x: unsigned ints, doubles, non-square and
        // double matrices, and the samplers of arrays, multisampling, buffers, shadows,
        // and of int and unsigned textures.
        TUInt = 26,
        TUInt2 = 27,
        TUInt3 = 28,
        TUInt4 = 29,
        TDouble = 30,
        TDVec2 = 31,
        TDVec3 = 32,
        TDVec4 = 33,
        TMat2x3 = 34,
        TMat2x4 = 35,
        TMat3x2 = 36,
        TMat3x4 = 37,
        TMat4x2 = 38,
        TMat4x3 = 39,
        TDMat2 = 40,
        TDMat3 = 41,
        TDMat4 = 42,
        TDMat2x3 = 43,
        TDMat2x4 = 44,
        TDMat3x2 = 45,
        TDMat3x4 = 46,
        TDMat4x2 = 47,
        TDMat4x3 = 48,
        TSampler1DArray = 49,
        TSampler2DArray = 50,
        TSamplerCubeArray = 51,
        TSampler2DMS = 52,
        TSampler2DMSArray = 53,
        TSamplerBuffer = 54,
        TSampler1DShadow = 55,
        TSampler2DShadow = 56,
        TSampler2DRectShadow = 57,
        TSampler1DArrayShadow = 58,
        TSampler2DArrayShadow = 59,
        TSamplerCubeShadow = 60,
        TSamplerCubeArrayShadow = 61,
        TISampler1D = 62,
        TISampler2D = 63,
        TISampler2DRect = 64,
        TISampler3D = 65,
        TISamplerCube = 66,
        TISampler1DArray = 67,
        TISampler2DArray = 68,
        TISamplerCubeArray = 69,
        TISampler2DMS = 70,
        TISampler2DMSArray = 71,
        TISamplerBuffer = 72,
        TUSampler1D = 73,
        TUSampler2D = 74,
        TUSampler2DRect = 75,
        TUSampler3D = 76,
        TUSamplerCube = 77,
        TUSampler1DArray = 78,
        TUSampler2DArray = 79,
        TUSamplerCubeArray = 80,
        TUSampler2DMS = 81,
        TUSampler2DMSArray = 82,
        TUSamplerBuffer = 83,
    };

    /// Target codes of isUsedBy(): GLSL programs, or any kind of program. Every program
    /// of this runtime is GLSL, so both answer the same; other codes answer false.
    enum Target
    {
        TargetGLSL = 0,
        TargetAny = 12,
    };

    virtual IUniformEx* getExInterface() = 0;
    virtual const char* getName() const = 0;
    /// The semantic after ':' as the effect writes it, case kept; "" when none.
    virtual const char* getSemantic() const = 0;
    virtual Type getType() const = 0;
    /// The annotations between '<' and '>'; never null, empty when none are written.
    virtual IAnnotation* annotations() = 0;
    /// N for a uniform declared NAME[N]; 0 for one that is not an array.
    virtual int getArraySize() const = 0;
    /// True when the linked program of at least one pass uses the uniform (glslang's
    /// reflection at load: a declared uniform that no code reads is not used).
    virtual bool isUsedBy(int target) const = 0;

    /// For float and vecN uniforms with exactly that many components (element 0 of an
    /// array).
    virtual bool setValue1f(float x) = 0;
    virtual bool setValue2f(float x, float y) = 0;
    virtual bool setValue3f(float x, float y, float z) = 0;
    virtual bool setValue4f(float x, float y, float z, float w) = 0;
    /// The first `count` floats of a float, vector or matrix uniform (all elements of an
    /// array counted); count from 1 to the uniform's whole size.
    virtual bool setValuefv(const float* values, int count) = 0;
    /// The same for int, ivecN, bool and bvecN uniforms (any non-zero is true).
    virtual bool setValueiv(const int* values, int count) = 0;
    /// A mat4 uniform (element 0 of an array): 16 floats, column-major.
    virtual bool setMatrix4f(const float* columnMajor) = 0;
    /// A sampler uniform reads texture unit `unit` (0 to 79); the texture bound there is
    /// the caller's. Sampler uniforms start on units 0, 1, 2, ... in declaration order.
    virtual bool setSamplerUnit(int unit) = 0;
    /// A sampler uniform reads `texture` (a GL texture name of the sampler's kind, e.g. a
    /// GL_TEXTURE_2D for sampler2D), which setup() binds to `unit`; texture 0 stops
    /// binding one and leaves the unit to the caller.
    virtual bool setSamplerResource(unsigned int texture, int unit) = 0;
    /// The first `count` components of the current value as floats (ints and bools
    /// converted); count from 1 to the uniform's whole size. Samplers have no value here.
    virtual bool getValuefv(float* values, int count) const = 0;

protected:
    IUniform() = default;
    virtual ~IUniform() = default;
    IUniform(const IUniform&) = delete;
    IUniform& operator=(const IUniform&) = delete;
};

} // namespace nvFX

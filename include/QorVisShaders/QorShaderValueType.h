/// @file
/// The type codes of parameter values, shared by both effect implementations, the shader
/// objects and the parameter stream.
#pragma once

enum QorShaderValueType : int
{
    QorValueFloat = 1,   ///< one float
    QorValueColor4 = 2,  ///< a colour of four floats
    QorValueTexture = 4, ///< a texture file name (a string value)
    QorValueColor2 = 5,  ///< a colour of two floats
    QorValueColor3 = 6,  ///< a colour of three floats
};

/// True for the three colour codes.
constexpr bool QorIsColorType(int type)
{
    return type == QorValueColor4 || type == QorValueColor2 || type == QorValueColor3;
}

/// How many floats a colour of that code holds: 2, 3, or 4 for every other code.
constexpr int QorColorComponentCount(int type)
{
    return type == QorValueColor2 ? 2 : type == QorValueColor3 ? 3 : 4;
}

/// The colour code of a colour of `count` floats: 5 for two, 6 for three, else 2.
constexpr QorShaderValueType QorColorTypeOf(int count)
{
    return count == 2 ? QorValueColor2 : count == 3 ? QorValueColor3 : QorValueColor4;
}

/// @file
/// What every back end feeds an effect, whatever its implementation, so that the twins
/// of a material are drawn in the same scene: the matrices of a view, the lights placed
/// around the object, and the environment's ambient colour.
#pragma once

#include "QorfxBackend.h"

#include <array>

/// The matrices a view gives, row-major like the view's own.
enum QorfxMatrix
{
    QorfxWorld,
    QorfxWorldInverse,
    QorfxWorldInverseTranspose,
    QorfxViewMatrix,
    QorfxViewInverse,
    QorfxViewInverseTranspose,
    QorfxProjection,
    QorfxWorldView,
    QorfxWorldViewInverse,
    QorfxWorldViewInverseTranspose,
    QorfxWorldViewProjection,
    QorfxMatrixCount
};

std::array<Qor4x4Matrix, QorfxMatrixCount> QorfxMatrices(const QorfxView& view);

/// One light of the scene, in world space.
struct QorfxLight
{
    float position[3];
    float direction[3];     ///< unit, from the light towards the object
    float color[3];
    float specularColor[3];
    float falloffConstant;  ///< no falloff with distance: the linear and quadratic terms are 0
    float innerCone;        ///< cosines of a spot's half angles
    float outerCone;
    float coneExponent;
};

/// Light `slot` of kind `kind` (QorLightPoint, QorLightSpot, QorLightDirectional):
/// slots sit on a circle around the view axis in front of the object, slot 0 up right,
/// each aimed at the object's centre; directional lights are dimmer.
QorfxLight QorfxPlaceLight(int slot, unsigned int kind);

/// The environment's ambient colour: the view's colour, or a grey that the sky cube map
/// is multiplied by.
std::array<float, 3> QorfxEnvironmentAmbient(const QorfxView& view);

/// @file
/// The geometry and camera qorfx draws materials on.
#pragma once

#include "QorMath/Qor4x4Matrix.h"

#include <string>
#include <vector>

struct QorfxVertex
{
    float position[3];
    float normal[3];
    float uv[2];
};

/// Triangles of a unit "sphere", "cube" or "quad" centred on the origin; empty for
/// another name.
std::vector<QorfxVertex> QorfxMakeMesh(const std::string& kind);

/// Draws the triangles with the fixed vertex arrays the Cg GL profiles read
/// (POSITION, NORMAL, TEXCOORD0).
void QorfxDrawMesh(const std::vector<QorfxVertex>& mesh);

/// The inverse of an invertible matrix (identity for a singular one).
Qor4x4Matrix QorfxInverse(const Qor4x4Matrix& matrix);
Qor4x4Matrix QorfxPerspective(float fovYDegrees, float aspect, float nearPlane, float farPlane);
Qor4x4Matrix QorfxLookAt(const float eye[3], const float target[3], const float up[3]);
Qor4x4Matrix QorfxRotation(float xDegrees, float yDegrees);

/// @file
/// Small types shared by the effect interface and its implementations.
#pragma once

#include <cstdint>

/// Which matrix SetMatrixParam feeds.
enum QorMatrixParam : std::uint32_t
{
    QorMatrixViewInverseTranspose = 0, ///< the VIEW inverse transpose parameter
    QorMatrixShadow = 1,               ///< the same, plus the effect's "shadowMatrix"
};

/// Environment of an effect: 0 none, 1 colour ("SEnvColor"), any other value a cube map ("SEnvCUBE").
using EnvironmentState = std::uint32_t;

enum : EnvironmentState
{
    QorEnvironmentNone = 0,
    QorEnvironmentColor = 1,
    QorEnvironmentCube = 2,
};

/// Light configuration code: two bits per light from the lowest, 0 ends the list.
enum : unsigned int
{
    QorLightEnd = 0,
    QorLightPoint = 1,
    QorLightSpot = 2,
    QorLightDirectional = 3,
    QorMaxLights = 8,
};

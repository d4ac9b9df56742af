/// @file
/// The semantics of the renderer's inputs, for both back ends: what each semantic feeds
/// (a matrix, a material term, the environment, or a member of a light), which back end
/// binds a parameter of that semantic to its input, and which keeps such a parameter from
/// the user's values. Semantics are compared exactly, case and all. The two back ends
/// differ on purpose: only the CgFX one binds light semantics (the QRFX one finds lights
/// by uniform name) and image-based lighting, only the QRFX one binds the eye position;
/// "WORLDINVERSE", "SPOT" and "INTENSITY" are hidden by both and bound by neither, and the
/// material semantics are bound by both and hidden by neither.
#pragma once

#include "QorVisShaders/QorFxImplementation.h"

/// The inputs a bound parameter receives, whichever back end it belongs to.
enum QorFeed : int
{
    QorFeedProjection,
    QorFeedView,
    QorFeedWorld,
    QorFeedWorldInverseTranspose,
    QorFeedWorldInverse,
    QorFeedWorldViewProjection,
    QorFeedWorldView,
    QorFeedWorldViewInverseTranspose,
    QorFeedWorldViewInverse,
    QorFeedViewInverseTranspose,
    QorFeedViewInverse,
    QorFeedEyePosition,
    QorFeedAmbientCoeff,
    QorFeedDiffuseCoeff,
    QorFeedSpecularCoeff,
    QorFeedEmissiveCoeff,
    QorFeedTransparencyCoeff,
    QorFeedShininessCoeff,
    QorFeedPowerCoeff,
    QorFeedDiffuse,
    QorFeedSpecular,
    QorFeedGlobalAmbientColor,
    QorFeedAmbient,
    QorFeedUseDiffuseTexture,
    QorFeedDiffuseTexture,
    QorFeedDiffuseTextureFunction,
    QorFeedDiffuseTextureMappingFunction,
    QorFeedAutomaticEnvironmentMap,
    QorFeedAutomaticColorAttribute,
    QorFeedIblDiffuse,
    QorFeedIblSpecular,
    QorFeedCount,
    QorFeedNone = QorFeedCount, ///< a semantic that feeds no input of the effect
};

/// The member of a light a light semantic feeds.
enum class QorLightFeed
{
    None,
    Color,
    SpecularColor,
    Position,
    Direction,
    IntensityAndSpot,
};

struct QorSemantic
{
    const char* name;
    QorFeed feed;
    QorLightFeed light;
    unsigned boundBy;  ///< back ends that bind it: bits QorSemanticBit(QorFxCgFX), QorSemanticBit(QorFxQRFX)
    unsigned hiddenBy; ///< back ends that keep such a parameter from the user's values
};

constexpr unsigned QorSemanticBit(QorFxImplementation implementation)
{
    return 1u << implementation;
}

/// The row of `name`; null for a semantic no back end knows (or null, or empty).
const QorSemantic* QorFindSemantic(const char* name);

/// What `implementation` binds a parameter of semantic `name` to: the row, or null when it
/// binds nothing of that semantic.
const QorSemantic* QorBoundSemantic(QorFxImplementation implementation, const char* name);

/// Whether `implementation` keeps a parameter of semantic `name` from the user's values.
bool QorHidesSemantic(QorFxImplementation implementation, const char* name);

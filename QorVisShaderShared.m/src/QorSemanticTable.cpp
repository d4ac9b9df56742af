#include "QorVisShaderShared/QorSemanticTable.h"

#include <cstring>

namespace {

constexpr unsigned kCgFX = QorSemanticBit(QorFxCgFX);
constexpr unsigned kQRFX = QorSemanticBit(QorFxQRFX);
constexpr unsigned kBoth = kCgFX | kQRFX;

using L = QorLightFeed;

const QorSemantic kSemantics[] = {
    // Matrices: bound and hidden by both.
    {"WORLD", QorFeedWorld, L::None, kBoth, kBoth},
    {"WORLDIT", QorFeedWorldInverseTranspose, L::None, kBoth, kBoth},
    {"WORLDINVERSETRANSPOSE", QorFeedWorldInverseTranspose, L::None, kBoth, kBoth},
    {"WORLDI", QorFeedWorldInverse, L::None, kBoth, kBoth},
    {"WORLDINVERSE", QorFeedNone, L::None, 0, kBoth}, // only the short form binds
    {"WORLDVIEW", QorFeedWorldView, L::None, kBoth, kBoth},
    {"WORLDVIEWINVERSETRANSPOSE", QorFeedWorldViewInverseTranspose, L::None, kBoth, kBoth},
    {"WORLDVIEWIT", QorFeedWorldViewInverseTranspose, L::None, kBoth, kBoth},
    {"WORLDVIEWINVERSE", QorFeedWorldViewInverse, L::None, kBoth, kBoth},
    {"WORLDVIEWI", QorFeedWorldViewInverse, L::None, kBoth, kBoth},
    {"WORLDVIEWPROJECTION", QorFeedWorldViewProjection, L::None, kBoth, kBoth},
    {"PROJECTION", QorFeedProjection, L::None, kBoth, kBoth},
    {"VIEW", QorFeedView, L::None, kBoth, kBoth},
    {"VIEWINVERSETRANSPOSE", QorFeedViewInverseTranspose, L::None, kBoth, kBoth},
    {"VIEWIT", QorFeedViewInverseTranspose, L::None, kBoth, kBoth},
    {"VIEWI", QorFeedViewInverse, L::None, kBoth, kBoth},
    {"VIEWINVERSE", QorFeedViewInverse, L::None, kBoth, kBoth},
    {"EYEPOS", QorFeedEyePosition, L::None, kQRFX, kQRFX},
    // Material terms: bound by both, left to the user as well, but the global ambient.
    {"GLOBALAMBIENTCOLOR", QorFeedGlobalAmbientColor, L::None, kBoth, kBoth},
    {"AMBIENT", QorFeedAmbient, L::None, kBoth, 0},
    {"AMBIENTCOLOR", QorFeedAmbient, L::None, kBoth, 0},
    {"DIFFUSE", QorFeedDiffuse, L::None, kBoth, 0},
    {"SPECULAR", QorFeedSpecular, L::None, kBoth, 0},
    {"DIFFUSETEXTURE", QorFeedDiffuseTexture, L::None, kBoth, 0},
    {"USEDIFFUSETEXTURE", QorFeedUseDiffuseTexture, L::None, kBoth, 0},
    {"DIFFUSETEXTUREFUNCTION", QorFeedDiffuseTextureFunction, L::None, kBoth, 0},
    {"DIFFUSETEXTUREMAPPINGFUNCTION", QorFeedDiffuseTextureMappingFunction, L::None, kBoth, 0},
    {"AMBIENTCOEFF", QorFeedAmbientCoeff, L::None, kBoth, 0},
    {"DIFFUSECOEFF", QorFeedDiffuseCoeff, L::None, kBoth, 0},
    {"SPECULARCOEFF", QorFeedSpecularCoeff, L::None, kBoth, 0},
    {"EMISSIVECOEFF", QorFeedEmissiveCoeff, L::None, kBoth, 0},
    {"TRANSPARENCYCOEFF", QorFeedTransparencyCoeff, L::None, kBoth, 0},
    {"SHININESSCOEFF", QorFeedShininessCoeff, L::None, kBoth, 0},
    {"POWERCOEFF", QorFeedPowerCoeff, L::None, kBoth, 0},
    // Lights: bound by the CgFX back end into its light records; the lower-case
    // "position" stays visible.
    {"LIGHTCOLOR", QorFeedNone, L::Color, kCgFX, kBoth},
    {"LIGHTSPECULARCOLOR", QorFeedNone, L::SpecularColor, kCgFX, kBoth},
    {"position", QorFeedNone, L::Position, kCgFX, 0},
    {"LIGHTPOS", QorFeedNone, L::Position, kCgFX, kBoth},
    {"POSITION", QorFeedNone, L::Position, kCgFX, kBoth},
    {"LIGHTDIR", QorFeedNone, L::Direction, kCgFX, kBoth},
    {"DIRECTION", QorFeedNone, L::Direction, kCgFX, kBoth},
    {"INTENSITYANDSPOT", QorFeedNone, L::IntensityAndSpot, kCgFX, kBoth},
    {"SPOT", QorFeedNone, L::None, 0, kBoth},
    {"INTENSITY", QorFeedNone, L::None, 0, kBoth},
    // The environment.
    {"AUTOMATICENVIRONMENTMAP", QorFeedAutomaticEnvironmentMap, L::None, kBoth, kBoth},
    {"IBLDIFFUSE", QorFeedIblDiffuse, L::None, kCgFX, kCgFX},
    {"IBLSPECULAR", QorFeedIblSpecular, L::None, kCgFX, kCgFX},
    {"AUTOMATICCOLORATTRIBUTE", QorFeedAutomaticColorAttribute, L::None, kBoth, kBoth},
};

} // namespace

const QorSemantic* QorFindSemantic(const char* name)
{
    if (!name || !*name)
        return nullptr;
    for (const QorSemantic& semantic : kSemantics)
        if (std::strcmp(semantic.name, name) == 0)
            return &semantic;
    return nullptr;
}

const QorSemantic* QorBoundSemantic(QorFxImplementation implementation, const char* name)
{
    const QorSemantic* semantic = QorFindSemantic(name);
    return semantic && (semantic->boundBy & QorSemanticBit(implementation)) ? semantic : nullptr;
}

bool QorHidesSemantic(QorFxImplementation implementation, const char* name)
{
    const QorSemantic* semantic = QorFindSemantic(name);
    return semantic && (semantic->hiddenBy & QorSemanticBit(implementation));
}

#include "QorCgFXProfile.h"

const QorBackEndProfile kQorCgFXProfile = {
    QorFxCgFX,
    // Values: the report places of each kind, in the order getFloat, getColor, getString,
    // setString, setColor, setFloat (0 for the operations the kind performs).
    {"QorVisShaderCGFX.m/src/QorShaderValueFloat", 0, 84, 92, 60, 53, 0},
    {"QorVisShaderCGFX.m/src/QorShaderValueColor", 108, 0, 121, 89, 0, 82},
    {"QorVisShaderCGFX.m/src/QorShaderValueString", 111, 118, 0, 0, 83, 76},
    /*emptyTextForNull=*/false,
    // The parameter set.
    "QorVisShaderCGFX.m/src/QorShaderParameters",
    QorOverlapRule::ReportBelowNames,
    /*overlapLine=*/1044,
    /*colorKindChecked=*/false,
    /*readsOnlyModified=*/true,
    /*handsOutTokens=*/true,
    /*streamNotImplementedLine=*/0,
    /*interfaceGuards=*/nullptr,
    /*extraTextureSlots=*/true,
    // The effect.
    /*effectStreamsItsText=*/true,
    // The shader object.
    "QorVisShaderCGFX.m/src/CgFXShader",
    /*colorQueryStopsOnChangedMark=*/false,
    /*stringQueryAnswer=*/1,
    /*reportsUnreadableFile=*/false,
};

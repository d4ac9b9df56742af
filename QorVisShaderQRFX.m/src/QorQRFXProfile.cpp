#include "QorQRFXProfile.h"

namespace {

// Each interface operation of a QRFX set reports at its own line, in the order of
// QorIShaderParameters.
const QorInterfaceGuardLines kInterfaceLines = {859, 854, 849, 874, 869, 864, 879, 904, 884,
                                                889, 894, 899, 919, 914, 909, 934, 929, 924};

} // namespace

const QorBackEndProfile kQorQRFXProfile = {
    QorFxQRFX,
    // Values: the report places of each kind, in the order getFloat, getColor, getString,
    // setString, setColor, setFloat (0 for the operations the kind performs).
    {"QorVisShaderQRFX.m/src/QorNvFXShaderValueFloat", 0, 84, 92, 60, 53, 0},
    {"QorVisShaderQRFX.m/src/QorNvFXShaderValueColor", 108, 0, 121, 89, 0, 82},
    {"QorVisShaderQRFX.m/src/QorNvFXShaderValueString", 111, 118, 0, 0, 83, 76},
    /*emptyTextForNull=*/true,
    // The parameter set.
    "QorVisShaderQRFX.m/src/QorNvFXShaderParameters",
    QorOverlapRule::RefuseFromNames,
    /*overlapLine=*/700,
    /*colorKindChecked=*/true,
    /*readsOnlyModified=*/false,
    /*handsOutTokens=*/false,
    /*streamNotImplementedLine=*/616,
    &kInterfaceLines,
    /*extraTextureSlots=*/false,
    // The effect: GLSL effects are not written to streams.
    /*effectStreamsItsText=*/false,
    // The shader object.
    "QorVisShaderQRFX.m/src/QorNvFXShader",
    /*colorQueryStopsOnChangedMark=*/true,
    /*stringQueryAnswer=*/0,
    /*reportsUnreadableFile=*/true,
};

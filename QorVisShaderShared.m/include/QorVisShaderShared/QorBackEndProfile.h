/// @file
/// What the contract lets the two effect implementations answer differently, on purpose.
/// The material model (values, parameter sets, effects, shader objects) is written once;
/// where the two roads give other answers, other reports or other report places for the
/// same call, the model reads them from its back end's profile, one table per back end
/// (the CgFX one in QorVisShaderCGFX.m, the QRFX one in QorVisShaderQRFX.m), so every
/// such difference is stated in one place and nowhere else.
#pragma once

#include "QorVisShaders/QorFxImplementation.h"

/// Where a value kind reports an operation that does not fit it ("Should not happen"):
/// the kind's source path and the fixed line of each such operation.
struct QorValueGuards
{
    const char* source;
    int getFloat, getColor, getString, setString, setColor, setFloat;
};

/// How a parameter set answers GetValue for a position it may not hand out.
enum class QorOverlapRule
{
    ReportBelowNames, ///< a position below the name count is reported, and the value is answered all the same
    RefuseFromNames,  ///< a position at or past the name count is reported and answers null
};

/// The interface operations of a parameter set, in the order of QorIShaderParameters, for
/// a back end that has no interfaces and reports each call at its own line.
struct QorInterfaceGuardLines
{
    int setTexture, setColor, setFloat, getTexture, getColor, getFloat, memberCount, memberName, parameterName,
        find, findMember, memberType, setTextureAt, setColorAt, setFloatAt, getTextureAt, getColorAt, getFloatAt;
};

struct QorBackEndProfile
{
    QorFxImplementation implementation;

    // Values.
    QorValueGuards floatGuards, colorGuards, stringGuards;
    /// A texture value given no file holds "" (rather than null).
    bool emptyTextForNull;

    // Parameter sets.
    const char* setSource; ///< where the set's reports come from
    QorOverlapRule overlap;
    int overlapLine;
    /// Colour writes and reads check the value's kind (-1 and 0 for another kind); without
    /// it they reach the value, which reports a misplaced write itself.
    bool colorKindChecked;
    /// The value reads honour "only if modified" (0 for an unmodified value).
    bool readsOnlyModified;
    /// GetParameterHandle answers the value's 32-bit token; else 0.
    bool handsOutTokens;
    /// 0: the set writes its values to a stream; else the line "Not implemented" is reported at.
    int streamNotImplementedLine;
    /// Null: interface records are the set's own; else each interface operation reports
    /// "This method is not supposed to be called when using nvfx" at its line and answers 0.
    const QorInterfaceGuardLines* interfaceGuards;
    /// The second and third extra texture slots exist (else setting them answers 0).
    bool extraTextureSlots;

    // Effects.
    /// The effect writes its record (name, then source) to a stream; else nothing.
    bool effectStreamsItsText;

    // Shader objects.
    const char* shaderSource; ///< where the shader object's reports come from
    /// GetParameterColor: the set's answer when it is not 0, outputs untouched (QRFX);
    /// else the outputs are written whatever the set answered, which is returned (CgFX).
    bool colorQueryStopsOnChangedMark;
    int stringQueryAnswer;       ///< what GetParameterString returns once it copied the name
    bool reportsUnreadableFile;  ///< SetFileName prints "Shader %s not found \n" for a file it cannot read
};

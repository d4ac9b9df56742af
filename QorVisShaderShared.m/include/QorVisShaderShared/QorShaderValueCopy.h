/// @file
/// Copying one parameter's value between two parameter sets of either implementation,
/// as un-streaming and migration do.
#pragma once

class QorIShaderParameters;

/// What a copy did.
enum class QorValueCopy
{
    Copied,   ///< the target took the value as it was
    Narrowed, ///< a colour into one of fewer components: those past them were dropped
    Widened,  ///< a colour into one of more components: those past the stored ones kept the target's
    Empty,    ///< a texture with no file: nothing to copy, the target keeps its own
    Refused,  ///< the target's value at that index is of another kind, or missing
    NotAValue ///< an empty place, or a type code that names no kind of value: nothing copied
};

/// Copies the value at `fromIndex` of `from` to `toIndex` of `to` by its type code: a
/// float, a colour or a texture file name (without reload). A colour moves as many
/// components as both hold; a target of more components keeps its own past them. A
/// texture without a file (stored without its image) copies nothing, so the target keeps
/// its own. The target answers a kind it does not have at that index as its setters do.
QorValueCopy QorCopyParameterValue(QorIShaderParameters& from, int fromIndex, QorIShaderParameters& to, int toIndex);

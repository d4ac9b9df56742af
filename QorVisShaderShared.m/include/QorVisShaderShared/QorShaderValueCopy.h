/// @file
/// Copying one parameter's value between two parameter sets of either implementation,
/// as un-streaming and migration do.
#pragma once

class QorIShaderParameters;

/// Copies the value at `fromIndex` of `from` to `toIndex` of `to` by its type code: a
/// float, a colour (four components) or a texture file name (without reload). Other
/// codes copy nothing. The target answers a kind it does not have at that index as its
/// setters do.
void QorCopyParameterValue(QorIShaderParameters& from, int fromIndex, QorIShaderParameters& to, int toIndex);

/// @file
/// Where GLSL-effect loads keep what they compute for the next process.
#pragma once

/// Points the GLSL effect runtime's cache at the folder the environment names:
/// "QorShaderCache" when set ("" turns the cache off), else "GLSLFXCache" under
/// "QorTemp", else none. Called before each load; the runtime is told only of a change,
/// so a refused folder is reported once.
void QorNvFXUseCacheFolderOfEnvironment();

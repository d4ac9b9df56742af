/// @file
/// The check of a translation before it is handed out: the text loads through the GLSL
/// effect runtime, and the GLSL road shows the user parameters the CgFX road shows for
/// the original (names, types, defaults, texture files and UI annotations, in order).
#pragma once

#include <string>
#include <vector>

class QorShaderEffect;

/// Loads `text` (named `name` in the runtime's messages) and compares. False with each
/// load error or difference in `errors`. Listens to the GLSL runtime's messages while it
/// loads, and gives them back to the sink that had them after.
bool QorCheckTranslation(const std::string& name, const std::string& text, QorShaderEffect& cgfx,
                         std::vector<std::string>& errors);

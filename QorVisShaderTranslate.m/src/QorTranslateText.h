/// @file
/// How the parts of a parameter read in the GLSL effect format: default values,
/// annotations, and whether a name can stand in GLSL.
#pragma once

#include <Cg/cg.h>

#include <string>

namespace QorTranslateText {

/// " = value" or " = {v, v, ...}" of the first `count` values of `parameter` (column by
/// column, or row by row with `rowMajor`); `boolean` writes true and false. False with
/// `why` for a value the format cannot write (not finite).
bool Defaults(CGparameter parameter, int count, bool rowMajor, bool boolean, std::string& text, std::string& why);

/// " < Name = value; ... >" of the string, number and bool annotations from `first` on,
/// of the parameter, technique or pass `owner`; for a sampler also "defaultFile", the
/// texture file the CgFX road reads from "File", "file" or "Default". Empty when there are
/// none. False with `why` for one the format cannot hold (a string too long or with
/// control characters, a list too long).
bool Annotations(CGannotation first, const std::string& owner, bool sampler, std::string& text, std::string& why);

/// Why `name` cannot be a GLSL effect uniform: a GLSL keyword or built-in, a "gl_" or
/// "__" name; empty when it can.
std::string GlslClash(const std::string& name);

/// A number as the format reads it.
std::string Number(double value);

} // namespace QorTranslateText

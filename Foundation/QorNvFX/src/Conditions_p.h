/// @file
/// The conditions of `#if` and `#elif` at effect scope. Private to QorNvFX.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace nvFX::detail {

/// Macros defined at effect scope by name, with their replacement text.
using MacroTable = std::map<std::string, std::string, std::less<>>;

/// Evaluates `expression` over integers as C's preprocessor does: numbers (decimal,
/// octal, hexadecimal, with `u`/`l` suffixes), `defined NAME` and `defined(NAME)`,
/// macros (their text evaluated in turn), other names as 0, unary `! ~ - +`, binary
/// `* / % + - << >> < > <= >= == != & ^ | && ||`, `?:` and parentheses. False, with
/// `error` saying why, for anything else, a division by zero or an overflow.
bool evaluateCondition(std::string_view expression, const MacroTable& macros, long long& value, std::string& error);

} // namespace nvFX::detail

/// @file
/// The longest token the Cg runtime takes, and the search for a longer one in an effect
/// or include text before the text reaches the runtime.
#pragma once

#include <cstddef>

/// Measured with Cg 3.1 (libCg 3.1.0013) under valgrind: the runtime's lexer copies each
/// token it reads (an identifier, a string or character literal, also in code skipped
/// by #if and in directives such as #pragma) into a buffer of 512 KiB. A string literal
/// of 264,870 characters or an identifier of 264,884 already writes past that buffer,
/// longer ones crash the process from cgCreateEffect. Long comments, long lines of short
/// tokens and identifiers built by ## pasting are harmless. Texts are refused above this
/// length, which stays clear of the overflow for every token kind.
constexpr std::size_t kQorCgMaxTokenLength = 262144;

/// The first identifier, number or quoted literal of the NUL-terminated `text` longer
/// than kQorCgMaxTokenLength (a literal counts the characters between its quotes, as
/// written; one left open ends at its line's end). Comments are skipped. False when
/// there is none, else true with the token's 1-based line and its length.
bool QorFindOverlongCgToken(const char* text, std::size_t& line, std::size_t& length);

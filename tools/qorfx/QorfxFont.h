/// @file
/// A tiny built-in bitmap font for the labels of contact sheets.
#pragma once

#include <array>
#include <string>
#include <vector>

/// Writes `text` in white into an RGBA image (rows top first) with its top-left corner at
/// (x, y), each glyph pixel drawn as a scale x scale block; pixels outside are skipped.
void QorfxDrawText(std::vector<unsigned char>& rgba, int width, int height, int x, int y, const std::string& text,
                   int scale);
/// Width in pixels of `text` at that scale.
int QorfxTextWidth(const std::string& text, int scale);
/// `text` as it fits in `width` pixels at that scale: whole when it fits, else shortened
/// in its middle with "...", keeping its extension (from the last ".") while that fits.
std::string QorfxFitText(const std::string& text, int width, int scale);

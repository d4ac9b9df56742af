/// @file
/// Converting an SGI image to any format OpenImageIO writes, through readTexture.
#pragma once

#include <string>

/// Returns the exit code; problems are reported on stderr in one line.
int QorfxConvertSgi(const std::string& input, const std::string& output);

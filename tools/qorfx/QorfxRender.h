/// @file
/// Drawing materials through the library's own road (shader object, parameters,
/// matrices on the bound handles, the light code, the environment, each pass's state)
/// into an offscreen framebuffer, and writing the picture.
#pragma once

#include <string>
#include <vector>

struct QorfxRenderOptions
{
    int width = 256;
    int height = 256;
    std::string mesh = "sphere";
    std::vector<std::string> sets;     ///< NAME=VALUE
    std::string technique;             ///< a number or a name; empty keeps the first that validates
    std::vector<std::string> lights{"point", "dir"};
    std::string environment = "sky"; ///< "r,g,b", or "sky" for a cube map
};

/// Renders each input into one tile (a contact sheet with each material's name under
/// its tile when there are several) and writes `output`, whose extension names the
/// format. Returns the exit code; problems are reported on stderr in one line.
int QorfxRender(const std::vector<std::string>& inputs, const std::string& output, const QorfxRenderOptions& options);

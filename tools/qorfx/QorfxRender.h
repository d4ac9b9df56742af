/// @file
/// Drawing materials through the library's own road (shader object, parameters,
/// matrices on the bound handles, the light code, the environment, each pass's state)
/// into an offscreen framebuffer, and writing the picture.
#pragma once

#include "QorfxMaterial.h"
#include "QorfxStage.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Renders each input into one tile (a contact sheet with each material's name under
/// its tile when there are several) and writes `output`, whose extension names the
/// format. In a sheet, an input that cannot be drawn gets a crossed tile with a one-word
/// reason, the others are drawn, and the exit code is 1 after the sheet is written.
/// Returns the exit code; problems are reported on stderr, one line each.
int QorfxRender(const std::vector<std::string>& inputs, const std::string& output, const QorfxRenderOptions& options);

/// One tile of a contact sheet: its label and how its material is had (null, with the
/// problem filled, when it cannot be).
struct QorfxTile
{
    std::string label;
    std::function<std::unique_ptr<QorfxMaterial>(QorfxLoadProblem&)> load;
};

/// QorfxRender over tiles whose materials come from anywhere, loaded one at a time in
/// the GL context.
int QorfxRenderTiles(const std::vector<QorfxTile>& tiles, const std::string& output,
                     const QorfxRenderOptions& options);

/// The image format an output's extension names, as the library's image writer knows
/// it; empty when it names none.
std::string QorfxImageFormat(const std::string& output);

/// @file
/// `qorfx view`: the materials in a window (GLFW), side by side, the mouse orbiting and
/// zooming, with the panel of their values; the pictures follow each edit and each save
/// of the effect files.
#pragma once

#include "QorfxStage.h"

#include <string>
#include <vector>

/// Opens the window over `inputs` (effect files or ".zpk" documents) and runs it until
/// it is closed or `script` (a file of actions; empty for none) quits. Returns the exit
/// code: 0, 1 for a failed action, a bad script or no display, 2 for bad options.
int QorfxViewWindow(const std::vector<std::string>& inputs, const QorfxRenderOptions& options,
                    const std::string& script);

/// @file
/// The window's panel (Dear ImGui): each material's name and problem, the technique, the
/// scene (mesh, lights, environment), a widget per user parameter built from its UI
/// annotations, and the buttons that save.
#pragma once

#include <string>

class QorfxViewSession;

/// What the panel keeps between frames.
struct QorfxViewPanelState
{
    char picturePath[512] = "view.png";
    char packagePath[512] = "view.zpk";
    std::string message; ///< the outcome of the last save or edit
};

/// Builds the panel for this frame at the window's right, `width` pixels wide.
void QorfxViewPanel(QorfxViewSession& session, QorfxViewPanelState& state, float left, float width, float height);

/// @file
/// Readying a material in the current GL context for validating and drawing, the same
/// way for every command, so that a technique inspect calls valid is one render draws.
#pragma once

#include "QorfxBackend.h"

#include <string>
#include <vector>

class QorfxMaterial;

struct QorfxRenderOptions
{
    int width = 256;
    int height = 256;
    int columns = 0;                   ///< tiles a row of a contact sheet; 0 for a square-ish sheet
    std::string mesh = "sphere";
    std::vector<std::string> sets;     ///< NAME=VALUE
    std::string technique;             ///< a number or a name; empty keeps the first that validates
    std::vector<std::string> lights{"point", "dir"};
    std::string environment = "sky"; ///< "r,g,b", or "sky" for a cube map
};

/// The light configuration code of the light kinds ("point", "spot", "dir"); false for an
/// unknown kind or more than 8 lights.
bool QorfxLightCode(const std::vector<std::string>& lights, unsigned int& code);

/// The camera every material is drawn from, and the environment of `options`; false with
/// `problem` set for an environment that is neither "sky" nor r,g,b.
bool QorfxMakeView(const QorfxRenderOptions& options, QorfxView& view, std::string& problem);

/// Applies the --set values and --technique to the material's values. An empty string or
/// the problem.
std::string QorfxApplyOptions(QorfxMaterial& material, const QorfxRenderOptions& options);

/// Applies the --set values and --technique, the light code and the environment, makes
/// the material's values current and pushes them, and lets the back end set up the GL
/// context, so that validation sees the programs that drawing will use. An empty string
/// or the problem.
std::string QorfxStage(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                       unsigned int skyTexture);

/// "--technique" names a technique of the material: its number or its name. An empty
/// string, or the usage problem.
std::string QorfxTechniqueProblem(QorfxMaterial& material, const std::string& technique);

/// Why a material could not be drawn: a word for its tile and a line for standard error.
struct QorfxDrawFailure
{
    std::string word; ///< empty on success
    std::string message;
};

/// Stages the material, loads its textures, validates and draws it on `mesh` into the
/// current framebuffer (cleared first); the sky cube map is made into `skyTexture` when
/// the view needs it and it is 0.
QorfxDrawFailure QorfxDrawMaterial(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                                   const std::vector<QorfxVertex>& mesh, unsigned int& skyTexture);

/// @file
/// Turns a CgFX effect into a GLSL effect (".glslfx", see docs/GLSLFX.md). The effect is
/// compiled as the CgFX road compiles it (same includes, same light and environment
/// model); each pass program is compiled again by the Cg runtime for its GLSL profile,
/// and its uniforms get their effect names back at effect scope, with the types,
/// defaults, semantics and annotations the runtime reflects. The result is checked
/// before it is handed out: it loads through the GLSL effect runtime (no display needed)
/// and shows the user parameters the CgFX effect shows, else the translation fails with
/// the difference named. Use from one thread: the check listens to the GLSL runtime's
/// messages while it loads.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"
#include "QorVisShaderTranslate/QorCgFXTranslation.h"

#include <string>

class QOR_VISSHADERS_API QorCgFXTranslator
{
public:
    /// Cg programs draw lights through structures that are connected at run time; a GLSL
    /// program is made for one set of them. The light code (two bits a light from the
    /// lowest: 1 point, 2 spot, 3 directional) and the environment (a colour, or a cube
    /// map) the programs are made for; the GLSL effect reads them from the uniforms the
    /// renderer feeds a GLSL effect ("lightData_..." and the environment's semantics).
    struct Options
    {
        unsigned int lightCode = 1u | (3u << 2); ///< a point light, then a directional one
        bool cubeEnvironment = true;
    };

    QorCgFXTranslator() = default;
    explicit QorCgFXTranslator(const Options& options) : m_options(options) {}

    /// Translates the effect file `path`, found and compiled as the CgFX road finds it
    /// (as named, else along "QorStartupPath" and "QorGraphicPath"); includes are found
    /// as the CgFX road finds them. Messages name the file by its name without folders.
    QorCgFXTranslation TranslateFile(const std::string& path) const;
    /// Translates the effect text `source`; `name` names it in messages ("plastic.cgfx").
    QorCgFXTranslation TranslateText(const std::string& name, const std::string& source) const;

private:
    Options m_options;
};

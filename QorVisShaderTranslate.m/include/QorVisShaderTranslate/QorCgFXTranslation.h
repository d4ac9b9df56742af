/// @file
/// What a translation of a CgFX effect into a GLSL effect made and what it left behind:
/// the ".glslfx" text, each technique translated or left out and why, the parameters
/// carried, the pass states the GLSL runtime lacks, and notes on what the GLSL effect
/// does differently (a semantic it does not keep, the light configuration it was made
/// for). Places are given as the effect's own "file(line)".
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include <string>
#include <vector>

struct QOR_VISSHADERS_API QorCgFXTranslation
{
    struct Technique
    {
        std::string name;
        bool translated = false;
        std::string why;                 ///< when left out: the first reason, with its place
        std::vector<std::string> passes; ///< the passes translated
    };

    struct DroppedState
    {
        std::string technique, pass, state;
        std::string where; ///< "file(line)"
    };

    /// The text was made, loads through the GLSL effect runtime and shows the parameters
    /// the CgFX effect shows; `text` is empty otherwise.
    bool translated = false;
    std::string text;
    std::vector<Technique> techniques;
    std::vector<std::string> parameters; ///< the user parameters carried, in order
    std::vector<DroppedState> droppedStates;
    std::vector<std::string> notes;
    /// Why the translation failed: compile errors, a difference from the CgFX effect's
    /// parameters, a name the GLSL effect cannot take; one message each.
    std::vector<std::string> errors;

    /// Translated, with every technique and every pass state.
    bool Whole() const;
};

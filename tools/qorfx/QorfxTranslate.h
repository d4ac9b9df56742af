/// @file
/// Turning CgFX effects into GLSL effects from the shell: each effect translated by the
/// library's translator, its ".glslfx" written whole, a report per effect, and a contact
/// sheet of each original beside its translation.
#pragma once

#include "QorfxStage.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

struct QorCgFXTranslation;

struct QorfxTranslateOptions
{
    std::string folder = "."; ///< -o: where each NAME.glslfx goes
    bool json = false;        ///< the report as JSON
    bool force = false;       ///< --force: a translation may replace a file already there
    std::string preview;      ///< --preview: the contact sheet to write; empty for none
    QorfxRenderOptions render; ///< the lights and environment translated for, and the preview's tiles
};

/// Translates every effect and reports on standard output. Exit 0 when every effect was
/// translated whole (every technique, every pass state), 1 when anything was left out or
/// failed or a file could not be written, 2 on bad usage.
int QorfxTranslate(const std::vector<std::string>& effects, const QorfxTranslateOptions& options);

/// The report of one translation of `effect`: {effect, translated, whole, techniques:
/// [{name, translated, passes, why}], parameters, droppedStates: [{technique, pass, state,
/// where}], notes, errors}.
nlohmann::json QorfxTranslationJson(const std::string& effect, const QorCgFXTranslation& translation);

/// The same report as readable lines, each after `indent`.
void QorfxPrintTranslation(const nlohmann::json& report, const char* indent);

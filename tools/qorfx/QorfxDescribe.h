/// @file
/// What an effect exposes, as one JSON document: techniques, user parameters with their
/// UI annotations, bound semantics, interfaces and light slots.
#pragma once

#include <nlohmann/json.hpp>

class QorfxMaterial;

/// `validate`: check each technique in the current GL context (null when there is none).
nlohmann::json QorfxDescribe(QorfxMaterial& material, bool validate);

/// The same document as readable text.
void QorfxPrintDescription(const nlohmann::json& description);

/// @file
/// What an effect exposes, as one JSON document: techniques, user parameters with their
/// UI annotations, bound semantics, interfaces and light slots.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

class QorfxMaterial;
class QorIShaderParameters;

/// `validate`: check each technique in the current GL context (null when there is none).
nlohmann::json QorfxDescribe(QorfxMaterial& material, bool validate);

/// The value at `index` of a parameter set, whose type code is `type`: a number, an
/// array of a colour's components, or a texture's file name (null when none).
nlohmann::json QorfxValueJson(QorIShaderParameters& parameters, int index, int type);

/// The document's JSON text. Names and annotations are the effect's bytes, which need
/// not be UTF-8: bytes that are not become U+FFFD, so the text is always valid JSON.
std::string QorfxJsonText(const nlohmann::json& document);

/// The same document as readable text.
void QorfxPrintDescription(const nlohmann::json& description);

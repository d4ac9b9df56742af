/// @file
/// The values of a material window as text, the way --set takes them, read against a
/// material's description (QorfxDescribe): what a widget or a script may set, and how a
/// value linked by name fits each material.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// The parameter entry of `name` in a description; null when it has none.
const nlohmann::json* QorfxFindParameter(const nlohmann::json& description, const std::string& name);

/// A value of a description (a number, a colour's components, a file) as --set takes it,
/// with every digit a float needs.
std::string QorfxValueText(const nlohmann::json& value);

/// Refuses what a widget could not give: text that is not finite numbers, or a number
/// beyond the parameter's UIMin and UIMax. An empty string or the problem.
std::string QorfxCheckValue(const nlohmann::json& entry, const std::string& name, const std::string& value);

/// The value as the parameter `entry` takes it: a colour linked with a twin's of more
/// components keeps as many as this one has.
std::string QorfxValueFor(const nlohmann::json& entry, const std::string& value);

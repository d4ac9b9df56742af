#include "QorfxViewValues.h"

#include "QorVisShaders/QorShaderValueType.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <vector>

using nlohmann::json;

const json* QorfxFindParameter(const json& description, const std::string& name)
{
    const auto parameters = description.find("parameters");
    if (parameters == description.end())
        return nullptr;
    for (const json& entry : *parameters)
        if (entry["name"] == name)
            return &entry;
    return nullptr;
}

std::string QorfxValueText(const json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_number()) {
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", value.get<double>());
        return text;
    }
    std::string text;
    if (value.is_array())
        for (const json& item : value)
            text += (text.empty() ? "" : ",") + QorfxValueText(item);
    return text;
}

namespace {

// The numbers of a float or colour value; false for text that is not finite numbers.
bool Numbers(const std::string& text, std::vector<float>& numbers)
{
    std::istringstream in(text);
    for (std::string item; std::getline(in, item, ',');) {
        char* end = nullptr;
        const float value = std::strtof(item.c_str(), &end);
        if (item.empty() || *end != '\0' || !std::isfinite(value))
            return false;
        numbers.push_back(value);
    }
    return !numbers.empty();
}

} // namespace

std::string QorfxCheckValue(const json& entry, const std::string& name, const std::string& value)
{
    if (entry["type"] == QorValueTexture)
        return "";
    std::vector<float> numbers;
    if (!Numbers(value, numbers))
        return "\"" + name + "\" takes finite numbers separated by commas, not \"" + value + "\"";
    if (entry["type"] == QorValueFloat && entry.contains("min") &&
        entry["max"].get<float>() > entry["min"].get<float>()) {
        const float min = entry["min"], max = entry["max"];
        if (numbers[0] < min || numbers[0] > max)
            return "\"" + name + "\" takes a value from " + QorfxValueText(min) + " to " + QorfxValueText(max) +
                   ", not " + value;
    }
    return "";
}

std::string QorfxValueFor(const json& entry, const std::string& value)
{
    const int type = entry["type"];
    if (type == QorValueFloat || type == QorValueTexture)
        return value;
    std::vector<float> numbers;
    if (!Numbers(value, numbers))
        return value;
    numbers.resize(std::min<std::size_t>(numbers.size(), static_cast<std::size_t>(QorColorComponentCount(type))));
    return QorfxValueText(json(numbers));
}

#include "QorfxDescribe.h"

#include "QorfxMaterial.h"

#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <cstdio>
#include <cstdlib>

using nlohmann::json;

namespace {

json Parameters(QorfxMaterial& material)
{
    QorIShader& shader = material.Shader();
    json parameters = json::array();
    for (int index = 1; index < shader.GetNbParameters(); ++index) {
        const int type = shader.GetParameterType(index);
        json entry = {{"index", index}, {"name", shader.GetParameterName(index)}, {"type", type}};
        QorIShaderParameters* values = shader.GetIShaderParameters();
        entry["value"] = values ? QorfxValueJson(*values, index, type) : json(nullptr);
        float min = 0, max = 0, step = 0;
        if (shader.GetParameterFloatMinMaxStep(index, min, max, step, nullptr, nullptr) == 1) {
            entry["min"] = min;
            entry["max"] = max;
            entry["step"] = step;
        }
        material.Backend().DescribeParameter(index, entry);
        parameters.push_back(entry);
    }
    return parameters;
}

std::string Text(const json& value)
{
    if (value.is_null())
        return "-";
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_array()) {
        std::string text;
        for (const json& item : value)
            text += (text.empty() ? "" : ",") + Text(item);
        return text;
    }
    char number[32];
    std::snprintf(number, sizeof number, "%g", value.get<double>());
    return number;
}

// The float as the shortest decimal that reads back as the same float: 0.2f is 0.2, not
// the double nearest to it (0.20000000298023224).
json FloatJson(float value)
{
    char text[32];
    for (int digits = 6; digits < 10; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, value);
        if (std::strtof(text, nullptr) == value)
            break;
    }
    return std::strtod(text, nullptr);
}

} // namespace

json QorfxValueJson(QorIShaderParameters& parameters, int index, int type)
{
    if (type == QorValueFloat) {
        float value = 0;
        parameters.GetFloatValue(index, &value, 0);
        return FloatJson(value);
    }
    if (type == QorValueTexture) {
        char* file = nullptr;
        parameters.GetTextureValue(index, &file, 0);
        return file && *file ? json(file) : json(nullptr);
    }
    float rgba[4] = {};
    parameters.GetColorValue(index, rgba, 0);
    json components = json::array();
    for (int i = 0; i < QorColorComponentCount(type); ++i)
        components.push_back(FloatJson(rgba[i]));
    return components;
}

json QorfxDescribe(QorfxMaterial& material, bool validate)
{
    // The technique the shader answers at index 0.
    float current = 0;
    material.Shader().GetParameterFloat(0, &current);
    json description = {{"effect", material.Name()},
                        {"file", material.File()},
                        {"currentTechnique", static_cast<int>(current)},
                        {"techniques", material.Backend().Techniques(validate)},
                        {"parameters", Parameters(material)}};
    material.Backend().DescribeEffect(description);
    return description;
}

std::string QorfxJsonText(const json& document)
{
    return document.dump(2, ' ', false, json::error_handler_t::replace);
}

void QorfxPrintDescription(const json& description)
{
    std::printf("effect %s (%s)\n", description["effect"].get<std::string>().c_str(),
                description["file"].get<std::string>().c_str());
    std::printf("techniques:\n");
    for (const json& technique : description["techniques"]) {
        const json& valid = technique["valid"];
        std::printf("  %d %-20s %s\n", technique["index"].get<int>(), technique["name"].get<std::string>().c_str(),
                    valid.is_null() ? "(not validated: no display)" : valid.get<bool>() ? "valid" : "does not validate");
    }
    std::printf("parameters:\n");
    for (const json& parameter : description["parameters"]) {
        std::printf("  %2d %-20s type %d  value %s", parameter["index"].get<int>(),
                    parameter["name"].get<std::string>().c_str(), parameter["type"].get<int>(),
                    Text(parameter["value"]).c_str());
        if (parameter.contains("min"))
            std::printf("  range %s..%s step %s", Text(parameter["min"]).c_str(), Text(parameter["max"]).c_str(),
                        Text(parameter["step"]).c_str());
        if (!parameter["widget"].is_null())
            std::printf("  widget %s", Text(parameter["widget"]).c_str());
        if (!parameter["uiName"].is_null())
            std::printf("  \"%s\"", Text(parameter["uiName"]).c_str());
        if (parameter.contains("defaultFile"))
            std::printf("  default file %s", Text(parameter["defaultFile"]).c_str());
        std::printf("\n");
    }
    std::printf("bound semantics:\n");
    for (const json& bound : description["semantics"])
        std::printf("  %-24s %s\n", bound["semantic"].get<std::string>().c_str(),
                    bound["parameter"].get<std::string>().c_str());
    std::printf("interfaces:\n");
    for (const json& entry : description["interfaces"])
        std::printf("  %-16s %s -> %s\n", entry["name"].get<std::string>().c_str(),
                    entry["base"].get<std::string>().c_str(), Text(entry["dynamic"]).c_str());
    std::printf("light array: %s\n", description["hasLightArray"].get<bool>() ? "yes" : "no");
    // What only some implementations report (GLSL effects: named uniforms, the load's words).
    if (description.contains("namedUniforms")) {
        std::printf("named uniforms:\n");
        for (const json& named : description["namedUniforms"])
            std::printf("  %-48s %s\n", named["name"].get<std::string>().c_str(),
                        named["used"].get<bool>() ? "used" : "not used");
    }
    if (description.contains("constantBuffers") && !description["constantBuffers"].empty()) {
        std::printf("constant buffers:\n");
        for (const json& buffer : description["constantBuffers"]) {
            std::printf("  %s%s:", buffer["name"].get<std::string>().c_str(),
                        buffer["global"].get<bool>() ? " (global: shared with other effects)" : "");
            for (const json& member : buffer["members"])
                std::printf(" %s", member["name"].get<std::string>().c_str());
            std::printf("\n");
        }
    }
    const std::pair<const char*, const char*> sections[] = {
        {"loadWarnings", "load warnings"}, {"loadMessages", "load messages"}, {"messages", "messages"}};
    for (const auto& [key, heading] : sections) {
        if (!description.contains(key) || description[key].empty())
            continue;
        std::printf("%s:\n", heading);
        for (const json& line : description[key])
            std::printf("  %s\n", line.get<std::string>().c_str());
    }
}

#include "QorfxDescribe.h"

#include "QorfxMaterial.h"

#include <cstdio>

using nlohmann::json;

namespace {

const char* StringAnnotation(CGparameter parameter, const char* first, const char* second)
{
    for (const char* name : {first, second})
        if (const CGannotation annotation = cgGetNamedParameterAnnotation(parameter, name))
            if (const char* value = cgGetStringAnnotationValue(annotation))
                return value;
    return nullptr;
}

json ValueOf(QorIShader& shader, int index, int type)
{
    if (type == 1) {
        float value = 0;
        shader.GetParameterFloat(index, &value);
        return value;
    }
    if (type == 4) {
        char file[QorMaxParameterStringLength] = {};
        shader.GetParameterString(index, file);
        return file[0] ? json(file) : json(nullptr);
    }
    float rgba[4] = {};
    shader.GetParameterColor(index, &rgba[0], &rgba[1], &rgba[2], &rgba[3]);
    const int components = type == 5 ? 2 : type == 6 ? 3 : 4;
    return json(std::vector<float>(rgba, rgba + components));
}

json Techniques(QorShaderEffect& effect, bool validate)
{
    json techniques = json::array();
    int index = 0;
    for (CGtechnique technique = cgGetFirstTechnique(effect.GetCgEffect()); technique;
         technique = cgGetNextTechnique(technique), ++index) {
        json entry = {{"index", index}, {"name", cgGetTechniqueName(technique)}};
        entry["valid"] = validate ? json(cgValidateTechnique(technique) == CG_TRUE) : json(nullptr);
        techniques.push_back(entry);
    }
    return techniques;
}

json Parameters(QorfxMaterial& material)
{
    QorIShader& shader = material.Shader();
    QorShaderEffect& effect = material.Effect();
    json parameters = json::array();
    for (int index = 1; index < shader.GetNbParameters(); ++index) {
        const int type = shader.GetParameterType(index);
        json entry = {{"index", index}, {"name", shader.GetParameterName(index)}, {"type", type}};
        entry["value"] = ValueOf(shader, index, type);
        float min = 0, max = 0, step = 0;
        if (shader.GetParameterFloatMinMaxStep(index, min, max, step, nullptr, nullptr) == 1) {
            entry["min"] = min;
            entry["max"] = max;
            entry["step"] = step;
        }
        const CGparameter parameter = effect.GetUserParameter(index);
        const char* widget = StringAnnotation(parameter, "UIWidget", "UIwidget");
        const char* uiName = StringAnnotation(parameter, "UIName", "UIname");
        entry["widget"] = widget ? json(widget) : json(nullptr);
        entry["uiName"] = uiName ? json(uiName) : json(nullptr);
        parameters.push_back(entry);
    }
    return parameters;
}

void AddBound(json& semantics, CGparameter parameter)
{
    if (parameter)
        semantics.push_back({{"parameter", cgGetParameterName(parameter)},
                             {"semantic", cgGetParameterSemantic(parameter)}});
}

json Semantics(QorShaderEffect& effect)
{
    json semantics = json::array();
    for (int which = 0; which < QorEffectMatrixCount; ++which)
        AddBound(semantics, effect.GetMatrixParameter(static_cast<QorEffectMatrix>(which)));
    for (int which = 0; which < QorEffectMaterialCount; ++which)
        AddBound(semantics, effect.GetMaterialParameter(static_cast<QorEffectMaterial>(which)));
    return semantics;
}

json Interfaces(QorShaderEffect& effect)
{
    json interfaces = json::array();
    for (const auto& entry : effect.GetInterfaces()) {
        const char* name = entry.first.c_str();
        const char* dynamic = effect.GetDynamicType(name);
        interfaces.push_back({{"name", name},
                              {"base", effect.GetBaseType(name) ? effect.GetBaseType(name) : ""},
                              {"dynamic", dynamic ? json(dynamic) : json(nullptr)}});
    }
    return interfaces;
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

} // namespace

json QorfxDescribe(QorfxMaterial& material, bool validate)
{
    QorShaderEffect& effect = material.Effect();
    int current = 0;
    effect.getTechnique(&current);
    return {{"effect", material.Name()},
            {"currentTechnique", current},
            {"techniques", Techniques(effect, validate)},
            {"parameters", Parameters(material)},
            {"semantics", Semantics(effect)},
            {"interfaces", Interfaces(effect)},
            {"environment", effect.GetEnvironmentState()},
            {"lights", effect.GetLightCount()},
            {"hasLightArray", cgGetNamedEffectParameter(effect.GetCgEffect(), "lights") != nullptr}};
}

void QorfxPrintDescription(const json& description)
{
    std::printf("effect %s\n", description["effect"].get<std::string>().c_str());
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
    std::printf("light array: %s\n", description["hasLightArray"].get<bool>() ? "yes (\"lights\")" : "no");
}

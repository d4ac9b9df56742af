#include "QorfxViewPanel.h"

#include "QorfxDescribe.h"
#include "QorfxViewSession.h"
#include "QorfxViewValues.h"

#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <set>

using nlohmann::json;

namespace {

const ImVec4 kProblemColour(1.0f, 0.45f, 0.4f, 1.0f);

std::string Lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

void Apply(QorfxViewPanelState& state, const std::string& problem)
{
    if (!problem.empty())
        state.message = problem;
}

// A float: a checkbox for a 0..1 switch, a slider within UIMin..UIMax in steps of UIStep,
// else a field to drag.
void FloatWidget(QorfxViewSession& session, QorfxViewPanelState& state, const json& entry, const char* label,
                 const std::string& name, float value)
{
    const std::string widget =
        Lower(entry.value("widget", json("")).is_string() ? entry["widget"].get<std::string>() : "");
    const bool ranged = entry.contains("min") && entry["max"].get<float>() > entry["min"].get<float>();
    const float min = ranged ? entry["min"].get<float>() : 0, max = ranged ? entry["max"].get<float>() : 0;
    const float step = entry.contains("step") ? entry["step"].get<float>() : 0;
    if (widget == "checkbox" || (ranged && min == 0 && max == 1 && step == 1)) {
        bool on = value != 0;
        if (ImGui::Checkbox(label, &on))
            Apply(state, session.Set(name, on ? "1" : "0"));
        return;
    }
    float edited = value;
    const bool changed = ranged ? ImGui::SliderFloat(label, &edited, min, max, "%.3f", ImGuiSliderFlags_AlwaysClamp)
                                : ImGui::DragFloat(label, &edited, 0.01f);
    if (!changed)
        return;
    if (ranged && step > 0)
        edited = std::clamp(min + std::round((edited - min) / step) * step, min, max);
    Apply(state, session.Set(name, QorfxValueText(edited)));
}

void ColourWidget(QorfxViewSession& session, QorfxViewPanelState& state, const char* label, const std::string& name,
                  const json& value)
{
    float rgba[4] = {0, 0, 0, 1};
    const std::size_t count = std::min<std::size_t>(value.size(), 4);
    for (std::size_t i = 0; i < count; ++i)
        rgba[i] = value[i].get<float>();
    const bool changed = count == 4   ? ImGui::ColorEdit4(label, rgba, ImGuiColorEditFlags_Float)
                         : count == 3 ? ImGui::ColorEdit3(label, rgba, ImGuiColorEditFlags_Float)
                                      : ImGui::DragFloat2(label, rgba, 0.01f);
    if (!changed)
        return;
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i ? "," : "") + QorfxValueText(rgba[i]);
    Apply(state, session.Set(name, text));
}

// A texture's file: edited as text, applied with Enter.
void TextureWidget(QorfxViewSession& session, QorfxViewPanelState& state, const char* label, const std::string& name,
                   const json& value)
{
    char file[512] = {};
    if (value.is_string())
        std::snprintf(file, sizeof file, "%s", value.get<std::string>().c_str());
    if (ImGui::InputText(label, file, sizeof file, ImGuiInputTextFlags_EnterReturnsTrue))
        Apply(state, session.Set(name, file));
}

void ParameterWidget(QorfxViewSession& session, QorfxViewPanelState& state, QorfxMaterial& material, const json& entry)
{
    const std::string name = entry["name"];
    const int index = material.Shader().GetParameterIndex(name.c_str());
    QorIShaderParameters* values = material.Shader().GetIShaderParameters();
    if (index < 1 || !values)
        return;
    const int type = entry["type"];
    const json value = QorfxValueJson(*values, index, type);
    const std::string shown =
        entry.value("uiName", json(nullptr)).is_string() ? entry["uiName"].get<std::string>() : name;
    const std::string label = shown + "##" + name;
    ImGui::PushID(name.c_str());
    if (session.IsUserValue(name)) {
        if (ImGui::SmallButton("R"))
            Apply(state, session.Reset(name));
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("Reset %s to its default", name.c_str());
        ImGui::SameLine();
    }
    if (type == QorValueFloat)
        FloatWidget(session, state, entry, label.c_str(), name, value.get<float>());
    else if (type == QorValueTexture)
        TextureWidget(session, state, label.c_str(), name, value);
    else
        ColourWidget(session, state, label.c_str(), name, value);
    ImGui::PopID();
}

void Techniques(QorfxViewSession& session, QorfxViewPanelState& state, const QorfxViewSlot& slot)
{
    const json& techniques = slot.description["techniques"];
    const std::string& chosen = session.Options().technique;
    std::string preview = chosen.empty() ? "(first that runs)" : chosen;
    if (!ImGui::BeginCombo("Technique", preview.c_str()))
        return;
    for (const json& technique : techniques) {
        const std::string name = technique["name"];
        if (ImGui::Selectable(name.c_str(), name == chosen))
            Apply(state, session.ChooseTechnique(name));
    }
    ImGui::EndCombo();
}

void Scene(QorfxViewSession& session, QorfxViewPanelState& state)
{
    const QorfxRenderOptions& options = session.Options();
    static const char* const meshes[] = {"sphere", "cube", "quad"};
    if (ImGui::BeginCombo("Mesh", options.mesh.c_str())) {
        for (const char* mesh : meshes)
            if (ImGui::Selectable(mesh, options.mesh == mesh))
                Apply(state, session.SetMesh(mesh));
        ImGui::EndCombo();
    }
    // The light code: one kind per slot, up to eight.
    static const char* const kinds[] = {"point", "spot", "dir"};
    std::vector<std::string> lights = options.lights;
    bool changed = false;
    for (std::size_t i = 0; i < lights.size(); ++i) {
        ImGui::PushID(static_cast<int>(i));
        const std::string label = "Light " + std::to_string(i);
        if (ImGui::BeginCombo(label.c_str(), lights[i].c_str())) {
            for (const char* kind : kinds)
                if (ImGui::Selectable(kind, lights[i] == kind)) {
                    lights[i] = kind;
                    changed = true;
                }
            ImGui::EndCombo();
        }
        ImGui::PopID();
    }
    if (lights.size() < 8 && ImGui::Button("Add light")) {
        lights.push_back("point");
        changed = true;
    }
    if (!lights.empty()) {
        ImGui::SameLine();
        if (ImGui::Button("Remove light")) {
            lights.pop_back();
            changed = true;
        }
    }
    if (changed)
        Apply(state, session.SetLights(lights));
    bool sky = options.environment == "sky";
    if (ImGui::Checkbox("Sky environment", &sky))
        Apply(state, session.SetEnvironment(sky ? "sky" : "0.1,0.1,0.1"));
    if (!sky) {
        float rgb[3] = {0.1f, 0.1f, 0.1f};
        std::sscanf(options.environment.c_str(), "%f,%f,%f", &rgb[0], &rgb[1], &rgb[2]);
        if (ImGui::ColorEdit3("Environment", rgb, ImGuiColorEditFlags_Float))
            Apply(state, session.SetEnvironment(QorfxValueText(rgb[0]) + "," + QorfxValueText(rgb[1]) + "," +
                                                QorfxValueText(rgb[2])));
    }
}

void Saving(QorfxViewSession& session, QorfxViewPanelState& state)
{
    ImGui::InputText("##png", state.picturePath, sizeof state.picturePath);
    ImGui::SameLine();
    if (ImGui::Button("Save PNG (P)")) {
        const std::string problem = session.SavePicture(state.picturePath);
        state.message = problem.empty() ? std::string("wrote ") + state.picturePath : problem;
    }
    ImGui::InputText("##zpk", state.packagePath, sizeof state.packagePath);
    ImGui::SameLine();
    if (ImGui::Button("Save .zpk (S)")) {
        const std::string problem = session.SavePackage(state.packagePath);
        state.message = problem.empty() ? std::string("wrote ") + state.packagePath : problem;
    }
}

} // namespace

void QorfxViewPanel(QorfxViewSession& session, QorfxViewPanelState& state, float left, float width, float height)
{
    ImGui::SetNextWindowPos(ImVec2(left, 0));
    ImGui::SetNextWindowSize(ImVec2(width, height));
    ImGui::Begin("Material", nullptr,
                 ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse);
    const QorfxViewSlot* first = nullptr;
    for (const QorfxViewSlot& slot : session.Slots()) {
        ImGui::TextUnformatted(slot.label.c_str());
        if (!slot.problem.empty()) {
            ImGui::PushStyleColor(ImGuiCol_Text, kProblemColour);
            ImGui::TextWrapped("%s", slot.problem.c_str());
            ImGui::PopStyleColor();
        }
        if (!first && slot.material)
            first = &slot;
    }
    ImGui::Separator();
    if (first)
        Techniques(session, state, *first);
    if (ImGui::CollapsingHeader("Scene"))
        Scene(session, state);
    // One widget per name: materials side by side share the values of their common names.
    if (ImGui::CollapsingHeader("Parameters", ImGuiTreeNodeFlags_DefaultOpen)) {
        std::set<std::string> shown;
        for (const QorfxViewSlot& slot : session.Slots())
            if (slot.material)
                for (const json& entry : slot.description["parameters"])
                    if (shown.insert(entry["name"].get<std::string>()).second)
                        ParameterWidget(session, state, *slot.material, entry);
    }
    ImGui::Separator();
    Saving(session, state);
    if (!state.message.empty())
        ImGui::TextWrapped("%s", state.message.c_str());
    ImGui::End();
}

#include "QorfxViewSession.h"

#include "QorfxDescribe.h"
#include "QorfxPack.h"
#include "QorfxScene.h"
#include "QorfxSheet.h"
#include "QorfxViewValues.h"

#include "QorVisShaders/QorShaderManager.h"

#include <GL/gl.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// The compiler names lines of an effect read from memory without its file, "(7) : error
// ...": the panel says which file.
std::string Located(const std::string& listing, const std::string& file)
{
    std::string located;
    for (std::size_t start = 0; start < listing.size();) {
        const std::size_t next = std::min(listing.find('\n', start), listing.size() - 1) + 1;
        const std::size_t close = listing.find(") :", start);
        if (listing[start] == '(' && close < next && close > start + 1 &&
            listing.find_first_not_of("0123456789", start + 1) == close)
            located += file;
        located.append(listing, start, next - start);
        start = next;
    }
    return located;
}

} // namespace

QorfxViewSession::QorfxViewSession(QorfxRenderOptions options) : m_options(std::move(options)) {}

QorfxViewSession::~QorfxViewSession()
{
    if (!m_context.IsOpen())
        return;
    m_context.MakeCurrent();
    // Materials and textures belong to the offscreen context: they go while it is current.
    m_slots.clear();
    QorShaderManager::CleanShaderTextureToDestroyList();
    if (m_skyTexture)
        glDeleteTextures(1, &m_skyTexture);
}

int QorfxViewSession::Open(const std::vector<std::string>& inputs, std::string& problem)
{
    unsigned int code = 0;
    if (!QorfxLightCode(m_options.lights, code)) {
        problem = "--lights takes up to 8 of point, spot, dir";
        return 2;
    }
    if ((problem = SetMesh(m_options.mesh)).empty()) {
        QorfxView view;
        if (!QorfxMakeView(m_options, view, problem))
            return 2;
    } else {
        return 2;
    }
    if (!QorfxSheet::Fits(inputs.size(), static_cast<int>(inputs.size()), m_options.width, m_options.height,
                          inputs.size() > 1)) {
        problem = "the pictures of " + std::to_string(inputs.size()) + " materials would have too many pixels";
        return 2;
    }
    if (!m_context.Open(m_options.width, m_options.height)) {
        problem = m_context.GetError();
        return 1;
    }
    m_slots.resize(inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        m_slots[i].input = inputs[i];
        m_slots[i].label = fs::path(inputs[i]).filename().string();
        Load(m_slots[i]);
    }
    // --set and --technique become the user's first edits.
    const std::vector<std::string> sets = std::move(m_options.sets);
    m_options.sets.clear();
    for (const std::string& assignment : sets) {
        const std::size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            problem = "--set takes NAME=VALUE, not \"" + assignment + "\"";
            return 2;
        }
        if (!(problem = Set(assignment.substr(0, equals), assignment.substr(equals + 1))).empty())
            return 1;
    }
    const std::string technique = std::move(m_options.technique);
    m_options.technique.clear();
    if (!technique.empty() && !(problem = ChooseTechnique(technique)).empty())
        return 2;
    return 0;
}

void QorfxViewSession::Load(QorfxViewSlot& slot)
{
    // A reload stamps the files before reading them: a save made while it reads is seen
    // by the next frame, not lost.
    const bool reloading = !slot.watch.Files().empty();
    if (reloading)
        slot.watch.Watch(slot.watch.Files().front());
    QorfxLoadProblem loading;
    // Named as a reader finds it again, so that a document saved from the window travels.
    slot.material = fs::path(slot.input).extension() == ".zpk" ? QorfxMaterial::LoadPackage(slot.input, loading)
                                                               : QorfxMaterial::LoadForDocument(slot.input, loading);
    if (!reloading)
        slot.watch.Watch(slot.material ? slot.material->File() : slot.input);
    m_dirty = true;
    if (!slot.material) {
        slot.word = loading.word;
        slot.problem = loading.message + (loading.details.empty() ? "" : "\n" + Located(loading.details, slot.label));
        std::fprintf(stderr, "qorfx: %s\n", slot.problem.c_str());
        return;
    }
    slot.word.clear();
    slot.problem.clear();
    slot.description = QorfxDescribe(*slot.material, false);
}

bool QorfxViewSession::IsUserValue(const std::string& name) const
{
    return std::any_of(m_values.begin(), m_values.end(), [&](const auto& value) { return value.first == name; });
}

std::string QorfxViewSession::Set(const std::string& name, const std::string& value)
{
    // Every material that has the name takes the value, or none does.
    std::vector<std::pair<QorfxMaterial*, const json*>> targets;
    for (QorfxViewSlot& slot : m_slots)
        if (const json* entry = slot.material ? QorfxFindParameter(slot.description, name) : nullptr) {
            const std::string problem = QorfxCheckValue(*entry, name, value);
            if (!problem.empty())
                return problem;
            targets.emplace_back(slot.material.get(), entry);
        }
    if (targets.empty())
        return "no material of the window has a parameter \"" + name + "\"";
    for (const auto& [material, entry] : targets) {
        const std::string problem = material->Set(name, QorfxValueFor(*entry, value));
        if (!problem.empty())
            return problem;
    }
    const auto known =
        std::find_if(m_values.begin(), m_values.end(), [&](const auto& entry) { return entry.first == name; });
    if (known != m_values.end())
        known->second = value;
    else
        m_values.emplace_back(name, value);
    m_dirty = true;
    return "";
}

std::string QorfxViewSession::Reset(const std::string& name)
{
    bool found = false;
    for (QorfxViewSlot& slot : m_slots)
        if (const json* entry = slot.material ? QorfxFindParameter(slot.description, name) : nullptr) {
            slot.material->Set(name, QorfxValueText((*entry)["value"]));
            found = true;
        }
    if (!found)
        return "no material of the window has a parameter \"" + name + "\"";
    m_values.erase(
        std::remove_if(m_values.begin(), m_values.end(), [&](const auto& value) { return value.first == name; }),
        m_values.end());
    m_dirty = true;
    return "";
}

std::string QorfxViewSession::ChooseTechnique(const std::string& technique)
{
    std::string problem = "no material of the window is loaded";
    for (QorfxViewSlot& slot : m_slots)
        if (slot.material && (problem = QorfxTechniqueProblem(*slot.material, technique)).empty())
            break;
    if (!problem.empty())
        return problem;
    m_options.technique = technique;
    m_dirty = true;
    return "";
}

std::string QorfxViewSession::SetLights(const std::vector<std::string>& lights)
{
    unsigned int code = 0;
    if (!QorfxLightCode(lights, code))
        return "lights take up to 8 of point, spot, dir";
    m_options.lights = lights;
    m_dirty = true;
    return "";
}

std::string QorfxViewSession::SetEnvironment(const std::string& environment)
{
    QorfxRenderOptions options = m_options;
    options.environment = environment;
    QorfxView view;
    std::string problem;
    if (!QorfxMakeView(options, view, problem))
        return problem;
    m_options.environment = environment;
    m_dirty = true;
    return "";
}

std::string QorfxViewSession::SetMesh(const std::string& mesh)
{
    std::vector<QorfxVertex> made = QorfxMakeMesh(mesh);
    if (made.empty())
        return "--mesh takes quad, cube or sphere, not \"" + mesh + "\"";
    m_mesh = std::move(made);
    m_options.mesh = mesh;
    // The camera starts where render's stands: the quad faces it, other meshes are turned.
    m_pitch = mesh == "quad" ? 0 : 20;
    m_yaw = mesh == "quad" ? 0 : -30;
    m_distance = 3.4f;
    m_dirty = true;
    return "";
}

void QorfxViewSession::Orbit(float right, float down)
{
    m_yaw += right * 0.5f;
    m_pitch = std::clamp(m_pitch + down * 0.5f, -89.0f, 89.0f);
    m_dirty = true;
}

void QorfxViewSession::Zoom(float factor)
{
    if (!std::isfinite(factor) || factor <= 0)
        return;
    m_distance = std::clamp(m_distance * factor, 1.2f, 20.0f);
    m_dirty = true;
}

QorfxView QorfxViewSession::Camera() const
{
    QorfxView view;
    std::string problem;
    QorfxMakeView(m_options, view, problem);
    view.world = QorfxRotation(m_pitch, m_yaw);
    const float eye[3] = {0, 0, m_distance}, target[3] = {0, 0, 0}, up[3] = {0, 1, 0};
    view.view = QorfxLookAt(eye, target, up);
    return view;
}

QorfxRenderOptions QorfxViewSession::OptionsFor(QorfxMaterial& material) const
{
    QorfxRenderOptions options = m_options;
    options.sets.clear();
    const QorfxViewSlot* slot = nullptr;
    for (const QorfxViewSlot& candidate : m_slots)
        if (candidate.material.get() == &material)
            slot = &candidate;
    for (const auto& [name, value] : m_values)
        if (const json* entry = slot ? QorfxFindParameter(slot->description, name) : nullptr)
            options.sets.push_back(name + "=" + QorfxValueFor(*entry, value));
    // A technique chosen by the name of another material's leaves this one its own.
    if (!QorfxTechniqueProblem(material, options.technique).empty())
        options.technique.clear();
    return options;
}

bool QorfxViewSession::Reload(bool force)
{
    std::vector<QorfxViewSlot*> changed;
    for (QorfxViewSlot& slot : m_slots)
        if (force || slot.watch.Changed())
            changed.push_back(&slot);
    if (changed.empty())
        return false;
    m_context.MakeCurrent();
    // The library shares one compiled effect per name: every old one goes before any is
    // compiled again, or the new material would get the old effect back.
    for (QorfxViewSlot* slot : changed)
        slot->material.reset();
    QorShaderManager::CleanShaderTextureToDestroyList();
    for (QorfxViewSlot* slot : changed) {
        Load(*slot);
        if (slot->material)
            QorfxApplyOptions(*slot->material, OptionsFor(*slot->material));
    }
    return true;
}

std::string QorfxViewSession::Touch()
{
    for (const QorfxViewSlot& slot : m_slots) {
        const std::string& file = slot.watch.Files().front();
        if (utimensat(AT_FDCWD, file.c_str(), nullptr, 0) != 0)
            return file + ": cannot touch the file (" + std::strerror(errno) + ")";
    }
    return "";
}

bool QorfxViewSession::Draw()
{
    if (!m_dirty)
        return false;
    m_dirty = false;
    ++m_drawings;
    m_context.MakeCurrent();
    const QorfxView view = Camera();
    for (QorfxViewSlot& slot : m_slots) {
        if (!slot.material)
            continue;
        const QorfxDrawFailure failure =
            QorfxDrawMaterial(*slot.material, OptionsFor(*slot.material), view, m_mesh, m_skyTexture);
        slot.word = failure.word;
        slot.problem = failure.message;
        if (failure.word.empty())
            slot.picture = m_context.ReadPixels();
    }
    QorShaderManager::CleanShaderTextureToDestroyList();
    return true;
}

std::string QorfxViewSession::SavePicture(const std::string& path)
{
    Draw();
    const std::size_t count = m_slots.size();
    QorfxSheet sheet(count, static_cast<int>(count), m_options.width, m_options.height, count > 1);
    for (std::size_t i = 0; i < count; ++i) {
        if (!m_slots[i].picture.empty())
            sheet.Place(i, m_slots[i].picture, m_slots[i].label);
        else
            sheet.MarkFailed(i, m_slots[i].label, m_slots[i].word);
    }
    return QorfxWriteImage(path, sheet.Width(), sheet.Height(), sheet.Pixels());
}

std::string QorfxViewSession::SavePackage(const std::string& path)
{
    std::vector<QorfxMaterial*> materials;
    for (QorfxViewSlot& slot : m_slots)
        if (slot.material) {
            const std::string problem = QorfxApplyOptions(*slot.material, OptionsFor(*slot.material));
            if (!problem.empty())
                return problem;
            materials.push_back(slot.material.get());
        }
    if (materials.empty())
        return path + ": not written: no material of the window is loaded";
    m_context.MakeCurrent();
    return QorfxWritePackage(materials, path);
}

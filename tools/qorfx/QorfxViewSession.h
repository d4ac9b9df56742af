/// @file
/// A material window's state apart from the window: the materials side by side, the
/// values a person set (linked by name across the materials), the camera, the live
/// reload, and the pictures, drawn through render's road in an offscreen context.
#pragma once

#include "QorfxMaterial.h"
#include "QorfxStage.h"
#include "QorfxViewWatch.h"

#include "QorGL/QorGLContext.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// One material of the window.
struct QorfxViewSlot
{
    std::string input;                       ///< as the user named it
    std::string label;                       ///< its file name
    std::unique_ptr<QorfxMaterial> material; ///< null while its file does not load
    nlohmann::json description;              ///< as loaded (QorfxDescribe): defaults, UI annotations
    std::string word;                        ///< why it is not drawn, in one word; empty when drawn
    std::string problem;                     ///< why, with the compiler's listing
    std::vector<unsigned char> picture;      ///< the last good picture, RGBA, top row first
    QorfxViewWatch watch;
};

class QorfxViewSession
{
public:
    explicit QorfxViewSession(QorfxRenderOptions options);
    ~QorfxViewSession();
    QorfxViewSession(const QorfxViewSession&) = delete;
    QorfxViewSession& operator=(const QorfxViewSession&) = delete;

    /// Checks the options, opens the offscreen context and loads every input; a material
    /// that does not load is kept with its problem. Returns 0, or the exit code (2 for
    /// bad options, 1 without a GL context) with `problem`.
    int Open(const std::vector<std::string>& inputs, std::string& problem);

    /// Sets parameter `name` of every material that has it, from text as --set takes it;
    /// a number must be finite and within the parameter's UIMin and UIMax. An empty
    /// string or the problem.
    std::string Set(const std::string& name, const std::string& value);
    /// Gives `name` back its value as loaded and forgets the user's.
    std::string Reset(const std::string& name);
    /// Chooses a technique by number or name (of the first material that has it).
    std::string ChooseTechnique(const std::string& technique);
    /// Light kinds as --lights takes them; an empty string or the problem.
    std::string SetLights(const std::vector<std::string>& lights);
    /// "sky" or r,g,b; an empty string or the problem.
    std::string SetEnvironment(const std::string& environment);
    std::string SetMesh(const std::string& mesh);
    void Orbit(float right, float down);
    void Zoom(float factor);

    /// Loads again each material whose watched files changed (every one when `force`),
    /// keeping the user's values by name. A material that fails keeps its last picture
    /// and reports on stderr. True when something was loaded again.
    bool Reload(bool force);
    /// Marks every watched effect file as saved now, as `touch` does.
    std::string Touch();
    /// Draws the materials when something changed since the last call; true when it did.
    bool Draw();
    /// Writes the pictures side by side, as render writes a row of a contact sheet.
    std::string SavePicture(const std::string& path);
    /// Writes the loaded materials with their current values as one ".zpk" document.
    std::string SavePackage(const std::string& path);

    const std::vector<QorfxViewSlot>& Slots() const { return m_slots; }
    const QorfxRenderOptions& Options() const { return m_options; }
    bool IsUserValue(const std::string& name) const;
    /// Counts the drawings, so that a window knows when its copies of the pictures are old.
    unsigned long Drawings() const { return m_drawings; }

private:
    void Load(QorfxViewSlot& slot);
    /// The options one material is drawn with: the user's values it has a parameter for,
    /// colours cut to its number of components, and the technique when it has it.
    QorfxRenderOptions OptionsFor(QorfxMaterial& material) const;
    QorfxView Camera() const;

    QorfxRenderOptions m_options;
    std::vector<std::pair<std::string, std::string>> m_values; // the user's, by name, in order
    std::vector<QorfxViewSlot> m_slots;
    std::vector<QorfxVertex> m_mesh;
    QorGLContext m_context;
    unsigned int m_skyTexture = 0;
    float m_pitch = 0, m_yaw = 0, m_distance = 0;
    bool m_dirty = true;
    unsigned long m_drawings = 0;
};

/// @file
/// A material loaded for the tool: a shader object over an effect file, with the back
/// end of its implementation.
#pragma once

#include "QorfxBackend.h"

#include "QorVisShaders/QorIShader.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Why a material could not be loaded.
struct QorfxLoadProblem
{
    std::string word;    ///< one word for a contact sheet's tile: "missing", "compile", ...
    std::string message; ///< one line, naming the file
    std::string details; ///< the compiler's listing and advice on missing includes; may be empty
};

/// The library reads effect and include files of at most this size.
constexpr std::size_t kQorfxMaxSourceBytes = 16u << 20;

class QorfxMaterial
{
public:
    /// Loads and compiles the effect file `path`, found as the library finds it (as it
    /// stands, else along "QorStartupPath" and "QorGraphicPath"). Returns null with
    /// `problem` filled when it is found nowhere or does not compile.
    static std::unique_ptr<QorfxMaterial> Load(const std::string& path, QorfxLoadProblem& problem);
    /// Load, with the effect named as a reader finds it again: relative to the first
    /// search folder that holds it ("sub\name.cgfx"), or by its file name when none does,
    /// so that a document made from it carries no path of this machine.
    static std::unique_ptr<QorfxMaterial> LoadForDocument(const std::string& path, QorfxLoadProblem& problem);
    /// Loads a ".zpk" material: its stream un-streamed into a new shader, the effect
    /// compiled from the source the package carries (includes come from the search paths).
    static std::unique_ptr<QorfxMaterial> LoadPackage(const std::string& path, QorfxLoadProblem& problem);
    /// Either of the above, by the file's extension.
    static std::unique_ptr<QorfxMaterial> LoadAny(const std::string& path, QorfxLoadProblem& problem);
    /// A material over `shader` (owned from now on, also on failure) whose effect comes
    /// from `attach`, as the shader's implementation needs it loaded; `file` is where it
    /// was read from. Null with `problem` filled when the effect does not come.
    static std::unique_ptr<QorfxMaterial> Adopt(QorIShader* shader, std::string name, const std::string& file,
                                                QorfxLoadProblem& problem, const std::function<bool()>& attach);
    QorfxMaterial(QorIShader* shader, std::string name);
    ~QorfxMaterial();
    QorfxMaterial(const QorfxMaterial&) = delete;
    QorfxMaterial& operator=(const QorfxMaterial&) = delete;

    QorIShader& Shader() { return *m_shader; }
    QorfxBackend& Backend() { return *m_backend; }
    const std::string& Name() const { return m_name; }
    /// The folder of the effect file, with its separator; empty for un-streamed materials.
    const std::string& Folder() const { return m_folder; }
    /// The file the material was read from: the effect where the search found it, or the package.
    const std::string& File() const { return m_file; }

    /// Sets a parameter from text: a float, a colour "r,g,b[,a]" or a texture file.
    /// Returns an empty string on success, else the reason.
    std::string Set(const std::string& name, const std::string& value);

private:
    /// Load with the name the effect is given (null: the path as given).
    static std::unique_ptr<QorfxMaterial> Load(const std::string& path, QorfxLoadProblem& problem, bool searchName);
    /// Runs `attach` (which gives the shader its effect and generates the parameters)
    /// and turns its outcome into `problem`.
    bool Compile(const std::string& path, QorfxLoadProblem& problem, const std::function<bool()>& attach);

    QorIShader* m_shader; // owned; ends with Destroy()
    std::unique_ptr<QorfxBackend> m_backend; // over m_shader's effect; set once the effect is there
    std::string m_name;
    std::string m_folder;
    std::string m_file;
};

/// Lets effects find the samples' includes: appends the effect's folder and its parent
/// to "QorGraphicPath" (includes live under "<folder>\shaders\").
void QorfxAddSearchFolders(const std::string& effectPath);

/// The folders of --path, searched before everything "QorGraphicPath" held: each is put
/// in front of it, so effects are found in it and in its "shaders" folder, and includes
/// in its "shaders" folder; a folder that is itself named "shaders" brings its parent too,
/// so the includes it holds are found. False, with `why`, for a folder that is not there.
bool QorfxAddPathFolders(const std::vector<std::string>& folders, std::string& why);

/// A folder of the tool's own in the system's temporary folder, made at the first call
/// and removed with everything in it when the process ends; empty when it cannot be made.
std::string QorfxPrivateFolder();

/// Removes the temporary folders that runs of the tool killed before they could clean up
/// left behind: each run's folder carries its process id, and those of processes that
/// are gone are removed.
void QorfxRemoveStaleTempFolders();

/// While alive, the process's standard output goes to /dev/null: a failed compilation
/// prints the error file's path there, which must not mix with the tool's own output
/// (the errors themselves come from the back end).
class QorfxStdoutSilencer
{
public:
    QorfxStdoutSilencer();
    ~QorfxStdoutSilencer();
    QorfxStdoutSilencer(const QorfxStdoutSilencer&) = delete;
    QorfxStdoutSilencer& operator=(const QorfxStdoutSilencer&) = delete;

private:
    int m_saved;
};

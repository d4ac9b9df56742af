/// @file
/// A material loaded for the tool: a shader object over an effect file, with the
/// compile errors the library wrote to its error file.
#pragma once

#include "QorVisShaders/QorIShader.h"
#include "QorVisShaders/QorShaderEffect.h"

#include <memory>
#include <string>

class QorfxMaterial
{
public:
    /// Loads and compiles `path`. Returns null with `error` set (one line) when the file
    /// is missing or does not compile; `compileErrors` then holds the error file's text.
    static std::unique_ptr<QorfxMaterial> Load(const std::string& path, std::string& error,
                                               std::string& compileErrors);
    /// Loads a ".zpk" material: its stream un-streamed into a new shader, the effect
    /// compiled from the source the package carries (includes come from the search paths).
    static std::unique_ptr<QorfxMaterial> LoadPackage(const std::string& path, std::string& error,
                                                      std::string& compileErrors);
    /// Either of the above, by the file's extension.
    static std::unique_ptr<QorfxMaterial> LoadAny(const std::string& path, std::string& error,
                                                  std::string& compileErrors);
    QorfxMaterial(QorIShader* shader, std::string name);
    ~QorfxMaterial();
    QorfxMaterial(const QorfxMaterial&) = delete;
    QorfxMaterial& operator=(const QorfxMaterial&) = delete;

    QorIShader& Shader() { return *m_shader; }
    QorShaderEffect& Effect() { return *static_cast<QorShaderEffect*>(m_shader->GetIShaderEffect()); }
    const std::string& Name() const { return m_name; }
    /// The folder of the effect file, with its separator; empty for un-streamed materials.
    const std::string& Folder() const { return m_folder; }

    /// Sets a parameter from text: a float, a colour "r,g,b[,a]" or a texture file.
    /// Returns an empty string on success, else the reason.
    std::string Set(const std::string& name, const std::string& value);

private:
    QorIShader* m_shader; // owned; ends with Destroy()
    std::string m_name;
    std::string m_folder;
};

/// Lets effects find the samples' includes: appends the effect's folder and its parent
/// to "QorGraphicPath" (includes live under "<folder>\shaders\").
void QorfxAddSearchFolders(const std::string& effectPath);

/// While alive, the process's standard output goes to /dev/null: the library prints the
/// error file's path there, which must not mix with the tool's own output.
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

#include "QorfxDocument.h"

#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"

#include <filesystem>

namespace {

// A document holds one shader per material; a stream that claims far more is hostile.
constexpr std::size_t kMaxShaders = 4096;

} // namespace

bool QorfxDocument::Read(const std::string& path, QorFxImplementation implementation, QorfxLoadProblem& problem)
{
    std::string reason;
    if (m_package.LoadFromFile(path.c_str(), m_stream, &reason) != 0) {
        problem = {"package", reason, ""}; // the reason names the file already
        return false;
    }
    std::vector<QorIShader*> shaders;
    while (m_stream.GetRemainingSize() > 0 && !m_stream.IsFailed() && shaders.size() < kMaxShaders) {
        const std::size_t before = m_stream.GetRemainingSize();
        QorIShader* shader = QorShaderManager::CreateShader(implementation);
        if (!shader) {
            problem = {"version", path + ": no shader objects of this implementation can be made", ""};
            for (QorIShader* made : shaders)
                made->Destroy();
            return false;
        }
        shader->UnStream(m_stream);
        shaders.push_back(shader);
        if (m_stream.GetRemainingSize() == before)
            break; // nothing read: what follows is no shader
    }
    if (shaders.empty()) {
        problem = {"package", path + ": the package holds no material", ""};
        return false;
    }
    const std::string name = std::filesystem::path(path).stem().string();
    for (std::size_t index = 0; index < shaders.size(); ++index) {
        QorIShader* shader = shaders[index];
        m_problems.emplace_back();
        m_names.push_back(shaders.size() > 1 ? name + "-" + std::to_string(index) : name);
        // The reading ends with the first material's attachment: GLSL shaders are
        // migrated, their effects loaded, while that material listens to the runtime.
        m_materials.push_back(QorfxMaterial::Adopt(shader, m_names.back(), path, m_problems.back(), [&] {
                if (index == 0)
                    m_stream.FinishReading();
                return !m_stream.IsFailed() && shader->GetNbParameters() > 0;
            }));
        ExplainMissingTwin(path, index);
    }
    return true;
}

void QorfxDocument::ExplainMissingTwin(const std::string& path, std::size_t index)
{
    // A GLSL material without an effect is one whose twin the migration did not find.
    const QorShaderQRFXMigration* migration = Migration();
    const QorShaderMigrationReport* report = migration ? migration->GetEntryReport(index) : nullptr;
    if (m_materials[index] || !report || report->found || m_problems[index].word != "missing")
        return;
    m_problems[index].message = path + ": its GLSL effect " + report->glslfxName +
                                " was not found on the search paths; add --path DIR for the folder that holds it";
}

QorShaderQRFXMigration* QorfxDocument::Migration() const
{
    return dynamic_cast<QorShaderQRFXMigration*>(m_stream.GetMigration());
}

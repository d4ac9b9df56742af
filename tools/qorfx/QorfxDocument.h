/// @file
/// A ".zpk" document read into shader objects of one implementation: its package (the
/// textures and effect sources), its stream (which, for GLSL effects, carries the
/// migration of the stored CgFX materials) and one material per shader it holds.
#pragma once

#include "QorfxMaterial.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorFxImplementation.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class QorShaderQRFXMigration;

class QorfxDocument
{
public:
    QorfxDocument() = default;
    QorfxDocument(const QorfxDocument&) = delete;
    QorfxDocument& operator=(const QorfxDocument&) = delete;

    /// Reads `path`: every shader its stream holds is un-streamed into a new shader
    /// object of `implementation`, then the reading is finished (GLSL shaders are
    /// migrated then). False with `problem` when the package cannot be read or holds no
    /// shader; a shader that fails leaves a null material and its own problem.
    bool Read(const std::string& path, QorFxImplementation implementation, QorfxLoadProblem& problem);

    std::size_t Count() const { return m_materials.size(); }
    /// The material's name: the document's, with "-<index>" when it holds several.
    const std::string& Name(std::size_t index) const { return m_names[index]; }
    QorfxMaterial* Material(std::size_t index) const { return m_materials[index].get(); }
    const QorfxLoadProblem& Problem(std::size_t index) const { return m_problems[index]; }
    std::unique_ptr<QorfxMaterial> TakeMaterial(std::size_t index) { return std::move(m_materials[index]); }

    const QorResourceZPKContainer& Package() const { return m_package; }
    /// The migration the reading ran; null when the shaders were not GLSL ones.
    QorShaderQRFXMigration* Migration() const;

private:
    /// Says, for a material read into a GLSL shader that got no effect, which twin was
    /// looked for and how to let the search find it.
    void ExplainMissingTwin(const std::string& path, std::size_t index);

    QorResourceZPKContainer m_package;
    QorStreamer m_stream;
    // Declared last so that the shaders go before the migration that names them.
    std::vector<std::string> m_names;
    std::vector<QorfxLoadProblem> m_problems;
    std::vector<std::unique_ptr<QorfxMaterial>> m_materials;
};

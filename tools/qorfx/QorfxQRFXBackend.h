/// @file
/// The back end of GLSL (".glslfx") materials: every nvFX call of the tool is here.
#pragma once

#include "QorfxBackend.h"

#include <string>
#include <vector>

class QorNvFXEffect;

class QorfxQRFXBackend final : public QorfxBackend
{
public:
    /// Runs `load` with nvFX's messages kept (nvFX prints them on standard output
    /// otherwise), then makes the back end of the GLSL shader's effect; null when the
    /// shader is not a GLSL one or has no effect (the check that makes the effect's
    /// downcast safe).
    static std::unique_ptr<QorfxBackend> Load(QorIShader& shader, const std::function<bool()>& load, bool& loaded);

    nlohmann::json Techniques(bool validate) override;
    /// Also "min", "max" and "step" from the UI annotations, and a texture's "defaultFile".
    void DescribeParameter(int index, nlohmann::json& entry) override;
    /// Also the light and clip-plane uniforms found by name ("namedUniforms"), the load's
    /// "loadWarnings" and "loadMessages" (what nvFX said while loading), and what it said
    /// later while validating and drawing ("messages").
    void DescribeEffect(nlohmann::json& description) override;
    /// What nvFX said while the effect loaded.
    std::string CompileErrors() override;
    /// The includes with a file suffix that the load could not find.
    std::vector<QorfxMissingInclude> MissingIncludes() override;
    /// Nothing to prepare: a pass's setup binds the textures its samplers read.
    void PrepareContext() override {}
    /// The colour or the sky: the ambient colour (GLOBALAMBIENTCOLOR), the cube map
    /// (AUTOMATICENVIRONMENTMAP) and the switch between them
    /// ("AutomaticEnvironmentMapTracking").
    std::string SetEnvironment(const QorfxView& view, unsigned int skyTexture) override;
    bool Validate() override;
    void Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh) override;

private:
    QorfxQRFXBackend(QorNvFXEffect& effect, std::vector<std::string> loadMessages)
        : m_effect(effect), m_loadMessages(std::move(loadMessages))
    {
    }

    void SetMatrices(const QorfxView& view);
    void SetLights();

    QorNvFXEffect& m_effect; // borrowed: the shader's effect, which outlives its back end
    std::vector<std::string> m_loadMessages;
    std::vector<std::string> m_messages; // said by nvFX after the load
};

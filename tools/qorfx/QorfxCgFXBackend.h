/// @file
/// The back end of CgFX materials: every Cg call of the tool is here.
#pragma once

#include "QorfxBackend.h"

class QorShaderEffect;

class QorfxCgFXBackend final : public QorfxBackend
{
public:
    /// The back end of a CgFX shader's effect; null when the shader is not CgFX or has no
    /// effect (the check that makes the effect's downcast safe).
    static std::unique_ptr<QorfxBackend> For(QorIShader& shader);

    nlohmann::json Techniques(bool validate) override;
    void DescribeParameter(int index, nlohmann::json& entry) override;
    void DescribeEffect(nlohmann::json& description) override;
    std::string CompileErrors() override;
    std::vector<QorfxMissingInclude> MissingIncludes() override;
    void PrepareContext() override;
    std::string SetEnvironment(const QorfxView& view, unsigned int skyTexture) override;
    bool Validate() override;
    void Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh) override;

private:
    QorfxCgFXBackend(QorIShader& shader, QorShaderEffect& effect) : m_shader(shader), m_effect(effect) {}

    void SetMatrices(const QorfxView& view);
    void SetLights();

    QorIShader& m_shader;     // borrowed: the material's shader, which outlives its back end
    QorShaderEffect& m_effect; // borrowed: the shader's effect
};

#include "QorfxStage.h"

#include "QorfxMaterial.h"
#include "QorfxTextures.h"

#include "QorVisShaders/QorIShaderEffect.h"
#include "QorVisShaders/QorShaderTypes.h"

#include <GL/gl.h>

#include <cstdlib>

namespace {

std::vector<float> Numbers(const std::string& text)
{
    std::vector<float> numbers;
    const char* cursor = text.c_str();
    char* end = nullptr;
    for (;;) {
        const float value = std::strtof(cursor, &end);
        if (end == cursor)
            return {};
        numbers.push_back(value);
        if (*end == '\0')
            return numbers;
        if (*end != ',')
            return {};
        cursor = end + 1;
    }
}

} // namespace

std::string QorfxApplyOptions(QorfxMaterial& material, const QorfxRenderOptions& options)
{
    for (const std::string& assignment : options.sets) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            return "--set takes NAME=VALUE, not \"" + assignment + "\"";
        const std::string problem = material.Set(assignment.substr(0, equals), assignment.substr(equals + 1));
        if (!problem.empty())
            return problem;
    }
    if (!options.technique.empty()) {
        char* end = nullptr;
        const long number = std::strtol(options.technique.c_str(), &end, 10);
        if (*end == '\0')
            material.Shader().SetParameterFloat(0, static_cast<float>(number));
        else
            material.Shader().SetParameterString(0, options.technique.c_str());
    }
    return "";
}

bool QorfxLightCode(const std::vector<std::string>& lights, unsigned int& code)
{
    code = 0;
    if (lights.size() > QorMaxLights)
        return false;
    for (size_t i = 0; i < lights.size(); ++i) {
        const std::string& kind = lights[i];
        const unsigned int value = kind == "point" ? unsigned(QorLightPoint)
                                   : kind == "spot" ? unsigned(QorLightSpot)
                                   : kind == "dir"  ? unsigned(QorLightDirectional)
                                                    : 0u;
        if (value == 0)
            return false;
        code |= value << (2 * i);
    }
    return true;
}

bool QorfxMakeView(const QorfxRenderOptions& options, QorfxView& view, std::string& problem)
{
    view.world = options.mesh == "quad" ? Qor4x4Matrix() : QorfxRotation(20, -30);
    const float eye[3] = {0, 0, 3.4f}, target[3] = {0, 0, 0}, up[3] = {0, 1, 0};
    view.view = QorfxLookAt(eye, target, up);
    view.projection =
        QorfxPerspective(40, static_cast<float>(options.width) / static_cast<float>(options.height), 0.1f, 100);
    view.environment.clear();
    if (options.environment == "sky")
        return true;
    view.environment = Numbers(options.environment);
    if (view.environment.size() == 3)
        return true;
    problem = "--env takes r,g,b or \"sky\", not \"" + options.environment + "\"";
    return false;
}

std::string QorfxStage(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                       unsigned int skyTexture)
{
    QorIShader& shader = material.Shader();
    QorfxBackend& backend = material.Backend();
    std::string problem = QorfxApplyOptions(material, options);
    if (!problem.empty())
        return problem;
    unsigned int code = 0;
    QorfxLightCode(options.lights, code);
    shader.UpdateLightModel(code);
    shader.SetCurrentParameters();
    problem = backend.SetEnvironment(view, skyTexture);
    if (!problem.empty())
        return problem;
    backend.PrepareContext();
    // Values can choose what a technique compiles (an int selecting a program): they
    // reach the effect before anything is validated.
    // The effect takes the shader's values through the neutral interface, as a renderer's
    // upload does.
    shader.GetIShaderEffect()->UploadCurrentParameters(false);
    return "";
}

std::string QorfxTechniqueProblem(QorfxMaterial& material, const std::string& technique)
{
    if (technique.empty())
        return "";
    const nlohmann::json techniques = material.Backend().Techniques(false);
    for (const nlohmann::json& entry : techniques)
        if (entry["name"] == technique || std::to_string(entry["index"].get<int>()) == technique)
            return "";
    return "--technique takes a technique number from 0 to " + std::to_string(int(techniques.size()) - 1) +
           " or a technique name of " + material.Name() + ", not \"" + technique + "\"";
}

QorfxDrawFailure QorfxDrawMaterial(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                                   const std::vector<QorfxVertex>& mesh, unsigned int& skyTexture)
{
    QorfxBackend& backend = material.Backend();
    if (view.environment.empty() && !skyTexture)
        skyTexture = QorfxMakeSkyCubeMap();
    std::string problem = QorfxStage(material, options, view, skyTexture);
    if (!problem.empty())
        return {"options", problem};
    problem = QorfxLoadTextures(material);
    if (!problem.empty())
        return {"texture", problem};
    if (!backend.Validate())
        return {"driver", "no technique of " + material.Name() + " runs on this GL driver"};
    glClearColor(0.05f, 0.05f, 0.06f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    backend.Draw(view, mesh);
    glFinish();
    return {};
}

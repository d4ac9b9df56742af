#include "QorfxQRFXBackend.h"

#include "QorfxSceneFeed.h"

#include "QorVisShaders/QorIShader.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderTypes.h"

#include <nvFX/IAnnotationEx.h>
#include <nvFX/IContainer.h>
#include <nvFX/IContainerEx.h>
#include <nvFX/IPass.h>
#include <nvFX/ITechnique.h>
#include <nvFX/IUniformEx.h>
#include <nvFX/nvFX.h>

#include <algorithm>
#include <array>

using nlohmann::json;

namespace {

// Keeps nvFX's messages, one line each, while alive; then puts the sink before it back.
class MessageCapture
{
public:
    explicit MessageCapture(std::vector<std::string>& messages)
        : m_previous(nvFX::setMessageSink([&messages](const char* message) {
              std::string line = message;
              while (!line.empty() && line.back() == '\n')
                  line.pop_back();
              messages.push_back(line);
          }))
    {
    }
    ~MessageCapture() { nvFX::setMessageSink(std::move(m_previous)); }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

private:
    nvFX::MessageSink m_previous;
};

// The renderer feeds these by semantic, from the matrices of the view.
const std::pair<QorFeed, QorfxMatrix> kFedMatrices[] = {
    {QorFeedWorld, QorfxWorld},
    {QorFeedWorldInverse, QorfxWorldInverse},
    {QorFeedWorldInverseTranspose, QorfxWorldInverseTranspose},
    {QorFeedView, QorfxViewMatrix},
    {QorFeedViewInverse, QorfxViewInverse},
    {QorFeedViewInverseTranspose, QorfxViewInverseTranspose},
    {QorFeedProjection, QorfxProjection},
    {QorFeedWorldView, QorfxWorldView},
    {QorFeedWorldViewInverse, QorfxWorldViewInverse},
    {QorFeedWorldViewInverseTranspose, QorfxWorldViewInverseTranspose},
    {QorFeedWorldViewProjection, QorfxWorldViewProjection},
};

// The environment's uniforms: the colour and cube map by semantic, the switch between
// them by the name the library keeps from the user.
struct Environment
{
    nvFX::IUniform* ambient;
    nvFX::IUniform* cube;
    nvFX::IUniform* tracking;

    EnvironmentState State() const
    {
        float on = 0;
        if (tracking)
            tracking->getValuefv(&on, 1);
        return on != 0 ? QorEnvironmentCube : ambient || cube ? QorEnvironmentColor : QorEnvironmentNone;
    }
};

Environment EnvironmentOf(const QorNvFXEffect& effect)
{
    nvFX::IContainer* container = effect.GetContainer();
    return {effect.GetFeedUniform(QorFeedGlobalAmbientColor),
            effect.GetFeedUniform(QorFeedAutomaticEnvironmentMap),
            container ? container->findUniform("AutomaticEnvironmentMapTracking") : nullptr};
}

int ComponentsOf(nvFX::IUniform* uniform)
{
    nvFX::IUniformEx* extended = uniform->getExInterface();
    return extended ? extended->getComponentCount() : 1;
}

// Writes each element's values into an array uniform (a plain one is one element), as
// many components each as it declares; elements beyond the values are zero.
void SetElements(nvFX::IUniform* uniform, const std::vector<std::array<float, 4>>& elements)
{
    if (!uniform)
        return;
    const size_t components = static_cast<size_t>(std::clamp(ComponentsOf(uniform), 1, 4));
    const size_t count = static_cast<size_t>(std::max(uniform->getArraySize(), 1));
    std::vector<float> values(count * components, 0.0f);
    for (size_t element = 0; element < std::min(count, elements.size()); ++element)
        std::copy_n(elements[element].begin(), components, values.begin() + element * components);
    uniform->setValuefv(values.data(), static_cast<int>(values.size()));
}

void SetColour(nvFX::IUniform* uniform, const std::array<float, 3>& rgb)
{
    SetElements(uniform, {{rgb[0], rgb[1], rgb[2], 1.0f}});
}

void SetInt(nvFX::IUniform* uniform, int value)
{
    if (uniform)
        uniform->setValueiv(&value, 1);
}

std::array<float, 4> Vector(const float (&xyz)[3], float w)
{
    return {xyz[0], xyz[1], xyz[2], w};
}

std::array<float, 4> Scalar(float value)
{
    return {value, 0, 0, 0};
}

json OptionalText(const char* text)
{
    return text ? json(text) : json(nullptr);
}

} // namespace

std::unique_ptr<QorfxBackend> QorfxQRFXBackend::Load(QorIShader& shader, const std::function<bool()>& load,
                                                     bool& loaded)
{
    std::vector<std::string> messages;
    {
        MessageCapture capture(messages);
        loaded = load();
    }
    QorIShaderEffect* effect = shader.GetIShaderEffect();
    if (shader.GetImplementation() != QorFxQRFX || !effect || effect->GetImplementation() != QorFxQRFX)
        return nullptr;
    return std::unique_ptr<QorfxBackend>(
        new QorfxQRFXBackend(*static_cast<QorNvFXEffect*>(effect), std::move(messages)));
}

json QorfxQRFXBackend::Techniques(bool validate)
{
    MessageCapture capture(m_messages);
    json techniques = json::array();
    nvFX::IContainer* container = m_effect.GetContainer();
    for (int index = 0; nvFX::ITechnique* technique = container ? container->findTechnique(index) : nullptr;
         ++index) {
        json entry = {{"index", index}, {"name", technique->getName()}};
        entry["valid"] = validate ? json(technique->validate()) : json(nullptr);
        techniques.push_back(entry);
    }
    return techniques;
}

void QorfxQRFXBackend::DescribeParameter(int index, json& entry)
{
    auto* defaults = static_cast<QorNvFXShaderParameters*>(m_effect.GetParameters());
    nvFX::IUniform* uniform = defaults ? defaults->GetUniform(index) : nullptr;
    nvFX::IAnnotation* annotations = uniform ? uniform->annotations() : nullptr;
    if (!annotations)
        return;
    entry["widget"] = OptionalText(annotations->getAnnotationString("UIWidget"));
    entry["uiName"] = OptionalText(annotations->getAnnotationString("UIName"));
    // GLSL shader objects answer no slider range; the annotations hold it.
    nvFX::IAnnotationEx* listed = annotations->getExInterface();
    float range[3] = {0, 0, 0};
    if (!entry.contains("min") && listed && listed->getAnnotationFloatv("UIMin", &range[0], 1) == 1 &&
        listed->getAnnotationFloatv("UIMax", &range[1], 1) == 1) {
        listed->getAnnotationFloatv("UIStep", &range[2], 1);
        entry["min"] = range[0];
        entry["max"] = range[1];
        entry["step"] = range[2];
    }
    if (const char* file = annotations->getAnnotationString("defaultFile"))
        entry["defaultFile"] = file;
}

namespace {

// The effect's constant buffers, global ones (shared with other effects) marked, with
// their members: what drives them is the renderer's or the effect's, never a user's.
json ConstantBuffersOf(QorNvFXEffect& effect)
{
    json buffers = json::array();
    nvFX::IContainer* container = effect.GetContainer();
    nvFX::IContainerEx* listed = container ? container->getExInterface() : nullptr;
    for (int buffer = 0; listed && buffer < listed->getNumBuffers(); ++buffer) {
        json members = json::array();
        for (int i = 0; nvFX::IUniform* member = listed->getBufferMember(buffer, i); ++i)
            members.push_back({{"name", member->getName()},
                               {"semantic", member->getSemantic()},
                               {"used", member->isUsedBy(nvFX::IUniform::TargetAny)}});
        buffers.push_back(
            {{"name", listed->getBufferName(buffer)}, {"global", listed->isBufferGlobal(buffer)}, {"members", members}});
    }
    return buffers;
}

} // namespace

void QorfxQRFXBackend::DescribeEffect(json& description)
{
    json semantics = json::array();
    for (int which = 0; which < QorFeedCount; ++which)
        if (nvFX::IUniform* uniform = m_effect.GetFeedUniform(static_cast<QorFeed>(which)))
            semantics.push_back({{"parameter", uniform->getName()}, {"semantic", uniform->getSemantic()}});
    json named = json::array();
    for (int which = 0; which < QorNvFXNamedUniformCount; ++which)
        if (nvFX::IUniform* uniform = m_effect.GetNamedUniform(static_cast<QorNvFXNamedUniform>(which)))
            named.push_back({{"name", uniform->getName()}, {"used", uniform->isUsedBy(nvFX::IUniform::TargetAny)}});
    json warnings = json::array();
    for (const QorString& warning : m_effect.GetLoadWarnings())
        warnings.push_back(warning.c_str());

    description["semantics"] = semantics;
    description["interfaces"] = json::array();
    description["environment"] = EnvironmentOf(m_effect).State();
    description["lights"] = m_effect.GetLightCount();
    description["hasLightArray"] = m_effect.GetNamedUniform(QorNvFXLightPosition) != nullptr;
    description["namedUniforms"] = named;
    description["constantBuffers"] = ConstantBuffersOf(m_effect);
    description["loadWarnings"] = warnings;
    description["loadMessages"] = m_loadMessages;
    description["messages"] = m_messages;
}

std::string QorfxQRFXBackend::CompileErrors()
{
    std::string errors;
    for (const std::string& message : m_loadMessages)
        errors += message + "\n";
    return errors;
}

std::vector<QorfxMissingInclude> QorfxQRFXBackend::MissingIncludes()
{
    // nvFX names a missing include as: SOURCE(LINE): error: include 'NAME' not found
    static const std::string kBefore = "error: include '", kAfter = "' not found";
    std::vector<QorfxMissingInclude> missing;
    for (const std::string& message : m_loadMessages) {
        const size_t start = message.find(kBefore);
        const size_t end = start == std::string::npos ? start : message.rfind(kAfter);
        if (end == std::string::npos || end < start + kBefore.size())
            continue;
        // Only names with a file suffix are looked for (".glslfxh", ".hfx"); the load's
        // error names any other.
        const std::string name = message.substr(start + kBefore.size(), end - start - kBefore.size());
        for (const std::string suffix : {".glslfxh", ".hfx"})
            if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
                missing.push_back({name, true});
    }
    return missing;
}

std::string QorfxQRFXBackend::SetEnvironment(const QorfxView& view, unsigned int skyTexture)
{
    const Environment environment = EnvironmentOf(m_effect);
    if (environment.State() == QorEnvironmentNone)
        return "";
    const bool cube = view.environment.empty();
    if (cube && !environment.cube)
        return "the effect has no cube environment (\"AUTOMATICENVIRONMENTMAP\")";
    MessageCapture capture(m_messages);
    SetColour(environment.ambient, QorfxEnvironmentAmbient(view));
    SetInt(environment.tracking, cube ? 1 : 0);
    if (environment.cube) {
        nvFX::IUniformEx* sampler = environment.cube->getExInterface();
        environment.cube->setSamplerResource(cube ? skyTexture : 0, sampler ? sampler->getSamplerUnit() : 0);
    }
    return "";
}

bool QorfxQRFXBackend::Validate()
{
    MessageCapture capture(m_messages);
    nvFX::IContainer* container = m_effect.GetContainer();
    // From the current technique on, the first that validates becomes current.
    bool reached = false;
    for (int index = 0; nvFX::ITechnique* technique = container ? container->findTechnique(index) : nullptr;
         ++index) {
        reached = reached || technique == m_effect.GetCurrentTechnique();
        if (reached && technique->validate()) {
            m_effect.setTechnique(index);
            return true;
        }
    }
    return false;
}

void QorfxQRFXBackend::SetMatrices(const QorfxView& view)
{
    const auto matrices = QorfxMatrices(view);
    for (const auto& [which, matrix] : kFedMatrices)
        if (nvFX::IUniform* uniform = m_effect.GetFeedUniform(which))
            uniform->setMatrix4f(matrices[matrix].Transposed().Data()); // nvFX takes columns first
    if (nvFX::IUniform* eye = m_effect.GetFeedUniform(QorFeedEyePosition)) {
        const Qor4x4Matrix& viewInverse = matrices[QorfxViewInverse];
        SetElements(eye, {{viewInverse.At(0, 3), viewInverse.At(1, 3), viewInverse.At(2, 3), 1.0f}});
    }
}

// The kinds as QorLighting.glslfxh tells them: w = 0 for a directional light, an inner
// cone above the outer one for a spot, equal cones (0) for a point light. Light
// uniforms without values here (ambient, linear and quadratic falloff, ...) are zero.
void QorfxQRFXBackend::SetLights()
{
    std::array<std::vector<std::array<float, 4>>, QorNvFXNamedUniformCount> rows;
    const int count = m_effect.GetLightCount();
    for (int slot = 0; slot < count; ++slot) {
        const unsigned int kind = (m_effect.GetLightModel() >> (2 * slot)) & 3u;
        const QorfxLight light = QorfxPlaceLight(slot, kind);
        const bool spot = kind == QorLightSpot;
        rows[QorNvFXLightPosition].push_back(Vector(light.position, kind == QorLightDirectional ? 0.0f : 1.0f));
        rows[QorNvFXLightDirection].push_back(Vector(light.direction, 0));
        rows[QorNvFXLightColor].push_back(Vector(light.color, 1));
        rows[QorNvFXLightSpecularColor].push_back(Vector(light.specularColor, 1));
        rows[QorNvFXLightAxialFalloffConstant].push_back(Scalar(light.falloffConstant));
        rows[QorNvFXLightRadialInnerCone].push_back(Scalar(spot ? light.innerCone : 0));
        rows[QorNvFXLightRadialOuterCone].push_back(Scalar(spot ? light.outerCone : 0));
        rows[QorNvFXLightRadialFalloffExponent].push_back(Scalar(light.coneExponent));
    }
    for (int which = QorNvFXLightPosition; which <= QorNvFXLightRadialFalloffExponent; ++which)
        SetElements(m_effect.GetNamedUniform(static_cast<QorNvFXNamedUniform>(which)), rows[which]);
    SetInt(m_effect.GetNamedUniform(QorNvFXLightCount), count);
}

void QorfxQRFXBackend::Draw(const QorfxView& view, const std::vector<QorfxVertex>& mesh)
{
    MessageCapture capture(m_messages);
    SetLights();
    SetMatrices(view);
    m_effect.UploadCurrentParameters(false);
    nvFX::ITechnique* technique = m_effect.GetCurrentTechnique();
    for (int index = 0; technique && index < technique->getNumPasses(); ++index) {
        nvFX::IPass* pass = technique->getPass(index);
        if (!pass || !pass->setup())
            continue;
        QorfxDrawMesh(mesh);
        pass->restore();
    }
}

#include "QorTranslateCheck.h"

#include "QorTranslateText.h"

#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaderShared/QorMaterialParameters.h"
#include "QorVisShaderShared/QorMaterialValue.h"

#include "QorVisShaders/QorShaderValueType.h"
#include "QorSystem/QorStrings.h"

#include <nvFX/IAnnotation.h>
#include <nvFX/IAnnotationEx.h>
#include <nvFX/IContainer.h>
#include <nvFX/IUniform.h>
#include <nvFX/nvFX.h>

#include <cmath>
#include <cstring>
#include <memory>

namespace {

const char* const kStringAnnotations[] = {"UIName", "UIWidget"};
const char* const kNumberAnnotations[] = {"UIMin", "UIMax", "UIStep"};

// Releases an effect made for the check; it is in no registry.
struct EffectRelease
{
    void operator()(QorMaterialEffect* effect) const { effect->Release(); }
};

// Collects the GLSL runtime's messages while alive; the previous sink gets them back after.
class MessageCapture
{
public:
    explicit MessageCapture(std::vector<std::string>& messages)
        : m_previous(nvFX::setMessageSink([&messages](const char* message) {
              std::string line = message ? message : "";
              while (!line.empty() && line.back() == '\n')
                  line.pop_back();
              if (line.find("error") != std::string::npos)
                  messages.push_back(line);
          }))
    {
    }
    ~MessageCapture() { nvFX::setMessageSink(m_previous); }
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;

private:
    nvFX::MessageSink m_previous;
};

std::string TypeWord(int type)
{
    if (type == QorValueFloat)
        return "float";
    if (type == QorValueTexture)
        return "texture";
    return QorIsColorType(type) ? "colour of " + std::to_string(QorColorComponentCount(type)) : "type " + std::to_string(type);
}

std::string ValueText(const QorMaterialValue& value)
{
    if (value.Type() == QorValueTexture)
        return value.File() && *value.File() ? "\"" + std::string(value.File()) + "\"" : "no file";
    std::string text;
    const int count = value.Type() == QorValueFloat ? 1 : value.ComponentCount();
    for (int at = 0; at < count; ++at)
        text += (at ? ", " : "") + QorTranslateText::Number(value.Components()[at]);
    return text;
}

bool SameValue(const QorMaterialValue& cgfx, const QorMaterialValue& glsl)
{
    if (cgfx.Type() == QorValueTexture) {
        const char* a = cgfx.File() ? cgfx.File() : "";
        const char* b = glsl.File() ? glsl.File() : "";
        return std::strcmp(a, b) == 0;
    }
    const int count = cgfx.Type() == QorValueFloat ? 1 : cgfx.ComponentCount();
    for (int at = 0; at < count; ++at)
        if (std::fabs(cgfx.Components()[at] - glsl.Components()[at]) > 1e-6f * (1.0f + std::fabs(cgfx.Components()[at])))
            return false;
    return true;
}

// The UI annotations of one parameter on both roads; a difference per annotation.
void CompareAnnotations(const std::string& name, CGparameter cgfx, nvFX::IUniform* glsl,
                        std::vector<std::string>& errors)
{
    nvFX::IAnnotation* annotations = glsl ? glsl->annotations() : nullptr;
    nvFX::IAnnotationEx* extended = annotations ? annotations->getExInterface() : nullptr;
    for (const char* key : kStringAnnotations) {
        const CGannotation annotation = cgGetNamedParameterAnnotation(cgfx, key);
        const char* a = annotation && cgGetAnnotationType(annotation) == CG_STRING ? cgGetStringAnnotationValue(annotation) : nullptr;
        const char* b = annotations ? annotations->getAnnotationString(key) : nullptr;
        if ((a == nullptr) != (b == nullptr) || (a && std::strcmp(a, b) != 0))
            errors.push_back("parameter '" + name + "': " + key + " is " + (a ? "\"" + std::string(a) + "\"" : "absent") +
                             " in the CgFX effect, " + (b ? "\"" + std::string(b) + "\"" : "absent") + " in the GLSL one");
    }
    for (const char* key : kNumberAnnotations) {
        const CGannotation annotation = cgGetNamedParameterAnnotation(cgfx, key);
        int count = 0;
        const float* a = annotation ? cgGetFloatAnnotationValues(annotation, &count) : nullptr;
        float b = 0;
        const bool hasB = extended && extended->getAnnotationFloatv(key, &b, 1) > 0;
        const bool hasA = a && count > 0;
        if (hasA != hasB || (hasA && std::fabs(a[0] - b) > 1e-6f * (1.0f + std::fabs(a[0]))))
            errors.push_back("parameter '" + name + "': " + key + " is " +
                             (hasA ? QorTranslateText::Number(a[0]) : std::string("absent")) + " in the CgFX effect, " +
                             (hasB ? QorTranslateText::Number(b) : std::string("absent")) + " in the GLSL one");
    }
}

} // namespace

bool QorCheckTranslation(const std::string& name, const std::string& text, QorShaderEffect& cgfx,
                         std::vector<std::string>& errors)
{
    const std::size_t before = errors.size();
    std::unique_ptr<QorNvFXEffect, EffectRelease> glsl(QorNvFXEffect::AddShaderEffect(nullptr));
    if (!glsl) {
        errors.push_back("the GLSL effect could not be made");
        return false;
    }
    glsl->SetName(_strdup(name.c_str()));
    glsl->setBuffer(text.c_str());
    QorMaterialParameters* glslSet = nullptr;
    {
        std::vector<std::string> messages;
        MessageCapture capture(messages);
        glslSet = glsl->Load();
        if (!glslSet) {
            errors.push_back("the translation does not load through the GLSL effect runtime:");
            errors.insert(errors.end(), messages.begin(), messages.end());
            return false;
        }
    }
    QorMaterialParameters* cgfxSet = cgfx.GetParameters();
    const int cgfxCount = cgfxSet ? cgfxSet->GetNbParameters() : 0, glslCount = glslSet->GetNbParameters();
    for (int index = 1; index < std::max(cgfxCount, glslCount); ++index) {
        const char* cgfxName = index < cgfxCount ? cgfxSet->GetParameterName(index) : nullptr;
        const char* glslName = index < glslCount ? glslSet->GetParameterName(index) : nullptr;
        if (!cgfxName || !glslName || std::strcmp(cgfxName, glslName) != 0) {
            errors.push_back("parameter " + std::to_string(index) + " is " +
                             (cgfxName ? "'" + std::string(cgfxName) + "'" : "missing") + " in the CgFX effect, " +
                             (glslName ? "'" + std::string(glslName) + "'" : "missing") + " in the GLSL one");
            continue;
        }
        const QorMaterialValue* a = cgfxSet->ValueAt(index);
        const QorMaterialValue* b = glslSet->ValueAt(index);
        if (!a || !b)
            continue;
        if (a->Type() != b->Type())
            errors.push_back("parameter '" + std::string(cgfxName) + "' is a " + TypeWord(a->Type()) +
                             " in the CgFX effect, a " + TypeWord(b->Type()) + " in the GLSL one");
        else if (!SameValue(*a, *b))
            errors.push_back("parameter '" + std::string(cgfxName) + "' defaults to " + ValueText(*a) +
                             " in the CgFX effect, to " + ValueText(*b) + " in the GLSL one");
        CompareAnnotations(cgfxName, cgfx.GetUserParameter(index), glsl->GetContainer()->findUniform(glslName), errors);
    }
    return errors.size() == before;
}

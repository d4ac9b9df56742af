// The translator's road: the CgFX effect compiled as the CgFX road compiles it, its
// light and environment model set, each technique's programs compiled again for GLSL,
// the effect scope written from Cg's reflection, and the result checked.
#include "QorVisShaderTranslate/QorCgFXTranslator.h"

#include "QorCgFXSourceLines.h"
#include "QorTranslateCheck.h"
#include "QorTranslatePasses.h"
#include "QorTranslateScope.h"

#include "QorVisShaderCGFX/QorShaderEffect.h"
#include "QorVisShaderShared/QorMaterialParameters.h"

#include <memory>
#include <set>
#include <sstream>

namespace {

struct EffectRelease
{
    void operator()(QorShaderEffect* effect) const { effect->Release(); }
};

std::string BaseName(const std::string& path)
{
    const std::size_t slash = path.find_last_of("\\/");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// "plastic.cgfx" gives "plastic.glslfx".
std::string GlslfxName(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return (dot == std::string::npos || dot == 0 ? name : name.substr(0, dot)) + ".glslfx";
}

std::string LightWords(unsigned int code)
{
    static const char* const kinds[] = {"", "point", "spot", "dir"};
    std::string words;
    for (int slot = 0; slot < 8 && (code & 3u); ++slot, code >>= 2)
        words += (words.empty() ? "" : ",") + std::string(kinds[code & 3u]);
    return words.empty() ? "none" : words;
}

// The Cg listing of a failed compilation, its places given as "file(line)".
void CompileErrors(const std::string& file, const QorShaderEffect& effect, std::vector<std::string>& errors)
{
    std::istringstream listing(effect.GetCompileErrors().c_str());
    for (std::string line; std::getline(listing, line);)
        if (!line.empty())
            errors.push_back((line[0] == '(' ? file : "") + line);
    for (const QorString& missing : effect.GetMissingIncludes())
        errors.push_back(file + ": include \"" + std::string(missing.c_str()) + "\" is found nowhere on the search paths");
    if (errors.empty())
        errors.push_back(file + ": does not compile");
}

QorCgFXTranslation Translate(QorShaderEffect& effect, const std::string& file, const QorCgFXTranslator::Options& options)
{
    QorCgFXTranslation report;
    QorShaderParameters* compiled = effect.GenerateShader();
    if (!compiled) {
        CompileErrors(file, effect, report.errors);
        return report;
    }
    // The light and environment model the programs are made for, as a renderer sets it.
    effect.updateLightModel(options.lightCode);
    const bool hasEnvironment = effect.GetEnvironmentState() != QorEnvironmentNone;
    if (hasEnvironment)
        effect.updateEnvModel(options.cubeEnvironment ? QorEnvironmentCube : QorEnvironmentColor);
    const QorCgFXSourceLines lines(file, effect.GetSource().c_str());
    std::set<std::string> visible;
    QorMaterialParameters* set = effect.GetParameters();
    for (int index = 1; set && index < set->GetNbParameters(); ++index) {
        visible.insert(set->GetParameterName(index));
        report.parameters.push_back(set->GetParameterName(index));
    }
    QorTranslateScope scope(effect.GetCgEffect(), lines, visible);
    QorTranslatePasses passes(effect.GetCgContext(), lines, scope);
    bool anyTechnique = false;
    int index = 0;
    for (CGtechnique technique = cgGetFirstTechnique(effect.GetCgEffect()); technique;
         technique = cgGetNextTechnique(technique), ++index)
        anyTechnique = passes.Translate(technique, index, report) || anyTechnique;
    if (!anyTechnique)
        report.errors.push_back(file + ": no technique could be translated");
    const bool declared = scope.DeclareVisible(report.errors);
    if (!declared || !scope.CheckNames(passes.Programs(), report.errors) || !anyTechnique)
        return report;
    report.notes = scope.Notes();
    if (cgGetNamedEffectParameter(effect.GetCgEffect(), "lights"))
        report.notes.push_back("lights are drawn as the light configuration \"" + LightWords(options.lightCode) +
                               "\" draws them: under other lights the GLSL effect draws otherwise");
    if (scope.UsesEnvironment())
        report.notes.push_back(std::string("the environment is drawn as the ") +
                               (options.cubeEnvironment ? "cube-map" : "colour") +
                               " environment draws it: under the other kind the GLSL effect draws otherwise");
    const std::string glslfx = GlslfxName(BaseName(file));
    std::string text = "// " + glslfx + ": translated from " + file + " by the CgFX translator.\n";
    for (const std::string& note : report.notes)
        text += "// " + note + "\n";
    // Cg writes GLSL 1.10 that passes values through gl_TexCoord; glslang refuses to link
    // those in compatibility profiles, and constant buffers need 1.40: 1.40 has both.
    text += "\nGLSLShader\n{\n    #version 140\n}\n\n" + scope.Text() + passes.Text();
    if (!QorCheckTranslation(glslfx, text, effect, report.errors))
        return report;
    report.text = std::move(text);
    report.translated = true;
    return report;
}

} // namespace

bool QorCgFXTranslation::Whole() const
{
    if (!translated || !droppedStates.empty())
        return false;
    for (const Technique& technique : techniques)
        if (!technique.translated)
            return false;
    return true;
}

QorCgFXTranslation QorCgFXTranslator::TranslateFile(const std::string& path) const
{
    std::unique_ptr<QorShaderEffect, EffectRelease> effect(QorShaderEffect::AddShaderEffect(nullptr));
    if (!effect) {
        QorCgFXTranslation report;
        report.errors.push_back(path + ": the CgFX effect could not be made");
        return report;
    }
    effect->setFileName(QorString(path.c_str()));
    return Translate(*effect, BaseName(path), m_options);
}

QorCgFXTranslation QorCgFXTranslator::TranslateText(const std::string& name, const std::string& source) const
{
    std::unique_ptr<QorShaderEffect, EffectRelease> effect(QorShaderEffect::AddShaderEffect(nullptr));
    if (!effect) {
        QorCgFXTranslation report;
        report.errors.push_back(name + ": the CgFX effect could not be made");
        return report;
    }
    effect->setBuffer(source.c_str());
    return Translate(*effect, name, m_options);
}

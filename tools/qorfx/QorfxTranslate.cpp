#include "QorfxTranslate.h"

#include "QorfxDescribe.h"
#include "QorfxMaterial.h"
#include "QorfxOutput.h"
#include "QorfxRender.h"

#include "QorSystem/QorFiles.h"
#include "QorVisShaderTranslate/QorCgFXTranslator.h"

#include <cstdio>
#include <filesystem>

using nlohmann::json;
namespace fs = std::filesystem;

json QorfxTranslationJson(const std::string& effect, const QorCgFXTranslation& translation)
{
    json report = {{"effect", effect},
                   {"translated", translation.translated},
                   {"whole", translation.Whole()},
                   {"techniques", json::array()},
                   {"parameters", translation.parameters},
                   {"droppedStates", json::array()},
                   {"notes", translation.notes},
                   {"errors", translation.errors}};
    for (const QorCgFXTranslation::Technique& technique : translation.techniques) {
        json entry = {{"name", technique.name}, {"translated", technique.translated}, {"passes", technique.passes}};
        if (!technique.translated)
            entry["why"] = technique.why;
        report["techniques"].push_back(entry);
    }
    for (const QorCgFXTranslation::DroppedState& state : translation.droppedStates)
        report["droppedStates"].push_back(
            {{"technique", state.technique}, {"pass", state.pass}, {"state", state.state}, {"where", state.where}});
    return report;
}

void QorfxPrintTranslation(const json& report, const char* indent)
{
    for (const json& technique : report["techniques"]) {
        if (technique["translated"]) {
            std::string passes;
            for (const json& pass : technique["passes"])
                passes += (passes.empty() ? "" : ", ") + pass.get<std::string>();
            std::printf("%stechnique %s: translated (passes %s)\n", indent, technique["name"].get<std::string>().c_str(),
                        passes.c_str());
        } else {
            std::printf("%stechnique %s: left out\n%s  %s\n", indent, technique["name"].get<std::string>().c_str(),
                        indent, technique["why"].get<std::string>().c_str());
        }
    }
    std::string parameters;
    for (const json& name : report["parameters"])
        parameters += (parameters.empty() ? "" : ", ") + name.get<std::string>();
    if (report["translated"])
        std::printf("%sparameters carried: %s\n", indent, parameters.empty() ? "none" : parameters.c_str());
    for (const json& state : report["droppedStates"])
        std::printf("%sstate dropped: %s in pass %s of %s (%s): the GLSL effect runtime has no such state\n",
                    indent, state["state"].get<std::string>().c_str(), state["pass"].get<std::string>().c_str(),
                    state["technique"].get<std::string>().c_str(), state["where"].get<std::string>().c_str());
    for (const json& note : report["notes"])
        std::printf("%snote: %s\n", indent, note.get<std::string>().c_str());
    for (const json& error : report["errors"])
        std::printf("%serror: %s\n", indent, error.get<std::string>().c_str());
}

namespace {

// Translates one effect file and writes its translation; the report says what happened.
json TranslateOne(const std::string& path, const QorCgFXTranslator& translator, const QorfxTranslateOptions& options)
{
    std::string source, why;
    if (!QorReadRegularFile(path.c_str(), source, kQorfxMaxSourceBytes, &why)) {
        QorCgFXTranslation failed;
        failed.errors.push_back(path + ": cannot read the effect (" + why + ")");
        return QorfxTranslationJson(path, failed);
    }
    // Includes are found as the CgFX road finds them from the effect's folder.
    QorfxAddSearchFolders(path);
    QorCgFXTranslation translation;
    {
        // Loads print the error file's path and the GLSL runtime's notes there.
        QorfxStdoutSilencer silence;
        translation = translator.TranslateText(fs::path(path).filename().string(), source);
    }
    json report = QorfxTranslationJson(path, translation);
    if (!translation.translated)
        return report;
    const std::string output = (fs::path(options.folder) / fs::path(path).stem()).string() + ".glslfx";
    std::error_code same;
    if (fs::equivalent(fs::path(path), fs::path(output), same)) {
        report["errors"].push_back(output + ": is the effect itself; the input is never changed");
        report["whole"] = false;
        return report;
    }
    // A hand-written twin beside its original must not vanish under a translation.
    if (!options.force && fs::symlink_status(fs::path(output), same).type() != fs::file_type::not_found) {
        report["errors"].push_back(output + ": exists; the translation is not written over it (--force replaces it)");
        report["whole"] = false;
        return report;
    }
    if (!QorfxOutput::WriteFile(output, translation.text, why)) {
        report["errors"].push_back(why);
        report["whole"] = false;
        return report;
    }
    report["written"] = output;
    return report;
}

// Each original beside its translation.
int Preview(const std::vector<json>& reports, const QorfxTranslateOptions& options)
{
    std::vector<QorfxTile> tiles;
    for (const json& report : reports) {
        const std::string effect = report["effect"].get<std::string>();
        const std::string written = report.contains("written") ? report["written"].get<std::string>() : "";
        tiles.push_back({fs::path(effect).filename().string(),
                         [effect](QorfxLoadProblem& problem) { return QorfxMaterial::Load(effect, problem); }});
        tiles.push_back({fs::path(effect).stem().string() + ".glslfx", [written](QorfxLoadProblem& problem) {
                             if (written.empty()) {
                                 problem = {"missing", "no translation was written", ""};
                                 return std::unique_ptr<QorfxMaterial>();
                             }
                             return QorfxMaterial::Load(written, problem);
                         }});
    }
    QorfxRenderOptions render = options.render;
    render.columns = 2;
    return QorfxRenderTiles(tiles, options.preview, render);
}

} // namespace

int QorfxTranslate(const std::vector<std::string>& effects, const QorfxTranslateOptions& options)
{
    QorCgFXTranslator::Options translation;
    QorfxView view;
    std::string problem;
    if (!QorfxLightCode(options.render.lights, translation.lightCode) ||
        !QorfxMakeView(options.render, view, problem)) {
        std::fprintf(stderr, "qorfx: %s\n",
                     problem.empty() ? "--lights takes up to 8 of point, spot, dir" : problem.c_str());
        return 2;
    }
    translation.cubeEnvironment = view.environment.empty();
    if (!options.preview.empty() && QorfxImageFormat(options.preview).empty()) {
        std::fprintf(stderr, "qorfx: %s: the preview needs an image extension such as .png\n", options.preview.c_str());
        return 2;
    }
    std::error_code error;
    fs::create_directories(options.folder, error);
    if (!fs::is_directory(options.folder)) {
        std::fprintf(stderr, "qorfx: %s: not a folder the translations can be written into\n", options.folder.c_str());
        return 1;
    }
    const QorCgFXTranslator translator(translation);
    std::vector<json> reports;
    bool whole = true;
    for (std::size_t at = 0; at < effects.size(); ++at) {
        if (effects.size() > 1)
            std::fprintf(stderr, "qorfx: translating %zu/%zu %s\n", at + 1, effects.size(), effects[at].c_str());
        reports.push_back(TranslateOne(effects[at], translator, options));
        whole = whole && reports.back()["whole"].get<bool>();
        if (!options.json) {
            const json& report = reports.back();
            std::printf("%s%s\n", report["effect"].get<std::string>().c_str(),
                        report.contains("written") ? (" -> " + report["written"].get<std::string>()).c_str() : "");
            QorfxPrintTranslation(report, "  ");
        }
    }
    if (options.json)
        std::printf("%s\n", QorfxJsonText(json(reports)).c_str());
    const int preview = options.preview.empty() ? 0 : Preview(reports, options);
    return whole && preview == 0 ? 0 : 1;
}

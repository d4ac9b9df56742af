#include "QorfxMigrate.h"

#include "QorfxDescribe.h"
#include "QorfxDocument.h"
#include "QorfxPack.h"
#include "QorfxRender.h"

#include "QorSystem/QorFiles.h"
#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorShaderFiles.h"
#include "QorVisShaders/QorShaderQRFXMigration.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

using nlohmann::json;
namespace fs = std::filesystem;

namespace {

// A stored value the GLSL material does not hold as it was: why.
std::string LossOf(QorIShaderParameters* migrated, const char* name, int type, const json& value, json& entry)
{
    const int index = migrated ? migrated->GetParameterIndex(name) : -1;
    if (index < 1)
        return "missing";
    const int newType = migrated->GetParameterType(index);
    if (newType != type) {
        entry["newType"] = newType;
        return "type";
    }
    return QorfxValueJson(*migrated, index, type) == value ? "" : "value";
}

// The report of material `index` of a document read into GLSL shaders.
json ReportMaterial(QorfxDocument& document, std::size_t index)
{
    QorShaderQRFXMigration* migration = document.Migration();
    const bool registered = migration && index < migration->GetEntryCount();
    const char* stored = registered ? migration->GetEntryName(index) : nullptr;
    const QorUnicodeString effect = QorShaderQRFXMigration::GlslfxName(QorUnicodeString(stored ? stored : ""));
    QorString found;
    json report = {{"stored", stored ? stored : ""},
                   {"effect", effect.c_str()},
                   {"file", QorFindShaderFile(QorString(effect.c_str()), found) ? json(QorNativePath(found.c_str()))
                                                                               : json(nullptr)},
                   {"carried", json::array()},
                   {"lost", json::array()},
                   {"textures", json::array()}};
    QorfxMaterial* material = document.Material(index);
    report["name"] = document.Name(index);
    report["loaded"] = material != nullptr;
    if (!material)
        report["problem"] = document.Problem(index).message;
    QorIShaderParameters* migrated = material ? material->Shader().GetIShaderParameters() : nullptr;
    QorIShaderParameters* values = registered ? migration->GetEntryParameters(index) : nullptr;
    for (int at = 1; values && at < values->GetNbParameters(); ++at) {
        const char* name = values->GetParameterName(at);
        const int type = values->GetParameterType(at);
        json entry = {{"name", name ? name : ""}, {"type", type}, {"value", QorfxValueJson(*values, at, type)}};
        if (type == QorValueTexture)
            report["textures"].push_back({{"name", entry["name"]}, {"file", entry["value"]}});
        const std::string loss = name ? LossOf(migrated, name, type, entry["value"], entry) : "missing";
        if (!loss.empty())
            entry["reason"] = loss;
        report[loss.empty() ? "carried" : "lost"].push_back(entry);
    }
    report["migrated"] = material != nullptr && report["lost"].empty();
    return report;
}

std::string Text(const json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (value.is_null())
        return "-";
    if (value.is_array()) {
        std::string text;
        for (const json& item : value)
            text += (text.empty() ? "" : ",") + Text(item);
        return text;
    }
    return value.dump();
}

void PrintDocument(const json& report)
{
    std::printf("%s\n", report["document"].get<std::string>().c_str());
    if (report.contains("error")) {
        std::printf("  not read: %s\n", report["error"].get<std::string>().c_str());
        return;
    }
    static const std::map<std::string, std::string> reasons = {
        {"missing", "the GLSL effect has no such parameter"},
        {"type", "the GLSL effect's parameter has another type"},
        {"value", "the GLSL effect did not take the value"}};
    for (const json& material : report["materials"]) {
        std::printf("  %s: %s -> %s (%s)\n", material["name"].get<std::string>().c_str(),
                    material["stored"].get<std::string>().c_str(), material["effect"].get<std::string>().c_str(),
                    material["file"].is_null() ? "not found on the search paths" : Text(material["file"]).c_str());
        if (material.contains("problem"))
            std::printf("    not loaded: %s\n", material["problem"].get<std::string>().c_str());
        for (const char* list : {"carried", "lost"})
            for (const json& value : material[list]) {
                std::printf("    %-8s %-24s type %d  %s", list, Text(value["name"]).c_str(), value["type"].get<int>(),
                            Text(value["value"]).c_str());
                if (value.contains("reason"))
                    std::printf("  (%s)", reasons.at(value["reason"].get<std::string>()).c_str());
                std::printf("\n");
            }
        for (const json& texture : material["textures"])
            std::printf("    texture  %-24s %s\n", Text(texture["name"]).c_str(), Text(texture["file"]).c_str());
        if (material.contains("written"))
            std::printf("    written to %s\n", material["written"].get<std::string>().c_str());
    }
}

// "<stem>" in `folder`, or "<stem>-<n>" when an earlier material of the run took it.
std::string FolderFor(std::set<std::string>& taken, const std::string& folder, const std::string& stem)
{
    std::string name = stem;
    for (int n = 1; !taken.insert(name).second; ++n)
        name = stem + "-" + std::to_string(n);
    return (fs::path(folder) / name).string();
}

// Reads, migrates and reports one document; writes its migrated materials under
// `options.folder`. False when anything was not migrated or not written.
bool MigrateDocument(const std::string& path, const QorfxMigrateOptions& options, std::set<std::string>& taken,
                     json& report)
{
    report = {{"document", path}, {"materials", json::array()}};
    QorfxDocument document;
    QorfxLoadProblem problem;
    if (!document.Read(path, QorFxQRFX, problem)) {
        report["error"] = problem.message;
        report["migrated"] = false;
        return false;
    }
    bool migrated = true;
    for (std::size_t index = 0; index < document.Count(); ++index) {
        json material = ReportMaterial(document, index);
        // Only a material that came over whole is written: a partial one would pass for it.
        if (material["migrated"] && !options.folder.empty()) {
            const std::string folder = FolderFor(taken, options.folder, material["name"].get<std::string>());
            // The description names the GLSL effect's file and the document it came from.
            json description = QorfxDescribe(*document.Material(index), false);
            description["file"] = material["file"];
            description["migratedFrom"] = path;
            if (QorfxWriteUnpacked(folder, document.Package(), description, false) == 0)
                material["written"] = folder;
            else
                migrated = false;
        }
        migrated = migrated && material["migrated"].get<bool>();
        report["materials"].push_back(material);
    }
    report["migrated"] = migrated;
    return migrated;
}

// Each material drawn before (its CgFX effect) and after (its GLSL twin), side by side.
int Preview(const std::vector<std::string>& documents, const std::vector<json>& reports,
            const QorfxMigrateOptions& options)
{
    std::vector<QorfxTile> tiles;
    for (std::size_t d = 0; d < documents.size(); ++d) {
        // A document that could not be read still gets its pair of crossed tiles.
        const json& materials = reports[d]["materials"];
        const std::size_t count = std::max<std::size_t>(materials.size(), 1);
        for (std::size_t index = 0; index < count; ++index) {
            const std::string name = materials.empty() ? fs::path(documents[d]).stem().string()
                                                       : materials[index]["name"].get<std::string>();
            for (const QorFxImplementation implementation : {QorFxCgFX, QorFxQRFX})
                tiles.push_back({name + (implementation == QorFxCgFX ? ".cgfx" : ".glslfx"),
                                 [path = documents[d], implementation, index](QorfxLoadProblem& problem) {
                                     QorfxDocument document;
                                     if (!document.Read(path, implementation, problem) || index >= document.Count())
                                         return std::unique_ptr<QorfxMaterial>();
                                     problem = document.Problem(index);
                                     return document.TakeMaterial(index);
                                 }});
        }
    }
    QorfxRenderOptions render = options.render;
    render.columns = 2;
    return QorfxRenderTiles(tiles, options.preview, render);
}

} // namespace

int QorfxMigrate(const std::vector<std::string>& documents, const QorfxMigrateOptions& options)
{
    if (!options.preview.empty() && QorfxImageFormat(options.preview).empty()) {
        std::fprintf(stderr, "qorfx: %s: the preview needs an image extension such as .png\n", options.preview.c_str());
        return 2;
    }
    // Twins are looked for along the search paths, which take each document's folder and
    // the one above it, as render does for effects.
    for (const std::string& path : documents)
        QorfxAddSearchFolders(path);
    std::set<std::string> taken;
    std::vector<json> reports(documents.size());
    bool migrated = true;
    for (std::size_t d = 0; d < documents.size(); ++d) {
        if (documents.size() > 1)
            std::fprintf(stderr, "qorfx: migrating %zu/%zu %s\n", d + 1, documents.size(), documents[d].c_str());
        migrated = MigrateDocument(documents[d], options, taken, reports[d]) && migrated;
        if (!options.json)
            PrintDocument(reports[d]);
    }
    if (options.json)
        std::printf("%s\n", QorfxJsonText(json(reports)).c_str());
    const int preview = options.preview.empty() ? 0 : Preview(documents, reports, options);
    return migrated && preview == 0 ? 0 : 1;
}

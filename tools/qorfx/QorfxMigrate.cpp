#include "QorfxMigrate.h"

#include "QorfxDescribe.h"
#include "QorfxDocument.h"
#include "QorfxPack.h"
#include "QorfxRender.h"
#include "QorfxTranslate.h"

#include "QorSystem/QorFiles.h"
#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"
#include "QorVisShaders/QorShaderFiles.h"
#include "QorVisShaders/QorShaderValueType.h"
#include "QorVisShaderTranslate/QorCgFXTranslator.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

using nlohmann::json;
namespace fs = std::filesystem;

namespace {

using Outcome = QorShaderMigrationReport::Outcome;

// A twin the run translated from the CgFX source a document carries.
struct Translated
{
    std::string file; ///< where the search finds it (a folder of the tool's own); empty when not written
    std::string text;
    json report;      ///< QorfxTranslationJson's
};
using Translations = std::map<std::string, Translated>; // by the ".glslfx" name

// The folder of the run's translations, put in front of the search paths at the first
// call; empty when it cannot be made.
std::string TranslationFolder()
{
    static std::string folder;
    const std::string own = folder.empty() ? QorfxPrivateFolder() : "";
    if (!folder.empty() || own.empty())
        return folder;
    const std::string made = (fs::path(own) / "translated").string();
    std::error_code failed;
    std::string why;
    fs::create_directories(made, failed);
    if (!failed && QorfxAddPathFolders({made}, why))
        folder = made;
    return folder;
}

// Translates each effect `path` carries whose twin the search finds nowhere, into the
// run's folder, where the migration then finds it.
void TranslateMissingTwins(const std::string& path, Translations& translations)
{
    QorResourceZPKContainer package;
    QorStreamer stream;
    if (package.LoadFromFile(path.c_str(), stream, nullptr) != 0)
        return; // reading the document says why
    const QorCgFXTranslator translator;
    for (int id = 0; id < package.GetEntryCount(); ++id) {
        const QorResourceZPKContainer::Entry* entry = package.GetEntry(id);
        if (entry->kind != QorResourceZPKContainer::QorEffectEntry || !entry->hasSource)
            continue;
        const std::string stored = entry->name.c_str();
        const std::string twin = QorShaderQRFXMigration::GlslfxName(QorUnicodeString(stored.c_str())).c_str();
        QorString found;
        if (twin.empty() || translations.count(twin) || QorFindShaderFile(QorString(twin.c_str()), found))
            continue;
        Translated& translated = translations[twin];
        QorCgFXTranslation translation;
        {
            QorfxStdoutSilencer silence; // loads print the error file's path and notes there
            translation = translator.TranslateText(stored.substr(stored.find_last_of("\\/") + 1), entry->source);
        }
        translated.report = QorfxTranslationJson(stored, translation);
        if (!translation.translated)
            continue;
        const std::string folder = TranslationFolder();
        std::string why = folder.empty() ? "no folder of the tool's own could be made for the translation" : "";
        const std::string file = (fs::path(folder) / twin).string();
        if (why.empty() && QorfxOutput::WriteFile(file, translation.text, why)) {
            translated.file = file;
            translated.text = translation.text;
        } else {
            translated.report["errors"].push_back(why);
        }
    }
}

// How a value type reads in the report.
std::string TypeWord(int type)
{
    if (type == QorValueFloat)
        return "float";
    if (type == QorValueTexture)
        return "texture";
    if (QorIsColorType(type))
        return "colour" + std::to_string(QorColorComponentCount(type));
    return type == 0 ? "none" : "type " + std::to_string(type);
}

// How a GLSL parameter's type reads in the report.
std::string GlslWord(int type)
{
    if (QorIsColorType(type))
        return "vec" + std::to_string(QorColorComponentCount(type));
    return type == QorValueTexture ? "sampler" : TypeWord(type);
}

// The components a narrowed colour lost, or those a widened one kept from the GLSL effect.
std::string Components(int from, int to)
{
    static const char* const names[] = {"red", "green", "blue", "alpha"};
    std::string list;
    for (int component = std::min(from, to); component < std::max(from, to); ++component)
        list += std::string(list.empty() ? "" : component + 1 == std::max(from, to) ? " and " : ", ") +
                names[component];
    return list;
}

// Where the value went and why, as the report's "list" (carried, kept, lost), its
// "reason" code and the sentence the text report prints.
struct Verdict
{
    const char* list;
    const char* reason;
    std::string text;
};

Verdict VerdictOf(const QorShaderMigrationReport& material, const QorShaderMigrationReport::Value& value)
{
    const int stored = QorColorComponentCount(value.storedType), taken = QorColorComponentCount(value.newType);
    switch (value.outcome) {
    case Outcome::Carried:
        return {"carried", "", ""};
    case Outcome::CarriedNarrowed:
        return {"carried", "narrowed",
                Components(stored, taken) + " dropped: the GLSL parameter is a " + GlslWord(value.newType)};
    case Outcome::CarriedWidened:
        return {"carried", "widened",
                Components(stored, taken) + " kept from the GLSL effect: its parameter is a " + GlslWord(value.newType)};
    case Outcome::NoImage:
        return {"kept", "no-image", "stored without an image: the GLSL effect keeps its own texture"};
    case Outcome::NotAValue:
        return {"lost", "not-a-value", "the stored record holds no value"};
    case Outcome::NoEffect:
        return {"lost", "no-effect",
                material.found ? "no GLSL effect was loaded: " + material.glslfxName + " does not load"
                               : "no GLSL effect was loaded: " + material.glslfxName + " was not found"};
    case Outcome::NoParameter:
        return {"lost", "no-parameter", "the GLSL effect has no parameter of that name"};
    case Outcome::NotUserParameter:
        return {"lost", "not-user-parameter", value.why};
    case Outcome::OtherType:
        return {"lost", "type",
                "the GLSL effect's parameter is a " + GlslWord(value.newType) + ", the stored value a " +
                    TypeWord(value.storedType)};
    case Outcome::Unpaired:
        return {"lost", "unpaired", "the stored material holds no value for this name"};
    }
    return {"lost", "", ""};
}

// The report of material `index` of a document read into GLSL shaders: what the
// migration says it did with each stored value.
json ReportMaterial(QorfxDocument& document, std::size_t index)
{
    QorShaderQRFXMigration* migration = document.Migration();
    const QorShaderMigrationReport* done = migration ? migration->GetEntryReport(index) : nullptr;
    const char* stored = migration ? migration->GetEntryName(index) : nullptr;
    json report = {{"name", document.Name(index)},
                   {"stored", stored ? stored : ""},
                   {"effect", done ? done->glslfxName : ""},
                   {"file", done && done->found ? json(QorNativePath(done->foundPath.c_str())) : json(nullptr)},
                   {"loaded", done && done->loaded},
                   {"storedNames", done ? done->storedNames : 0},
                   {"storedValues", done ? done->storedValues : 0},
                   {"carried", json::array()},
                   {"kept", json::array()},
                   {"lost", json::array()},
                   {"textures", json::array()}};
    QorfxMaterial* material = document.Material(index);
    if (!material)
        report["problem"] = document.Problem(index).message;
    QorIShaderParameters* values = migration ? migration->GetEntryParameters(index) : nullptr;
    QorIShaderParameters* migrated = material ? material->Shader().GetIShaderParameters() : nullptr;
    for (std::size_t at = 0; done && at < done->values.size(); ++at) {
        const QorShaderMigrationReport::Value& value = done->values[at];
        const Verdict verdict = VerdictOf(*done, value);
        json entry = {{"name", value.name}, {"type", value.storedType}};
        entry["value"] = values && value.storedType != 0
                             ? QorfxValueJson(*values, static_cast<int>(at) + 1, value.storedType)
                             : json(nullptr);
        if (value.newType != 0)
            entry["newType"] = value.newType;
        // What the GLSL material holds now, read back from it.
        const int migratedAt = migrated ? migrated->GetParameterIndex(value.name.c_str()) : -1;
        if (std::string(verdict.list) == "carried" && migratedAt > 0)
            entry["migrated"] = QorfxValueJson(*migrated, migratedAt, value.newType);
        if (*verdict.reason) {
            entry["reason"] = verdict.reason;
            entry["why"] = verdict.text;
        }
        if (value.storedType == QorValueTexture && entry["value"].is_string())
            report["textures"].push_back({{"name", value.name}, {"file", entry["value"]}});
        report[verdict.list].push_back(entry);
    }
    report["migrated"] = material != nullptr && done && done->CarriedEverything();
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

// Where the GLSL effect of a material came from, or why there is none.
std::string Source(const json& material)
{
    if (material.contains("translation") && material["translation"]["translated"])
        return "translated from the CgFX source the document carries";
    if (!material["file"].is_null())
        return Text(material["file"]);
    return "not found on the search paths; add --path DIR for the folder that holds " +
           material["effect"].get<std::string>();
}

void PrintDocument(const json& report)
{
    std::printf("%s\n", report["document"].get<std::string>().c_str());
    if (report.contains("error")) {
        std::printf("  not read: %s\n", report["error"].get<std::string>().c_str());
        return;
    }
    for (const json& material : report["materials"]) {
        std::printf("  %s: %s -> %s (%s)\n", material["name"].get<std::string>().c_str(),
                    material["stored"].get<std::string>().c_str(), material["effect"].get<std::string>().c_str(),
                    Source(material).c_str());
        if (material.contains("translation"))
            QorfxPrintTranslation(material["translation"], "    translation: ");
        if (material.contains("problem"))
            std::printf("    not loaded: %s\n", material["problem"].get<std::string>().c_str());
        if (material["storedNames"] != material["storedValues"])
            std::printf("    the stored material holds %d names and %d values: names and values pair by position\n",
                        material["storedNames"].get<int>(), material["storedValues"].get<int>());
        for (const char* list : {"carried", "kept", "lost"})
            for (const json& value : material[list]) {
                std::printf("    %-8s %-24s %-8s %s", list, Text(value["name"]).c_str(),
                            TypeWord(value["type"].get<int>()).c_str(), Text(value["value"]).c_str());
                if (value.contains("why"))
                    std::printf("  (%s)", value["why"].get<std::string>().c_str());
                std::printf("\n");
            }
        for (const json& texture : material["textures"])
            std::printf("    texture  %-24s %s\n", Text(texture["name"]).c_str(), Text(texture["file"]).c_str());
        if (material.contains("written"))
            std::printf("    written to %s\n", material["written"].get<std::string>().c_str());
    }
}

// "<stem>", or "<stem>-<n>" when an earlier material of the run took it.
std::string FolderFor(std::set<std::string>& taken, const std::string& stem)
{
    std::string name = stem;
    for (int n = 1; !taken.insert(name).second; ++n)
        name = stem + "-" + std::to_string(n);
    return name;
}

// Reads, migrates and reports one document; writes its migrated materials under
// `options.folder`. False when anything was not migrated or not written.
bool MigrateDocument(const std::string& path, const QorfxMigrateOptions& options, std::set<std::string>& taken,
                     Translations& translations, json& report)
{
    if (options.translate)
        TranslateMissingTwins(path, translations);
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
        const auto translated = translations.find(material["effect"].get<std::string>());
        const bool onTranslation = translated != translations.end() &&
                                   (translated->second.file.empty() ||
                                    material["file"] == json(QorNativePath(translated->second.file.c_str())));
        if (onTranslation)
            material["translation"] = translated->second.report;
        // Only a material that came over whole is written: a partial one would pass for it.
        if (material["migrated"] && !options.folder.empty()) {
            const std::string sub = FolderFor(taken, material["name"].get<std::string>());
            // The description names the GLSL effect's file and the document it came from;
            // a translated twin is written beside it.
            json description = QorfxDescribe(*document.Material(index), false);
            description["file"] = material["file"];
            description["migratedFrom"] = path;
            QorfxOutput::Files twin;
            if (onTranslation) {
                twin.emplace_back(material["effect"].get<std::string>(), translated->second.text);
                description["file"] = material["effect"];
                description["translatedFrom"] = material["stored"];
            }
            if (QorfxWriteUnpacked(options.folder, sub, document.Package(), description, false, twin) == 0)
                material["written"] = (fs::path(options.folder) / sub).string();
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
    Translations translations;
    std::vector<json> reports(documents.size());
    bool migrated = true;
    for (std::size_t d = 0; d < documents.size(); ++d) {
        if (documents.size() > 1)
            std::fprintf(stderr, "qorfx: migrating %zu/%zu %s\n", d + 1, documents.size(), documents[d].c_str());
        migrated = MigrateDocument(documents[d], options, taken, translations, reports[d]) && migrated;
        if (!options.json)
            PrintDocument(reports[d]);
    }
    if (options.json)
        std::printf("%s\n", QorfxJsonText(json(reports)).c_str());
    const int preview = options.preview.empty() ? 0 : Preview(documents, reports, options);
    return migrated && preview == 0 ? 0 : 1;
}

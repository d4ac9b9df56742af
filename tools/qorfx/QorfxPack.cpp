#include "QorfxPack.h"

#include "QorfxDescribe.h"
#include "QorfxDocument.h"
#include "QorfxMaterial.h"
#include "QorfxOutput.h"
#include "QorfxTextures.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"

#include "QorSystem/QorFiles.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

int Fail(const std::string& message)
{
    std::fprintf(stderr, "qorfx: %s\n", message.c_str());
    return 1;
}

// A file name for something a package names: its last component only, so no name in
// a package can lead outside the folder.
std::string SafeFileName(const std::string& name, const std::string& fallback)
{
    std::string last = name.substr(name.find_last_of("/\\") + 1);
    if (last.empty() || last == "." || last == ".." || last.find('\0') != std::string::npos)
        return fallback;
    return last;
}

// `name`, or, when an earlier file of the unpacking took it, "<stem>-<n><extension>".
std::string UniqueName(std::set<std::string>& taken, const std::string& name)
{
    std::string unique = name;
    const fs::path path(name);
    for (int n = 1; !taken.insert(unique).second; ++n)
        unique = path.stem().string() + "-" + std::to_string(n) + path.extension().string();
    return unique;
}

} // namespace

int QorfxPack(const std::string& effect, const std::vector<std::string>& sets, const std::string& output)
{
    if (output.empty()) {
        std::fprintf(stderr, "qorfx: -o takes the package to write, not \"\"\n");
        return 2;
    }
    QorfxLoadProblem loading;
    std::unique_ptr<QorfxMaterial> material = QorfxMaterial::LoadForDocument(effect, loading);
    if (!material) {
        std::fputs(loading.details.c_str(), stderr);
        return Fail(loading.message);
    }
    for (const std::string& assignment : sets) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0) {
            std::fprintf(stderr, "qorfx: --set takes NAME=VALUE, not \"%s\"\n", assignment.c_str());
            return 2;
        }
        const std::string problem = material->Set(assignment.substr(0, equals), assignment.substr(equals + 1));
        if (!problem.empty())
            return Fail(problem);
    }
    const std::string problem = QorfxWritePackage({material.get()}, output);
    return problem.empty() ? 0 : Fail(problem);
}

std::string QorfxWritePackage(const std::vector<QorfxMaterial*>& materials, const std::string& output)
{
    QorResourceZPKContainer container;
    QorStreamer stream;
    stream.SetResourceZPKContainer(&container);
    for (QorfxMaterial* material : materials) {
        // The package stores each texture's image, read from the file the value names.
        const std::string problem = QorfxResolveTextureFiles(*material);
        if (!problem.empty())
            return problem;
        material->Shader().Stream(stream);
    }
    // GLSL shader objects write nothing to streams: such a package would hold no material.
    if (stream.GetBytes().empty())
        return materials.front()->File() + ": materials of this effect's implementation are not written to streams";
    std::string bytes, reason;
    if (container.SaveToMemory(stream, bytes, &reason) != 0 || !QorfxOutput::WriteFile(output, bytes, reason))
        return reason; // it names the package already
    return "";
}

int QorfxWriteUnpacked(const std::string& folder, const std::string& sub, const QorResourceZPKContainer& package,
                       nlohmann::json description, bool sources, const QorfxOutput::Files& extra)
{
    std::set<std::string> taken{"material.json"};
    QorfxOutput::Files files = extra;
    for (const auto& file : extra)
        taken.insert(file.first);
    std::map<std::string, std::string> writtenImages; // a texture's file name -> its PNG here
    for (int id = 0; id < package.GetEntryCount(); ++id) {
        const QorResourceZPKContainer::Entry* entry = package.GetEntry(id);
        const std::string name = SafeFileName(entry->name.c_str(), "resource" + std::to_string(id));
        if (entry->kind == QorResourceZPKContainer::QorEffectEntry) {
            if (sources)
                files.emplace_back(UniqueName(taken, name), entry->source);
        } else if (entry->image) {
            std::string png;
            if (!entry->image->Encode("PNG", png))
                return Fail(name + ": cannot encode the image as PNG");
            files.emplace_back(UniqueName(taken, fs::path(name).stem().string() + ".png"), std::move(png));
            writtenImages.emplace(name, files.back().first);
        }
    }
    // Texture values name where the package's images were read from (a cache that goes
    // with the process); in the folder they are the PNGs beside material.json.
    for (nlohmann::json& parameter : description["parameters"]) {
        const nlohmann::json& value = parameter["value"];
        const auto written = value.is_string() ? writtenImages.find(SafeFileName(value.get<std::string>(), ""))
                                               : writtenImages.end();
        if (parameter["type"] == QorValueTexture && written != writtenImages.end())
            parameter["value"] = written->second;
    }
    files.emplace_back("material.json", QorfxJsonText(description) + "\n");
    std::string why;
    return QorfxOutput::WriteFolder(folder, sub, files, why) ? 0 : Fail(why);
}

int QorfxUnpack(const std::string& package, const std::string& folder)
{
    if (folder.empty()) {
        std::fprintf(stderr, "qorfx: -C takes a folder, not \"\"\n");
        return 2;
    }
    // Everything is made before anything is written, so that a package that loads but
    // fails later leaves nothing behind.
    QorfxDocument document;
    QorfxLoadProblem problem;
    const bool read = document.Read(package, QorShaderManager::GetShaderVersion(), problem);
    if (read && !document.Material(0))
        problem = document.Problem(0);
    if (!read || !document.Material(0)) {
        std::fputs(problem.details.c_str(), stderr);
        return Fail(problem.message);
    }
    return QorfxWriteUnpacked(folder, "", document.Package(), QorfxDescribe(*document.Material(0), false), true);
}

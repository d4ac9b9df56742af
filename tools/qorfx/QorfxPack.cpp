#include "QorfxPack.h"

#include "QorfxDescribe.h"
#include "QorfxMaterial.h"
#include "QorfxTextures.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

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

} // namespace

int QorfxPack(const std::string& effect, const std::vector<std::string>& sets, const std::string& output)
{
    QorfxLoadProblem loading;
    std::unique_ptr<QorfxMaterial> material = QorfxMaterial::Load(effect, loading);
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
    // The package stores each texture's image, read from the file the value names.
    const std::string problem = QorfxResolveTextureFiles(*material);
    if (!problem.empty())
        return Fail(problem);
    QorResourceZPKContainer container;
    QorStreamer stream;
    stream.SetResourceZPKContainer(&container);
    material->Shader().Stream(stream);
    // GLSL shader objects write nothing to streams: such a package would hold no material.
    if (stream.GetBytes().empty())
        return Fail(effect + ": materials of this effect's implementation are not written to streams");
    std::string reason;
    if (container.SaveToFile(output.c_str(), stream, &reason) != 0)
        return Fail(output + ": " + reason);
    return 0;
}

int QorfxUnpack(const std::string& package, const std::string& folder)
{
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure)
        return Fail(folder + ": cannot create the folder");
    std::string error;
    QorResourceZPKContainer container;
    QorStreamer stream;
    if (container.LoadFromFile(package.c_str(), stream, &error) != 0)
        return Fail(package + ": " + error);
    for (int id = 0; id < container.GetEntryCount(); ++id) {
        const QorResourceZPKContainer::Entry* entry = container.GetEntry(id);
        const std::string name = SafeFileName(entry->name.c_str(), "resource" + std::to_string(id));
        if (entry->kind == QorResourceZPKContainer::QorEffectEntry) {
            std::ofstream(fs::path(folder) / name, std::ios::binary) << entry->source;
        } else if (entry->image) {
            const fs::path target = fs::path(folder) / (fs::path(name).stem().string() + ".png");
            if (entry->image->WriteToFile("PNG", target.string().c_str()) != 0)
                return Fail(target.string() + ": cannot write the image");
        }
    }
    QorfxLoadProblem problem;
    std::unique_ptr<QorfxMaterial> material = QorfxMaterial::LoadPackage(package, problem);
    if (!material) {
        std::fputs(problem.details.c_str(), stderr);
        return Fail(problem.message);
    }
    std::ofstream(fs::path(folder) / "material.json") << QorfxDescribe(*material, false).dump(2) << "\n";
    return 0;
}

// qorfx: answers from the shell what an effect exposes, what it looks like, and whether
// it travels with its textures, on the same library code a renderer calls.
#include "QorfxDescribe.h"
#include "QorfxMaterial.h"
#include "QorfxMigrate.h"
#include "QorfxPack.h"
#include "QorfxRender.h"
#include "QorfxSgi.h"
#include "QorfxStage.h"
#include "QorfxTranslate.h"
#include "QorfxViewWindow.h"
#include "QorGL/QorGLContext.h"
#include "QorSystem/QorFiles.h"
#include "QorVisShaders/QorShaderIncludeManager.h"
#include "QorVisShaders/QorShaderManager.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>
#include <sstream>

namespace {

// --include NAME=FILE registers FILE's text as the in-memory include NAME.
int RegisterIncludes(const std::vector<std::string>& includes)
{
    for (const std::string& include : includes) {
        const size_t equals = include.find('=');
        if (equals == std::string::npos || equals == 0) {
            std::fprintf(stderr, "qorfx: --include takes NAME=FILE, not \"%s\"\n", include.c_str());
            return 2;
        }
        const std::string file = include.substr(equals + 1);
        std::string text, why;
        if (!QorReadRegularFile(file.c_str(), text, kQorfxMaxSourceBytes, &why)) {
            std::fprintf(stderr, "qorfx: %s: cannot read the include file (%s)\n", file.c_str(), why.c_str());
            return 1;
        }
        QorShaderIncludeManager::Instance().AddInclude(QorString(include.substr(0, equals).c_str()), text.c_str());
    }
    return 0;
}

int Inspect(const std::string& file, bool json)
{
    QorfxLoadProblem problem;
    std::unique_ptr<QorfxMaterial> material = QorfxMaterial::LoadAny(file, problem);
    if (!material) {
        std::fprintf(stderr, "qorfx: %s\n", problem.message.c_str());
        if (!problem.details.empty()) {
            if (json)
                std::printf("%s\n", QorfxJsonText(nlohmann::json{{"file", file}, {"errors", problem.details}}).c_str());
            else
                std::fputs(problem.details.c_str(), stderr);
        }
        return 1;
    }
    // Techniques validate only in a GL context; without a display they are listed
    // unchecked. The material is readied as render readies it, with render's defaults.
    QorGLContext context;
    bool validate = context.Open(1, 1);
    if (validate) {
        const QorfxRenderOptions defaults;
        QorfxView view;
        std::string staging;
        validate = QorfxMakeView(defaults, view, staging) && (staging = QorfxStage(*material, defaults, view, 0)).empty();
        if (!staging.empty())
            std::fprintf(stderr, "qorfx: %s: techniques not validated: %s\n", file.c_str(), staging.c_str());
    }
    const nlohmann::json description = QorfxDescribe(*material, validate);
    if (json)
        std::printf("%s\n", QorfxJsonText(description).c_str());
    else
        QorfxPrintDescription(description);
    return 0;
}

bool ParseSize(const std::string& size, QorfxRenderOptions& options)
{
    int width = 0, height = 0;
    char extra = 0;
    if (std::sscanf(size.c_str(), "%dx%d%c", &width, &height, &extra) != 2 || width < 1 || height < 1 ||
        width > 4096 || height > 4096) {
        std::fprintf(stderr, "qorfx: --size takes WxH with each side from 1 to 4096, not \"%s\"\n", size.c_str());
        return false;
    }
    options.width = width;
    options.height = height;
    return true;
}

// "point,dir" as its kinds.
std::vector<std::string> LightKinds(const std::string& list)
{
    std::vector<std::string> kinds;
    std::istringstream stream(list);
    for (std::string kind; std::getline(stream, kind, ',');)
        kinds.push_back(kind);
    return kinds;
}

int Run(int argc, char** argv)
{
    QorfxRemoveStaleTempFolders();
    CLI::App app{"qorfx: inspect, render, pack and convert QorVisShaders materials"};
    app.require_subcommand(1);
    std::vector<std::string> includes;
    app.add_option("--include", includes, "Register FILE as the in-memory include NAME (NAME=FILE)");

    // --path DIR on each subcommand that loads effects: folders searched for effects,
    // GLSL twins and includes before "QorGraphicPath".
    std::vector<std::string> paths;
    const auto addPath = [&paths](CLI::App* command) {
        // One folder per --path, so that the files after it stay the command's own.
        command
            ->add_option("--path", paths,
                         "Folder to find effects, twins and includes in (its shaders/ folder too); repeatable")
            ->allow_extra_args(false);
    };

    // What render and view draw a material with: its size, mesh, values, technique and scene.
    const auto addScene = [](CLI::App* command, QorfxRenderOptions& scene, std::string& size, std::string& lights) {
        command->add_option("--size", size, "Picture size WxH of each material (1 to 4096 each)");
        command->add_option("--mesh", scene.mesh, "quad, cube or sphere");
        command->add_option("--set", scene.sets, "NAME=VALUE: a float, a colour r,g,b[,a] or a texture file");
        command->add_option("--technique", scene.technique, "Technique number or name");
        command->add_option("--lights", lights, "Comma-separated light kinds: point, spot, dir");
        command->add_option("--env", scene.environment,
                            "Environment colour r,g,b, or \"sky\" (the default) for a cube map");
    };

    std::string inspectFile;
    bool json = false;
    CLI::App* inspect = app.add_subcommand("inspect", "Techniques, parameters, semantics and interfaces of an effect or a .zpk material");
    inspect->add_option("file", inspectFile, "Effect file or .zpk material")->required();
    inspect->add_flag("--json", json, "Print one JSON document");
    addPath(inspect);

    std::vector<std::string> renderInputs;
    std::string renderOutput, size = "256x256", lights = "point,dir";
    QorfxRenderOptions options;
    CLI::App* render = app.add_subcommand("render", "Draw materials on a lit mesh into an image");
    render->add_option("files", renderInputs, "Effect files")->required();
    render->add_option("-o,--output", renderOutput, "Image to write (its extension names the format)")->required();
    addScene(render, options, size, lights);
    render->add_option("--columns", options.columns, "Tiles a row of the contact sheet (default: a square-ish sheet)")
        ->check(CLI::Range(1, 4096));
    addPath(render);

    std::vector<std::string> viewInputs;
    std::string viewScript, viewSize = "400x400", viewLights = "point,dir";
    QorfxRenderOptions viewOptions;
    CLI::App* view =
        app.add_subcommand("view", "Show materials in a window with a widget per value, following saves of their files");
    view->add_option("files", viewInputs, "Effect files or .zpk materials, side by side, values linked by name")
        ->required();
    view->add_option("--script", viewScript,
                     "File of actions run one a frame: set, technique, reset, png, zpk, touch, sleep, quit");
    addScene(view, viewOptions, viewSize, viewLights);
    addPath(view);

    std::string packEffect, packOutput;
    std::vector<std::string> packSets;
    CLI::App* pack = app.add_subcommand("pack", "Pack an effect, its values and textures into a .zpk document");
    pack->add_option("effect", packEffect, "Effect file")->required();
    pack->add_option("--set", packSets, "NAME=VALUE: a float, a colour r,g,b[,a] or a texture file");
    pack->add_option("--texture", packSets, "NAME=FILE: the texture file of a texture parameter");
    pack->add_option("-o,--output", packOutput, "The .zpk document to write")->required();
    addPath(pack);

    std::string unpackInput, unpackFolder;
    CLI::App* unpack = app.add_subcommand("unpack", "Unpack a .zpk document: effect, textures and material.json");
    unpack->add_option("package", unpackInput, "The .zpk document")->required();
    unpack->add_option("-C,--directory", unpackFolder, "Folder to write into")->required();

    std::vector<std::string> migrateInputs;
    std::string previewSize = "128x128";
    QorfxMigrateOptions migration;
    CLI::App* migrate =
        app.add_subcommand("migrate", "Move CgFX-era .zpk documents to the GLSL twins of their effects, and report");
    migrate->add_option("documents", migrateInputs, "The .zpk documents (never changed)")->required();
    migrate->add_option("-o,--output", migration.folder, "Folder to write each migrated material into, as unpack does");
    migrate->add_flag("--json", migration.json, "Print the report as JSON");
    migrate->add_option("--preview", migration.preview, "Contact sheet of each material before and after");
    migrate->add_option("--size", previewSize, "Tile size WxH of the preview (1 to 4096 each)");
    migrate->add_flag("--translate", migration.translate,
                      "Translate the CgFX source a document carries where no twin is found, and migrate onto it");
    addPath(migrate);

    std::vector<std::string> translateInputs;
    std::string translateLights = "point,dir", translateSize = "128x128";
    QorfxTranslateOptions translation;
    CLI::App* translate = app.add_subcommand("translate", "Turn CgFX effects into GLSL effects (.glslfx), and report");
    translate->add_option("effects", translateInputs, "The CgFX effects (never changed)")->required();
    translate->add_option("-o,--output", translation.folder, "Folder to write each NAME.glslfx into (default: .)");
    translate->add_flag("--json", translation.json, "Print the report as JSON");
    translate->add_flag("--force", translation.force, "Replace a NAME.glslfx already in the folder");
    translate->add_option("--preview", translation.preview, "Contact sheet of each original beside its translation");
    translate->add_option("--size", translateSize, "Tile size WxH of the preview (1 to 4096 each)");
    translate->add_option("--lights", translateLights, "The light kinds the programs are made for: point, spot, dir");
    translate->add_option("--env", translation.render.environment,
                          "The environment they are made for: \"sky\" (a cube map, the default) or a colour r,g,b");
    addPath(translate);

    std::string sgiInput, sgiOutput;
    CLI::App* sgi = app.add_subcommand("sgi", "Convert an SGI image through the library's reader");
    sgi->add_option("file", sgiInput, "SGI image")->required();
    sgi->add_option("-o,--output", sgiOutput, "Image to write")->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : 2;
    }
    if (const int status = RegisterIncludes(includes))
        return status;
    std::string pathProblem;
    if (!QorfxAddPathFolders(paths, pathProblem)) {
        std::fprintf(stderr, "qorfx: %s\n", pathProblem.c_str());
        return 2;
    }

    if (*inspect)
        return Inspect(inspectFile, json);
    if (*sgi)
        return QorfxConvertSgi(sgiInput, sgiOutput);
    if (*pack)
        return QorfxPack(packEffect, packSets, packOutput);
    if (*unpack)
        return QorfxUnpack(unpackInput, unpackFolder);

    if (*migrate) {
        if (*migrate->get_option("-o") && migration.folder.empty()) {
            std::fprintf(stderr, "qorfx: -o takes a folder, not \"\"\n");
            return 2;
        }
        return ParseSize(previewSize, migration.render) ? QorfxMigrate(migrateInputs, migration) : 2;
    }

    if (*translate) {
        if (translation.folder.empty()) {
            std::fprintf(stderr, "qorfx: -o takes a folder, not \"\"\n");
            return 2;
        }
        translation.render.lights = LightKinds(translateLights);
        return ParseSize(translateSize, translation.render) ? QorfxTranslate(translateInputs, translation) : 2;
    }

    if (*view) {
        if (!ParseSize(viewSize, viewOptions))
            return 2;
        viewOptions.lights = LightKinds(viewLights);
        return QorfxViewWindow(viewInputs, viewOptions, viewScript);
    }

    if (!ParseSize(size, options))
        return 2;
    options.lights = LightKinds(lights);
    return QorfxRender(renderInputs, renderOutput, options);
}

// Whatever a library or the tool throws ends the run with a message, never with a signal.
int RunGuarded(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "qorfx: out of memory\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "qorfx: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "qorfx: unexpected failure\n");
    }
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    const int status = RunGuarded(argc, argv);
    // Materials handed their textures back to the registry; retire them before exit.
    QorShaderManager::CleanShaderTextureToDestroyList();
    return status;
}

#include "QorfxRender.h"

#include "QorfxMaterial.h"
#include "QorfxSheet.h"
#include "QorfxScene.h"
#include "QorGL/QorGLContext.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"

#include <GL/gl.h>

#include <cstdio>
#include <filesystem>
#include <memory>

namespace {

void Report(const std::string& message)
{
    std::fprintf(stderr, "qorfx: %s\n", message.c_str());
}

} // namespace

int QorfxRenderTiles(const std::vector<QorfxTile>& inputs, const std::string& output, const QorfxRenderOptions& options)
{
    unsigned int code = 0;
    if (!QorfxLightCode(options.lights, code)) {
        Report("--lights takes up to 8 of point, spot, dir");
        return 2;
    }
    const std::vector<QorfxVertex> mesh = QorfxMakeMesh(options.mesh);
    if (mesh.empty()) {
        Report("--mesh takes quad, cube or sphere, not \"" + options.mesh + "\"");
        return 2;
    }
    const std::string format = QorfxImageFormat(output);
    if (format.empty()) {
        Report(output + ": the output needs an image extension such as .png");
        return 2;
    }
    QorfxView view;
    std::string problem;
    if (!QorfxMakeView(options, view, problem)) {
        Report(problem);
        return 2;
    }
    const bool several = inputs.size() > 1;
    if (!QorfxSheet::Fits(inputs.size(), options.columns, options.width, options.height, several)) {
        Report("a sheet of " + std::to_string(inputs.size()) + " tiles of " + std::to_string(options.width) + "x" +
               std::to_string(options.height) + " would have too many pixels, at most " + std::to_string(QorfxSheet::kMaxPixels) +
               ": use fewer inputs or a smaller --size");
        return 2;
    }
    QorGLContext context;
    if (!context.Open(options.width, options.height)) {
        Report(context.GetError());
        return 1;
    }

    QorfxSheet sheet(inputs.size(), options.columns, options.width, options.height, several);
    unsigned int skyTexture = 0;
    int failures = 0;
    for (size_t i = 0; i < inputs.size(); ++i) {
        if (inputs.size() > 4)
            std::fprintf(stderr, "qorfx: rendering %zu/%zu %s\n", i + 1, inputs.size(), inputs[i].label.c_str());
        QorfxLoadProblem loading;
        std::unique_ptr<QorfxMaterial> material = inputs[i].load(loading);
        std::string usage;
        if (material && !(usage = QorfxTechniqueProblem(*material, options.technique)).empty()) {
            Report(usage);
            if (skyTexture)
                glDeleteTextures(1, &skyTexture);
            return 2;
        }
        const QorfxDrawFailure failure =
            material ? QorfxDrawMaterial(*material, options, view, mesh, skyTexture) : QorfxDrawFailure{loading.word, loading.message};
        const std::string& label = inputs[i].label;
        if (failure.word.empty()) {
            sheet.Place(i, context.ReadPixels(), label);
        } else {
            Report(failure.message);
            std::fputs(loading.details.c_str(), stderr);
            ++failures;
            // One input that cannot be drawn spoils no other: its tile says why.
            if (!several)
                break;
            sheet.MarkFailed(i, label, failure.word);
        }
        material.reset();
        // Textures the material used go back to the registry and their GL names are
        // deleted while the context is still current.
        QorShaderManager::CleanShaderTextureToDestroyList();
    }
    if (skyTexture)
        glDeleteTextures(1, &skyTexture);
    if (!several && failures > 0)
        return 1;

    const std::string written = QorfxWriteImage(output, sheet.Width(), sheet.Height(), sheet.Pixels());
    if (!written.empty()) {
        Report(written);
        return 1;
    }
    if (failures > 0)
        Report(std::to_string(failures) + " of " + std::to_string(inputs.size()) +
               " materials could not be drawn; their tiles are crossed");
    return failures > 0 ? 1 : 0;
}

std::string QorfxImageFormat(const std::string& output)
{
    const std::string format =
        QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(output.c_str())).c_str();
    return QorTexturePixelImage::IsWritableFormat(format.c_str()) ? format : std::string();
}

int QorfxRender(const std::vector<std::string>& inputs, const std::string& output, const QorfxRenderOptions& options)
{
    std::vector<QorfxTile> tiles;
    for (const std::string& input : inputs)
        // The extension stays in the label: a sheet may show a CgFX material beside its GLSL twin.
        tiles.push_back({std::filesystem::path(input).filename().string(),
                         [input](QorfxLoadProblem& problem) { return QorfxMaterial::Load(input, problem); }});
    return QorfxRenderTiles(tiles, output, options);
}

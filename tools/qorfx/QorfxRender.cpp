#include "QorfxRender.h"

#include "QorfxFont.h"
#include "QorfxMaterial.h"
#include "QorfxScene.h"
#include "QorfxTextures.h"
#include "QorGL/QorGLContext.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTypes.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

constexpr int kLabelScale = 2;
constexpr int kLabelHeight = 7 * kLabelScale + 8;
// The largest contact sheet: 1 GiB of RGBA pixels, held twice while it is written.
constexpr std::uint64_t kMaxSheetPixels = std::uint64_t{1} << 28;

// Tiles in rows of `columns`, each tile with a label strip under it on a sheet.
struct SheetLayout
{
    bool sheet;
    int columns;
    int cellHeight;
    std::uint64_t width;
    std::uint64_t height;
};

SheetLayout Layout(std::size_t inputs, const QorfxRenderOptions& options)
{
    SheetLayout layout;
    layout.sheet = inputs > 1;
    layout.columns = layout.sheet ? static_cast<int>(std::ceil(std::sqrt(static_cast<double>(inputs)))) : 1;
    const std::uint64_t rows = (inputs + layout.columns - 1) / layout.columns;
    layout.cellHeight = options.height + (layout.sheet ? kLabelHeight : 0);
    layout.width = std::uint64_t(layout.columns) * options.width;
    layout.height = rows * layout.cellHeight;
    return layout;
}

// --technique names a technique of the material: its number or its name.
std::string TechniqueProblem(QorfxMaterial& material, const std::string& technique)
{
    if (technique.empty())
        return "";
    const nlohmann::json techniques = material.Backend().Techniques(false);
    for (const nlohmann::json& entry : techniques)
        if (entry["name"] == technique || std::to_string(entry["index"].get<int>()) == technique)
            return "";
    return "--technique takes a technique number from 0 to " + std::to_string(int(techniques.size()) - 1) +
           " or a technique name of " + material.Name() + ", not \"" + technique + "\"";
}

void Report(const std::string& message)
{
    std::fprintf(stderr, "qorfx: %s\n", message.c_str());
}

std::vector<float> Numbers(const std::string& text)
{
    std::vector<float> numbers;
    const char* cursor = text.c_str();
    char* end = nullptr;
    for (;;) {
        const float value = std::strtof(cursor, &end);
        if (end == cursor)
            return {};
        numbers.push_back(value);
        if (*end == '\0')
            return numbers;
        if (*end != ',')
            return {};
        cursor = end + 1;
    }
}

// Light kinds from names, as the light configuration code: two bits per light.
bool LightCode(const std::vector<std::string>& lights, unsigned int& code)
{
    code = 0;
    if (lights.size() > QorMaxLights)
        return false;
    for (size_t i = 0; i < lights.size(); ++i) {
        const std::string& kind = lights[i];
        const unsigned int value = kind == "point" ? unsigned(QorLightPoint)
                                   : kind == "spot" ? unsigned(QorLightSpot)
                                   : kind == "dir"  ? unsigned(QorLightDirectional)
                                                    : 0u;
        if (value == 0)
            return false;
        code |= value << (2 * i);
    }
    return true;
}

std::string ApplyOptions(QorfxMaterial& material, const QorfxRenderOptions& options)
{
    for (const std::string& assignment : options.sets) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            return "--set takes NAME=VALUE, not \"" + assignment + "\"";
        const std::string problem = material.Set(assignment.substr(0, equals), assignment.substr(equals + 1));
        if (!problem.empty())
            return problem;
    }
    if (!options.technique.empty()) {
        char* end = nullptr;
        const long number = std::strtol(options.technique.c_str(), &end, 10);
        if (*end == '\0')
            material.Shader().SetParameterFloat(0, static_cast<float>(number));
        else
            material.Shader().SetParameterString(0, options.technique.c_str());
    }
    return "";
}

// Draws one material into the current framebuffer; an empty string on success.
std::string DrawMaterial(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                         const std::vector<QorfxVertex>& mesh, unsigned int& skyTexture)
{
    QorIShader& shader = material.Shader();
    QorfxBackend& backend = material.Backend();
    std::string problem = ApplyOptions(material, options);
    if (!problem.empty())
        return problem;
    unsigned int code = 0;
    LightCode(options.lights, code);
    shader.UpdateLightModel(code);
    shader.SetCurrentParameters();
    if (view.environment.empty() && !skyTexture)
        skyTexture = QorfxMakeSkyCubeMap();
    problem = backend.SetEnvironment(view, skyTexture);
    if (!problem.empty())
        return problem;
    problem = QorfxLoadTextures(material);
    if (!problem.empty())
        return problem;
    backend.PrepareContext();
    if (!backend.Validate())
        return "no technique of " + material.Name() + " runs on this GL driver";
    glClearColor(0.05f, 0.05f, 0.06f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    backend.Draw(view, mesh);
    glFinish();
    return "";
}

void CopyTile(std::vector<unsigned char>& sheet, int sheetWidth, const std::vector<unsigned char>& tile, int width,
              int height, int x, int y)
{
    for (int row = 0; row < height; ++row)
        std::memcpy(&sheet[((static_cast<size_t>(y) + row) * sheetWidth + x) * 4],
                    &tile[static_cast<size_t>(row) * width * 4], static_cast<size_t>(width) * 4);
}

std::string FormatOf(const std::string& output)
{
    return QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(output.c_str())).c_str();
}

} // namespace

int QorfxRender(const std::vector<std::string>& inputs, const std::string& output, const QorfxRenderOptions& options)
{
    unsigned int code = 0;
    if (!LightCode(options.lights, code)) {
        Report("--lights takes up to 8 of point, spot, dir");
        return 2;
    }
    const std::vector<QorfxVertex> mesh = QorfxMakeMesh(options.mesh);
    if (mesh.empty()) {
        Report("--mesh takes quad, cube or sphere, not \"" + options.mesh + "\"");
        return 2;
    }
    const std::string format = FormatOf(output);
    if (format.empty()) {
        Report(output + ": the output needs an image extension such as .png");
        return 2;
    }
    QorfxView view;
    if (options.environment != "sky") {
        view.environment = Numbers(options.environment);
        if (view.environment.size() != 3) {
            Report("--env takes r,g,b or \"sky\", not \"" + options.environment + "\"");
            return 2;
        }
    }
    const SheetLayout layout = Layout(inputs.size(), options);
    if (layout.width * layout.height > kMaxSheetPixels) {
        Report("a sheet of " + std::to_string(inputs.size()) + " tiles of " + std::to_string(options.width) + "x" +
               std::to_string(options.height) + " would have " + std::to_string(layout.width * layout.height) +
               " pixels; at most " + std::to_string(kMaxSheetPixels) + ": use fewer inputs or a smaller --size");
        return 2;
    }
    QorGLContext context;
    if (!context.Open(options.width, options.height)) {
        Report(context.GetError());
        return 1;
    }

    const bool sheet = layout.sheet;
    const int columns = layout.columns, cellHeight = layout.cellHeight;
    const int sheetWidth = static_cast<int>(layout.width), sheetHeight = static_cast<int>(layout.height);
    std::vector<unsigned char> pixels(static_cast<size_t>(sheetWidth) * sheetHeight * 4, 0);
    for (size_t i = 3; i < pixels.size(); i += 4)
        pixels[i] = 255;

    view.world = options.mesh == "quad" ? Qor4x4Matrix() : QorfxRotation(20, -30);
    const float eye[3] = {0, 0, 3.4f}, target[3] = {0, 0, 0}, up[3] = {0, 1, 0};
    view.view = QorfxLookAt(eye, target, up);
    view.projection =
        QorfxPerspective(40, static_cast<float>(options.width) / static_cast<float>(options.height), 0.1f, 100);

    unsigned int skyTexture = 0;
    int status = 0;
    for (size_t i = 0; i < inputs.size() && status == 0; ++i) {
        if (inputs.size() > 4)
            std::fprintf(stderr, "qorfx: rendering %zu/%zu %s\n", i + 1, inputs.size(), inputs[i].c_str());
        std::string error, compileErrors;
        std::unique_ptr<QorfxMaterial> material = QorfxMaterial::Load(inputs[i], error, compileErrors);
        if (material && !(error = TechniqueProblem(*material, options.technique)).empty()) {
            Report(error);
            status = 2;
            break;
        }
        if (material)
            error = DrawMaterial(*material, options, view, mesh, skyTexture);
        if (!error.empty()) {
            Report(error);
            if (!compileErrors.empty())
                std::fputs(compileErrors.c_str(), stderr);
            status = 1;
            break;
        }
        const int x = static_cast<int>(i % columns) * options.width;
        const int y = static_cast<int>(i / columns) * cellHeight;
        CopyTile(pixels, sheetWidth, context.ReadPixels(), options.width, options.height, x, y);
        if (sheet) {
            const std::string label = std::filesystem::path(inputs[i]).stem().string();
            const int labelX = x + std::max(2, (options.width - QorfxTextWidth(label, kLabelScale)) / 2);
            QorfxDrawText(pixels, sheetWidth, sheetHeight, labelX, y + options.height + 4, label, kLabelScale);
        }
        material.reset();
        // Textures the material used go back to the registry and their GL names are
        // deleted while the context is still current.
        QorShaderManager::CleanShaderTextureToDestroyList();
    }
    if (skyTexture)
        glDeleteTextures(1, &skyTexture);
    if (status != 0)
        return status;

    QorTexturePixelImage::Ptr image(
        QorTexturePixelImage::Create(QorString(output.c_str()), QorPixelRGBA8, sheetWidth, sheetHeight));
    if (!image) {
        Report("cannot hold a " + std::to_string(sheetWidth) + "x" + std::to_string(sheetHeight) + " image");
        return 1;
    }
    std::memcpy(image->GetPixels(), pixels.data(), pixels.size());
    if (image->WriteToFile(format.c_str(), output.c_str()) != 0) {
        Report(output + ": cannot write the image");
        return 1;
    }
    return 0;
}

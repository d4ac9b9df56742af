#include "QorfxRender.h"

#include "QorfxFont.h"
#include "QorfxMaterial.h"
#include "QorfxOutput.h"
#include "QorfxScene.h"
#include "QorfxTextures.h"
#include "QorGL/QorGLContext.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

constexpr int kLabelScale = 2;
constexpr int kLabelHeight = 7 * kLabelScale + 8;
// The largest contact sheet: 1 GiB of RGBA pixels, held twice while it is written.
constexpr std::uint64_t kMaxSheetPixels = std::uint64_t{1} << 28;

void Report(const std::string& message)
{
    std::fprintf(stderr, "qorfx: %s\n", message.c_str());
}

// Why one input could not be drawn: a word for its tile and a line for standard error.
struct DrawFailure
{
    std::string word;
    std::string message;
};

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

// Draws one material into the current framebuffer; an empty word on success.
DrawFailure DrawMaterial(QorfxMaterial& material, const QorfxRenderOptions& options, const QorfxView& view,
                         const std::vector<QorfxVertex>& mesh, unsigned int& skyTexture)
{
    QorfxBackend& backend = material.Backend();
    if (view.environment.empty() && !skyTexture)
        skyTexture = QorfxMakeSkyCubeMap();
    std::string problem = QorfxStage(material, options, view, skyTexture);
    if (!problem.empty())
        return {"options", problem};
    problem = QorfxLoadTextures(material);
    if (!problem.empty())
        return {"texture", problem};
    if (!backend.Validate())
        return {"driver", "no technique of " + material.Name() + " runs on this GL driver"};
    glClearColor(0.05f, 0.05f, 0.06f, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    backend.Draw(view, mesh);
    glFinish();
    return {};
}

// A contact sheet: tiles of `width` x `height` in rows, each with its label strip.
class Sheet
{
public:
    // Check Fits() first: the sheet's size is held in ints.
    Sheet(size_t tiles, int columns, int width, int height, bool labelled)
        : m_columns(Columns(tiles, columns)), m_tileWidth(width), m_tileHeight(height),
          m_cellHeight(height + (labelled ? kLabelHeight : 0)), m_width(m_columns * width),
          m_height(static_cast<int>(Rows(tiles, m_columns)) * m_cellHeight), m_labelled(labelled),
          m_pixels(static_cast<size_t>(m_width) * m_height * 4, 0)
    {
        for (size_t i = 3; i < m_pixels.size(); i += 4)
            m_pixels[i] = 255;
    }

    // The sheet's pixel count, when it is at most kMaxSheetPixels; 0 otherwise.
    static std::uint64_t Fits(size_t tiles, int columns, int width, int height, bool labelled)
    {
        const int across = Columns(tiles, columns);
        const std::uint64_t pixels = std::uint64_t(across) * std::uint64_t(width) * Rows(tiles, across) *
                                     std::uint64_t(height + (labelled ? kLabelHeight : 0));
        return pixels <= kMaxSheetPixels ? pixels : 0;
    }

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    const std::vector<unsigned char>& Pixels() const { return m_pixels; }

    void Place(size_t tile, const std::vector<unsigned char>& rgba, const std::string& label)
    {
        const int x = X(tile), y = Y(tile);
        for (int row = 0; row < m_tileHeight; ++row)
            std::memcpy(&m_pixels[(static_cast<size_t>(y + row) * m_width + x) * 4],
                        &rgba[static_cast<size_t>(row) * m_tileWidth * 4], static_cast<size_t>(m_tileWidth) * 4);
        Label(tile, label);
    }

    // A dark red tile crossed from corner to corner, with the reason in its middle.
    void MarkFailed(size_t tile, const std::string& label, const std::string& reason)
    {
        const int x = X(tile), y = Y(tile);
        for (int row = 0; row < m_tileHeight; ++row)
            for (int column = 0; column < m_tileWidth; ++column) {
                const int across = column * m_tileHeight / m_tileWidth;
                const bool cross = std::abs(across - row) <= 1 || std::abs(m_tileHeight - 1 - across - row) <= 1;
                unsigned char* p = &m_pixels[(static_cast<size_t>(y + row) * m_width + x + column) * 4];
                p[0] = cross ? 220 : 70;
                p[1] = cross ? 60 : 12;
                p[2] = cross ? 60 : 16;
            }
        const int reasonX = x + std::max(2, (m_tileWidth - QorfxTextWidth(reason, kLabelScale)) / 2);
        QorfxDrawText(m_pixels, m_width, m_height, reasonX, y + m_tileHeight / 2 - 7, reason, kLabelScale);
        Label(tile, label);
    }

private:
    // `columns` 0: as many columns as rows, or one more; never more columns than tiles.
    static int Columns(size_t tiles, int columns)
    {
        return columns > 0 ? std::min(columns, static_cast<int>(tiles))
                           : static_cast<int>(std::ceil(std::sqrt(static_cast<double>(tiles))));
    }
    static std::uint64_t Rows(size_t tiles, int columns) { return (tiles + columns - 1) / columns; }

    int X(size_t tile) const { return static_cast<int>(tile % m_columns) * m_tileWidth; }
    int Y(size_t tile) const { return static_cast<int>(tile / m_columns) * m_cellHeight; }
    void Label(size_t tile, const std::string& label)
    {
        if (!m_labelled)
            return;
        // A long name is shortened in its middle rather than run into its neighbours.
        const std::string fitted = QorfxFitText(label, m_tileWidth - 4, kLabelScale);
        const int labelX = X(tile) + std::max(2, (m_tileWidth - QorfxTextWidth(fitted, kLabelScale)) / 2);
        QorfxDrawText(m_pixels, m_width, m_height, labelX, Y(tile) + m_tileHeight + 4, fitted, kLabelScale);
    }

    int m_columns, m_tileWidth, m_tileHeight, m_cellHeight, m_width, m_height;
    bool m_labelled;
    std::vector<unsigned char> m_pixels;
};

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
    if (!Sheet::Fits(inputs.size(), options.columns, options.width, options.height, several)) {
        Report("a sheet of " + std::to_string(inputs.size()) + " tiles of " + std::to_string(options.width) + "x" +
               std::to_string(options.height) + " would have too many pixels, at most " + std::to_string(kMaxSheetPixels) +
               ": use fewer inputs or a smaller --size");
        return 2;
    }
    QorGLContext context;
    if (!context.Open(options.width, options.height)) {
        Report(context.GetError());
        return 1;
    }

    Sheet sheet(inputs.size(), options.columns, options.width, options.height, several);
    unsigned int skyTexture = 0;
    int failures = 0;
    for (size_t i = 0; i < inputs.size(); ++i) {
        if (inputs.size() > 4)
            std::fprintf(stderr, "qorfx: rendering %zu/%zu %s\n", i + 1, inputs.size(), inputs[i].label.c_str());
        QorfxLoadProblem loading;
        std::unique_ptr<QorfxMaterial> material = inputs[i].load(loading);
        std::string usage;
        if (material && !(usage = TechniqueProblem(*material, options.technique)).empty()) {
            Report(usage);
            if (skyTexture)
                glDeleteTextures(1, &skyTexture);
            return 2;
        }
        const DrawFailure failure =
            material ? DrawMaterial(*material, options, view, mesh, skyTexture) : DrawFailure{loading.word, loading.message};
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

    QorTexturePixelImage::Ptr image(
        QorTexturePixelImage::Create(QorString(output.c_str()), QorPixelRGBA8, sheet.Width(), sheet.Height()));
    if (!image) {
        Report("cannot hold a " + std::to_string(sheet.Width()) + "x" + std::to_string(sheet.Height()) + " image");
        return 1;
    }
    std::memcpy(image->GetPixels(), sheet.Pixels().data(), sheet.Pixels().size());
    std::string bytes, why;
    if (!image->Encode(format.c_str(), bytes)) {
        Report(output + ": cannot write the image (encoding it as " + format + " failed)");
        return 1;
    }
    if (!QorfxOutput::WriteFile(output, bytes, why)) {
        Report(why);
        return 1;
    }
    if (failures > 0)
        Report(std::to_string(failures) + " of " + std::to_string(inputs.size()) +
               " materials could not be drawn; their tiles are crossed");
    return failures > 0 ? 1 : 0;
}

std::string QorfxImageFormat(const std::string& output)
{
    return QorShaderManager::ShaderParamRetrieveTextureExtension(QorUnicodeString(output.c_str())).c_str();
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

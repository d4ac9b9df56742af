#include "QorfxTextures.h"

#include "QorfxMaterial.h"
#include "QorSystem/QorEnvironment.h"
#include "QorSystem/QorFiles.h"
#include "QorSystem/QorPaths.h"
#include "QorVisFoundation/QorTexturePixelImage.h"
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"
#include "QorVisShaders/QorShaderValueType.h"
#include "QorVisFoundation/QorTextureReader.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Where a texture named by an effect lives: as given, beside the effect, in a
// "textures" folder beside or above it, or along "QorGraphicPath".
std::string Locate(const std::string& file, const std::string& effectFolder)
{
    const std::vector<std::string> candidates = {file, effectFolder + file, effectFolder + "textures/" + file,
                                                 effectFolder + "../textures/" + file};
    for (const std::string& candidate : candidates)
        if (QorFileAccess(candidate.c_str(), 4) == 0)
            return candidate;
    const QorString found = QorFindPath(file.c_str(), "QorGraphicPath");
    return QorFileAccess(found.c_str(), 4) == 0 ? found.c_str() : "";
}

bool IsSgi(const std::string& path)
{
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return extension == ".rgb" || extension == ".rgba" || extension == ".sgi" || extension == ".bw";
}

unsigned int Upload(int width, int height, unsigned int format, unsigned int type, const void* pixels)
{
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_2D, id);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, format, type, pixels);
    glBindTexture(GL_TEXTURE_2D, 0);
    return id;
}

unsigned int LoadSgi(const std::string& path)
{
    int dimension = 0, width = 0, height = 0, components = 0;
    std::unique_ptr<unsigned int, decltype(&std::free)> pixels(
        readTexture(path.c_str(), &dimension, &width, &height, &components), &std::free);
    // SGI rows start at the bottom, as GL textures do.
    return pixels ? Upload(width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.get()) : 0;
}

unsigned int LoadImage(const std::string& path)
{
    QorTexturePixelImage::Ptr image(QorTexturePixelImage::ReadFromFile(path.c_str(), QorString(path.c_str())));
    if (!image)
        return 0;
    // Image rows come top first; flip them into GL's bottom-up order.
    const int width = static_cast<int>(image->GetWidth()), height = static_cast<int>(image->GetHeight());
    const size_t row = static_cast<size_t>(width) * image->GetBytesPerPixel();
    const unsigned char* source = image->IsFloatFormat() ? image->GetFloatPixels() : image->GetPixels();
    std::vector<unsigned char> flipped(row * height);
    for (int y = 0; y < height; ++y)
        std::copy(source + y * row, source + (y + 1) * row, flipped.begin() + (height - 1 - y) * row);
    static const unsigned int formats[] = {0, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
    switch (image->GetPixelFormat()) {
    case QorPixelRGBAFloat:
        return Upload(width, height, GL_RGBA, GL_FLOAT, flipped.data());
    case QorPixelRGBFloat:
        return Upload(width, height, GL_RGB, GL_FLOAT, flipped.data());
    default:
        return Upload(width, height, formats[QorTexturePixelImage::GetChannelCount(image->GetPixelFormat())],
                      GL_UNSIGNED_BYTE, flipped.data());
    }
}

// Runs `use` on each texture parameter that names a file, with the file's location (see
// Locate); the first problem ends the walk.
template <typename Use>
std::string ForEachTextureFile(QorfxMaterial& material, Use use)
{
    QorIShader& shader = material.Shader();
    for (int index = 1; index < shader.GetNbParameters(); ++index) {
        if (shader.GetParameterType(index) != QorValueTexture)
            continue;
        char file[QorMaxParameterStringLength] = {};
        shader.GetParameterString(index, file);
        if (!file[0])
            continue;
        const std::string path = Locate(file, material.Folder());
        if (path.empty())
            return std::string(file) + ": texture file not found (" + shader.GetParameterName(index) + ")";
        const std::string problem = use(index, file, path);
        if (!problem.empty())
            return problem;
    }
    return "";
}

} // namespace

std::string QorfxLoadTextures(QorfxMaterial& material)
{
    return ForEachTextureFile(material, [](int, const char* file, const std::string& path) -> std::string {
        QorShaderTexture* texture = QorShaderManager::GetShaderTexture(file);
        if (!texture || texture->GetID() != 0)
            return "";
        const unsigned int id = IsSgi(path) ? LoadSgi(path) : LoadImage(path);
        if (id == 0)
            return path + ": cannot read the texture";
        texture->SetID(id);
        return "";
    });
}

std::string QorfxResolveTextureFiles(QorfxMaterial& material)
{
    return ForEachTextureFile(material, [&material](int index, const char*, const std::string& path) -> std::string {
        // The value names the image relative to the material, a name that travels with it
        // (an absolute path names a file of this host only). The image is read here and
        // listed under that name, where the stream's container takes it from: one that
        // the image library cannot read fails now instead of being dropped.
        const fs::path file = fs::absolute(path).lexically_normal();
        std::string name = file.lexically_relative(fs::path(material.Folder()).parent_path().lexically_normal()).string();
        if (name.empty())
            name = file.filename().string();
        QorTexturePixelImage* image = QorTexturePixelImage::ReadFromFile(path.c_str(), QorString(name.c_str()));
        if (!image)
            return path + ": cannot read the texture";
        QorTexturePixelImage::AddList(image);
        material.Shader().SetParameterString(index, name.c_str());
        return std::string();
    });
}

unsigned int QorfxMakeSkyCubeMap()
{
    const int size = 64;
    GLuint id = 0;
    glGenTextures(1, &id);
    glBindTexture(GL_TEXTURE_CUBE_MAP, id);
    std::vector<unsigned char> pixels(size * size * 4);
    for (int face = 0; face < 6; ++face) {
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x) {
                // Height of the texel's direction: +y face is sky, -y ground, sides blend.
                const float t = (y + 0.5f) / size;
                float up = face == 2 ? 1.0f : face == 3 ? -1.0f : 1.0f - 2.0f * t;
                const float sky = std::clamp(up, 0.0f, 1.0f), ground = std::clamp(-up, 0.0f, 1.0f);
                unsigned char* p = &pixels[(y * size + x) * 4];
                p[0] = static_cast<unsigned char>(200 - 120 * sky - 90 * ground);
                p[1] = static_cast<unsigned char>(210 - 70 * sky - 110 * ground);
                p[2] = static_cast<unsigned char>(225 + 30 * sky - 150 * ground);
                p[3] = 255;
            }
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA8, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     pixels.data());
    }
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    return id;
}

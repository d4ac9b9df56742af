/// @file
/// The registry of shared textures: one counted QorShaderTexture per file name, shared by
/// every texture value (and every shader) that names the file, and retired through a
/// destroy list at a moment the renderer chooses, when no drawing can still use them.
/// Renderers reach it as QorShaderManager's statics. Use from the rendering thread.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorUnicodeString.h"

class QorShaderTexture;
struct QorShaderTextureMap;
struct QorShaderTextureList;

class QOR_VISSHADERS_API QorShaderTextureRegistry
{
public:
    /// The registered texture of that name (count unchanged), or null.
    static QorShaderTexture* GetShaderTexture(const char* name);
    /// Shares the texture of that name, creating it at first use; the caller gets one
    /// reference (hand it back with AddShaderTextureToDestroyList). Null for a null name.
    static QorShaderTexture* AddShaderTexture(const char* name);
    /// Hands back the caller's reference; the texture is listed once for the next clean.
    static void AddShaderTextureToDestroyList(QorShaderTexture* texture);
    /// Destroys listed textures nobody else holds (their GL names deleted) and empties the list.
    /// Call where no texture is bound for drawing.
    static void CleanShaderTextureToDestroyList();
    /// The upper-case image format word for a texture file name ("JPEG", "TIFF", "PNG"...),
    /// under which a streamed texture is cached.
    static QorUnicodeString ShaderParamRetrieveTextureExtension(const QorUnicodeString& fileName);

protected:
    QorShaderTextureRegistry() = default;
    ~QorShaderTextureRegistry() = default;

private:
    /// The textures by name, each holding one reference; hashed, so look-ups do not grow
    /// with the number of textures. Its type is the library's own.
    static QorShaderTextureMap _sMapShaderTexture;
    /// References handed back, waiting for the next clean, each listed once.
    static QorShaderTextureList _sListShaderTextureToDestroy;
};

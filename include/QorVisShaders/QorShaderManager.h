/// @file
/// The library's entry point: decides once per process which effect technology is used,
/// makes shader objects and effects of that kind, and keeps the registry of shared
/// textures. It is also the base of the renderer's effect driver, whose notifications
/// the renderer implements.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"
#include "QorSystem/QorUnicodeString.h"
#include "QorVisShaders/QorFxImplementation.h"

#include <cstdint>

class QorIShader;
class QorIShaderEffect;
class QorOGLRender;
class QorShaderTexture;
struct QorShaderTextureMap;
struct QorShaderTextureList;

/// The renderer's light settings; this library only clears the light-properties block.
struct _LightsParameters
{
    unsigned int lightModel = 0;       ///< light configuration code
    float globalAmbient[4] = {};
    std::uint64_t lightProperties[5] = {};
};

class QOR_VISSHADERS_API QorShaderManager
{
public:
    /// The implementation of this process, decided at the first call: 3 when the host runs
    /// its newer visualization path, 2 when "ShaderVersion" is exactly "QRFX", else 1.
    static QorFxImplementation GetShaderVersion();
    /// A new shader object of the current implementation, owned by the caller, or null.
    static QorIShader* CreateShader();
    /// A new shader object of `implementation`, whatever this process decided, owned by
    /// the caller: for tools and hosts that read effects of both kinds side by side.
    /// QorFxQRFX0 asks the host's factory. Null for QorFxUndecided, a value that names no
    /// implementation, or when out of memory. The process's decision is left as it is.
    static QorIShader* CreateShader(QorFxImplementation implementation);
    /// A new, empty effect (count 1; the caller Releases it), or null.
    static QorIShaderEffect* CreateShaderEffect();
    /// The upper-case image format word for a texture file name ("JPEG", "TIFF", "PNG"...).
    static QorUnicodeString ShaderParamRetrieveTextureExtension(const QorUnicodeString& fileName);

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

    // The renderer's effect driver.
    virtual void FxBeginScene() = 0;
    virtual void FxEndScene() = 0;
    virtual void FxBindShader(QorIShader* shader) = 0;
    virtual void FxUnbindShader() = 0;
    virtual void FxUpdateMatrices() = 0;
    virtual void FxUpdateLights(_LightsParameters& lights) = 0;
    virtual void FxUpdateEnvironment() = 0;
    virtual void FxUpdateMaterial() = 0;
    virtual void FxUpdateClipPlanes() {}
    virtual void FxUpdateColorAttribute(const float* color) { (void)color; }
    virtual void FxInit(QorOGLRender* renderer) { m_renderer = renderer; }
    virtual int FxGetNbPasses() = 0;
    virtual void FxBeginPass(int pass) = 0;
    virtual void FxEndPass() = 0;
    virtual void FxDraw() = 0;
    virtual void Clean() { m_current = nullptr; }
    virtual void Reset() { m_renderer = nullptr; }

protected:
    QorShaderManager() = default;
    QorShaderManager(const QorShaderManager&) = default;
    QorShaderManager& operator=(const QorShaderManager&) = default;
    /// Not virtual: a driver is never deleted through this base.
    ~QorShaderManager() = default;

    /// True when n & (n - 1) is zero, so 0 counts as a power of two.
    static bool isPowerOfTwo(int n) { return (n & (n - 1)) == 0; }
    static void Init_Light_Properties(_LightsParameters& lights);

    void* m_owner = nullptr;          // kept for derived drivers; set only by copying
    void* m_current = nullptr;        // cleared by Clean()
    QorOGLRender* m_renderer = nullptr; // borrowed; set by FxInit, cleared by Reset()

private:
    friend class QorShaderManagerTestAccess;
    /// Overwrites the decision without checks.
    static void setFxImplementation(QorFxImplementation implementation);

    static QorFxImplementation s_ShaderVersion;
    /// The textures by name, each holding one reference; hashed, so look-ups do not grow
    /// with the number of textures. Its type is the library's own.
    static QorShaderTextureMap _sMapShaderTexture;
    /// References handed back, waiting for the next clean, each listed once.
    static QorShaderTextureList _sListShaderTextureToDestroy;
};

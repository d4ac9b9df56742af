/// @file
/// The base of the renderer's effect driver, whose notifications the renderer implements.
/// Through its bases it is also the library's entry point, as the framework has always
/// reached it: QorShaderManager::CreateShader() and the other factories
/// (QorShaderFactory), and the texture registry (QorShaderTextureRegistry).
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaders/QorShaderFactory.h"
#include "QorVisShaders/QorShaderTextureRegistry.h"

#include <cstdint>

class QorOGLRender;

/// The renderer's light settings; this library only clears the light-properties block.
struct _LightsParameters
{
    unsigned int lightModel = 0;       ///< light configuration code
    float globalAmbient[4] = {};
    std::uint64_t lightProperties[5] = {};
};

class QOR_VISSHADERS_API QorShaderManager : public QorShaderFactory, public QorShaderTextureRegistry
{
public:
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

};

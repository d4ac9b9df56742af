/// @file
/// The library's entry point for shader objects and effects: it decides once per process
/// which effect technology is used and makes shader objects and effects of that kind.
/// Renderers reach it as QorShaderManager's statics.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaders/QorFxImplementation.h"

class QorIShader;
class QorIShaderEffect;

class QOR_VISSHADERS_API QorShaderFactory
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

protected:
    QorShaderFactory() = default;
    ~QorShaderFactory() = default;

private:
    friend class QorShaderManagerTestAccess;
    /// Overwrites the decision without checks.
    static void setFxImplementation(QorFxImplementation implementation);

    static QorFxImplementation s_ShaderVersion;
};

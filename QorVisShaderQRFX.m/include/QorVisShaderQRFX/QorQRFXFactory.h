/// @file
/// What the shader manager needs of the GLSL-effect (QRFX) implementation: its factories.
#pragma once

class QorIShader;
class QorIShaderEffect;

/// A new GLSL-effect shader object with no effect and no parameter set, owned by the
/// caller; null when out of memory.
QorIShader* QorCreateQRFXShader();

/// A new, unregistered GLSL effect (count 1; the caller releases it); null when out of memory.
QorIShaderEffect* QorCreateQRFXEffect();

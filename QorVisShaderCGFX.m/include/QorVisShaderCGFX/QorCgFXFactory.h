/// @file
/// What the shader manager needs of the CgFX implementation: its two factories.
#pragma once

class QorIShader;
class QorIShaderEffect;

/// A new CgFX shader object with no effect and no parameter set, owned by the caller;
/// null when out of memory.
QorIShader* QorCreateCgFXShader();

/// A new, unregistered CgFX effect (count 1; the caller releases it); null when out of memory.
QorIShaderEffect* QorCreateCgFXEffect();

#include "QorfxBackend.h"

#include "QorfxCgFXBackend.h"
#include "QorfxQRFXBackend.h"

#include "QorVisShaders/QorIShader.h"

std::unique_ptr<QorfxBackend> QorfxMakeBackend(QorIShader& shader, const std::function<bool()>& load, bool& loaded)
{
    // The GLSL runtime says what went wrong while loading; its back end listens.
    if (shader.GetImplementation() == QorFxQRFX)
        return QorfxQRFXBackend::Load(shader, load, loaded);
    loaded = load();
    return QorfxCgFXBackend::For(shader);
}

#include "QorNvFXShader.h"

#include "QorQRFXProfile.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"

#include <memory>
#include <new>

QorNvFXShader::QorNvFXShader() : QorShaderObject(kQorQRFXProfile) {}

QorIShader* QorNvFXShader::Clone()
{
    return new (std::nothrow) QorNvFXShader(*this);
}

QorMaterialEffect* QorNvFXShader::ShareEffect(const char* name)
{
    return QorNvFXEffect::AddShaderEffect(name);
}

int QorNvFXShader::GetGroupParameterFloatMinMaxStep(int, int, float&, float&, float&, char**, char**)
{
    CheckFailure__("This method is not supposed to be called when using nvfx", kQorQRFXProfile.shaderSource, 544);
    return 0;
}

int QorNvFXShader::GetParameterFloatMinMaxStep(int, float&, float&, float&, char**, char**)
{
    return -1;
}

void QorNvFXShader::Stream(QorStreamer&) {}

void QorNvFXShader::UnStream(QorStreamer& streamer)
{
    std::unique_ptr<QorNvFXShaderParameters> stored(new (std::nothrow) QorNvFXShaderParameters());
    if (!stored)
        return;
    stored->UnStream(streamer);
    QorUnicodeString effectName;
    QorResourceZPKContainer* container = streamer.GetResourceZPKContainer();
    QorResourceZPKContainer::EffectSource effect;
    if (container && container->GetResourceShader(streamer, effect))
        effectName = QorUnicodeString(effect.name.c_str());
    // The stream's migration loads the GLSL counterpart once the document is read; the
    // first shader read back gives the streamer one.
    if (!streamer.GetMigration())
        streamer.SetMigration(std::make_unique<QorShaderQRFXMigration>());
    if (auto* migration = dynamic_cast<QorShaderQRFXMigration*>(streamer.GetMigration()))
        migration->AddShaderToMigrate(this, effectName, stored.get());
}

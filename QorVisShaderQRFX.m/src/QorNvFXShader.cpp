#include "QorNvFXShader.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorNvFXEffect.h"
#include "QorVisShaders/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderQRFXMigration.h"

#include <cstring>
#include <memory>
#include <new>

namespace {

const char* const kSource = "QorVisShaderQRFX.m/src/QorNvFXShader";

} // namespace

QorNvFXShader::QorNvFXShader(const QorNvFXShader& other) : QorShaderObject(other)
{
    if (other.m_parameters)
        m_parameters = new (std::nothrow) QorNvFXShaderParameters(*other.Parameters());
}

QorNvFXShader::~QorNvFXShader()
{
    ReleaseEffect();
}

QorNvFXEffect* QorNvFXShader::Effect() const
{
    return static_cast<QorNvFXEffect*>(m_effect);
}

QorNvFXShaderParameters* QorNvFXShader::Parameters() const
{
    return static_cast<QorNvFXShaderParameters*>(m_parameters);
}

void QorNvFXShader::SelectParameters(QorIShaderParameters* parameters)
{
    Effect()->SetIShaderParameters(static_cast<QorNvFXShaderParameters*>(parameters));
}

QorIShader* QorNvFXShader::Clone()
{
    return new (std::nothrow) QorNvFXShader(*this);
}

int QorNvFXShader::GetGroupParameterFloatMinMaxStep(int, int, float&, float&, float&, char**, char**)
{
    CheckFailure__("This method is not supposed to be called when using nvfx", kSource, 544);
    return 0;
}

int QorNvFXShader::GetParameterFloatMinMaxStep(int, float&, float&, float&, char**, char**)
{
    return -1;
}

int QorNvFXShader::GetParameterColor(int index, float* r, float* g, float* b, float* a)
{
    if (!m_parameters || index < 1)
        return -1;
    float rgba[4] = {0, 0, 0, 0};
    const int answer = m_parameters->GetColorValue(index, rgba, 0);
    if (answer != 0)
        return answer;
    float* outputs[4] = {r, g, b, a};
    for (int i = 0; i < 4; ++i)
        if (outputs[i])
            *outputs[i] = rgba[i];
    return 0;
}

int QorNvFXShader::GetParameterString(int index, char* buffer)
{
    if (!m_parameters || index < 1)
        return -1;
    char* file = nullptr;
    m_parameters->GetTextureValue(index, &file, 0);
    if (buffer) {
        // The caller's buffer holds QorMaxParameterStringLength bytes (see QorIShader).
        std::strncpy(buffer, file ? file : "", QorMaxParameterStringLength - 1);
        buffer[QorMaxParameterStringLength - 1] = '\0';
    }
    return 0;
}

bool QorNvFXShader::GenerateParameters()
{
    if (!m_effect)
        return false;
    DeleteParameters();
    // A compiled effect's default set is copied; an effect Init left without one loads again.
    QorNvFXShaderParameters* defaults = Effect()->IsCompiled() && Effect()->GetParameters()
                                            ? Effect()->GetParameters()
                                            : Effect()->Load();
    if (defaults)
        m_parameters = new (std::nothrow) QorNvFXShaderParameters(*defaults);
    return m_parameters != nullptr;
}

void QorNvFXShader::SetBuffer(const char* text, const char* name)
{
    ReleaseEffect();
    m_effect = QorNvFXEffect::AddShaderEffect(name);
    if (m_effect)
        m_effect->setBuffer(text);
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
    if (QorIShaderEffect* resource = container ? container->GetResourceShader(streamer) : nullptr) {
        effectName = QorUnicodeString(resource->GetName());
        container->RemoveResource(resource);
        resource->Release();
    }
    // The stream's migration loads the GLSL counterpart once the document is read; the
    // first shader read back gives the streamer one.
    if (!streamer.GetMigration())
        streamer.SetMigration(std::make_unique<QorShaderQRFXMigration>());
    if (auto* migration = dynamic_cast<QorShaderQRFXMigration*>(streamer.GetMigration()))
        migration->AddShaderToMigrate(this, effectName, stored.get());
}

bool QorNvFXShader::AdoptParameters(const QorNvFXShaderParameters& parameters)
{
    DeleteParameters();
    m_parameters = new (std::nothrow) QorNvFXShaderParameters(parameters);
    return m_parameters != nullptr;
}


#include "CgFXShader.h"

#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaders/QorShaderEffect.h"

#include <cstring>
#include <memory>
#include <new>

CgFXShader::CgFXShader(const CgFXShader& other) : QorShaderObject(other)
{
    if (other.m_parameters)
        m_parameters = new (std::nothrow) QorShaderParameters(*other.Parameters());
}

CgFXShader::~CgFXShader()
{
    ReleaseEffect();
}

QorShaderEffect* CgFXShader::Effect() const
{
    return static_cast<QorShaderEffect*>(m_effect);
}

QorShaderParameters* CgFXShader::Parameters() const
{
    return static_cast<QorShaderParameters*>(m_parameters);
}

void CgFXShader::TakeParameters(QorShaderParameters* parameters)
{
    DeleteParameters();
    m_parameters = parameters;
}

void CgFXShader::SelectParameters(QorIShaderParameters* parameters)
{
    // A CgFX shader's set is a CgFX set: the effect need not ask its type.
    Effect()->SelectParameters(static_cast<QorShaderParameters*>(parameters));
}

QorIShader* CgFXShader::Clone()
{
    return new (std::nothrow) CgFXShader(*this);
}

int CgFXShader::rangeOfHandle(CGparameter handle, float& min, float& max, float& step, char** widget, char** name)
{
    return handle ? Effect()->getParameterFloatMinMaxStep(handle, min, max, step, widget, name) : 0;
}

int CgFXShader::GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step,
                                                 char** widget, char** name)
{
    if (!m_effect || index < 1 || !m_parameters)
        return -1;
    // A group is an interface structure of the set; its entries are the members, from 1.
    return rangeOfHandle(Parameters()->GetInterfaceMemberHandle(group, index - 1), min, max, step, widget, name);
}

int CgFXShader::GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                            char** name)
{
    if (!m_effect || index < 1 || !m_parameters)
        return -1;
    return rangeOfHandle(Parameters()->GetCgParameter(index), min, max, step, widget, name);
}

int CgFXShader::GetParameterColor(int index, float* r, float* g, float* b, float* a)
{
    if (!m_parameters || index < 1)
        return -1;
    float rgba[4] = {0, 0, 0, 0};
    const int result = m_parameters->GetColorValue(index, rgba, 0);
    float* outputs[4] = {r, g, b, a};
    for (int i = 0; i < 4; ++i)
        if (outputs[i])
            *outputs[i] = rgba[i];
    return result;
}

int CgFXShader::GetParameterString(int index, char* buffer)
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
    return 1;
}

bool CgFXShader::GenerateParameters()
{
    if (!m_effect)
        return false;
    TakeParameters(nullptr);
    QorShaderParameters* defaults = Effect()->IsBound() ? Effect()->GetParameters() : Effect()->GenerateShader();
    if (defaults)
        m_parameters = new (std::nothrow) QorShaderParameters(*defaults);

    int interfaceCount = 0;
    m_effect->GetNumInterface(interfaceCount);
    if (interfaceCount != 0) {
        // A copy: connecting can add interfaces to the effect's map while we walk.
        const std::map<QorString, QorShaderInterface*> interfaces = Effect()->GetInterfaces();
        for (const auto& entry : interfaces)
            if (entry.second && m_parameters)
                m_effect->ConnectTypeToInterface(entry.first.c_str(), m_effect->GetDynamicType(entry.first.c_str()),
                                                 m_parameters);
    }
    return m_parameters != nullptr;
}

void CgFXShader::SetBuffer(const char* text, const char* name)
{
    ReleaseEffect();
    m_effect = QorShaderEffect::AddShaderEffect(name);
    if (m_effect)
        m_effect->setBuffer(text);
}

void CgFXShader::Stream(QorStreamer& streamer)
{
    if (m_parameters)
        Parameters()->Stream(streamer);
    // The effect's source travels in the container, not in this record.
    if (m_effect && streamer.GetResourceZPKContainer())
        streamer.GetResourceZPKContainer()->AddResource(streamer, m_effect);
}

void CgFXShader::UnStream(QorStreamer& streamer)
{
    std::unique_ptr<QorShaderParameters> streamed(new (std::nothrow) QorShaderParameters());
    if (!streamed)
        return;
    streamed->UnStream(streamer);
    QorResourceZPKContainer* container = streamer.GetResourceZPKContainer();
    QorIShaderEffect* resource = container ? container->GetResourceShader(streamer) : nullptr;
    if (resource) {
        // Whatever this shader held before is handed back rather than forgotten.
        ReleaseEffect();
        m_effect = QorShaderEffect::AddShaderEffect(resource->GetName());
        if (m_effect && !m_effect->Generated()) {
            m_effect->setBuffer(resource->getBuffer());
            Effect()->ConfineIncludesToSearchPaths();
            m_effect->Generate();
        }
    }
    if (m_effect && Effect()->GetParameters())
        TakeParameters(new (std::nothrow) QorShaderParameters(*Effect()->GetParameters()));
    if (resource) {
        container->RemoveResource(resource);
        resource->Release();
    }
    if (m_parameters)
        copyValuesFrom(*streamed);
}

void CgFXShader::copyValuesFrom(QorShaderParameters& streamed)
{
    // Matched by index: the stream and the effect list their parameters in one order.
    const int count = streamed.GetNbParameters();
    for (int index = 1; index < count; ++index)
        QorCopyParameterValue(streamed, index, *m_parameters, index);
}

int CgFXShader::SetEnvironmentMap(const char* file, int first, int second)
{
    (void)first; // passed through by the renderer; the CgFX set does not use them
    (void)second;
    if (!m_parameters)
        return -1;
    if (!file) {
        m_parameters->SetUseDefaultTexture(1);
        return 0;
    }
    m_parameters->SetUseDefaultTexture(0);
    return m_parameters->SetDefaultTexture(file, 0);
}

int CgFXShader::UsesAutomaticEnvironmentMap()
{
    return m_effect && Effect()->GetMaterialParameter(QorEffectAutomaticEnvironmentMap) ? 1 : 0;
}

#include "CgFXShader.h"

#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderSearch.h"
#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorMath/QorSaturatingInt.h"
#include "QorVisShaders/QorShaderEffect.h"

#include <cstring>
#include <memory>
#include <new>

CgFXShader::CgFXShader(const CgFXShader& other)
    : m_effect(other.m_effect), m_fileName(other.m_fileName), m_pathName(other.m_pathName)
{
    if (m_effect)
        m_effect->AddRef();
    if (other.m_parameters)
        m_parameters = new (std::nothrow) QorShaderParameters(*other.m_parameters);
}

CgFXShader::~CgFXShader()
{
    ReleaseEffect();
    delete m_parameters;
}

void CgFXShader::deselectParameters()
{
    // The effect only borrows the set drawing uses: it must not keep pointing at this
    // shader's set once the set goes or the shader leaves the effect.
    if (m_effect && m_parameters && m_effect->GetIShaderParameters() == m_parameters)
        m_effect->SetIShaderParameters(nullptr);
}

QorIShader* CgFXShader::Clone()
{
    return new (std::nothrow) CgFXShader(*this);
}

int CgFXShader::Detach()
{
    m_effect = nullptr;
    m_parameters = nullptr;
    return 0;
}

void CgFXShader::ReleaseEffect()
{
    if (m_effect) {
        deselectParameters();
        m_effect->Release();
        m_effect = nullptr;
    }
}

int CgFXShader::GetParameterIndex(const char* name)
{
    return m_parameters ? m_parameters->GetParameterIndex(name) : -1;
}

int CgFXShader::GetNbParameters()
{
    return m_parameters ? m_parameters->GetNbParameters() : -1;
}

int CgFXShader::GetParameterType(int index)
{
    return m_parameters && index >= 0 ? m_parameters->GetParameterType(index) : 0;
}

const char* CgFXShader::GetParameterName(int index)
{
    return m_parameters && index >= 0 ? m_parameters->GetParameterName(index) : nullptr;
}

int CgFXShader::GetParameterFloat(int index, float* value)
{
    // The set must exist even when index 0 goes to the effect.
    if (!m_parameters || index < 0 || !value)
        return -1;
    if (index == 0 && m_effect) {
        int technique = 0;
        m_effect->getTechnique(&technique);
        *value = static_cast<float>(technique);
        return 0;
    }
    return m_parameters->GetFloatValue(index, value, 0);
}

int CgFXShader::SetParameterFloat(int index, float value)
{
    if (!m_parameters || index < 0)
        return -1;
    if (index == 0 && m_effect) {
        m_effect->setTechnique(QorSaturatingInt(value));
        return 0;
    }
    return m_parameters->SetFloatValue(index, value);
}

int CgFXShader::rangeOfHandle(CGparameter handle, float& min, float& max, float& step, char** widget, char** name)
{
    return handle ? m_effect->getParameterFloatMinMaxStep(handle, min, max, step, widget, name) : 0;
}

int CgFXShader::GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step,
                                                 char** widget, char** name)
{
    if (!m_effect || index < 1 || !m_parameters)
        return -1;
    // A group is an interface structure of the set; its entries are the members, from 1.
    return rangeOfHandle(m_parameters->GetInterfaceMemberHandle(group, index - 1), min, max, step, widget, name);
}

int CgFXShader::GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                            char** name)
{
    if (!m_effect || index < 1 || !m_parameters)
        return -1;
    return rangeOfHandle(m_parameters->GetCgParameter(index), min, max, step, widget, name);
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

int CgFXShader::SetParameterColor(int index, float r, float g, float b, float a)
{
    if (!m_parameters || index < 1)
        return -1;
    const float rgba[4] = {r, g, b, a};
    return m_parameters->SetColorValue(index, rgba);
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

int CgFXShader::SetParameterString(int index, const char* value)
{
    if (!m_parameters || index < 0)
        return -1;
    if (index == 0 && m_effect) {
        m_effect->setTechniqueByName(value);
        return 0;
    }
    return m_parameters->SetTextureValue(index, value, 0);
}

void CgFXShader::SetFileName(const QorString& name)
{
    m_fileName = name;
    if (name.IsEmpty())
        return;
    const int separator = name.ReverseFindOneOf("\\/");
    if (separator > 0)
        m_pathName = name.Left(separator + 1);

    QorString path;
    if (!QorShaderSearch::FindShaderFile(name, path))
        return; // found nowhere: the shader stays as it was
    QorUnicodeString text;
    if (!QorShaderSearch::ReadSource(path, text))
        return;
    // Every shader given this file name shares the effect registered under it.
    SetBuffer(text.c_str(), m_fileName.c_str());
}

bool CgFXShader::GenerateParameters()
{
    if (!m_effect)
        return false;
    deselectParameters();
    delete m_parameters;
    m_parameters = nullptr;
    QorShaderParameters* defaults = m_effect->IsBound() ? m_effect->GetParameters() : m_effect->GenerateShader();
    if (defaults)
        m_parameters = new (std::nothrow) QorShaderParameters(*defaults);

    int interfaceCount = 0;
    m_effect->GetNumInterface(interfaceCount);
    if (interfaceCount != 0) {
        // A copy: connecting can add interfaces to the effect's map while we walk.
        const std::map<QorString, QorShaderInterface*> interfaces = m_effect->GetInterfaces();
        for (const auto& entry : interfaces)
            if (entry.second && m_parameters)
                m_effect->ConnectTypeToInterface(entry.first.c_str(), m_effect->GetDynamicType(entry.first.c_str()),
                                                 m_parameters);
    }
    return m_parameters != nullptr;
}

bool CgFXShader::UpdateLightModel(unsigned int lightModel)
{
    return m_effect ? m_effect->updateLightModel(lightModel) : false;
}

void CgFXShader::SetBuffer(const char* text, const char* name)
{
    ReleaseEffect();
    m_effect = QorShaderEffect::AddShaderEffect(name);
    if (m_effect)
        m_effect->setBuffer(text);
}

char* CgFXShader::GetBuffer()
{
    return m_effect ? m_effect->getBuffer() : nullptr;
}

void CgFXShader::Stream(QorStreamer& streamer)
{
    if (m_parameters)
        m_parameters->Stream(streamer);
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
            m_effect->ConfineIncludesToSearchPaths();
            m_effect->Generate();
        }
    }
    if (m_effect && m_effect->GetParameters()) {
        deselectParameters();
        delete m_parameters;
        m_parameters = new (std::nothrow) QorShaderParameters(*m_effect->GetParameters());
    }
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
    return m_effect && m_effect->GetMaterialParameter(QorEffectAutomaticEnvironmentMap) ? 1 : 0;
}

QorIShaderEffect* CgFXShader::GetIShaderEffect() { return m_effect; }
QorIShaderEffect* CgFXShader::GetIShaderEffect() const { return m_effect; }
QorIShaderParameters* CgFXShader::GetIShaderParameters() { return m_parameters; }
QorIShaderParameters* CgFXShader::GetIShaderParameters() const { return m_parameters; }

void CgFXShader::SetCurrentParameters()
{
    if (m_effect)
        m_effect->SelectParameters(m_parameters);
}

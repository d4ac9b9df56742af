#include "QorVisShaderShared/QorShaderObject.h"

#include "QorVisShaderShared/QorShaderSearch.h"

#include "QorMath/QorSaturatingInt.h"

#include <cstdio>
#include <cstring>
#include <new>

namespace {

// A copy of a set of the model: every back end's set copies itself as its own kind.
QorMaterialParameters* CopyOf(QorMaterialParameters& parameters)
{
    return static_cast<QorMaterialParameters*>(parameters.Clone());
}

} // namespace

QorShaderObject::QorShaderObject(const QorShaderObject& other)
    : QorIShader(), m_effect(other.m_effect), m_fileName(other.m_fileName), m_pathName(other.m_pathName),
      m_profile(other.m_profile)
{
    if (m_effect)
        m_effect->AddRef();
    if (other.m_parameters)
        m_parameters = CopyOf(*other.m_parameters);
}

QorShaderObject::~QorShaderObject()
{
    if (m_lifetime)
        *m_lifetime = nullptr;
    ReleaseEffect();
    delete m_parameters;
}

std::shared_ptr<QorIShader* const> QorShaderObject::Lifetime()
{
    if (!m_lifetime)
        m_lifetime = std::make_shared<QorIShader*>(this);
    return m_lifetime;
}

int QorShaderObject::Detach()
{
    m_effect = nullptr;
    m_parameters = nullptr;
    return 0;
}

void QorShaderObject::ReleaseEffect()
{
    if (!m_effect)
        return;
    // The effect only borrows the set drawing uses: it must not keep pointing at this
    // shader's set once the shader leaves it.
    if (m_parameters && m_effect->GetIShaderParameters() == m_parameters)
        m_effect->SelectParameters(nullptr);
    m_effect->Release();
    m_effect = nullptr;
}

void QorShaderObject::DeleteParameters()
{
    if (m_effect && m_parameters && m_effect->GetIShaderParameters() == m_parameters)
        m_effect->SelectParameters(nullptr);
    delete m_parameters;
    m_parameters = nullptr;
}

bool QorShaderObject::AdoptParameters(QorMaterialParameters& parameters)
{
    DeleteParameters();
    m_parameters = CopyOf(parameters);
    return m_parameters != nullptr;
}

int QorShaderObject::GetParameterIndex(const char* name)
{
    return m_parameters ? m_parameters->GetParameterIndex(name) : -1;
}

int QorShaderObject::GetNbParameters()
{
    return m_parameters ? m_parameters->GetNbParameters() : -1;
}

int QorShaderObject::GetParameterType(int index)
{
    return m_parameters && index >= 0 ? m_parameters->GetParameterType(index) : 0;
}

const char* QorShaderObject::GetParameterName(int index)
{
    return m_parameters && index >= 0 ? m_parameters->GetParameterName(index) : nullptr;
}

int QorShaderObject::GetParameterFloat(int index, float* value)
{
    if (!m_parameters || index < 0 || !value)
        return -1;
    if (index == 0 && m_effect) {
        // Room for two integers: an effect may write the one after its answer.
        int technique[2] = {0, 0};
        m_effect->getTechnique(technique);
        *value = static_cast<float>(technique[0]);
        return 0;
    }
    return m_parameters->GetFloatValue(index, value, 0);
}

int QorShaderObject::SetParameterFloat(int index, float value)
{
    if (!m_parameters || index < 0)
        return -1;
    if (index == 0 && m_effect) {
        m_effect->setTechnique(QorSaturatingInt(value));
        return 0;
    }
    return m_parameters->SetFloatValue(index, value);
}

int QorShaderObject::GetParameterColor(int index, float* r, float* g, float* b, float* a)
{
    if (!m_parameters || index < 1)
        return -1;
    float rgba[4] = {0, 0, 0, 0};
    const int answer = m_parameters->GetColorValue(index, rgba, 0);
    if (answer != 0 && m_profile.colorQueryStopsOnChangedMark)
        return answer;
    float* outputs[4] = {r, g, b, a};
    for (int i = 0; i < 4; ++i)
        if (outputs[i])
            *outputs[i] = rgba[i];
    return answer;
}

int QorShaderObject::SetParameterColor(int index, float r, float g, float b, float a)
{
    if (!m_parameters || index < 1)
        return -1;
    const float rgba[4] = {r, g, b, a};
    return m_parameters->SetColorValue(index, rgba);
}

int QorShaderObject::GetParameterString(int index, char* buffer)
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
    return m_profile.stringQueryAnswer;
}

int QorShaderObject::SetParameterString(int index, const char* value)
{
    if (!m_parameters || index < 0)
        return -1;
    if (index == 0 && m_effect) {
        m_effect->setTechniqueByName(value);
        return 0;
    }
    return m_parameters->SetTextureValue(index, value, 0);
}

bool QorShaderObject::GenerateParameters()
{
    if (!m_effect)
        return false;
    DeleteParameters();
    QorMaterialParameters* defaults = m_effect->HasDefaults() ? m_effect->GetParameters() : m_effect->Compile();
    if (defaults)
        m_parameters = CopyOf(*defaults);
    if (m_parameters)
        m_effect->ConnectInterfaces(*m_parameters);
    return m_parameters != nullptr;
}

bool QorShaderObject::UpdateLightModel(unsigned int lightModel)
{
    return m_effect ? m_effect->updateLightModel(lightModel) : false;
}

void QorShaderObject::SetBuffer(const char* text, const char* name)
{
    ReleaseEffect();
    m_effect = ShareEffect(name);
    if (m_effect)
        m_effect->setBuffer(text);
}

char* QorShaderObject::GetBuffer()
{
    return m_effect ? m_effect->getBuffer() : nullptr;
}

void QorShaderObject::SetCurrentParameters()
{
    if (m_effect)
        m_effect->SelectParameters(m_parameters);
}

void QorShaderObject::SetFileName(const QorString& name)
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
    if (!QorShaderSearch::ReadSource(path, text)) {
        if (m_profile.reportsUnreadableFile)
            std::printf("Shader %s not found \n", name.c_str());
        return;
    }
    SetBuffer(text.c_str(), m_fileName.c_str());
}

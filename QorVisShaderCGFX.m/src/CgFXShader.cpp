#include "CgFXShader.h"

#include "QorCgFXProfile.h"
#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorVisFoundation/QorResourceZPKContainer.h"
#include "QorVisFoundation/QorStreamer.h"
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include <memory>
#include <new>

CgFXShader::CgFXShader() : QorShaderObject(kQorCgFXProfile) {}

QorShaderEffect* CgFXShader::Effect() const
{
    return static_cast<QorShaderEffect*>(m_effect);
}

QorShaderParameters* CgFXShader::Parameters() const
{
    return static_cast<QorShaderParameters*>(m_parameters);
}

QorMaterialEffect* CgFXShader::ShareEffect(const char* name)
{
    return QorShaderEffect::AddShaderEffect(name);
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

void CgFXShader::Stream(QorStreamer& streamer)
{
    if (m_parameters)
        m_parameters->Stream(streamer);
    // The effect's source travels in the container, not in this record.
    if (m_effect && streamer.GetResourceZPKContainer())
        streamer.GetResourceZPKContainer()->AddResource(streamer, m_effect->GetName(), m_effect->getBuffer());
}

void CgFXShader::UnStream(QorStreamer& streamer)
{
    std::unique_ptr<QorShaderParameters> streamed(new (std::nothrow) QorShaderParameters());
    if (!streamed)
        return;
    streamed->UnStream(streamer);
    QorResourceZPKContainer* container = streamer.GetResourceZPKContainer();
    QorResourceZPKContainer::EffectSource stored;
    if (container && container->GetResourceShader(streamer, stored)) {
        // Whatever this shader held before is handed back rather than forgotten.
        ReleaseEffect();
        m_effect = QorShaderEffect::AddShaderEffect(stored.name.c_str());
        if (m_effect && !m_effect->Generated()) {
            m_effect->setBuffer(stored.hasSource ? stored.source.c_str() : nullptr);
            Effect()->ConfineIncludesToSearchPaths();
            m_effect->Generate();
        }
    }
    if (m_effect && m_effect->GetParameters())
        AdoptParameters(*m_effect->GetParameters());
    // Matched by index: the stream and the effect list their parameters in one order.
    const int count = streamed->GetNbParameters();
    for (int index = 1; m_parameters && index < count; ++index)
        QorCopyParameterValue(*streamed, index, *m_parameters, index);
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
    return m_effect && Effect()->GetFeed(QorFeedAutomaticEnvironmentMap) ? 1 : 0;
}

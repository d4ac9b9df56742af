// Lifecycle of a GLSL effect: construction, the registry by name, Init, techniques and
// the light mask.
#include "QorVisShaderQRFX/QorNvFXEffect.h"

#include "QorQRFXProfile.h"

#include "QorVisShaderShared/QorShaderEffectRegistry.h"

#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"

#include <nvFX/IContainer.h>

#include <algorithm>
#include <new>

namespace {

QorShaderEffectRegistry<QorNvFXEffect>& Registry()
{
    static QorShaderEffectRegistry<QorNvFXEffect> registry;
    return registry;
}

} // namespace

QorNvFXEffect::QorNvFXEffect() : QorMaterialEffect(kQorQRFXProfile)
{
    Init();
}

QorNvFXEffect::~QorNvFXEffect()
{
    // The default set goes first: its values mirror the containers' uniforms.
    ResetModel();
    retireContainer();
    for (nvFX::IContainer* container : m_retiredContainers)
        nvFX::IContainer::destroy(container);
}

QorNvFXEffect* QorNvFXEffect::AddShaderEffect(const char* name)
{
    return Registry().Add(name, [] { return new (std::nothrow) QorNvFXEffect(); });
}

void QorNvFXEffect::Unregister()
{
    Registry().Remove(this);
}

void QorNvFXEffect::retireContainer()
{
    if (m_container)
        m_retiredContainers.push_back(m_container);
    m_container = nullptr;
    SetPushable(false);
    // The selected set's values mirror the retired container's uniforms: an upload
    // through them would write where nothing draws. Its shader selects a set again.
    SelectParameters(nullptr);
    m_technique = nullptr;
    ForgetFeeds(QorFeedProjection, QorFeedCount);
    std::fill(std::begin(m_named), std::end(m_named), nullptr);
}

void QorNvFXEffect::Init()
{
    retireContainer();
    m_lightMask = 0;
    m_lightCount = 0;
    ResetModel();
}

void QorNvFXEffect::getTechnique(int* index)
{
    if (!m_container || !index)
        return;
    index[0] = 0;
    if (!m_container->findTechnique(0))
        index[0] = -1;
    else if (!m_technique)
        index[1] = -1; // the second integer the callers give room for
}

void QorNvFXEffect::setTechnique(int index)
{
    if (!m_container)
        return;
    if (nvFX::ITechnique* technique = m_container->findTechnique(index))
        m_technique = technique;
}

void QorNvFXEffect::setTechniqueByName(const char* name)
{
    if (!m_container || !name)
        return;
    if (nvFX::ITechnique* technique = m_container->findTechnique(name))
        m_technique = technique;
}

QorMaterialParameters* QorNvFXEffect::Compile()
{
    return Load();
}

bool QorNvFXEffect::updateLightModel(unsigned int mask)
{
    if (mask == m_lightMask)
        return true;
    m_lightMask = mask;
    countLights();
    return true;
}

void QorNvFXEffect::countLights()
{
    // Lights from the lowest two bits up, until the first empty group.
    m_lightCount = 0;
    while (m_lightCount < 8 && ((m_lightMask >> (2 * m_lightCount)) & 3u) != 0)
        ++m_lightCount;
}

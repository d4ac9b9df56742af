// Lifecycle of a GLSL effect: construction, reference counting, the registry by name,
// naming, source, techniques and the light mask.
#include "QorVisShaders/QorNvFXEffect.h"

#include "QorVisShaderShared/QorShaderEffectRegistry.h"
#include "QorVisShaderShared/QorShaderEffectText.h"

#include "QorVisShaders/QorNvFXShaderParameters.h"

#include <nvFX/IContainer.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

QorShaderEffectRegistry<QorNvFXEffect>& Registry()
{
    static QorShaderEffectRegistry<QorNvFXEffect> registry;
    return registry;
}

} // namespace

QorNvFXEffect::QorNvFXEffect()
{
    Init();
}

QorNvFXEffect::~QorNvFXEffect()
{
    std::free(m_buffer);
    std::free(m_name);
    delete[] m_uuid;
    delete[] m_provider;
    delete m_parameters;
    retireContainer();
    for (nvFX::IContainer* container : m_retiredContainers)
        nvFX::IContainer::destroy(container);
}

QorNvFXEffect* QorNvFXEffect::AddShaderEffect(const char* name)
{
    return Registry().Add(name, [] { return new (std::nothrow) QorNvFXEffect(); });
}

void QorNvFXEffect::RemoveShaderEffect(const QorNvFXEffect* effect)
{
    Registry().Remove(effect);
}

unsigned int QorNvFXEffect::AddRef()
{
    return ++m_refCount;
}

unsigned int QorNvFXEffect::Release()
{
    if (m_refCount > 1)
        return --m_refCount;
    RemoveShaderEffect(this);
    delete this;
    return 0;
}

void QorNvFXEffect::retireContainer()
{
    if (m_container)
        m_retiredContainers.push_back(m_container);
    m_container = nullptr;
    m_technique = nullptr;
    std::fill(std::begin(m_semantic), std::end(m_semantic), nullptr);
    std::fill(std::begin(m_named), std::end(m_named), nullptr);
}

void QorNvFXEffect::Init()
{
    retireContainer();
    m_lightMask = 0;
    m_lightCount = 0;
    delete m_parameters;
    m_parameters = nullptr;
    m_currentParameters = nullptr;
    std::free(m_buffer);
    m_buffer = nullptr;
    m_first = 1;
    m_flag = 0;
    m_second = 0;
    // The reference count is left alone: the holders of a shared effect keep their
    // references across an Init, and resetting it would free the effect under them.
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

void QorNvFXEffect::setFileName(const QorString& name)
{
    QorShaderEffectText::SetFileName(name, m_fileName, m_pathName);
}

void QorNvFXEffect::setBuffer(const char* text)
{
    QorShaderEffectText::SetBuffer(m_buffer, m_fileName, text);
}

void QorNvFXEffect::SetName(char* name)
{
    // The name handed over before is freed, not forgotten: a renamed effect leaks nothing.
    QorShaderEffectText::SetName(m_name, name);
}

void QorNvFXEffect::Stream(QorStreamer&) {}

void QorNvFXEffect::UnStream(QorStreamer& streamer)
{
    QorShaderEffectText::UnStream(streamer, m_name, m_buffer);
}

QorIShaderParameters* QorNvFXEffect::GetIShaderParameters()
{
    return m_currentParameters;
}

QorIShaderParameters* QorNvFXEffect::Generate()
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

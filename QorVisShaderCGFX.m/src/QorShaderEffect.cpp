// Lifecycle of a CgFX effect: construction, reference counting, the registry by name,
// naming, source and streaming.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorVisShaderShared/QorShaderEffectRegistry.h"
#include "QorVisShaderShared/QorShaderEffectText.h"

#include "QorShaderInterface.h"
#include "QorShaderParameters.h"
#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorStreamer.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

QorShaderEffectRegistry<QorShaderEffect>& _listShaderEffectName()
{
    static QorShaderEffectRegistry<QorShaderEffect> registry;
    return registry;
}

} // namespace

QorShaderEffect::QorShaderEffect()
{
    Init();
}

QorShaderEffect::~QorShaderEffect()
{
    // The effect goes to the host first; the contexts (the current one even when the last
    // compilation failed and left no effect) go with their holders after this body.
    if (m_effect)
        DeleteShaderEffect(m_effect);
    m_effect = nullptr;
    std::free(m_buffer);
    std::free(m_name);
    delete[] m_uuid;
    delete[] m_provider;
    delete m_parameters;
    for (auto& entry : m_interfaces)
        delete entry.second;
}

unsigned int QorShaderEffect::AddRef()
{
    return ++m_refCount;
}

unsigned int QorShaderEffect::Release()
{
    if (m_refCount > 1)
        return --m_refCount;
    RemoveShaderEffect(this);
    delete this;
    return 0;
}

void QorShaderEffect::Init()
{
    m_lightModel = 0;
    m_needTanBin = 0;
    // The context is kept alive for interfaces made in it (see m_retiredContexts); the
    // next compilation creates a fresh one.
    if (m_context)
        m_retiredContexts.push_back(std::move(m_context));
    m_effect = nullptr;
    std::fill(std::begin(m_matrices), std::end(m_matrices), nullptr);
    // The seven coefficient handles are cleared by binding itself.
    std::fill(m_material + QorEffectDiffuse, std::end(m_material), nullptr);
    m_technique = nullptr;
    m_techniqueIndex = 0;
    m_lightsArray = nullptr;
    m_lightCount = 0;
    std::fill(std::begin(m_lights), std::end(m_lights), QorShaderLight{});
    m_environmentState = QorEnvironmentNone;
    m_environmentInterface = nullptr;
    std::fill(std::begin(m_environmentMembers), std::end(m_environmentMembers), nullptr);
    m_iblDiffuse = nullptr;
    m_iblSpecular = nullptr;
    m_techniqueValidated = 0;
    m_bound = 0;
    delete m_parameters;
    m_parameters = nullptr;
    m_interfaceParameters = nullptr;
    m_currentOwnSet = nullptr;
    std::free(m_buffer);
    m_buffer = nullptr;
    // The reference count is left alone: the holders of a shared effect keep their
    // references across a recompilation, and resetting it would free the effect under them.
}

QorShaderEffectAndName* QorShaderEffect::GetShaderEffect(const char* name)
{
    return _listShaderEffectName().Find(name);
}

QorShaderEffectAndName* QorShaderEffect::GetShaderEffect(const QorShaderEffect* effect)
{
    return _listShaderEffectName().Find(effect);
}

QorShaderEffect* QorShaderEffect::AddShaderEffect(const char* name)
{
    return _listShaderEffectName().Add(name, [] { return new (std::nothrow) QorShaderEffect(); });
}

void QorShaderEffect::RemoveShaderEffect(const QorShaderEffect* effect)
{
    _listShaderEffectName().Remove(effect);
}

void QorShaderEffect::SetName(char* name)
{
    QorShaderEffectText::SetName(m_name, name);
}

void QorShaderEffect::setFileName(const QorString& name)
{
    QorShaderEffectText::SetFileName(name, m_fileName, m_pathName);
}

void QorShaderEffect::setBuffer(const char* text)
{
    m_includesConfined = false;
    QorShaderEffectText::SetBuffer(m_buffer, m_fileName, text);
}

void QorShaderEffect::Stream(QorStreamer& streamer)
{
    QorShaderEffectText::Stream(streamer, m_name, m_buffer);
}

void QorShaderEffect::UnStream(QorStreamer& streamer)
{
    QorShaderEffectText::UnStream(streamer, m_name, m_buffer);
}

void QorShaderEffect::SetIShaderParameters(QorIShaderParameters* parameters)
{
    m_interfaceParameters = parameters;
    m_currentOwnSet = dynamic_cast<QorShaderParameters*>(parameters);
}

void QorShaderEffect::SelectParameters(QorShaderParameters* parameters)
{
    m_interfaceParameters = parameters;
    m_currentOwnSet = parameters;
}

int QorShaderEffect::GetNumInterface(int& count) const
{
    count = static_cast<int>(m_interfaces.size());
    return 1;
}

QorIShaderParameters* QorShaderEffect::Generate()
{
    return GenerateShader();
}

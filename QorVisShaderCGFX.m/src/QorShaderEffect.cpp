// Lifecycle of a CgFX effect: construction, reference counting, the registry by name,
// naming, source and streaming.
#include "QorVisShaders/QorShaderEffect.h"

#include "QorShaderEffectAndName.h"
#include "QorShaderInterface.h"
#include "QorShaderParameters.h"
#include "QorSystem/QorStrings.h"
#include "QorVisFoundation/QorGLServices.h"
#include "QorVisFoundation/QorStreamer.h"

#include <algorithm>
#include <list>
#include <cstdlib>
#include <memory>
#include <new>
#include <unordered_map>

namespace {

// The registry keeps the order of registration (first match wins when scanning) and
// indexes by name and by effect, so that look-ups and removals take constant time
// whatever the number of effects.
struct EffectRegistry
{
    using Entries = std::list<QorShaderEffectAndName>;
    Entries entries;
    std::unordered_map<std::string, Entries::iterator> byName;
    std::unordered_map<const QorShaderEffect*, Entries::iterator> byEffect;
};

EffectRegistry& _listShaderEffectName()
{
    static EffectRegistry registry;
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
    const auto& byName = _listShaderEffectName().byName;
    const auto found = byName.find(name ? name : "");
    return found == byName.end() ? nullptr : &*found->second;
}

QorShaderEffectAndName* QorShaderEffect::GetShaderEffect(const QorShaderEffect* effect)
{
    const auto& byEffect = _listShaderEffectName().byEffect;
    const auto found = byEffect.find(effect);
    return found == byEffect.end() ? nullptr : &*found->second;
}

QorShaderEffect* QorShaderEffect::AddShaderEffect(const char* name)
{
    if (!name || !*name) {
        QorShaderEffect* effect = new (std::nothrow) QorShaderEffect();
        if (effect)
            effect->SetName(_strdup(""));
        return effect;
    }
    if (QorShaderEffectAndName* entry = GetShaderEffect(name)) {
        entry->GetEffect()->AddRef();
        return entry->GetEffect();
    }
    QorShaderEffect* effect = new (std::nothrow) QorShaderEffect();
    if (!effect)
        return nullptr;
    EffectRegistry& registry = _listShaderEffectName();
    const auto entry = registry.entries.emplace(registry.entries.end(), name, effect);
    registry.byName.emplace(name, entry);
    registry.byEffect.emplace(effect, entry);
    effect->SetName(_strdup(name));
    return effect;
}

void QorShaderEffect::RemoveShaderEffect(const QorShaderEffect* effect)
{
    EffectRegistry& registry = _listShaderEffectName();
    const auto found = registry.byEffect.find(effect);
    if (found == registry.byEffect.end())
        return;
    const EffectRegistry::Entries::iterator entry = found->second;
    registry.byName.erase(entry->GetName());
    registry.byEffect.erase(found);
    // The order of the other entries is kept.
    registry.entries.erase(entry);
}

void QorShaderEffect::SetName(char* name)
{
    std::free(m_name);
    m_name = name;
}

void QorShaderEffect::setFileName(const QorString& name)
{
    m_fileName = name;
    const int separator = name.ReverseFindOneOf("\\/");
    if (separator >= 1)
        m_pathName = name.Left(separator + 1);
}

void QorShaderEffect::setBuffer(const char* text)
{
    std::free(m_buffer);
    m_buffer = nullptr;
    m_includesConfined = false;
    if (text) {
        m_buffer = _strdup(text);
        // The next compilation takes the buffer, not a file.
        m_fileName = QorString("");
    }
}

void QorShaderEffect::Stream(QorStreamer& streamer)
{
    streamer.WriteString(m_name);
    streamer.WriteString(m_buffer);
}

void QorShaderEffect::UnStream(QorStreamer& streamer)
{
    char* name = nullptr;
    char* buffer = nullptr;
    streamer.ReadString(name);
    streamer.ReadString(buffer);
    // The previous texts are freed as they are replaced, so nothing leaks.
    if (name)
        SetName(_strdup(name));
    if (buffer) {
        std::free(m_buffer);
        m_buffer = _strdup(buffer);
    }
    delete[] name;
    delete[] buffer;
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

// Lifecycle of a CgFX effect: construction, the registry by name, Init and the source.
#include "QorVisShaderCGFX/QorShaderEffect.h"

#include "QorCgFXProfile.h"
#include "QorShaderInterface.h"
#include "QorShaderParameters.h"

#include "QorVisShaderShared/QorShaderEffectRegistry.h"

#include "QorDeleteShaderEffect.h"

#include <algorithm>
#include <new>

namespace {

QorShaderEffectRegistry<QorShaderEffect>& _listShaderEffectName()
{
    static QorShaderEffectRegistry<QorShaderEffect> registry;
    return registry;
}

} // namespace

QorShaderEffect::QorShaderEffect() : QorMaterialEffect(kQorCgFXProfile)
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
    for (auto& entry : m_interfaces)
        delete entry.second;
}

QorShaderEffect* QorShaderEffect::AddShaderEffect(const char* name)
{
    return _listShaderEffectName().Add(name, [] { return new (std::nothrow) QorShaderEffect(); });
}

void QorShaderEffect::Unregister()
{
    _listShaderEffectName().Remove(this);
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
    SetPushable(false);
    // The seven coefficient handles are cleared by binding itself.
    ForgetFeeds(QorFeedProjection, QorFeedAmbientCoeff);
    ForgetFeeds(QorFeedDiffuse, QorFeedCount);
    m_technique = nullptr;
    m_techniqueIndex = 0;
    m_lightsArray = nullptr;
    m_lightCount = 0;
    std::fill(std::begin(m_lights), std::end(m_lights), QorShaderLight{});
    m_environmentState = QorEnvironmentNone;
    m_environmentInterface = nullptr;
    std::fill(std::begin(m_environmentMembers), std::end(m_environmentMembers), nullptr);
    m_bound = 0;
    ResetModel();
}

void QorShaderEffect::setBuffer(const char* text)
{
    m_includesConfined = false;
    QorMaterialEffect::setBuffer(text);
}

int QorShaderEffect::GetNumInterface(int& count) const
{
    count = static_cast<int>(m_interfaces.size());
    return 1;
}

QorMaterialParameters* QorShaderEffect::Compile()
{
    return GenerateShader();
}

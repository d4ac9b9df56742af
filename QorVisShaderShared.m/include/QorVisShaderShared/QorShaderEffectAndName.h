/// @file
/// One entry of an effect registry: a registered name and the effect it names.
#pragma once

#include <string>

class QorIShaderEffect;

class QorShaderEffectAndName
{
public:
    QorShaderEffectAndName(const char* name, QorIShaderEffect* effect) : m_name(name), m_effect(effect) {}
    virtual ~QorShaderEffectAndName() { m_effect = nullptr; }

    const std::string& GetName() const { return m_name; }
    QorIShaderEffect* GetEffect() const { return m_effect; }

private:
    std::string m_name;           // the entry's own copy
    QorIShaderEffect* m_effect;   // not owned: the effect unregisters itself on its last Release
};

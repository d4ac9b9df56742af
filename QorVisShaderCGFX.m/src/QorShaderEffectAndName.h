/// @file
/// One entry of the effect registry: a registered name and the effect it names.
#pragma once

#include <string>

class QorShaderEffect;

class QorShaderEffectAndName
{
public:
    QorShaderEffectAndName(const char* name, QorShaderEffect* effect) : m_name(name), m_effect(effect) {}
    virtual ~QorShaderEffectAndName() { m_effect = nullptr; }

    const std::string& GetName() const { return m_name; }
    QorShaderEffect* GetEffect() const { return m_effect; }

private:
    std::string m_name;         // the entry's own copy
    QorShaderEffect* m_effect;  // not owned: the effect unregisters itself on its last Release
};

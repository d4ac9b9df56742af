/// @file
/// The registry that shares one effect per name between the shader objects naming it.
/// Each implementation keeps one for its own effects. It keeps the order of registration
/// and indexes by name and by effect, so look-ups and removals take constant time
/// whatever the number of effects. It holds no reference: an effect removes itself on its
/// last Release. Unlocked: used from the rendering thread.
#pragma once

#include "QorVisShaderShared/QorShaderEffectAndName.h"

#include "QorSystem/QorStrings.h"

#include <list>
#include <new>
#include <string>
#include <unordered_map>

template <typename Effect>
class QorShaderEffectRegistry
{
public:
    /// The entry of that name, or null (a null name is taken as "").
    QorShaderEffectAndName* Find(const char* name) const
    {
        const auto found = m_byName.find(name ? name : "");
        return found == m_byName.end() ? nullptr : &*found->second;
    }
    QorShaderEffectAndName* Find(const Effect* effect) const
    {
        const auto found = m_byEffect.find(effect);
        return found == m_byEffect.end() ? nullptr : &*found->second;
    }

    /// The effect registered under `name` with one more reference, or a new one (count
    /// 1) registered under it and named by a heap copy of it. A null or empty name gives
    /// a new, unregistered effect named "". Null when out of memory. `create` makes an
    /// effect (the registry cannot reach the effects' private constructors).
    template <typename Create>
    Effect* Add(const char* name, Create create)
    {
        if (!name || !*name) {
            Effect* effect = create();
            if (effect)
                effect->SetName(_strdup(""));
            return effect;
        }
        if (QorShaderEffectAndName* entry = Find(name)) {
            entry->GetEffect()->AddRef();
            return static_cast<Effect*>(entry->GetEffect());
        }
        Effect* effect = create();
        if (!effect)
            return nullptr;
        const auto entry = m_entries.emplace(m_entries.end(), name, effect);
        m_byName.emplace(name, entry);
        m_byEffect.emplace(effect, entry);
        effect->SetName(_strdup(name));
        return effect;
    }

    /// Forgets the effect's entry; the order of the others is kept.
    void Remove(const Effect* effect)
    {
        const auto found = m_byEffect.find(effect);
        if (found == m_byEffect.end())
            return;
        const auto entry = found->second;
        m_byName.erase(entry->GetName());
        m_byEffect.erase(found);
        m_entries.erase(entry);
    }

private:
    using Entries = std::list<QorShaderEffectAndName>;
    Entries m_entries;
    std::unordered_map<std::string, typename Entries::iterator> m_byName;
    std::unordered_map<const Effect*, typename Entries::iterator> m_byEffect;
};

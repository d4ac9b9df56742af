// The shared texture registry: one counted record per file name,
// retired through the destroy list at a moment the renderer chooses. Look-ups, hand-backs
// and removals take constant time, whatever the number of textures.
#include "QorVisShaders/QorShaderTextureRegistry.h"
#include "QorVisShaders/QorShaderTexture.h"

#include "QorVisFoundation/QorGLServices.h"

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// The names are kept by the map itself, so that a record whose own copy of its name was
// freed (a reloaded default texture) can still be found and removed.
struct QorShaderTextureMap
{
    struct Entry
    {
        std::string name;
        QorShaderTexture* texture = nullptr;
    };
    // Keys view the names of the entries, which never move.
    std::unordered_map<std::string_view, std::unique_ptr<Entry>> byName;
    std::unordered_map<const QorShaderTexture*, std::string_view> nameOf;
};

struct QorShaderTextureList
{
    std::vector<QorShaderTexture*> order; // as handed back
    std::unordered_set<const QorShaderTexture*> listed;
};

QorShaderTextureMap QorShaderTextureRegistry::_sMapShaderTexture;
QorShaderTextureList QorShaderTextureRegistry::_sListShaderTextureToDestroy;

QorShaderTexture* QorShaderTextureRegistry::GetShaderTexture(const char* name)
{
    if (!name)
        return nullptr;
    const auto found = _sMapShaderTexture.byName.find(name);
    return found == _sMapShaderTexture.byName.end() ? nullptr : found->second->texture;
}

QorShaderTexture* QorShaderTextureRegistry::AddShaderTexture(const char* name)
{
    if (!name)
        return nullptr;
    QorShaderTextureMap& map = _sMapShaderTexture;
    auto found = map.byName.find(name);
    if (found == map.byName.end()) {
        auto entry = std::make_unique<QorShaderTextureMap::Entry>();
        entry->name = name;
        const std::string_view key = entry->name;
        found = map.byName.emplace(key, std::move(entry)).first;
    }
    QorShaderTextureMap::Entry& entry = *found->second;
    // A null record is left by an earlier allocation failure: try again.
    if (!entry.texture) {
        entry.texture = new (std::nothrow) QorShaderTexture(name);
        if (entry.texture)
            map.nameOf[entry.texture] = found->first;
    }
    if (entry.texture)
        entry.texture->AddRef(); // the map keeps the first reference, the caller gets this one
    return entry.texture;
}

void QorShaderTextureRegistry::AddShaderTextureToDestroyList(QorShaderTexture* texture)
{
    if (!texture)
        return;
    QorShaderTextureList& list = _sListShaderTextureToDestroy;
    if (list.listed.insert(texture).second)
        list.order.push_back(texture);
    texture->Release();
}

namespace {

// Removes the map entry of a texture about to be destroyed, found by the record itself,
// so the map never keeps a pointer to a destroyed record.
void UnregisterTexture(QorShaderTextureMap& map, QorShaderTexture* texture)
{
    const auto name = map.nameOf.find(texture);
    if (name == map.nameOf.end())
        return;
    const std::string_view key = name->second;
    map.nameOf.erase(name);
    map.byName.erase(key);
}

} // namespace

void QorShaderTextureRegistry::CleanShaderTextureToDestroyList()
{
    for (QorShaderTexture* texture : _sListShaderTextureToDestroy.order) {
        if (!texture)
            break;
        // Someone took a new reference after listing it: it stays.
        if (texture->GetRefCount() != 1)
            continue;
        UnregisterTexture(_sMapShaderTexture, texture);
        if (texture->GetID() != 0)
            DeleteDLTexture(texture->GetID());
        texture->Release();
    }
    std::vector<QorShaderTexture*>().swap(_sListShaderTextureToDestroy.order);
    _sListShaderTextureToDestroy.listed.clear();
}

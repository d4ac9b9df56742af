// The shared texture registry of QorShaderManager: one counted record per file name,
// retired through the destroy list at a moment the renderer chooses.
#include "QorVisShaders/QorShaderManager.h"
#include "QorVisShaders/QorShaderTexture.h"

#include "QorVisFoundation/QorGLServices.h"

#include <algorithm>
#include <new>

std::map<QorString, QorShaderTexture*> QorShaderManager::_sMapShaderTexture;
std::vector<QorShaderTexture*> QorShaderManager::_sListShaderTextureToDestroy;

QorShaderTexture* QorShaderManager::GetShaderTexture(const char* name)
{
    if (!name)
        return nullptr;
    const auto found = _sMapShaderTexture.find(QorString(name));
    return found == _sMapShaderTexture.end() ? nullptr : found->second;
}

QorShaderTexture* QorShaderManager::AddShaderTexture(const char* name)
{
    if (!name)
        return nullptr;
    QorShaderTexture*& entry = _sMapShaderTexture[QorString(name)];
    // A null entry is left by an earlier allocation failure: try again.
    if (!entry)
        entry = new (std::nothrow) QorShaderTexture(name);
    if (entry)
        entry->AddRef(); // the map keeps the first reference, the caller gets this one
    return entry;
}

void QorShaderManager::AddShaderTextureToDestroyList(QorShaderTexture* texture)
{
    if (!texture)
        return;
    std::vector<QorShaderTexture*>& list = _sListShaderTextureToDestroy;
    if (std::find(list.rbegin(), list.rend(), texture) == list.rend())
        list.push_back(texture);
    texture->Release();
}

namespace {

// Removes the map entry of a texture about to be destroyed. By name when the record
// still has it; a record whose name was freed (a reloaded default texture) is found by
// pointer, so the map never keeps a pointer to a destroyed record.
void UnregisterTexture(std::map<QorString, QorShaderTexture*>& map, QorShaderTexture* texture)
{
    if (texture->GetName()) {
        const auto entry = map.find(QorString(texture->GetName()));
        if (entry != map.end() && entry->second == texture)
            map.erase(entry);
        return;
    }
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        if (entry->second == texture) {
            map.erase(entry);
            return;
        }
}

} // namespace

void QorShaderManager::CleanShaderTextureToDestroyList()
{
    for (QorShaderTexture* texture : _sListShaderTextureToDestroy) {
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
    std::vector<QorShaderTexture*>().swap(_sListShaderTextureToDestroy);
}

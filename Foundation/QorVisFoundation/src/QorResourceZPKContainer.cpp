#include "QorVisFoundation/QorResourceZPKContainer.h"

#include "QorVisFoundation/QorStreamer.h"

#include <new>
#include <utility>

int QorResourceZPKContainer::AddEntry(Entry entry)
{
    try {
        entry.id = static_cast<int>(m_entries.size());
        m_entries.push_back(std::move(entry));
        return m_entries.back().id;
    } catch (...) {
        return -1;
    }
}

bool QorResourceZPKContainer::AdoptEntries(std::vector<Entry>& entries)
{
    try {
        std::multimap<QorString, int> effectIds;
        std::map<const void*, int> imageIds;
        for (std::size_t position = 0; position < entries.size(); ++position) {
            Entry& entry = entries[position];
            entry.id = static_cast<int>(position);
            if (entry.kind == QorEffectEntry)
                effectIds.emplace(entry.name, entry.id);
            else if (entry.image)
                imageIds.emplace(entry.image.get(), entry.id); // keeps the first id of an image
        }
        // Swaps cannot fail: the container changes whole or not at all.
        m_entries.swap(entries);
        m_effectIds.swap(effectIds);
        m_imageIds.swap(imageIds);
        return true;
    } catch (...) {
        return false;
    }
}

const QorResourceZPKContainer::Entry* QorResourceZPKContainer::GetEntry(int id) const
{
    if (id < 0 || id >= GetEntryCount())
        return nullptr;
    return &m_entries[static_cast<std::size_t>(id)];
}

void QorResourceZPKContainer::AddResource(QorStreamer& streamer, const char* name, const char* source)
{
    int id = -1;
    try {
        const QorString key(name ? name : "");
        const auto sameName = m_effectIds.equal_range(key);
        for (auto it = sameName.first; it != sameName.second && id < 0; ++it) {
            const Entry& entry = m_entries[static_cast<std::size_t>(it->second)];
            if (entry.hasSource == (source != nullptr) && (!source || entry.source == source))
                id = entry.id;
        }
        if (id < 0) {
            Entry entry;
            entry.kind = QorEffectEntry;
            entry.name = key;
            entry.hasSource = source != nullptr;
            entry.source = source ? source : "";
            id = AddEntry(std::move(entry));
            if (id >= 0)
                m_effectIds.emplace(key, id);
        }
    } catch (...) {
        // Out of memory: the effect is streamed as absent rather than half-stored.
        id = -1;
    }
    streamer.WriteInt(id, 0);
}

bool QorResourceZPKContainer::GetResourceShader(QorStreamer& streamer, EffectSource& effect)
{
    int id = -1;
    if (!streamer.ReadInt(id, 0))
        return false;
    const Entry* entry = GetEntry(id);
    if (!entry || entry->kind != QorEffectEntry)
        return false;
    try {
        EffectSource read{entry->name.str(), entry->source, entry->hasSource};
        effect = std::move(read);
        return true;
    } catch (...) {
        return false; // out of memory: as if the stream named no effect
    }
}

QorTexturePixelImage* QorResourceZPKContainer::GetImage(const QorString& name, QorReadOnlyState state)
{
    (void)state; // one shared image serves both states in memory
    try {
        const auto known = m_namedImages.find(name);
        if (known != m_namedImages.end())
            return known->second.get();
        QorTexturePixelImage::Ptr image;
        if (QorTexturePixelImage* listed = QorTexturePixelImage::GetImageFromList(name)) {
            listed->AddRef();
            image.reset(listed);
        } else {
            image.reset(QorTexturePixelImage::ReadFromFile(name.c_str(), name));
        }
        if (!image)
            return nullptr;
        QorTexturePixelImage* borrowed = image.get();
        m_namedImages.emplace(name, std::move(image));
        return borrowed;
    } catch (...) {
        return nullptr;
    }
}

void QorResourceZPKContainer::AddResource(QorStreamer& streamer, QorTexturePixelImage* image)
{
    int id = -1;
    if (image) {
        try {
            const auto known = m_imageIds.find(image);
            if (known != m_imageIds.end()) {
                id = known->second;
            } else {
                Entry entry;
                entry.kind = QorImageEntry;
                entry.name = image->GetName();
                image->AddRef();
                entry.image.reset(image);
                id = AddEntry(std::move(entry));
                if (id >= 0)
                    m_imageIds.emplace(image, id);
            }
        } catch (...) {
            id = -1;
        }
    }
    streamer.WriteInt(id, 0);
}

int QorResourceZPKContainer::GetResource(QorStreamer& streamer, QorTexturePixelImage*& image)
{
    image = nullptr;
    int id = -1;
    if (!streamer.ReadInt(id, 0))
        return 0;
    const Entry* entry = GetEntry(id);
    if (!entry || entry->kind != QorImageEntry || !entry->image)
        return 0;
    image = entry->image.get();
    image->AddRef();
    return 1;
}

void QorResourceZPKContainer::ReplaceResource(void* old, void* replacement)
{
    if (!old || !replacement || old == replacement)
        return;
    auto* newImage = static_cast<QorTexturePixelImage*>(replacement);
    int firstId = -1;
    for (Entry& entry : m_entries) {
        if (entry.kind != QorImageEntry || entry.image.get() != old)
            continue;
        newImage->AddRef();
        entry.image.reset(newImage); // releases the entry's reference on the old image
        if (firstId < 0)
            firstId = entry.id;
    }
    if (firstId < 0)
        return;
    m_imageIds.erase(old);
    try {
        for (Entry& entry : m_entries)
            if (entry.image.get() == newImage)
                entry.name = newImage->GetName();
        m_imageIds.emplace(newImage, firstId); // keeps the replacement's own id if it had one
    } catch (...) {
        // Out of memory: the entries hold the new image; only names and id reuse may lag.
    }
}

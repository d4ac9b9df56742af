/// @file
/// The resources a stream refers to by integer id: shader effect sources and pixel
/// images. A shader streams an id in place of the resource; whoever un-streams it asks the
/// same container for the resource back. The container lives in memory; every entry
/// carries an id, a kind, a name and its data, which is what a ".zpk" package stores.
#pragma once

#include "QorSystem/QorString.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

class QorIShaderEffect;
class QorShaderEffectResource;
class QorStreamer;

enum QorReadOnlyState
{
    QorReadWrite = 0,
    QorReadOnly = 1,
};

class QorResourceZPKContainer
{
public:
    enum EntryKind : int
    {
        QorEffectEntry = 1, ///< an effect's name and source text
        QorImageEntry = 2,  ///< a pixel image, named by the image's name
    };

    struct Entry
    {
        int id = -1;
        EntryKind kind = QorEffectEntry;
        QorString name;
        std::string source;              ///< effect entries: the source text
        bool hasSource = false;          ///< false when the effect had no in-memory source
        QorTexturePixelImage::Ptr image; ///< image entries: the container's reference
    };

    QorResourceZPKContainer() = default;
    /// Releases every image it holds. Effect objects it handed out stay valid: they belong
    /// to their callers and only lose their link to the container.
    ~QorResourceZPKContainer();
    QorResourceZPKContainer(const QorResourceZPKContainer&) = delete;
    QorResourceZPKContainer& operator=(const QorResourceZPKContainer&) = delete;

    /// Stores a copy of the effect's GetName() and getBuffer() texts and writes the entry's
    /// id with WriteInt(id, 0). An effect with the same name and text as an existing entry
    /// reuses its id; a null name counts as empty. A null effect writes -1.
    void AddResource(QorStreamer& streamer, QorIShaderEffect* effect);
    /// Reads an id and returns a new effect object for it, owned by the caller (count 1,
    /// Release it). Null for -1, an unknown id, an image id or a failed read.
    QorIShaderEffect* GetResourceShader(QorStreamer& streamer);
    /// Forgets an effect object GetResourceShader handed out (no-op for anything else).
    /// The entry itself stays, so the same id can still be un-streamed.
    void RemoveResource(void* resource);

    /// The image of that name from the process-wide pixel-image list, else read from the
    /// file of that name. The container keeps a reference: the pointer is borrowed and
    /// valid while the container lives, and later calls for the name give the same image.
    /// Null when neither exists. The in-memory container gives the same shared image for
    /// both states.
    QorTexturePixelImage* GetImage(const QorString& name, QorReadOnlyState state);
    /// Keeps a reference on the image and writes its id; the same image again reuses its
    /// id. A null image writes -1.
    void AddResource(QorStreamer& streamer, QorTexturePixelImage* image);
    /// Reads an id. Returns 1 with `image` set to the stored image and a reference added
    /// for the caller (Release it or hand it to AddList), else 0 with `image` null.
    int GetResource(QorStreamer& streamer, QorTexturePixelImage*& image);
    /// Every image entry holding `old` holds `replacement` afterwards: a reference is taken
    /// on the new image and released on the old one per entry. Null or equal arguments do
    /// nothing.
    void ReplaceResource(void* old, void* replacement);

    /// Ids run from 0 to GetEntryCount() - 1.
    int GetEntryCount() const { return static_cast<int>(m_entries.size()); }
    /// The entry of that id, borrowed until the container goes; null for an unknown id.
    const Entry* GetEntry(int id) const;
    /// Effect objects handed out and neither released nor removed yet.
    std::size_t GetHandedOutCount() const { return m_handedOut.size(); }

private:
    /// Appends an entry and returns its id, or -1 when out of memory.
    int AddEntry(Entry entry);

    std::vector<Entry> m_entries;              // position == id
    std::multimap<QorString, int> m_effectIds; // effect name -> ids with that name
    std::map<const void*, int> m_imageIds;     // image -> its first id
    // What GetImage gave out, one reference each.
    std::map<QorString, QorTexturePixelImage::Ptr> m_namedImages;
    // Effect objects handed out, keyed by their QorIShaderEffect address; not owned.
    std::map<const void*, QorShaderEffectResource*> m_handedOut;
};

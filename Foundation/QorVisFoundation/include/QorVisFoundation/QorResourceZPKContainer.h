/// @file
/// The resources a stream refers to by integer id: shader effect sources and pixel
/// images. A shader streams an id in place of the resource; whoever un-streams it asks the
/// same container for the resource back. The container lives in memory; every entry
/// carries an id, a kind, a name and its data. A document (the entries and the bytes of
/// the stream that refers to them) is saved to and loaded from one ".zpk" package: a zip
/// archive holding "manifest.json", "stream.bin", each effect as "effects/<id>.cgfx" and
/// each image as "images/<id>.png" (floating-point images add their exact pixels as
/// "images/<id>.f32").
#pragma once

#include "QorSystem/QorString.h"
#include "QorVisFoundation/QorTexturePixelImage.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

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

    /// An effect as a stream carries it: its registry name and its in-memory source.
    struct EffectSource
    {
        std::string name;
        std::string source;
        bool hasSource = false; ///< false when the effect had no in-memory source
    };

    QorResourceZPKContainer() = default;
    /// Releases every image it holds.
    ~QorResourceZPKContainer() = default;
    QorResourceZPKContainer(const QorResourceZPKContainer&) = delete;
    QorResourceZPKContainer& operator=(const QorResourceZPKContainer&) = delete;

    /// Stores a copy of an effect's name (null counts as empty) and source (null: none)
    /// and writes the entry's id with WriteInt(id, 0). An effect with the same name and
    /// source as an existing entry reuses its id.
    void AddResource(QorStreamer& streamer, const char* name, const char* source);
    /// Reads an id and gives the effect stored under it; the entry stays, so the same id
    /// can be un-streamed again. False, with `effect` untouched, for -1, an unknown id, an
    /// image id or a failed read.
    bool GetResourceShader(QorStreamer& streamer, EffectSource& effect);

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
    /// The entry of that id, null for an unknown id. Borrowed until the next entry is added
    /// or a package is loaded into the container.
    const Entry* GetEntry(int id) const;

    /// The package format version SaveToFile writes; LoadFromFile reads it and older ones.
    static constexpr int kPackageVersion = 1;

    /// Writes the entries and every byte of `stream` (whatever has been read of it) as a
    /// ".zpk" package at `path`, which may use the framework's "\". The package is made in
    /// memory and read back through LoadFromMemory's checks before anything is written; the
    /// file appears only complete: it is written beside the destination, every write
    /// checked (a full disk fails the save), and renamed over it. Returns 0, or
    /// -1 with the reason in `*error` (when error is not null); a failed save leaves no
    /// partial file and any earlier file at `path` as it was. Image entries must be named
    /// by something ending in a file name (not "", "." or ".."), since readers cache them
    /// under that file name.
    int SaveToFile(const char* path, const QorStreamer& stream, std::string* error) const;
    /// SaveToFile's package in memory: `bytes` receives the whole checked package, for a
    /// caller that writes it itself. Returns 0, or -1 with the reason (`bytes` untouched).
    int SaveToMemory(const QorStreamer& stream, std::string& bytes, std::string* error) const;
    /// Loads a package written by SaveToFile, from a regular file of at most 2 GiB (a FIFO
    /// or a device is refused without waiting). Every entry, size, checksum and image is
    /// checked before anything is used. On success returns 0: the container's entries are
    /// the package's (earlier entries and their images are released; images GetImage gave
    /// stay valid), and `stream` holds the package's stream
    /// bytes, read from the start, with this container set on it. On failure returns -1
    /// with the reason in `*error` (when error is not null), and neither the container nor
    /// `stream` has changed. Nothing is written anywhere but a private temporary folder
    /// that is gone when the call returns.
    int LoadFromFile(const char* path, QorStreamer& stream, std::string* error);
    /// LoadFromFile for the bytes of a package held in memory (`size` bytes at `data`,
    /// only read during the call).
    int LoadFromMemory(const unsigned char* data, std::size_t size, QorStreamer& stream, std::string* error);

private:
    /// Makes and checks the package; `label` names it in the reason.
    int Save(const QorStreamer& stream, std::string& bytes, const std::string& label, std::string* error) const;
    /// Appends an entry and returns its id, or -1 when out of memory.
    int AddEntry(Entry entry);
    /// Replaces every entry by `entries` (ids by position) with the indexes rebuilt;
    /// false, with nothing changed, when out of memory.
    bool AdoptEntries(std::vector<Entry>& entries);
    /// LoadFromFile when `path` is not null, else LoadFromMemory.
    int Load(const char* path, const unsigned char* data, std::size_t size, QorStreamer& stream, std::string* error);

    std::vector<Entry> m_entries;              // position == id
    std::multimap<QorString, int> m_effectIds; // effect name -> ids with that name
    std::map<const void*, int> m_imageIds;     // image -> its first id
    // What GetImage gave out, one reference each.
    std::map<QorString, QorTexturePixelImage::Ptr> m_namedImages;
};

/// @file
/// The effect of the material model, written once for both back ends: one effect source
/// (a file or an in-memory text) shared by every shader object that names it, counted by
/// reference and destroyed by the last Release; its file name, path, buffer and registry
/// name; the default parameter set its last compilation built (owned) and the set drawing
/// uses now (a shader object's, borrowed); and the upload of that set into the back end's
/// parameters.
///
/// The effect remembers which set it uploaded last (by the set's serial number): a
/// different set uploads whole, since the back end's parameters still hold the other
/// set's values; the same set uploads what changed since.
///
/// A back end (CgFX over the Cg runtime, QRFX over nvFX) supplies what is its own:
/// compiling or loading and reflecting, binding semantics into the default set, pushing
/// one value into the parameter it mirrors, techniques, validation and passes.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorBackEndProfile.h"
#include "QorVisShaderShared/QorMaterialParameters.h"
#include "QorVisShaderShared/QorSemanticTable.h"

#include "QorSystem/QorString.h"
#include "QorSystem/QorUnicodeString.h"
#include "QorVisShaders/QorIShaderEffect.h"

#include <cstdint>

class QOR_VISSHADERS_API QorMaterialEffect : public QorIShaderEffect
{
public:
    QorMaterialEffect(const QorMaterialEffect&) = delete;
    QorMaterialEffect& operator=(const QorMaterialEffect&) = delete;
    ~QorMaterialEffect() override;

    unsigned int AddRef() final;
    /// The last reference takes the effect out of its back end's registry and deletes it.
    unsigned int Release() final;
    const QorString& GetPathName() const final { return m_pathName; }
    const QorString& GetFileName() const final { return m_fileName; }
    /// Stores the name and, when it holds a "\" or "/" after its first character, the
    /// part up to and including the last one as the path.
    void setFileName(const QorString& name) final;
    /// Keeps a copy of the text (null frees it) and empties the file name: the next
    /// compilation takes the buffer.
    void setBuffer(const char* text) override;
    char* getBuffer() final { return m_buffer; }
    const char* GetName() final { return m_name; }
    /// Takes ownership of a heap copy; the name handed over before is freed.
    void SetName(char* name) final;
    /// Writes the effect record (the name, then the source) when the back end streams
    /// effects; else nothing.
    void Stream(QorStreamer& streamer) final;
    /// Reads the effect record; each string it holds replaces the held one.
    void UnStream(QorStreamer& streamer) final;
    /// The parameter set drawing uses now; not owned by the effect.
    QorIShaderParameters* GetIShaderParameters() final { return m_current; }
    const char* GetProvider() final { return m_provider; }
    const char* GetUUID() final { return m_uuid; }
    QorFxImplementation GetImplementation() const final { return m_profile.implementation; }
    /// Compiles and binds (see Compile).
    QorIShaderParameters* Generate() final { return Compile(); }

    /// Finds the source, compiles or loads it and binds it into a new default set, which
    /// it returns (owned by the effect, replaced by the next compilation); null on failure.
    virtual QorMaterialParameters* Compile() = 0;
    /// True once binding has completed the default set: shader objects copy it instead of
    /// compiling again.
    virtual bool HasDefaults() const = 0;
    /// Gives a shader object's copy of the default set what the effect's interfaces hold
    /// (a back end with interfaces connects them); nothing by default.
    virtual void ConnectInterfaces(QorMaterialParameters& parameters);

    /// Makes `parameters` (a shader object's own set; null forgets it) the set drawing
    /// uses and UploadCurrentParameters pushes. Not owned.
    void SelectParameters(QorMaterialParameters* parameters) { m_current = parameters; }
    /// The default set of the last compilation; null before.
    QorMaterialParameters* GetParameters() const { return m_parameters; }
    const QorUnicodeString& GetSource() const { return m_source; }
    const QorBackEndProfile& Profile() const { return m_profile; }
    /// The back end's parameter binding bound to `feed` (a Cg parameter, an nvFX uniform),
    /// which the renderer sets; null when the effect binds none.
    void* GetFeed(QorFeed feed) const { return feed >= 0 && feed < QorFeedCount ? m_feeds[feed] : nullptr; }

protected:
    explicit QorMaterialEffect(const QorBackEndProfile& profile) : m_profile(profile) {}


    /// Takes the effect out of its back end's registry; called by the last Release.
    virtual void Unregister() = 0;

    /// Pushes the values of the current set into the parameters they mirror, each with
    /// `push`: the whole set when it is not the one uploaded last or `onlyIfModified` is
    /// false, else the values modified since. Values mirroring no parameter (read back
    /// from a stream) are passed over. Every value visited is marked unmodified. Inline,
    /// with the back end's push: it runs for every material of every frame.
    template <typename Push>
    void Upload(bool onlyIfModified, Push push)
    {
        QorMaterialParameters* set = m_current;
        if (!set || !m_pushable)
            return;
        const auto visit = [&push](QorMaterialValue* value, bool onlyModified) {
            if (!value || (onlyModified && !value->GetModified()) || !value->Binding())
                return;
            push(*value);
            value->ResetModified();
        };
        if (onlyIfModified && set->Serial() == m_uploaded) {
            for (int position : set->GetChangedPositions())
                visit(set->ValueAtPosition(static_cast<std::size_t>(position)), true);
        } else {
            for (std::size_t position = 0; position < set->GetValueList()->size(); ++position)
                visit(set->ValueAtPosition(position), false);
        }
        set->ClearChangedPositions();
        m_uploaded = set->Serial();
    }
    /// The next upload is whole: the back end's parameters were made anew.
    void ForgetUploads() { m_uploaded = 0; }
    /// Whether the back end has parameters to push into (a compiled effect); uploads do
    /// nothing until it has.
    void SetPushable(bool pushable) { m_pushable = pushable; }
    /// Binds `feed` to a parameter of the back end (a later one of the same semantic
    /// replaces it).
    void BindFeed(QorFeed feed, void* parameter) { m_feeds[feed] = parameter; }
    /// Forgets the feeds from `first` up to, not including, `last`.
    void ForgetFeeds(QorFeed first, QorFeed last);

    /// Replaces the default set (owned from now on; null deletes it) and forgets the
    /// uploads: what the old set's copies pushed was for the parameters it mirrored.
    void ReplaceParameters(QorMaterialParameters* parameters);
    /// What every back end's Init does alike: the default set goes, the current one is
    /// forgotten, the buffer is freed. The reference count is left alone: the holders of
    /// a shared effect keep their references across an Init.
    void ResetModel();

private:
    // What every upload reads first, together: every material of every frame.
    QorMaterialParameters* m_current = nullptr; // borrowed: a shader object's set
    std::uint64_t m_uploaded = 0;               // serial of the set uploaded last; 0 for none
    bool m_pushable = false;

protected:
    QorUnicodeString m_source; // the text of the last compilation
    QorString m_fileName;
    QorString m_pathName;
    char* m_buffer = nullptr; // owned, C heap

private:
    const QorBackEndProfile& m_profile;
    void* m_feeds[QorFeedCount] = {};              // borrowed from the back end's effect
    QorMaterialParameters* m_parameters = nullptr; // owned: the default set of the last compilation
    unsigned int m_refCount = 1;
    char* m_name = nullptr;     // owned, C heap
    char* m_uuid = nullptr;     // owned, array
    char* m_provider = nullptr; // owned, array
};

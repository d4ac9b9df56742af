/// @file
/// Carries materials stored with CgFX effects over to GLSL effects. While a document is
/// read into GLSL-effect shader objects, each shader read back registers itself with the
/// stream's migration (its stored effect name and values); when the document is read
/// (QorStreamer::FinishReading), the migration loads, for each, the ".glslfx" effect of
/// the stored effect's base name and copies the stored values into it by parameter name.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorUnicodeString.h"
#include "QorVisFoundation/QorStreamMigration.h"
#include "QorVisShaderQRFX/QorShaderMigrationReport.h"

#include <cstddef>
#include <list>
#include <memory>

class QorIShader;
class QorIShaderParameters;
class QorMutex;
class QorNvFXShaderParameters;

class QOR_VISSHADERS_API QorShaderQRFXMigration : public QorStreamMigration
{
public:
    /// A migration with its lock.
    QorShaderQRFXMigration();
    /// A migration whose lock could not be made: it accepts registrations and records none.
    explicit QorShaderQRFXMigration(std::nullptr_t noLock);
    /// Copies share the entries and the lock; the entries go with the last copy.
    QorShaderQRFXMigration(const QorShaderQRFXMigration& other) = default;
    QorShaderQRFXMigration& operator=(const QorShaderQRFXMigration& other) = default;
    ~QorShaderQRFXMigration() override;

    /// Registers `shader` with a copy of the stored effect name and of `parameters`, under
    /// the lock; safe from several threads at once. A shader destroyed before the run
    /// leaves the migration with it: its entry is passed over. Only the library's own
    /// shader objects can be followed so; another is not recorded. Returns 1 in every case.
    int AddShaderToMigrate(QorIShader* shader, const QorUnicodeString& effectName, QorIShaderParameters* parameters);
    /// For each registered shader still alive, from the first: the stored name (or the
    /// name of the shader's effect when empty) cut at its first "." and after its last
    /// "\", with ".glslfx" added, is given to the shader's SetFileName, its values are
    /// generated, and the stored values are copied in by parameter name ("Bad index \n" on
    /// standard output for a name the new effect lacks). Each entry's report says what
    /// happened. Runs without the lock; the entries stay, so a second run repeats the work.
    /// Returns 0.
    int MigrateToQRFX();
    void Migrate() override { MigrateToQRFX(); }

    /// The ".glslfx" name an entry's stored effect name leads to.
    static QorUnicodeString GlslfxName(const QorUnicodeString& storedName);

    // What was registered, in order, for the tools that report a migration.
    std::size_t GetEntryCount() const { return m_entries.size(); }
    /// Null once the shader is gone.
    QorIShader* GetEntryShader(std::size_t entry) const;
    const char* GetEntryName(std::size_t entry) const;
    /// The stored values of the entry; owned by the migration.
    QorIShaderParameters* GetEntryParameters(std::size_t entry) const;
    /// What the last run did with the entry; null for a bad index or before the first run.
    const QorShaderMigrationReport* GetEntryReport(std::size_t entry) const;

private:
    struct Entry;
    const Entry* EntryAt(std::size_t entry) const;
    void Migrate(Entry& entry);

    std::list<std::shared_ptr<Entry>> m_entries;
    std::shared_ptr<QorMutex> m_lock;
};

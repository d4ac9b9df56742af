#include "QorVisShaders/QorShaderQRFXMigration.h"

#include "QorNvFXShader.h"

#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorSysMultiThreading/QorMutex.h"
#include "QorSystem/QorStrings.h"
#include "QorVisShaders/QorNvFXEffect.h"
#include "QorVisShaders/QorNvFXShaderParameters.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <string>

struct QorShaderQRFXMigration::Entry
{
    Entry(QorIShader* registered, QorNvFXShaderParameters* stored, const char* storedName)
        : shader(registered), parameters(stored), name(_strdup(storedName))
    {
    }
    ~Entry()
    {
        delete parameters;
        std::free(name);
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    QorIShader* shader;                  // not owned
    QorNvFXShaderParameters* parameters; // owned
    char* name;                          // owned, C heap
};

QorShaderQRFXMigration::QorShaderQRFXMigration() : m_lock(std::make_shared<QorMutex>()) {}

QorShaderQRFXMigration::QorShaderQRFXMigration(std::nullptr_t) {}

QorShaderQRFXMigration::~QorShaderQRFXMigration() = default;

int QorShaderQRFXMigration::AddShaderToMigrate(QorIShader* shader, const QorUnicodeString& effectName,
                                               QorIShaderParameters* parameters)
{
    auto* stored = parameters ? dynamic_cast<QorNvFXShaderParameters*>(parameters) : nullptr;
    auto* copy = stored ? new (std::nothrow) QorNvFXShaderParameters(*stored) : nullptr;
    if (!m_lock) {
        delete copy;
        return 1;
    }
    auto entry = std::shared_ptr<Entry>(new (std::nothrow) Entry(shader, copy, effectName.c_str()));
    if (!entry)
        return 1;
    const std::lock_guard<QorMutex> lock(*m_lock);
    m_entries.push_back(std::move(entry));
    return 1;
}

QorUnicodeString QorShaderQRFXMigration::GlslfxName(const QorUnicodeString& storedName)
{
    std::string name = storedName.c_str();
    // The cut at the first "." comes before the folder goes, so a dot in a folder's name
    // shortens the result; only "\" separates folders here.
    name = name.substr(0, name.find('.'));
    const size_t separator = name.rfind('\\');
    if (separator != std::string::npos)
        name = name.substr(separator + 1);
    return QorUnicodeString((name + ".glslfx").c_str());
}

int QorShaderQRFXMigration::MigrateToQRFX()
{
    for (const std::shared_ptr<Entry>& entry : m_entries)
        if (entry && entry->shader)
            Migrate(*entry);
    return 0;
}

void QorShaderQRFXMigration::Migrate(Entry& entry)
{
    QorIShader& shader = *entry.shader;
    QorUnicodeString stored(entry.name ? entry.name : "");
    if (stored.IsEmpty() && shader.GetIShaderEffect() && shader.GetIShaderEffect()->GetName())
        stored = QorUnicodeString(shader.GetIShaderEffect()->GetName());
    shader.SetFileName(QorString(GlslfxName(stored).c_str()));
    shader.GenerateParameters();
    // Only a GLSL-effect shader can take GLSL values.
    if (shader.GetImplementation() != QorFxQRFX || !shader.GetIShaderEffect() || !entry.parameters)
        return;
    auto& glslShader = static_cast<QorNvFXShader&>(shader);
    QorNvFXShaderParameters* defaults = static_cast<QorNvFXEffect*>(shader.GetIShaderEffect())->GetParameters();
    if (!defaults || (!shader.GetIShaderParameters() && !glslShader.AdoptParameters(*defaults)))
        return;
    QorIShaderParameters& target = *shader.GetIShaderParameters();
    QorNvFXShaderParameters& values = *entry.parameters;
    for (int index = 1; index < values.GetNbParameters(); ++index) {
        const int found = target.GetParameterIndex(values.GetParameterName(index));
        if (found < 0) {
            std::printf("Bad index \n");
            continue;
        }
        QorCopyParameterValue(values, index, target, found);
    }
}

const QorShaderQRFXMigration::Entry* QorShaderQRFXMigration::EntryAt(std::size_t entry) const
{
    return entry < m_entries.size() ? std::next(m_entries.begin(), static_cast<long>(entry))->get() : nullptr;
}

QorIShader* QorShaderQRFXMigration::GetEntryShader(std::size_t entry) const
{
    const Entry* found = EntryAt(entry);
    return found ? found->shader : nullptr;
}

const char* QorShaderQRFXMigration::GetEntryName(std::size_t entry) const
{
    const Entry* found = EntryAt(entry);
    return found ? found->name : nullptr;
}

QorIShaderParameters* QorShaderQRFXMigration::GetEntryParameters(std::size_t entry) const
{
    const Entry* found = EntryAt(entry);
    return found ? found->parameters : nullptr;
}

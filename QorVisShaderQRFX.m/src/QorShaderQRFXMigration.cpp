#include "QorVisShaderQRFX/QorShaderQRFXMigration.h"

#include "QorNvFXShader.h"

#include "QorVisShaderShared/QorShaderSearch.h"
#include "QorVisShaderShared/QorShaderValueCopy.h"

#include "QorSysMultiThreading/QorMutex.h"
#include "QorSystem/QorStrings.h"
#include "QorVisShaderQRFX/QorNvFXEffect.h"
#include "QorVisShaderQRFX/QorNvFXShaderParameters.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <string>

struct QorShaderQRFXMigration::Entry
{
    Entry(std::shared_ptr<QorIShader* const> registered, QorNvFXShaderParameters* stored, const char* storedName)
        : shader(std::move(registered)), parameters(stored), name(_strdup(storedName))
    {
    }
    ~Entry()
    {
        delete parameters;
        std::free(name);
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    std::shared_ptr<QorIShader* const> shader; // names the shader while it lives, null after
    QorNvFXShaderParameters* parameters;       // owned
    char* name;                                // owned, C heap
    std::unique_ptr<QorShaderMigrationReport> report; // of the last run
};

namespace {

using Outcome = QorShaderMigrationReport::Outcome;

Outcome OutcomeOf(QorValueCopy copy)
{
    switch (copy) {
    case QorValueCopy::Copied:
        return Outcome::Carried;
    case QorValueCopy::Narrowed:
        return Outcome::CarriedNarrowed;
    case QorValueCopy::Widened:
        return Outcome::CarriedWidened;
    case QorValueCopy::Empty:
        return Outcome::NoImage;
    case QorValueCopy::NotAValue:
        return Outcome::NotAValue;
    case QorValueCopy::Refused:
        break;
    }
    return Outcome::OtherType;
}

} // namespace

QorShaderQRFXMigration::QorShaderQRFXMigration() : m_lock(std::make_shared<QorMutex>()) {}

QorShaderQRFXMigration::QorShaderQRFXMigration(std::nullptr_t) {}

QorShaderQRFXMigration::~QorShaderQRFXMigration() = default;

int QorShaderQRFXMigration::AddShaderToMigrate(QorIShader* shader, const QorUnicodeString& effectName,
                                               QorIShaderParameters* parameters)
{
    auto* stored = parameters ? dynamic_cast<QorNvFXShaderParameters*>(parameters) : nullptr;
    auto* copy = stored ? new (std::nothrow) QorNvFXShaderParameters(*stored) : nullptr;
    // Only a shader that says when it goes can be kept until the run: a plain pointer
    // would dangle once its owner destroys it before the document is read.
    auto* object = dynamic_cast<QorShaderObject*>(shader);
    if (!m_lock || !object) {
        delete copy;
        return 1;
    }
    auto entry = std::shared_ptr<Entry>(new (std::nothrow) Entry(object->Lifetime(), copy, effectName.c_str()));
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
        if (entry)
            Migrate(*entry);
    return 0;
}

void QorShaderQRFXMigration::Migrate(Entry& entry)
{
    entry.report.reset(new (std::nothrow) QorShaderMigrationReport());
    QorShaderMigrationReport scratch; // stands in when the report cannot be kept
    QorShaderMigrationReport& report = entry.report ? *entry.report : scratch;
    QorIShader* alive = entry.shader ? *entry.shader : nullptr;
    if (!alive) {
        report.shaderGone = true;
        return;
    }
    QorIShader& shader = *alive;
    QorUnicodeString stored(entry.name ? entry.name : "");
    if (stored.IsEmpty() && shader.GetIShaderEffect() && shader.GetIShaderEffect()->GetName())
        stored = QorUnicodeString(shader.GetIShaderEffect()->GetName());
    const QorString glslfx(GlslfxName(stored).c_str());
    report.glslfxName = glslfx.c_str();
    QorString found;
    report.found = QorShaderSearch::FindShaderFile(glslfx, found);
    report.foundPath = found.c_str();
    shader.SetFileName(glslfx);
    shader.GenerateParameters();

    QorNvFXShaderParameters* values = entry.parameters;
    if (values) {
        report.storedNames = values->GetNbParameters() - 1;
        report.storedValues = static_cast<int>(values->GetValueList()->size());
    }
    // Only a GLSL-effect shader can take GLSL values.
    auto* effect = shader.GetImplementation() == QorFxQRFX ? static_cast<QorNvFXEffect*>(shader.GetIShaderEffect())
                                                            : nullptr;
    QorMaterialParameters* defaults = effect ? effect->GetParameters() : nullptr;
    if (defaults && !shader.GetIShaderParameters())
        static_cast<QorNvFXShader&>(shader).AdoptParameters(*defaults);
    QorIShaderParameters* target = defaults ? shader.GetIShaderParameters() : nullptr;
    report.loaded = target != nullptr;
    for (int index = 1; values && index <= report.storedNames; ++index) {
        QorShaderMigrationReport::Value value;
        const char* name = values->GetParameterName(index);
        value.name = name ? name : "";
        value.storedType = values->GetParameterType(index);
        if (!target) {
            value.outcome = Outcome::NoEffect;
        } else if (index > report.storedValues) {
            // Names and values pair by position; a name past the last value has none.
            value.outcome = Outcome::Unpaired;
        } else if (const int at = target->GetParameterIndex(name); at < 0) {
            std::printf("Bad index \n");
            value.why = effect->WhyNotUserParameter(name);
            value.outcome = value.why.empty() ? Outcome::NoParameter : Outcome::NotUserParameter;
        } else {
            value.newType = target->GetParameterType(at);
            value.outcome = OutcomeOf(QorCopyParameterValue(*values, index, *target, at));
        }
        report.values.push_back(std::move(value));
    }
}

const QorShaderQRFXMigration::Entry* QorShaderQRFXMigration::EntryAt(std::size_t entry) const
{
    return entry < m_entries.size() ? std::next(m_entries.begin(), static_cast<long>(entry))->get() : nullptr;
}

QorIShader* QorShaderQRFXMigration::GetEntryShader(std::size_t entry) const
{
    const Entry* found = EntryAt(entry);
    return found && found->shader ? *found->shader : nullptr;
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

const QorShaderMigrationReport* QorShaderQRFXMigration::GetEntryReport(std::size_t entry) const
{
    const Entry* found = EntryAt(entry);
    return found ? found->report.get() : nullptr;
}

bool QorShaderMigrationReport::CarriedEverything() const
{
    if (!loaded || storedNames != storedValues)
        return false;
    for (const Value& value : values)
        if (value.outcome != Outcome::Carried && value.outcome != Outcome::CarriedNarrowed &&
            value.outcome != Outcome::CarriedWidened && value.outcome != Outcome::NoImage)
            return false;
    return true;
}

// The parameter set's lifecycle, its parameter values and the texture slots.
#include "QorVisShaderShared/QorMaterialParameters.h"

#include "QorVisShaderShared/QorChangedPositions.h"
#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorStrings.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::uint64_t NextSerial()
{
    static std::atomic<std::uint64_t> serial{0};
    return ++serial;
}

bool IsFloat(int type)
{
    return type == QorValueFloat;
}

bool IsTexture(int type)
{
    return type == QorValueTexture;
}

bool AnyKind(int)
{
    return true;
}

} // namespace

QorMaterialParameters::QorMaterialParameters(const QorBackEndProfile& profile)
    : m_profile(profile), m_serial(NextSerial())
{
}

QorMaterialParameters::QorMaterialParameters(const QorMaterialParameters& other)
    : QorIShaderParameters(), m_profile(other.m_profile), m_names(other.m_names),
      m_useDefaultTexture(other.m_useDefaultTexture), m_serial(NextSerial())
{
    // The values first, one after another, so that a set's values sit together in memory:
    // a frame touches some of every material's. Every place is kept, an empty one too, so
    // that the copy's values stay beside their names.
    m_values.reserve(other.m_values.size());
    m_changedPositions.reserve(other.m_values.size());
    for (QorIShaderValue* value : other.m_values)
        Append(Copy(static_cast<const QorMaterialValue*>(value)));
    for (int slot = 0; slot < 3; ++slot)
        m_extraTextures[slot].reset(Copy(other.m_extraTextures[slot].get()));
    std::copy(other.m_cachedIndexes, other.m_cachedIndexes + 3, m_cachedIndexes);
    m_interfaces.reserve(other.m_interfaces.size());
    for (const InterfaceEntry& entry : other.m_interfaces)
        m_interfaces.emplace_back(entry.first ? _strdup(entry.first) : nullptr, CopyRecord(entry.second));
}

QorMaterialParameters::~QorMaterialParameters()
{
    for (m_walkCursor = 0; m_walkCursor < static_cast<int>(m_values.size()); ++m_walkCursor) {
        auto* value = static_cast<QorMaterialValue*>(m_values[static_cast<std::size_t>(m_walkCursor)]);
        if (value)
            QorShaderTextureBookkeeping::HandBack(value->File());
        delete value;
    }
    m_walkCursor = 0;
    for (int slot : {0, 2, 1})
        if (m_extraTextures[slot])
            QorShaderTextureBookkeeping::HandBack(m_extraTextures[slot]->File());
    for (InterfaceEntry& entry : m_interfaces) {
        delete entry.second;
        std::free(entry.first);
    }
}

QorMaterialValue* QorMaterialParameters::Copy(const QorMaterialValue* value)
{
    QorMaterialValue* copy = value ? value->Clone() : nullptr;
    // The copy holds its own reference of the texture.
    if (copy)
        QorShaderTextureBookkeeping::Take(copy->File());
    return copy;
}

void QorMaterialParameters::Append(QorMaterialValue* value)
{
    QorChangedPositions::Append(m_values, m_changedPositions, value, &QorMaterialValue::GetModified);
}

void QorMaterialParameters::AddParameter(QorMaterialValue* value, const char* name)
{
    // A fresh value is never listed yet; an empty place is not appended at binding.
    if (value) {
        Append(value);
        QorShaderTextureBookkeeping::Take(value->File());
    }
    AddParameterName(name);
}

int QorMaterialParameters::GetNbParameters()
{
    return m_names.Count() + 1;
}

int QorMaterialParameters::GetParameterIndex(const char* name)
{
    return m_names.IndexOf(name);
}

const char* QorMaterialParameters::GetParameterName(int index)
{
    return m_names.At(index);
}

QorIShaderValue* QorMaterialParameters::GetValue(int position)
{
    if (m_profile.overlap == QorOverlapRule::ReportBelowNames) {
        if (position < m_names.Count())
            CheckFailure__("Overlapping memory", m_profile.setSource, m_profile.overlapLine);
    } else if (position >= m_names.Count()) {
        // Past the names the set has nothing to answer: null rather than a stray value.
        CheckFailure__("Overlapping memory", m_profile.setSource, m_profile.overlapLine);
        return nullptr;
    }
    return position < 0 ? nullptr : ValueAtPosition(static_cast<std::size_t>(position));
}

int QorMaterialParameters::GetParameterType(int index)
{
    if (index == 0)
        return QorValueFloat; // the technique
    if (index > m_names.Count())
        return 0;
    const QorMaterialValue* value = ValueAt(index);
    return value ? value->Type() : 0;
}

int QorMaterialParameters::SetColorValue(int index, const float* rgba)
{
    QorMaterialValue* value = ValueAt(index);
    if (!value || (m_profile.colorKindChecked && !QorIsColorType(value->Type())))
        return -1;
    // A value of another kind reports the misplaced write itself.
    value->SetColor(rgba);
    return 0;
}

int QorMaterialParameters::SetFloatValue(int index, float number)
{
    QorMaterialValue* value = KindAt(index, IsFloat);
    if (!value)
        return -1;
    value->SetFloat(number);
    return 0;
}

int QorMaterialParameters::SetTextureValue(int index, const char* file, int reload)
{
    QorMaterialValue* value = KindAt(index, IsTexture);
    if (!value)
        return -1;
    ChangeTexture(*value, file, reload, Slot::Value);
    return 0;
}

int QorMaterialParameters::ReadValue(QorMaterialValue* value, void* out, int onlyIfModified) const
{
    if (!value || (onlyIfModified && m_profile.readsOnlyModified && !value->GetModified()))
        return 0;
    return value->Get(out);
}

int QorMaterialParameters::GetFloatValue(int index, float* out, int onlyIfModified)
{
    return ReadValue(KindAt(index, IsFloat), out, onlyIfModified);
}

int QorMaterialParameters::GetColorValue(int index, float* out, int onlyIfModified)
{
    return ReadValue(m_profile.colorKindChecked ? KindAt(index, QorIsColorType) : KindAt(index, AnyKind), out,
                     onlyIfModified);
}

int QorMaterialParameters::GetTextureValue(int index, char** out, int onlyIfModified)
{
    return ReadValue(KindAt(index, IsTexture), out, onlyIfModified);
}

int QorMaterialParameters::GetParameterHandle(int index)
{
    // A bad index gives the null parameter's token instead of reading outside the list.
    const QorMaterialValue* value = ValueAt(index);
    return value && m_profile.handsOutTokens ? value->GetParameterToken() : 0;
}

void QorMaterialParameters::ResetModified(int index)
{
    if (QorMaterialValue* value = ValueAt(index)) {
        value->ResetModified();
        QorChangedPositions::Bound(m_changedPositions, m_values, &QorMaterialValue::GetModified);
    }
}

void QorMaterialParameters::ChangeTexture(QorMaterialValue& value, const char* file, int reload, Slot slot)
{
    using namespace QorShaderTextureBookkeeping;
    const Outcome outcome = QorShaderTextureBookkeeping::ChangeTexture(
        value.File(), file, reload, slot == Slot::FirstExtra ? Holder::DefaultTexture : Holder::Value);
    if (outcome == Outcome::Keep)
        return;
    // The reference the registry took belongs to the value from now on.
    if (outcome == Outcome::Take)
        value.SetString(file);
    if (slot == Slot::Member)
        value.SetLoadState(0);
}

int QorMaterialParameters::ChangeMemberTexture(QorMaterialValue* value, const char* file, int reload)
{
    if (!value || value->Type() != QorValueTexture)
        return 0;
    ChangeTexture(*value, file, reload, Slot::Member);
    return 1;
}

QorMaterialValue* QorMaterialParameters::ExtraTexture(int slot)
{
    if (!m_extraTextures[slot])
        m_extraTextures[slot].reset(MakeValue(QorValueTexture, 0, nullptr, nullptr, nullptr));
    return m_extraTextures[slot].get();
}

int QorMaterialParameters::GetDefaultTexture(char** file)
{
    if (!m_extraTextures[0])
        return -1;
    m_extraTextures[0]->Get(file);
    return 0;
}

int QorMaterialParameters::GetUseDefaultTexture(int* use)
{
    if (use)
        *use = m_useDefaultTexture;
    return 0;
}

int QorMaterialParameters::SetDefaultTexture(const char* file, int reload)
{
    if (QorMaterialValue* texture = ExtraTexture(0))
        ChangeTexture(*texture, file, reload, Slot::FirstExtra);
    return 0;
}

int QorMaterialParameters::SetUseDefaultTexture(int use)
{
    m_useDefaultTexture = use;
    return 0;
}

int QorMaterialParameters::SetSecondTexture(const char* file)
{
    return m_profile.extraTextureSlots ? ChangeMemberTexture(ExtraTexture(1), file, 0) : 0;
}

int QorMaterialParameters::SetThirdTexture(const char* file)
{
    return m_profile.extraTextureSlots ? ChangeMemberTexture(ExtraTexture(2), file, 0) : 0;
}

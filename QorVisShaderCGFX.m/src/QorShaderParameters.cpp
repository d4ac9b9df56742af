// The parameter set's lifecycle, its parameter values and the texture slots.
#include "QorShaderParameters.h"

#include "QorShaderValueColor.h"
#include "QorShaderValueFloat.h"
#include "QorShaderValueString.h"

#include "QorVisShaderShared/QorChangedPositions.h"
#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorVisShaders/QorShaderValueType.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorSystem/QorStrings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

const char* const kSource = "QorVisShaderCGFX.m/src/QorShaderParameters";

} // namespace

QorShaderParameters::QorShaderParameters() = default;

QorShaderParameters::QorShaderParameters(const QorShaderParameters& other)
    : QorIShaderParameters(), m_values(CopyValues(other.m_values)), m_names(other.m_names),
      m_useDefaultTexture(other.m_useDefaultTexture)
{
    m_modifiedPositions.reserve(m_values.size());
    for (std::size_t position = 0; position < m_values.size(); ++position)
        QorChangedPositions::Adopt(m_modifiedPositions, static_cast<QorShaderValue*>(m_values[position]),
                                   static_cast<int>(position), &QorShaderValue::GetModified);
    std::copy(other.m_cachedIndexes, other.m_cachedIndexes + 3, m_cachedIndexes);

    std::unique_ptr<QorShaderValueString>* const slots[] = {&m_firstTexture, &m_secondTexture, &m_thirdTexture};
    QorShaderValueString* const sources[] = {other.m_firstTexture.get(), other.m_secondTexture.get(),
                                             other.m_thirdTexture.get()};
    for (int i = 0; i < 3; ++i)
        if (sources[i])
            slots[i]->reset(static_cast<QorShaderValueString*>(CopyValue(sources[i])));

    m_interfaces.reserve(other.m_interfaces.size());
    for (const InterfaceEntry& entry : other.m_interfaces)
        m_interfaces.emplace_back(entry.first ? _strdup(entry.first) : nullptr, CopyRecord(entry.second));
}

QorShaderParameters::~QorShaderParameters()
{
    // A null entry cannot be listed by this class; it is skipped rather than ending the
    // walk, so no value after it would be left behind.
    for (m_walkCursor = 0; m_walkCursor < static_cast<int>(m_values.size()); ++m_walkCursor) {
        QorIShaderValue* value = m_values[static_cast<size_t>(m_walkCursor)];
        if (QorShaderValueString* texture = QorShaderValueString::FromValue(value))
            QorShaderTextureBookkeeping::HandBack(texture->GetFile());
        delete value;
    }
    QorShaderValueList().swap(m_values);
    m_walkCursor = 0;
    for (std::unique_ptr<QorShaderValueString>* slot : {&m_firstTexture, &m_thirdTexture, &m_secondTexture})
        if (*slot) {
            QorShaderTextureBookkeeping::HandBack((*slot)->GetFile());
            slot->reset();
        }
    for (InterfaceEntry& entry : m_interfaces)
        DestroyInterface(entry);
}

QorIShaderParameters* QorShaderParameters::Clone()
{
    return new (std::nothrow) QorShaderParameters(*this);
}

QorIShaderValue* QorShaderParameters::CopyValue(QorIShaderValue* value)
{
    if (!value)
        return nullptr;
    int type = 0;
    value->GetType(&type);
    switch (type) {
    case QorValueFloat:
        return new (std::nothrow) QorShaderValueFloat(static_cast<const QorShaderValueFloat&>(*value));
    case QorValueColor4:
    case QorValueColor2:
    case QorValueColor3:
        return new (std::nothrow) QorShaderValueColor(static_cast<const QorShaderValueColor&>(*value));
    case QorValueTexture: {
        auto* copy = new (std::nothrow) QorShaderValueString(static_cast<const QorShaderValueString&>(*value));
        // The copy holds its own reference of the texture.
        if (copy)
            QorShaderTextureBookkeeping::Take(copy->GetFile());
        return copy;
    }
    default:
        return nullptr;
    }
}

int QorShaderParameters::GetNbParameters()
{
    return m_names.Count() + 1;
}

int QorShaderParameters::GetParameterIndex(const char* name)
{
    return m_names.IndexOf(name);
}

const char* QorShaderParameters::GetParameterName(int index)
{
    return m_names.At(index);
}

QorIShaderValue* QorShaderParameters::ValueAt(int index) const
{
    // Index 0 is the technique and has no value; a lower one would read before the list.
    if (index < 1 || static_cast<size_t>(index - 1) >= m_values.size())
        return nullptr;
    return m_values[static_cast<size_t>(index - 1)];
}

QorIShaderValue* QorShaderParameters::TypedValueAt(int index, int type) const
{
    QorIShaderValue* value = ValueAt(index);
    if (!value || type == 0)
        return value;
    return static_cast<QorShaderValue*>(value)->Type() == type ? value : nullptr;
}

QorIShaderValue* QorShaderParameters::GetValue(int position)
{
    if (position < m_names.Count())
        CheckFailure__("Overlapping memory", kSource, 1044);
    if (position < 0 || static_cast<size_t>(position) >= m_values.size())
        return nullptr;
    return m_values[static_cast<size_t>(position)];
}

int QorShaderParameters::GetParameterType(int index)
{
    if (index == 0)
        return QorValueFloat; // the technique
    if (index > m_names.Count())
        return 0;
    QorIShaderValue* value = ValueAt(index);
    if (!value)
        return 0;
    int type = 0;
    value->GetType(&type);
    return type;
}

int QorShaderParameters::SetColorValue(int index, const float* rgba)
{
    QorIShaderValue* value = ValueAt(index);
    if (!value)
        return -1;
    // A value of another kind reports the mismatch itself.
    if (QorIsColorType(static_cast<QorShaderValue*>(value)->Type()))
        static_cast<QorShaderValueColor*>(value)->SetColor(rgba);
    else
        value->SetColor(rgba);
    return 0;
}

int QorShaderParameters::SetFloatValue(int index, float value)
{
    QorIShaderValue* floatValue = TypedValueAt(index, QorValueFloat);
    if (!floatValue)
        return -1;
    static_cast<QorShaderValueFloat*>(floatValue)->SetFloat(value);
    return 0;
}

int QorShaderParameters::SetTextureValue(int index, const char* file, int reload)
{
    QorShaderValueString* texture = QorShaderValueString::FromValue(ValueAt(index));
    if (!texture)
        return -1;
    ChangeTexture(*texture, file, reload, TextureChange::ParameterValue);
    return 0;
}

int QorShaderParameters::ReadValue(int index, void* out, int onlyIfModified, int type) const
{
    // The index is checked with or without onlyIfModified: an unchecked one would read
    // past the list.
    auto* value = static_cast<QorShaderValue*>(ValueAt(index));
    if (!value || (onlyIfModified && value->GetModified() == 0) || !TypedValueAt(index, type))
        return 0;
    return value->Get(out);
}

int QorShaderParameters::GetFloatValue(int index, float* out, int onlyIfModified)
{
    return ReadValue(index, out, onlyIfModified, QorValueFloat);
}

int QorShaderParameters::GetColorValue(int index, float* out, int onlyIfModified)
{
    return ReadValue(index, out, onlyIfModified, 0);
}

int QorShaderParameters::GetTextureValue(int index, char** out, int onlyIfModified)
{
    return ReadValue(index, out, onlyIfModified, QorValueTexture);
}

int QorShaderParameters::GetParameterHandle(int index)
{
    // A bad index gives the null handle's token instead of reading outside the list.
    auto* value = static_cast<QorShaderValue*>(ValueAt(index));
    return value ? value->GetParameterToken() : 0;
}

CGparameter QorShaderParameters::GetCgParameter(int index) const
{
    auto* value = static_cast<QorShaderValue*>(ValueAt(index));
    return value ? value->GetParameter() : nullptr;
}

void QorShaderParameters::ResetModified(int index)
{
    if (auto* value = static_cast<QorShaderValue*>(ValueAt(index))) {
        value->ResetModified();
        QorChangedPositions::Bound(m_modifiedPositions, m_values, &QorShaderValue::GetModified);
    }
}

const QorShaderValueList* QorShaderParameters::GetValueList()
{
    return &m_values;
}

void QorShaderParameters::ChangeTexture(QorShaderValueString& value, const char* file, int reload,
                                        TextureChange change)
{
    using namespace QorShaderTextureBookkeeping;
    const Outcome outcome = QorShaderTextureBookkeeping::ChangeTexture(
        value.GetFile(), file, reload, change == TextureChange::FirstExtra ? Holder::DefaultTexture : Holder::Value);
    if (outcome == Outcome::Keep)
        return;
    // The reference the registry took belongs to the value from now on.
    if (outcome == Outcome::Take)
        value.SetString(file);
    if (change == TextureChange::Member)
        value.SetLoadState(0);
}

int QorShaderParameters::ChangeMemberTexture(QorIShaderValue* value, const char* file, int reload)
{
    QorShaderValueString* texture = QorShaderValueString::FromValue(value);
    if (!texture)
        return 0;
    ChangeTexture(*texture, file, reload, TextureChange::Member);
    return 1;
}

int QorShaderParameters::GetDefaultTexture(char** file)
{
    if (!m_firstTexture)
        return -1;
    m_firstTexture->Get(file);
    return 0;
}

int QorShaderParameters::GetUseDefaultTexture(int* use)
{
    if (use)
        *use = m_useDefaultTexture;
    return 0;
}

int QorShaderParameters::SetDefaultTexture(const char* file, int reload)
{
    if (!m_firstTexture)
        m_firstTexture.reset(new (std::nothrow) QorShaderValueString());
    if (!m_firstTexture)
        return 0;
    ChangeTexture(*m_firstTexture, file, reload, TextureChange::FirstExtra);
    return 0;
}

int QorShaderParameters::SetUseDefaultTexture(int use)
{
    m_useDefaultTexture = use;
    return 0;
}

int QorShaderParameters::SetExtraTexture(std::unique_ptr<QorShaderValueString>& slot, const char* file)
{
    if (!slot)
        slot.reset(new (std::nothrow) QorShaderValueString());
    return ChangeMemberTexture(slot.get(), file, 0);
}

int QorShaderParameters::SetSecondTexture(const char* file)
{
    return SetExtraTexture(m_secondTexture, file);
}

int QorShaderParameters::SetThirdTexture(const char* file)
{
    return SetExtraTexture(m_thirdTexture, file);
}

void QorShaderParameters::AppendValue(QorIShaderValue* value)
{
    // An empty place (a record read back with no value) is always kept: it holds a name's
    // position.
    if (value && std::find(m_values.rbegin(), m_values.rend(), value) != m_values.rend())
        return;
    QorChangedPositions::Append(m_values, m_modifiedPositions, static_cast<QorShaderValue*>(value),
                                &QorShaderValue::GetModified);
}

QorShaderValueList QorShaderParameters::CopyValues(const QorShaderValueList& values)
{
    // Every place is kept, an empty one too, so that the copy's values stay beside their
    // names.
    QorShaderValueList copies;
    copies.reserve(values.size());
    for (QorIShaderValue* value : values)
        copies.push_back(CopyValue(value));
    return copies;
}

void QorShaderParameters::AddParameterValue(CGparameter parameter, QorIShaderValue* value)
{
    if (value)
        AppendValue(value);
    AddParameterName(cgGetParameterName(parameter));
}

void QorShaderParameters::AddFloatParameter(CGparameter parameter, float value)
{
    if (parameter)
        AddParameterValue(parameter, new (std::nothrow) QorShaderValueFloat(parameter, value));
}

void QorShaderParameters::AddColorParameter(CGparameter parameter, const float* values, int count)
{
    if (parameter)
        AddParameterValue(parameter, new (std::nothrow) QorShaderValueColor(parameter, values, count));
}

void QorShaderParameters::AddTextureParameter(CGparameter parameter, const char* file)
{
    if (!parameter)
        return;
    auto* value = new (std::nothrow) QorShaderValueString(parameter, file);
    AddParameterValue(parameter, value);
    // Registered only for a value that exists to hold the reference.
    if (value)
        QorShaderTextureBookkeeping::Take(file);
}

int QorShaderParameters::AddParameterName(const char* name)
{
    return m_names.Add(name);
}

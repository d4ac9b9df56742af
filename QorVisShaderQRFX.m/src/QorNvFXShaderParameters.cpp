// The GLSL-effect parameter set: its values and names, the texture registry kept in step
// with its texture values, and the operations that have no meaning for GLSL effects.
#include "QorVisShaders/QorNvFXShaderParameters.h"

#include "QorVisShaderShared/QorChangedPositions.h"
#include "QorVisShaderShared/QorShaderInterfaceRecord.h"
#include "QorVisShaderShared/QorShaderParameterNames.h"
#include "QorVisShaderShared/QorShaderTextureBookkeeping.h"

#include "QorDiagnostics/CheckFailure.h"
#include "QorVisShaders/QorNvFXShaderValueColor.h"
#include "QorVisShaders/QorNvFXShaderValueFloat.h"
#include "QorVisShaders/QorNvFXShaderValueString.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <nvFX/IUniform.h>

#include <algorithm>
#include <new>

namespace {

const char* const kSource = "QorVisShaderQRFX.m/src/QorNvFXShaderParameters";
// The report places of this class (see CheckFailure.h on fixed line numbers).
const int kStreamLine = 616;
const int kOverlapLine = 700;

int NotForNvFX(int line)
{
    CheckFailure__("This method is not supposed to be called when using nvfx", kSource, line);
    return 0;
}

int TypeOf(QorIShaderValue* value)
{
    int type = 0;
    value->GetType(&type);
    return type;
}

QorNvFXShaderValue* Copy(QorIShaderValue* value)
{
    switch (value ? TypeOf(value) : 0) {
    case QorValueFloat:
        return new (std::nothrow) QorNvFXShaderValueFloat(static_cast<const QorNvFXShaderValueFloat&>(*value));
    case QorValueColor4:
    case QorValueColor2:
    case QorValueColor3:
        return new (std::nothrow) QorNvFXShaderValueColor(static_cast<const QorNvFXShaderValueColor&>(*value));
    case QorValueTexture: {
        auto* copy = new (std::nothrow) QorNvFXShaderValueString(static_cast<const QorNvFXShaderValueString&>(*value));
        // The copy holds its own reference of the texture.
        if (copy)
            QorShaderTextureBookkeeping::Take(copy->GetText());
        return copy;
    }
    default:
        return nullptr;
    }
}

} // namespace

QorNvFXShaderParameters::QorNvFXShaderParameters() : m_names(std::make_unique<QorShaderParameterNames>()) {}

QorNvFXShaderParameters::QorNvFXShaderParameters(const QorNvFXShaderParameters& other)
    : QorIShaderParameters(), m_names(std::make_unique<QorShaderParameterNames>(*other.m_names)),
      m_useDefaultTexture(other.m_useDefaultTexture)
{
    if (other.m_sharedTexture)
        m_sharedTexture.reset(static_cast<QorNvFXShaderValueString*>(Copy(other.m_sharedTexture.get())));
    // Every place is kept, an empty one too, so that the copy's values stay beside their
    // names.
    m_values.reserve(other.m_values.size());
    for (QorIShaderValue* value : other.m_values)
        Adopt(Copy(value));
}

QorNvFXShaderParameters::~QorNvFXShaderParameters()
{
    for (QorIShaderValue* value : m_values) {
        if (value && TypeOf(value) == QorValueTexture)
            QorShaderTextureBookkeeping::HandBack(static_cast<QorNvFXShaderValueString*>(value)->GetText());
        delete value;
    }
    if (m_sharedTexture)
        QorShaderTextureBookkeeping::HandBack(m_sharedTexture->GetText());
}

QorIShaderParameters* QorNvFXShaderParameters::Clone()
{
    return new (std::nothrow) QorNvFXShaderParameters(*this);
}

void QorNvFXShaderParameters::Stream(QorStreamer&)
{
    CheckFailure__("Not implemented", kSource, kStreamLine);
}

int QorNvFXShaderParameters::GetNbParameters()
{
    return m_names->Count() + 1;
}

int QorNvFXShaderParameters::GetParameterIndex(const char* name)
{
    return m_names->IndexOf(name);
}

const char* QorNvFXShaderParameters::GetParameterName(int index)
{
    return m_names->At(index);
}

QorNvFXShaderValue* QorNvFXShaderParameters::TypedValueAt(int index, std::initializer_list<int> types) const
{
    if (index < 1 || static_cast<size_t>(index - 1) >= m_values.size() || !m_values[static_cast<size_t>(index - 1)])
        return nullptr;
    QorIShaderValue* value = m_values[static_cast<size_t>(index - 1)];
    return std::find(types.begin(), types.end(), TypeOf(value)) != types.end() ? static_cast<QorNvFXShaderValue*>(value)
                                                                                : nullptr;
}

int QorNvFXShaderParameters::SetColorValue(int index, const float* rgba)
{
    QorNvFXShaderValue* value = TypedValueAt(index, {QorValueColor4, QorValueColor2, QorValueColor3});
    if (!value)
        return -1;
    value->Set(rgba);
    return 0;
}

int QorNvFXShaderParameters::SetFloatValue(int index, float number)
{
    QorNvFXShaderValue* value = TypedValueAt(index, {QorValueFloat});
    if (!value)
        return -1;
    value->Set(&number);
    return 0;
}

int QorNvFXShaderParameters::SetTextureValue(int index, const char* file, int reload)
{
    auto* value = static_cast<QorNvFXShaderValueString*>(TypedValueAt(index, {QorValueTexture}));
    if (!value)
        return -1;
    using namespace QorShaderTextureBookkeeping;
    // The value holds one registry reference for its file: setting the same file again
    // takes none more, so counts never grow without a hand-back to match.
    if (ChangeTexture(value->GetText(), file, reload, Holder::Value) != Outcome::Reloaded)
        value->Set(file);
    return 0;
}

QorIShaderValue* QorNvFXShaderParameters::GetValue(int position)
{
    if (position >= m_names->Count()) {
        // Past the names the set has nothing to answer: null rather than a stray value.
        CheckFailure__("Overlapping memory", kSource, kOverlapLine);
        return nullptr;
    }
    if (position < 0 || static_cast<size_t>(position) >= m_values.size())
        return nullptr;
    return m_values[static_cast<size_t>(position)];
}

int QorNvFXShaderParameters::SetInterfaceTexture(const char*, const char*, const char*, int)
{
    return NotForNvFX(859);
}

int QorNvFXShaderParameters::SetInterfaceColor(const char*, const char*, const float*)
{
    return NotForNvFX(854);
}

int QorNvFXShaderParameters::SetInterfaceFloat(const char*, const char*, float)
{
    return NotForNvFX(849);
}

int QorNvFXShaderParameters::GetInterfaceTexture(const char*, const char*, char**)
{
    return NotForNvFX(874);
}

int QorNvFXShaderParameters::GetInterfaceColor(const char*, const char*, float**)
{
    return NotForNvFX(869);
}

int QorNvFXShaderParameters::GetInterfaceFloat(const char*, const char*, float*)
{
    return NotForNvFX(864);
}

int QorNvFXShaderParameters::GetNbInterfaceMembers(int, int*)
{
    return NotForNvFX(879);
}

const char* QorNvFXShaderParameters::GetInterfaceMemberName(int, int)
{
    NotForNvFX(904);
    return nullptr;
}

const char* QorNvFXShaderParameters::GetInterfaceParameterName(int, int)
{
    NotForNvFX(884);
    return nullptr;
}

int QorNvFXShaderParameters::FindInterface(const char*, int*)
{
    return NotForNvFX(889);
}

int QorNvFXShaderParameters::FindInterfaceMember(int, const char*, int*)
{
    return NotForNvFX(894);
}

int QorNvFXShaderParameters::GetParameterType(int index)
{
    if (index == 0)
        return QorValueFloat; // the technique
    if (index < 0 || index > m_names->Count() || static_cast<size_t>(index - 1) >= m_values.size())
        return 0;
    QorIShaderValue* value = m_values[static_cast<size_t>(index - 1)];
    return value ? TypeOf(value) : 0;
}

int QorNvFXShaderParameters::GetInterfaceMemberType(int, int, int*)
{
    return NotForNvFX(899);
}

int QorNvFXShaderParameters::SetInterfaceTextureAt(int, int, const char*, int)
{
    return NotForNvFX(919);
}

int QorNvFXShaderParameters::SetInterfaceColorAt(int, int, const float*)
{
    return NotForNvFX(914);
}

int QorNvFXShaderParameters::SetInterfaceFloatAt(int, int, float)
{
    return NotForNvFX(909);
}

int QorNvFXShaderParameters::GetInterfaceTextureAt(int, int, char**)
{
    return NotForNvFX(934);
}

int QorNvFXShaderParameters::GetInterfaceColorAt(int, int, float**)
{
    return NotForNvFX(929);
}

int QorNvFXShaderParameters::GetInterfaceFloatAt(int, int, float*)
{
    return NotForNvFX(924);
}

int QorNvFXShaderParameters::GetFloatValue(int index, float* out, int)
{
    QorNvFXShaderValue* value = TypedValueAt(index, {QorValueFloat});
    return value ? value->Get(out) : 0;
}

int QorNvFXShaderParameters::GetColorValue(int index, float* out, int)
{
    QorNvFXShaderValue* value = TypedValueAt(index, {QorValueColor4, QorValueColor2, QorValueColor3});
    return value ? value->Get(out) : 0;
}

int QorNvFXShaderParameters::GetTextureValue(int index, char** out, int)
{
    QorNvFXShaderValue* value = TypedValueAt(index, {QorValueTexture});
    return value ? value->Get(out) : 0;
}

int QorNvFXShaderParameters::GetParameterHandle(int)
{
    return 0;
}

int QorNvFXShaderParameters::GetDefaultTexture(char** file)
{
    if (!m_sharedTexture)
        return -1;
    m_sharedTexture->Get(file);
    return 0;
}

int QorNvFXShaderParameters::GetUseDefaultTexture(int* use)
{
    if (use)
        *use = m_useDefaultTexture;
    return 0;
}

int QorNvFXShaderParameters::SetDefaultTexture(const char* file, int reload)
{
    if (!m_sharedTexture)
        m_sharedTexture.reset(new (std::nothrow) QorNvFXShaderValueString());
    if (!m_sharedTexture)
        return 0;
    using namespace QorShaderTextureBookkeeping;
    if (ChangeTexture(m_sharedTexture->GetText(), file, reload, Holder::DefaultTexture) != Outcome::Reloaded)
        m_sharedTexture->Set(file);
    return 0;
}

int QorNvFXShaderParameters::SetUseDefaultTexture(int use)
{
    m_useDefaultTexture = use;
    return 0;
}

int QorNvFXShaderParameters::SetSecondTexture(const char*)
{
    return 0;
}

int QorNvFXShaderParameters::SetThirdTexture(const char*)
{
    return 0;
}

void QorNvFXShaderParameters::ResetModified(int index)
{
    if (index < 1 || static_cast<size_t>(index - 1) >= m_values.size() || !m_values[static_cast<size_t>(index - 1)])
        return;
    static_cast<QorNvFXShaderValue*>(m_values[static_cast<size_t>(index - 1)])->ClearChanged();
    QorChangedPositions::Bound(m_changedPositions, m_values, &QorNvFXShaderValue::GetChanged);
}

const QorShaderValueList* QorNvFXShaderParameters::GetValueList()
{
    return &m_values;
}

int QorNvFXShaderParameters::SetInterface(const char*, QorShaderInterfaceRecord* record)
{
    delete record;
    return 1;
}

void QorNvFXShaderParameters::Append(QorNvFXShaderValue* value)
{
    // An empty place (a record read back with no value) is always kept: it holds a name's
    // position.
    if (!value || std::find(m_values.rbegin(), m_values.rend(), value) == m_values.rend())
        Adopt(value);
}

void QorNvFXShaderParameters::Adopt(QorNvFXShaderValue* value)
{
    QorChangedPositions::Append(m_values, m_changedPositions, value, &QorNvFXShaderValue::GetChanged);
}

void QorNvFXShaderParameters::AddValue(nvFX::IUniform* uniform, QorNvFXShaderValue* value)
{
    if (value)
        Append(value);
    AddName(uniform->getName());
}

void QorNvFXShaderParameters::AddFloat(nvFX::IUniform* uniform, float value)
{
    if (uniform)
        AddValue(uniform, new (std::nothrow) QorNvFXShaderValueFloat(uniform, value));
}

void QorNvFXShaderParameters::AddColor(nvFX::IUniform* uniform, const float* components, int count)
{
    if (uniform)
        AddValue(uniform, new (std::nothrow) QorNvFXShaderValueColor(uniform, components, count));
}

void QorNvFXShaderParameters::AddString(nvFX::IUniform* uniform, const char* text)
{
    if (!uniform)
        return;
    auto* value = new (std::nothrow) QorNvFXShaderValueString(uniform, text);
    // Registered only for a value that exists to hold the reference.
    if (value)
        QorShaderTextureBookkeeping::Take(value->GetText());
    AddValue(uniform, value);
}

nvFX::IUniform* QorNvFXShaderParameters::GetUniform(int index) const
{
    if (index < 1 || static_cast<size_t>(index - 1) >= m_values.size() || !m_values[static_cast<size_t>(index - 1)])
        return nullptr;
    return static_cast<QorNvFXShaderValue*>(m_values[static_cast<size_t>(index - 1)])->GetParameter();
}

int QorNvFXShaderParameters::AddName(const char* name)
{
    return m_names->Add(name);
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueFloat()
{
    return new (std::nothrow) QorNvFXShaderValueFloat();
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueColor()
{
    return new (std::nothrow) QorNvFXShaderValueColor(4);
}

QorNvFXShaderValue* QorNvFXShaderParameters::CreateValueString()
{
    return new (std::nothrow) QorNvFXShaderValueString();
}

/// @file
/// The parameter set of the material model, written once for both back ends: the values
/// of one effect's user parameters with their names, in the order the effect found them
/// (index 0 is the "Technique" pseudo-parameter; real parameters count from 1), the
/// values of the effect's interface structures, three extra texture slots and the
/// default-texture flag. The effect builds one default set while it binds; each shader
/// object owns a deep copy, whose values mirror the same parameters. Every texture file
/// name the set holds keeps one reference of the texture registered under it.
///
/// The set keeps the positions of its values modified since the last upload, so that an
/// upload visits only those, and a serial number of its own, so that an effect knows
/// whether the set it uploads now is the one it uploaded last.
///
/// Where the two back ends answer differently on purpose (which writes check the kind,
/// how GetValue guards, whether interfaces exist, whether the set streams), the set
/// follows its back end's profile (QorBackEndProfile).
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorBackEndProfile.h"
#include "QorVisShaderShared/QorMaterialValue.h"
#include "QorVisShaderShared/QorShaderParameterNames.h"

#include "QorSystem/QorString.h"
#include "QorVisShaders/QorIShaderParameters.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

class QOR_VISSHADERS_API QorMaterialParameters : public QorIShaderParameters
{
public:
    QorMaterialParameters& operator=(const QorMaterialParameters&) = delete;
    /// Hands every texture reference back to the registry's destroy list.
    ~QorMaterialParameters() override;

    /// The back end whose answers the set gives.
    const QorBackEndProfile& Profile() const { return m_profile; }

    void Stream(QorStreamer& streamer) final;
    /// Reads a parameter stream: its names replace the set's, its values follow the
    /// set's own, one per record (an empty place for a record without a value).
    void UnStream(QorStreamer& streamer) final;
    int GetNbParameters() final;
    int GetParameterIndex(const char* name) final;
    int SetColorValue(int index, const float* rgba) final;
    int SetFloatValue(int index, float value) final;
    int SetTextureValue(int index, const char* file, int reload) final;
    const char* GetParameterName(int index) final;
    QorIShaderValue* GetValue(int position) final;
    int SetInterfaceTexture(const char* interfaceName, const char* member, const char* file, int reload) final;
    int SetInterfaceColor(const char* interfaceName, const char* member, const float* values) final;
    int SetInterfaceFloat(const char* interfaceName, const char* member, float value) final;
    int GetInterfaceTexture(const char* interfaceName, const char* member, char** file) final;
    int GetInterfaceColor(const char* interfaceName, const char* member, float** values) final;
    int GetInterfaceFloat(const char* interfaceName, const char* member, float* value) final;
    int GetNbInterfaceMembers(int interfaceIndex, int* count) final;
    const char* GetInterfaceMemberName(int interfaceIndex, int member) final;
    const char* GetInterfaceParameterName(int interfaceIndex, int member) final;
    int FindInterface(const char* name, int* interfaceIndex) final;
    int FindInterfaceMember(int interfaceIndex, const char* name, int* member) final;
    int GetParameterType(int index) final;
    int GetInterfaceMemberType(int interfaceIndex, int member, int* type) final;
    int SetInterfaceTextureAt(int interfaceIndex, int member, const char* file, int reload) final;
    int SetInterfaceColorAt(int interfaceIndex, int member, const float* values) final;
    int SetInterfaceFloatAt(int interfaceIndex, int member, float value) final;
    int GetInterfaceTextureAt(int interfaceIndex, int member, char** file) final;
    int GetInterfaceColorAt(int interfaceIndex, int member, float** values) final;
    int GetInterfaceFloatAt(int interfaceIndex, int member, float* value) final;
    int GetFloatValue(int index, float* out, int onlyIfModified) final;
    int GetColorValue(int index, float* out, int onlyIfModified) final;
    int GetTextureValue(int index, char** out, int onlyIfModified) final;
    int GetParameterHandle(int index) final;
    int GetDefaultTexture(char** file) final;
    int GetUseDefaultTexture(int* use) final;
    int SetDefaultTexture(const char* file, int reload) final;
    int SetUseDefaultTexture(int use) final;
    int SetSecondTexture(const char* file) final;
    int SetThirdTexture(const char* file) final;
    void ResetModified(int index) final;
    const QorShaderValueList* GetValueList() final { return &m_values; }
    /// Replaces or adds the record of an interface (owned from now on); 1. A back end
    /// without interfaces drops the record.
    int SetInterface(const char* name, QorShaderInterfaceRecord* record) final;

    /// The value at parameter index `index` (from 1); null when out of range or an empty place.
    QorMaterialValue* ValueAt(int index) const
    {
        return index >= 1 && static_cast<std::size_t>(index - 1) < m_values.size()
                   ? static_cast<QorMaterialValue*>(m_values[static_cast<std::size_t>(index - 1)])
                   : nullptr;
    }
    /// The same for a 0-based position.
    QorMaterialValue* ValueAtPosition(std::size_t position) const
    {
        return position < m_values.size() ? static_cast<QorMaterialValue*>(m_values[position]) : nullptr;
    }
    /// Positions (from 0) of the values modified since the last ClearChangedPositions, in
    /// the order they were modified; a position may be listed whose value was reset since,
    /// so readers test the value's mark.
    const std::vector<int>& GetChangedPositions() const { return m_changedPositions; }
    void ClearChangedPositions() { m_changedPositions.clear(); }
    /// Unique to this set among all sets the process made: an effect compares it with the
    /// set it uploaded last.
    std::uint64_t Serial() const { return m_serial; }
    /// Stores a copy of the name; its 0-based position, or -1 for null or out of memory.
    int AddParameterName(const char* name) { return m_names.Add(name); }
    /// The value of an interface member (null when there is none), for the back end that
    /// pushes or describes it.
    QorMaterialValue* MemberValueAt(int interfaceIndex, int member, bool touch = false) const;

protected:
    /// No values, room for 20 names, default-texture flag 1.
    explicit QorMaterialParameters(const QorBackEndProfile& profile);
    /// A deep copy: names, values, extra textures and interfaces; the values mirror the
    /// same parameters, and every copied texture name registers its texture again.
    QorMaterialParameters(const QorMaterialParameters& other);

    /// A new value of the back end's kind for `type`, mirroring `binding`, with its content
    /// (see QorMaterialValue); null when out of memory.
    virtual QorMaterialValue* MakeValue(int type, int count, void* binding, const float* numbers,
                                        const char* file) const = 0;
    /// Appends a value made for the effect parameter `name` and the name (also when the
    /// value could not be made, so names and values may then differ in count). A texture
    /// value registers its file.
    void AddParameter(QorMaterialValue* value, const char* name);

private:
    friend class QorMaterialValueReader;
    using InterfaceEntry = std::pair<char*, QorShaderInterfaceRecord*>; // name _strdup'd, record owned
    enum class Slot
    {
        Value,      ///< SetTextureValue
        Member,     ///< interface members, second and third slots: the load state is cleared
        FirstExtra, ///< SetDefaultTexture: a reload forgets the registered name
    };

    /// The value at `index` when it exists and is of a kind the test accepts.
    template <typename Accepts>
    QorMaterialValue* KindAt(int index, Accepts accepts) const
    {
        QorMaterialValue* value = ValueAt(index);
        return value && accepts(value->Type()) ? value : nullptr;
    }
    /// The raw read of GetFloatValue, GetColorValue and GetTextureValue.
    int ReadValue(QorMaterialValue* value, void* out, int onlyIfModified) const;
    /// Appends a value (owned; an empty place when null), which then reports its changes.
    void Append(QorMaterialValue* value);
    /// Changes a texture value's file name, keeping the texture registry in step.
    static void ChangeTexture(QorMaterialValue& value, const char* file, int reload, Slot slot);
    /// The member variant: 0 unless `value` is a texture value, else 1.
    static int ChangeMemberTexture(QorMaterialValue* value, const char* file, int reload);
    /// An extra texture slot, made on first use; null when out of memory.
    QorMaterialValue* ExtraTexture(int slot);
    /// A copy of `value` (null for an empty place): a texture copy registers its file again.
    static QorMaterialValue* Copy(const QorMaterialValue* value);
    static QorShaderInterfaceRecord* CopyRecord(const QorShaderInterfaceRecord* record);

    // Interface records.
    /// Reports a call a back end without interfaces does not take; 0.
    int NoInterfaces(int QorInterfaceGuardLines::*line) const;
    QorShaderInterfaceRecord* RecordAt(int interfaceIndex) const;
    /// A member's name, or the report at `line` for a back end without interfaces.
    const char* MemberNameAt(int interfaceIndex, int member, int QorInterfaceGuardLines::*line) const;
    QorMaterialValue* FindMemberValue(const char* interfaceName, const char* member, bool touch) const;
    /// Runs `operation` on the member's value: 0 when there is none, else 1.
    template <typename Operation>
    static int WithMember(QorMaterialValue* value, Operation operation)
    {
        if (!value)
            return 0;
        operation(*value);
        return 1;
    }

    const QorBackEndProfile& m_profile;
    QorShaderValueList m_values;         // owned QorMaterialValue, in the order the effect found them
    std::vector<int> m_changedPositions; // see GetChangedPositions
    int m_walkCursor = 0;                // the destructor's position in m_values
    QorShaderParameterNames m_names;
    int m_useDefaultTexture = 1;
    QorString m_label; // kept for the framework; nothing here reads it
    std::unique_ptr<QorMaterialValue> m_extraTextures[3]; // first (the default texture), second, third
    std::vector<InterfaceEntry> m_interfaces;
    int m_cachedIndexes[3] = {-1, -1, -1}; // kept and copied for the framework; unused here
    std::uint64_t m_serial;
};

/// @file
/// The CgFX parameter set: the values of one compiled effect's user parameters (floats,
/// colours, texture file names) with their names, the values of its interface
/// structures, three extra texture slots and the default-texture flag. The effect builds
/// one default set while binding semantics; each shader object owns a deep copy, whose
/// values share the effect's Cg handles. Every texture file name the set holds keeps one
/// reference of the shared texture registered under it (QorShaderManager). Private to
/// the library: callers reach it through QorIShaderParameters.
#pragma once

#include "QorVisShaders/QorIShaderParameters.h"

#include "QorSystem/QorString.h"
#include "QorVisShaderShared/QorShaderParameterNames.h"

#include <Cg/cg.h>

#include <memory>
#include <utility>
#include <vector>

class QorShaderValueString;

class QorShaderParameters final : public QorIShaderParameters
{
public:
    /// No values, room for 20 names, default-texture flag 1.
    QorShaderParameters();
    /// A deep copy: names, values, extra textures and interfaces are copied, the Cg
    /// handles are shared, and every copied texture name registers its texture again.
    QorShaderParameters(const QorShaderParameters& other);
    QorShaderParameters& operator=(const QorShaderParameters&) = delete;
    /// Hands every texture reference back to the registry's destroy list.
    ~QorShaderParameters() override;

    QorIShaderParameters* Clone() override;
    void Stream(QorStreamer& streamer) override;
    void UnStream(QorStreamer& streamer) override;
    int GetNbParameters() override;
    int GetParameterIndex(const char* name) override;
    int SetColorValue(int index, const float* rgba) override;
    int SetFloatValue(int index, float value) override;
    int SetTextureValue(int index, const char* file, int reload) override;
    const char* GetParameterName(int index) override;
    QorIShaderValue* GetValue(int position) override;
    int SetInterfaceTexture(const char* interfaceName, const char* member, const char* file, int reload) override;
    int SetInterfaceColor(const char* interfaceName, const char* member, const float* values) override;
    int SetInterfaceFloat(const char* interfaceName, const char* member, float value) override;
    int GetInterfaceTexture(const char* interfaceName, const char* member, char** file) override;
    int GetInterfaceColor(const char* interfaceName, const char* member, float** values) override;
    int GetInterfaceFloat(const char* interfaceName, const char* member, float* value) override;
    int GetNbInterfaceMembers(int interfaceIndex, int* count) override;
    const char* GetInterfaceMemberName(int interfaceIndex, int member) override;
    const char* GetInterfaceParameterName(int interfaceIndex, int member) override;
    int FindInterface(const char* name, int* interfaceIndex) override;
    int FindInterfaceMember(int interfaceIndex, const char* name, int* member) override;
    int GetParameterType(int index) override;
    int GetInterfaceMemberType(int interfaceIndex, int member, int* type) override;
    int SetInterfaceTextureAt(int interfaceIndex, int member, const char* file, int reload) override;
    int SetInterfaceColorAt(int interfaceIndex, int member, const float* values) override;
    int SetInterfaceFloatAt(int interfaceIndex, int member, float value) override;
    int GetInterfaceTextureAt(int interfaceIndex, int member, char** file) override;
    int GetInterfaceColorAt(int interfaceIndex, int member, float** values) override;
    int GetInterfaceFloatAt(int interfaceIndex, int member, float* value) override;
    int GetFloatValue(int index, float* out, int onlyIfModified) override;
    int GetColorValue(int index, float* out, int onlyIfModified) override;
    int GetTextureValue(int index, char** out, int onlyIfModified) override;
    int GetParameterHandle(int index) override;
    int GetDefaultTexture(char** file) override;
    int GetUseDefaultTexture(int* use) override;
    int SetDefaultTexture(const char* file, int reload) override;
    int SetUseDefaultTexture(int use) override;
    int SetSecondTexture(const char* file) override;
    int SetThirdTexture(const char* file) override;
    void ResetModified(int index) override;
    const QorShaderValueList* GetValueList() override;
    int SetInterface(const char* name, QorShaderInterfaceRecord* record) override;

    // Used by the effect while it builds its default set. Each adds the parameter's
    // name (cgGetParameterName) even when its value cannot be made; a null parameter adds
    // nothing.
    void AddFloatParameter(CGparameter parameter, float value);
    void AddColorParameter(CGparameter parameter, const float* values, int count);
    /// A non-null file also registers its texture (the value holds that reference).
    void AddTextureParameter(CGparameter parameter, const char* file);
    /// Stores a copy of the name; its 0-based position, or -1 for null or out of memory.
    int AddParameterName(const char* name);

    /// Positions (from 0) of the values modified since the last ClearModifiedPositions,
    /// in the order they were modified; a position may be listed whose value was reset
    /// since, so readers test the value's flag.
    const std::vector<int>& GetModifiedPositions() const { return m_modifiedPositions; }
    void ClearModifiedPositions() { m_modifiedPositions.clear(); }
    /// A new record of the structure instance's float, vector and texture members with
    /// their defaults, owned by the caller until handed to SetInterface; null only when
    /// out of memory. Texture members register their annotated file names.
    static QorShaderInterfaceRecord* BuildInterfaceRecord(CGparameter structParameter);
    /// The live Cg handle of the value at parameter index `index` (from 1), for reading the
    /// effect's annotations; null for a bad index or a value read from a stream.
    CGparameter GetCgParameter(int index) const;
    /// The live Cg handle of an interface member's value; null when there is none.
    CGparameter GetInterfaceMemberHandle(int interfaceIndex, int member) const;
    /// The string of the first of the annotations "File", "file", "Default", "default"
    /// present on the parameter; null when none is present or it is not a string.
    /// Borrowed from the Cg runtime.
    static const char* GetTextureFileAnnotation(CGparameter parameter);

private:
    enum class TextureChange
    {
        ParameterValue, ///< SetTextureValue
        Member,         ///< interface members, second and third slots: load state cleared
        FirstExtra,     ///< SetDefaultTexture: a reload forgets the registered name
    };
    using InterfaceEntry = std::pair<char*, QorShaderInterfaceRecord*>; // name _strdup'd, record owned

    /// The value at parameter index `index` (from 1), or null when it is not in the list.
    QorIShaderValue* ValueAt(int index) const;
    /// The value at `index` when it exists and is of `type` (0: any type), else null.
    QorIShaderValue* TypedValueAt(int index, int type) const;
    /// The raw read of GetFloatValue, GetColorValue and GetTextureValue.
    int ReadValue(int index, void* out, int onlyIfModified, int type) const;
    /// Appends the value unless that very pointer is listed already.
    void AppendValue(QorIShaderValue* value);
    void AddParameterValue(CGparameter parameter, QorIShaderValue* value);

    /// Changes one texture value's file name, keeping the texture registry in step.
    static void ChangeTexture(QorShaderValueString& value, const char* file, int reload, TextureChange change);
    /// The member variant: 0 unless `value` is a texture value, else 1.
    static int ChangeMemberTexture(QorIShaderValue* value, const char* file, int reload);
    /// A second or third slot, made on first use.
    static int SetExtraTexture(std::unique_ptr<QorShaderValueString>& slot, const char* file);

    QorShaderInterfaceRecord* RecordAt(int interfaceIndex) const;
    QorShaderInterfaceRecord* FindRecord(const char* interfaceName) const;
    QorIShaderValue* FindMemberValue(const char* interfaceName, const char* member, bool touch) const;
    QorIShaderValue* MemberValueAt(int interfaceIndex, int member, bool touch) const;
    static void DestroyInterface(InterfaceEntry& entry);

    /// A copy by type code (texture copies register their file again), or null for an
    /// unknown code or out of memory.
    static QorIShaderValue* CopyValue(QorIShaderValue* value);
    /// Copies of every value that can be copied, made one after another before anything
    /// else of a copied set, so that a set's values sit together in memory: a frame
    /// touches some of every material's.
    static QorShaderValueList CopyValues(const QorShaderValueList& values);
    static QorShaderInterfaceRecord* CopyRecord(const QorShaderInterfaceRecord* record);

    QorShaderValueList m_values; // owned values, in the order the effect found them
    std::vector<int> m_modifiedPositions; // see GetModifiedPositions
    int m_walkCursor = 0;        // the destructor's position in m_values
    QorShaderParameterNames m_names;
    int m_useDefaultTexture = 1;
    QorString m_label; // kept for the framework; nothing here reads it
    std::unique_ptr<QorShaderValueString> m_firstTexture;
    std::unique_ptr<QorShaderValueString> m_secondTexture;
    std::unique_ptr<QorShaderValueString> m_thirdTexture;
    std::vector<InterfaceEntry> m_interfaces;
    int m_cachedIndexes[3] = {-1, -1, -1}; // kept and copied for the framework; unused here
};

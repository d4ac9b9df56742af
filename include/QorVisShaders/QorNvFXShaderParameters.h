/// @file
/// The parameter set of GLSL (nvFX) effects: the values of one effect's user uniforms,
/// with their names, in the order binding found them, and a shared texture of the whole
/// set. The effect builds one while it binds its uniforms; each shader object owns a copy.
/// The contract's editing operations for interfaces have no meaning for GLSL effects:
/// they report "This method is not supposed to be called when using nvfx" and answer 0.
/// The set cannot be written to a stream; it reads the parameter stream CgFX sets write,
/// to carry stored materials over to GLSL effects.
#pragma once

#include "QorVisShaders/QorIShaderParameters.h"
#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"

#include <initializer_list>
#include <memory>
#include <vector>

class QorNvFXShaderValue;
class QorNvFXShaderValueString;
class QorShaderParameterNames;

namespace nvFX {
class IUniform;
}

class QOR_VISSHADERS_API QorNvFXShaderParameters final : public QorIShaderParameters
{
public:
    /// No values, room for 20 names, flag 1.
    QorNvFXShaderParameters();
    /// A deep copy: names, values and the shared texture; the values mirror the same
    /// uniforms, and each texture name holds a registry reference of its own.
    QorNvFXShaderParameters(const QorNvFXShaderParameters& other);
    QorNvFXShaderParameters& operator=(const QorNvFXShaderParameters&) = delete;
    /// Hands every texture reference back to the registry's destroy list.
    ~QorNvFXShaderParameters() override;

    QorIShaderParameters* Clone() override;
    /// Not implemented for GLSL effects: reports "Not implemented" and writes nothing.
    void Stream(QorStreamer& streamer) override;
    /// Reads a parameter stream (names, then value records) in place of the names; read
    /// values follow the set's own. Texture images come through the stream's container.
    void UnStream(QorStreamer& streamer) override;
    int GetNbParameters() override;
    int GetParameterIndex(const char* name) override;
    /// Index from 1; -1 for an index beyond the list or a value of another kind.
    int SetColorValue(int index, const float* rgba) override;
    int SetFloatValue(int index, float value) override;
    /// Keeps the texture registry in step with the file the value names: `reload` with
    /// the same file makes the texture again instead of changing the value.
    int SetTextureValue(int index, const char* file, int reload) override;
    const char* GetParameterName(int index) override;
    /// Position from 0. A position at or past the name count is reported ("Overlapping
    /// memory") and answers null.
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
    /// The typed reads answer the value's changed mark (0 for a bad index or another
    /// kind); onlyIfModified is not used by GLSL sets.
    int GetFloatValue(int index, float* out, int onlyIfModified) override;
    int GetColorValue(int index, float* out, int onlyIfModified) override;
    int GetTextureValue(int index, char** out, int onlyIfModified) override;
    /// Uniforms have no Cg handle: 0.
    int GetParameterHandle(int index) override;
    /// The shared texture's file; -1 before one is set.
    int GetDefaultTexture(char** file) override;
    int GetUseDefaultTexture(int* use) override;
    /// Sets the shared texture (made on first use); `reload` hands the current one back.
    int SetDefaultTexture(const char* file, int reload) override;
    int SetUseDefaultTexture(int use) override;
    /// GLSL sets have no second or third texture: 0.
    int SetSecondTexture(const char* file) override;
    int SetThirdTexture(const char* file) override;
    /// Clears the changed mark of the value at `index` (from 1).
    void ResetModified(int index) override;
    const QorShaderValueList* GetValueList() override;
    /// GLSL effects have no interfaces: the record is deleted; 1.
    int SetInterface(const char* name, QorShaderInterfaceRecord* record) override;

    // Binding fills the set. A null uniform adds nothing; otherwise the value and the
    // uniform's name are added. A texture value takes a registry reference for its file.
    void AddFloat(nvFX::IUniform* uniform, float value);
    void AddColor(nvFX::IUniform* uniform, const float* components, int count);
    void AddString(nvFX::IUniform* uniform, const char* text);
    /// The uniform of the value at `index` (from 1); null for a bad index.
    nvFX::IUniform* GetUniform(int index) const;
    /// Stores a copy of the name; its position, or -1 for a null name.
    int AddName(const char* name);

    /// Positions (from 0) of the values changed since the last ClearChangedPositions, in
    /// the order they changed; a position may be listed whose mark was cleared since, so
    /// readers test the value's mark.
    const std::vector<int>& GetChangedPositions() const { return m_changedPositions; }
    void ClearChangedPositions() { m_changedPositions.clear(); }

    static QorNvFXShaderValue* CreateValueFloat();
    /// A colour of four components.
    static QorNvFXShaderValue* CreateValueColor();
    static QorNvFXShaderValue* CreateValueString();

private:
    /// The value at `index` (from 1) when it exists and is of one of the kinds; else null.
    QorNvFXShaderValue* TypedValueAt(int index, std::initializer_list<int> types) const;
    /// Appends the value (owned) unless that very pointer is listed.
    void Append(QorNvFXShaderValue* value);
    /// Appends the value (owned), which then reports its changes to this set.
    void Adopt(QorNvFXShaderValue* value);
    void AddValue(nvFX::IUniform* uniform, QorNvFXShaderValue* value);

    QorShaderValueList m_values; // owned QorNvFXShaderValue, in binding order
    std::vector<int> m_changedPositions; // see GetChangedPositions
    std::unique_ptr<QorShaderParameterNames> m_names;
    int m_kept = 1;    // kept for the framework; nothing here reads it
    int m_useDefaultTexture = 1;
    QorString m_label; // kept for the framework; nothing here reads it
    std::unique_ptr<QorNvFXShaderValueString> m_sharedTexture; // made on first use
};

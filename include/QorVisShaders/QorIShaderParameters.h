/// @file
/// The parameter-set interface: the values of one effect's user parameters, owned by one
/// shader object. Index 0 is the "Technique" pseudo-parameter; real parameters count
/// from 1 in the order the effect found them. Interface and member indexes count from 0.
/// Bad indexes answer -1, 0 or null as each operation says; nothing throws.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include <vector>

class QorIShaderValue;
class QorShaderInterfaceRecord;
class QorStreamer;

using QorShaderValueList = std::vector<QorIShaderValue*>;

class QOR_VISSHADERS_API QorIShaderParameters
{
public:
    virtual ~QorIShaderParameters() = default;
    /// A deep copy, owned by the caller; its values share this set's Cg handles.
    virtual QorIShaderParameters* Clone() = 0;
    virtual void Stream(QorStreamer& streamer) = 0;
    virtual void UnStream(QorStreamer& streamer) = 0;
    /// Number of parameters including "Technique".
    virtual int GetNbParameters() = 0;
    virtual int GetParameterIndex(const char* name) = 0;
    virtual int SetColorValue(int index, const float* rgba) = 0;
    virtual int SetFloatValue(int index, float value) = 0;
    virtual int SetTextureValue(int index, const char* file, int reload) = 0;
    virtual const char* GetParameterName(int index) = 0;
    /// 0-based position in the value list; borrowed pointer or null.
    virtual QorIShaderValue* GetValue(int position) = 0;
    virtual int SetInterfaceTexture(const char* interfaceName, const char* member, const char* file, int reload) = 0;
    virtual int SetInterfaceColor(const char* interfaceName, const char* member, const float* values) = 0;
    virtual int SetInterfaceFloat(const char* interfaceName, const char* member, float value) = 0;
    virtual int GetInterfaceTexture(const char* interfaceName, const char* member, char** file) = 0;
    virtual int GetInterfaceColor(const char* interfaceName, const char* member, float** values) = 0;
    virtual int GetInterfaceFloat(const char* interfaceName, const char* member, float* value) = 0;
    virtual int GetNbInterfaceMembers(int interfaceIndex, int* count) = 0;
    virtual const char* GetInterfaceMemberName(int interfaceIndex, int member) = 0;
    virtual const char* GetInterfaceParameterName(int interfaceIndex, int member) = 0;
    virtual int FindInterface(const char* name, int* interfaceIndex) = 0;
    virtual int FindInterfaceMember(int interfaceIndex, const char* name, int* member) = 0;
    virtual int GetParameterType(int index) = 0;
    virtual int GetInterfaceMemberType(int interfaceIndex, int member, int* type) = 0;
    virtual int SetInterfaceTextureAt(int interfaceIndex, int member, const char* file, int reload) = 0;
    virtual int SetInterfaceColorAt(int interfaceIndex, int member, const float* values) = 0;
    virtual int SetInterfaceFloatAt(int interfaceIndex, int member, float value) = 0;
    virtual int GetInterfaceTextureAt(int interfaceIndex, int member, char** file) = 0;
    virtual int GetInterfaceColorAt(int interfaceIndex, int member, float** values) = 0;
    virtual int GetInterfaceFloatAt(int interfaceIndex, int member, float* value) = 0;
    /// With onlyIfModified non-zero an unmodified value answers 0 and leaves `out` alone.
    virtual int GetFloatValue(int index, float* out, int onlyIfModified) = 0;
    virtual int GetColorValue(int index, float* out, int onlyIfModified) = 0;
    virtual int GetTextureValue(int index, char** out, int onlyIfModified) = 0;
    /// The value's Cg parameter as an opaque 32-bit token (never a usable handle).
    virtual int GetParameterHandle(int index) = 0;
    virtual int GetDefaultTexture(char** file) = 0;
    virtual int GetUseDefaultTexture(int* use) = 0;
    virtual int SetDefaultTexture(const char* file, int reload) = 0;
    virtual int SetUseDefaultTexture(int use) = 0;
    virtual int SetSecondTexture(const char* file) = 0;
    virtual int SetThirdTexture(const char* file) = 0;
    virtual void ResetModified(int index) = 0;
    /// The values themselves, for read-only use.
    virtual const QorShaderValueList* GetValueList() = 0;
    /// Registers the values of an interface structure under the interface's parameter
    /// name, replacing an earlier record of that name; the set takes ownership. Returns 1.
    virtual int SetInterface(const char* name, QorShaderInterfaceRecord* record) = 0;
};

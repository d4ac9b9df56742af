/// @file
/// The effect interface: one compiled effect source, shared by every shader object that
/// names it. Effects are reference-counted: a new effect starts at 1, AddRef adds a
/// holder, Release from 1 destroys it. Never delete an effect directly.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorMath/Qor4x4Matrix.h"
#include "QorSystem/QorString.h"
#include "QorVisShaders/QorFxImplementation.h"
#include "QorVisShaders/QorShaderTypes.h"

class QorIShaderParameters;
class QorStreamer;

class QOR_VISSHADERS_API QorIShaderEffect
{
public:
    virtual unsigned int AddRef() = 0;
    /// Returns the count left; 0 means the effect is gone.
    virtual unsigned int Release() = 0;
    virtual void Init() = 0;
    virtual const QorString& GetPathName() const = 0;
    virtual const QorString& GetFileName() const = 0;
    /// Writes the current technique's position, 0 for the first.
    virtual void getTechnique(int* index) = 0;
    virtual void setTechnique(int index) = 0;
    virtual void setTechniqueByName(const char* name) = 0;
    virtual void setFileName(const QorString& name) = 0;
    /// Compiles and binds; the effect owns the returned set (null on failure).
    virtual QorIShaderParameters* Generate() = 0;
    /// Non-zero once the effect has been compiled.
    virtual int Generated() = 0;
    virtual bool updateLightModel(unsigned int code) = 0;
    /// Keeps a copy of the text as the effect's source.
    virtual void setBuffer(const char* text) = 0;
    /// The in-memory source, owned by the effect; null when none.
    virtual char* getBuffer() = 0;
    /// The registry name, owned by the effect.
    virtual const char* GetName() = 0;
    /// Takes ownership of a heap (malloc/_strdup) copy of the name.
    virtual void SetName(char* name) = 0;
    virtual void Stream(QorStreamer& streamer) = 0;
    virtual void UnStream(QorStreamer& streamer) = 0;
    /// The parameter set drawing uses now; not owned by the effect.
    virtual QorIShaderParameters* GetIShaderParameters() = 0;
    virtual int NeedTanBin() = 0;
    /// 1 when a technique validates in the current GL context (it becomes current), else 0.
    virtual int ValidateTechnique() = 0;
    virtual void SetMatrixParam(QorMatrixParam which, const Qor4x4Matrix& matrix) = 0;
    virtual int ValidateShaderEffect() = 0;
    virtual int ForceCompile() = 0;
    virtual const char* GetProvider() = 0;
    virtual const char* GetUUID() = 0;
    /// Non-zero when the interface parameter `name` now uses the user type `type`.
    virtual int ConnectTypeToInterface(const char* name, const char* type, QorIShaderParameters* parameters) = 0;
    virtual const char* GetBaseType(const char* name) const = 0;
    virtual const char* GetDynamicType(const char* name) const = 0;
    /// Writes the number of interfaces; returns 1.
    virtual int GetNumInterface(int& count) const = 0;
    virtual QorFxImplementation GetImplementation() const = 0;
    virtual int updateEnvModel(EnvironmentState state) = 0;
    /// Pushes the values of the parameter set drawing uses (the shader object's, made
    /// current with QorIShader::SetCurrentParameters) into the effect's parameters, before
    /// drawing. With `onlyIfModified`, only what changed since the last upload of that
    /// same set is pushed; a set other than the one uploaded last is pushed whole. Texture
    /// values bind the GL texture their registry record names (none while its ID is 0).
    virtual void UploadCurrentParameters(bool onlyIfModified) = 0;
    virtual ~QorIShaderEffect() = default;
};

/// @file
/// The shader-object interface: one material, pairing a shared effect with its own
/// parameter values. Index 0 of every parameter query is the effect's technique;
/// real parameters count from 1. Without a parameter set most queries answer -1.
/// Objects come from QorShaderManager::CreateShader() and end with Destroy() or delete.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorSystem/QorString.h"
#include "QorVisShaders/QorFxImplementation.h"

class QorIShaderEffect;
class QorIShaderParameters;
class QorStreamer;

class QOR_VISSHADERS_API QorIShader
{
public:
    /// A new shader sharing this one's effect, with its own copy of the values; owned by the caller.
    virtual QorIShader* Clone() = 0;
    /// Forgets effect and parameters without releasing them (the caller took them over).
    virtual int Detach() = 0;
    /// Releases the effect only; the values stay.
    virtual void ReleaseEffect() = 0;
    virtual const QorString& GetPathName() = 0;
    virtual const QorString& GetFileName() = 0;
    virtual int GetParameterIndex(const char* name) = 0;
    virtual int GetNbParameters() = 0;
    virtual int GetParameterType(int index) = 0;
    virtual const char* GetParameterName(int index) = 0;
    virtual int GetParameterFloat(int index, float* value) = 0;
    /// Slider range of a parameter in a group of the grouped list; widget and name are
    /// left as the caller set them.
    virtual int GetGroupParameterFloatMinMaxStep(int group, int index, float& min, float& max, float& step,
                                                 char** widget, char** name) = 0;
    virtual int GetParameterFloatMinMaxStep(int index, float& min, float& max, float& step, char** widget,
                                            char** name) = 0;
    virtual int SetParameterFloat(int index, float value) = 0;
    virtual int GetParameterColor(int index, float* r, float* g, float* b, float* a) = 0;
    virtual int SetParameterColor(int index, float r, float g, float b, float a) = 0;
    /// Reserved slots; they answer -1.
    virtual int Reserved1() = 0;
    virtual int Reserved2() = 0;
    /// Copies a texture value's file name into `buffer`, which must hold
    /// QorMaxParameterStringLength bytes; longer names are cut there and stay terminated.
    virtual int GetParameterString(int index, char* buffer) = 0;
    /// Index 0 selects the technique by name.
    virtual int SetParameterString(int index, const char* value) = 0;
    /// Finds the effect file on the search paths, reads it and shares the effect of that name.
    virtual void SetFileName(const QorString& name) = 0;
    /// Rebuilds this shader's values from the effect; true when a parameter set is held.
    virtual bool GenerateParameters() = 0;
    virtual bool HasEffect() = 0;
    virtual bool UpdateLightModel(unsigned int lightModel) = 0;
    /// Shares the effect registered under `name` (created at first use) and gives it the text.
    virtual void SetBuffer(const char* text, const char* name) = 0;
    /// An unshared effect of its own for the text.
    virtual void SetBufferWithoutName(const char* text) = 0;
    virtual char* GetBuffer() = 0;
    virtual void Stream(QorStreamer& streamer) = 0;
    /// Meant for a freshly created shader.
    virtual void UnStream(QorStreamer& streamer) = 0;
    /// A null name switches to the automatic environment map.
    virtual int SetEnvironmentMap(const char* file, int first, int second) = 0;
    virtual int UsesAutomaticEnvironmentMap() = 0;
    /// Borrowed: the shader keeps its reference. Two slots with one body, for callers
    /// holding a const or a non-const shader.
    virtual QorIShaderEffect* GetIShaderEffect() = 0;
    virtual QorIShaderEffect* GetIShaderEffect() const = 0;
    /// Borrowed: the shader owns its parameter set. Two slots, as above.
    virtual QorIShaderParameters* GetIShaderParameters() = 0;
    virtual QorIShaderParameters* GetIShaderParameters() const = 0;
    /// Makes this shader's values the ones the effect draws with.
    virtual void SetCurrentParameters() = 0;
    virtual QorFxImplementation GetImplementation() = 0;
    /// Deletes this object.
    virtual void Destroy() = 0;
    virtual ~QorIShader() = default;
};

/// Size of the buffer GetParameterString writes into, terminator included.
constexpr int QorMaxParameterStringLength = 1024;

/// @file
/// The value interface: the current setting of one effect parameter inside a parameter
/// set (a float, a colour of two to four floats, or a texture file name). A value
/// remembers the Cg parameter it mirrors and a modified flag, so a caller can push only
/// what changed. An operation that does not fit the value's kind reports
/// "Should not happen" and does nothing.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

// The Cg handle type, declared as the Cg headers declare it, so that users of the
// interfaces need no Cg headers.
typedef struct _CGparameter* CGparameter;

class QOR_VISSHADERS_API QorIShaderValue
{
public:
    virtual ~QorIShaderValue() = default;
    /// Writes the type code: 1 float, 2/5/6 colour of 4/2/3 floats, 4 texture file name.
    virtual void GetType(int* type) = 0;
    /// Typed reads return the modified flag (0 for a kind mismatch, which also reports).
    virtual int GetFloat(float* value) = 0;
    virtual int GetColor(float* values) = 0;
    /// The value's own string, not a copy: valid until the next SetString.
    virtual int GetString(char** file) = 0;
    virtual void SetParameter(CGparameter parameter) = 0;
    virtual void SetString(const char* file) = 0;
    virtual void SetColor(const float* values) = 0;
    virtual void SetFloat(float value) = 0;
    /// Raw read into the kind's own output type (float*, float[count] or char**).
    virtual int Get(void* out) = 0;
};

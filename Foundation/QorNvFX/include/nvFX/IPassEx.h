/// @file
/// The pass's extended interface: its GL program and the GLSL it was assembled into.
#pragma once

#include "nvFX/IPass.h"

namespace nvFX {

class IPassEx : public IPass
{
public:
    enum Stage
    {
        VertexStage,
        FragmentStage,
        GeometryStage,
        TessControlStage,
        TessEvaluationStage,
    };

    /// The GL program name; 0 until validate() succeeded.
    virtual unsigned int getProgram() const = 0;
    /// The GLSL source of a stage as handed to glslang and GL (version line, `#line`
    /// directives naming the effect's lines, declarations, code); null when the pass
    /// has no such stage.
    virtual const char* getStageSource(Stage stage) const = 0;
};

} // namespace nvFX

/// @file
/// A pass of a loaded effect: its assembled stages, the uniforms and constant buffers
/// its program uses, its render states, and its GL program once made. Private to QorNvFX.
#pragma once

#include "nvFX/IPassEx.h"

#include "Annotations_p.h"
#include "EffectDescription_p.h"
#include "GLObjects_p.h"
#include "RenderStates_p.h"
#include "SamplerStates_p.h"

#include <string>
#include <utility>
#include <vector>

namespace nvFX::detail {

class ConstantBuffer;
class Uniform;

/// What a pass is made from at load; the uniforms and buffers are borrowed from the
/// container.
struct PassContent
{
    std::string name;
    std::string label; ///< "pass 'P' of technique 'T'", for messages
    AnnotationList annotations;
    std::string stages[StageCount]; ///< empty for a stage the pass does not have
    std::vector<RenderStateSetting> states;
    std::vector<Uniform*> uniforms;       ///< effect-scope uniforms the program uses
    std::vector<ConstantBuffer*> buffers; ///< constant buffers the program uses
    /// Sampler states for sampler uniforms, bound to the uniforms' units for the pass.
    std::vector<std::pair<Uniform*, SamplerStateObject*>> samplerStates;
};

class Pass final : public IPassEx
{
public:
    explicit Pass(PassContent content);

    IPassEx* getExInterface() override { return this; }
    const char* getName() const override { return m_content.name.c_str(); }
    IAnnotation* annotations() override { return &m_annotations; }
    bool validate() override;
    bool setup() override;
    bool restore() override;
    unsigned int getProgram() const override { return m_program.get(); }
    const char* getStageSource(Stage stage) const override;

    /// The uniform of binding `index` changed: the next setup pushes it.
    void uniformChanged(int index)
    {
        Binding& binding = m_bindings[static_cast<std::size_t>(index)];
        if (!binding.pending) {
            binding.pending = true;
            m_pending.push_back(index);
        }
    }

private:
    struct Binding
    {
        Uniform* uniform; // borrowed from the container
        int location;
        bool pending; // changed since the program got it; listed in m_pending
    };

    void pushValues();

    PassContent m_content;
    Annotations m_annotations;
    GLObject m_program;
    bool m_refused = false; ///< GL refused the program once; it is not tried again
    std::vector<Binding> m_bindings;
    std::vector<int> m_pending; ///< bindings to push at the next setup
    std::vector<Uniform*> m_textured; ///< samplers of m_bindings, for their textures
    RenderStateChange m_stateChange;
    SamplerBinding m_samplerBinding;
    int m_previousProgram = 0;
    bool m_setUp = false;
};

} // namespace nvFX::detail

/// @file
/// A uniform of a loaded effect and its value. Private to QorNvFX.
#pragma once

#include "nvFX/IUniformEx.h"

#include "Annotations_p.h"
#include "EffectDescription_p.h"
#include "ValueTypes_p.h"

#include <string>
#include <vector>

namespace nvFX::detail {

class ConstantBuffer;
class Pass;

class Uniform final : public IUniformEx
{
public:
    /// `buffer` (borrowed, the owner of this member) is null for an effect-scope
    /// uniform; `samplerUnit` is the unit a sampler starts on.
    Uniform(const UniformDescription& description, ConstantBuffer* buffer, int samplerUnit);

    IUniformEx* getExInterface() override { return this; }
    const char* getName() const override { return m_name.c_str(); }
    const char* getSemantic() const override { return m_semantic.c_str(); }
    Type getType() const override { return m_type.code; }
    IAnnotation* annotations() override { return &m_annotations; }
    int getArraySize() const override { return m_arraySize; }
    bool isUsedBy(int target) const override;
    bool setValue1f(float x) override;
    bool setValue2f(float x, float y) override;
    bool setValue3f(float x, float y, float z) override;
    bool setValue4f(float x, float y, float z, float w) override;
    bool setValuefv(const float* values, int count) override;
    bool setValueiv(const int* values, int count) override;
    bool setMatrix4f(const float* columnMajor) override;
    bool setSamplerUnit(int unit) override;
    bool setSamplerResource(unsigned int texture, int unit) override;
    bool getValuefv(float* values, int count) const override;
    int getComponentCount() const override { return m_type.components; }
    const char* getBufferName() const override;
    int getSamplerUnit() const override;

    const ValueType& type() const { return m_type; }
    /// Elements GL takes: the array size, or 1.
    int elements() const { return m_arraySize ? m_arraySize : 1; }
    /// `pass` holds this uniform as its binding `binding` and hears of each change, so that
    /// its setup pushes only what changed. Passes and uniforms belong to one container,
    /// which destroys its passes first.
    void watch(Pass* pass, int binding)
    {
        if (m_watcher.pass)
            m_moreWatchers.push_back({pass, binding});
        else
            m_watcher = {pass, binding};
    }
    void markUsed() { m_used = true; }
    /// This member of a constant buffer is its member number `slot`.
    void placeInBuffer(int slot) { m_bufferSlot = slot; }
    /// The value by component: floats for float types, ints for the others.
    const float* floats() const { return m_floats; }
    const std::vector<int>& ints() const { return m_ints; }
    /// Pushes the value to `location` of the current program (glUniform*).
    void push(int location) const { m_pusher(*this, location); }
    using Pusher = void (*)(const Uniform& uniform, int location);
    /// For samplers with a texture: binds it to the unit on the active texture unit
    /// it selects; false when there is nothing to bind.
    bool bindTexture() const;

private:
    bool setFloats(const char* operation, const float* values, int count);
    template <int N>
    bool setVector(const char* operation, const float (&values)[N]);
    [[gnu::cold]] bool refuse(const char* operation, const char* why) const;
    void changed()
    {
        if (m_watcher.pass)
            tellWatchers();
        if (m_buffer)
            bufferChanged();
    }
    void tellWatchers() const;
    void bufferChanged();

    struct Watcher
    {
        Pass* pass = nullptr; // borrowed: see watch
        int binding = 0;
    };

    // What a setter and a push touch comes first, together.
    int m_vectorComponents; ///< components of a float or vecN uniform; 0 for other types
    const ValueType& m_type;
    int m_arraySize;
    // Most uniforms serve one pass: its watcher sits in the object, where a setter
    // finds it without reaching into the heap.
    Watcher m_watcher;
    std::vector<Watcher> m_moreWatchers;
    Pusher m_pusher;
    ConstantBuffer* m_buffer; // borrowed: the buffer owns its members
    int m_bufferSlot = 0;     ///< this member's place in m_buffer
    float* m_floats;          ///< m_inlineFloats or m_heapFloats.data()
    std::size_t m_floatCount = 0;
    // A float value sits inside the object when it fits (every non-array uniform), so
    // that setting and pushing it touches one object; an array's is on the heap.
    float m_inlineFloats[16] = {};
    std::vector<float> m_heapFloats;
    std::vector<int> m_ints; ///< ints, bools (0 or 1), or a sampler's unit
    unsigned int m_texture = 0;
    bool m_used = false;
    std::string m_name;
    std::string m_semantic;
    Annotations m_annotations;
};

} // namespace nvFX::detail

/// @file
/// A value of a GLSL-effect (nvFX) parameter set: the user-editable content of one
/// uniform (a float, a colour of two to four floats, or a texture file name) and a
/// changed mark, so that only changed values are pushed to the uniform. The kinds are
/// QorNvFXShaderValueFloat, QorNvFXShaderValueColor and QorNvFXShaderValueString.
#pragma once

#include "QorVisShaders/QorIShaderValue.h"
#include "QorVisShaders/QorVisShadersExport.h"

#include <vector>

class QorStreamer;

namespace nvFX {
class IUniform;
}

class QOR_VISSHADERS_API QorNvFXShaderValue : public QorIShaderValue
{
public:
    QorNvFXShaderValue& operator=(const QorNvFXShaderValue&) = delete;
    ~QorNvFXShaderValue() override = default;

    /// The typed reads answer the changed mark for the value's own kind (its content
    /// written to the output) and 0 for the others, which write nothing.
    int GetFloat(float* value) override;
    int GetColor(float* values) override;
    int GetString(char** file) override;
    /// The typed writes change a value of their own kind and nothing else.
    void SetString(const char* file) override;
    void SetColor(const float* values) override;
    void SetFloat(float value) override;
    /// GLSL-effect values mirror uniforms, not Cg parameters: nothing to store.
    void SetParameter(CGparameter parameter) override;

    /// Writes the value's record: a token of its uniform, then its content.
    virtual void Stream(QorStreamer& streamer) = 0;
    /// Reads a record Stream wrote. The token is kept as data (GetParameterToken) and is
    /// never turned back into a uniform: it only named one in the writer's process.
    virtual void UnStream(QorStreamer& streamer) = 0;
    /// Takes new content from `in` (a float, `count` floats, or a char* text) and marks
    /// the value changed, also when the content is the same.
    virtual void Set(const void* in) = 0;
    /// Writes the content into the uniform (a texture value binds the GL texture the
    /// registry names for its file, on `textureUnit`); nothing without a uniform.
    virtual void Push(int textureUnit) = 0;

    /// The uniform the value mirrors, borrowed from its effect's container; null when
    /// unknown (a value read from a stream).
    void SetParameter(nvFX::IUniform* uniform) { m_uniform = uniform; }
    nvFX::IUniform* GetParameter() const { return m_uniform; }
    /// The low 32 bits of the uniform, as records carry them; a value read from a record
    /// answers the token it read.
    int GetParameterToken() const;

    /// 1 after construction, copy and every set; 0 after the set's clear.
    int GetChanged() const { return m_changed; }
    void ClearChanged() { m_changed = 0; }

    /// The changed-position list of the set that lists this value at `position` (from
    /// 0); the value adds its position there each time it becomes changed, so that an
    /// upload visits only changed values.
    void SetOwner(std::vector<int>* changedPositions, int position)
    {
        m_changedPositions = changedPositions;
        m_position = position;
    }

protected:
    QorNvFXShaderValue() = default;
    explicit QorNvFXShaderValue(nvFX::IUniform* uniform) : m_uniform(uniform) {}
    /// A copy is changed whatever the source's mark, mirrors the same uniform and belongs
    /// to no set until one lists it.
    QorNvFXShaderValue(const QorNvFXShaderValue& other) : QorIShaderValue(), m_uniform(other.m_uniform) {}

    /// What every write does last: the value is changed, and its set learns it once.
    /// Inline: it runs for every value a renderer changes, every frame.
    void MarkChanged()
    {
        if (m_changed)
            return;
        m_changed = 1;
        if (m_changedPositions)
            m_changedPositions->push_back(m_position);
    }

    int m_changed = 1;
    std::vector<int>* m_changedPositions = nullptr; // borrowed from the set that lists the value
    int m_position = 0;
    nvFX::IUniform* m_uniform = nullptr; // borrowed
    int m_streamedToken = 0;             // what a record read back carried
    bool m_streamed = false;
};

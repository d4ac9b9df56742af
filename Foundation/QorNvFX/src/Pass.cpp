// Before any GL header: the GL 2.0 program functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "Pass_p.h"

#include "nvFX/nvFX.h"

#include "ConstantBuffer_p.h"
#include "GLProgram_p.h"
#include "Uniform_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <new>

namespace nvFX::detail {

Pass::Pass(PassContent content) : m_content(std::move(content)), m_annotations(std::move(m_content.annotations)) {}

const char* Pass::getStageSource(Stage stage) const
{
    // IPassEx::Stage counts the stages in the order of StageIndex.
    const int index = static_cast<int>(stage);
    if (index < 0 || index >= StageCount || m_content.stages[index].empty())
        return nullptr;
    return m_content.stages[index].c_str();
}

bool Pass::validate()
{
    if (m_program)
        return true;
    if (m_refused)
        return false;
    if (!currentGLContext()) {
        nvFX::printf("nvFX: %s: no GL context is current\n", m_content.label.c_str());
        return false;
    }
    try {
        m_program = buildGLProgram(m_content.stages, m_content.label);
    } catch (const std::bad_alloc&) {
        nvFX::printf("nvFX: %s: out of memory for the GL program\n", m_content.label.c_str());
    }
    if (!m_program) {
        m_refused = true;
        return false;
    }
    for (Uniform* uniform : m_content.uniforms) {
        const GLint location = glGetUniformLocation(m_program.get(), uniform->getName());
        if (location < 0)
            continue; // GL may drop what glslang kept; nothing to push then
        const int index = static_cast<int>(m_bindings.size());
        m_bindings.push_back({uniform, location, true});
        m_pending.push_back(index);
        uniform->watch(this, index);
        if (uniform->type().base == ValueBase::Sampler)
            m_textured.push_back(uniform);
    }
    for (ConstantBuffer* buffer : m_content.buffers)
        buffer->attach(m_program.get());
    return true;
}

void Pass::pushValues()
{
    for (const int index : m_pending) {
        Binding& binding = m_bindings[static_cast<std::size_t>(index)];
        binding.uniform->push(binding.location);
        binding.pending = false;
    }
    m_pending.clear();
}

bool Pass::setup()
{
    if (m_setUp)
        restore();
    if (!validate())
        return false;
    glGetIntegerv(GL_CURRENT_PROGRAM, &m_previousProgram);
    glUseProgram(m_program.get());
    pushValues();
    if (!m_textured.empty()) {
        GLint activeUnit = GL_TEXTURE0;
        glGetIntegerv(GL_ACTIVE_TEXTURE, &activeUnit);
        bool bound = false;
        for (const Uniform* sampler : m_textured)
            bound = sampler->bindTexture() || bound;
        if (bound)
            glActiveTexture(static_cast<GLenum>(activeUnit));
    }
    for (ConstantBuffer* buffer : m_content.buffers)
        buffer->bind();
    for (const auto& [sampler, state] : m_content.samplerStates)
        for (int element = 0; element < sampler->elements(); ++element)
            m_samplerBinding.bind(sampler->getSamplerUnit() + element, state->sampler());
    m_stateChange.apply(m_content.states);
    m_setUp = true;
    return true;
}

bool Pass::restore()
{
    if (!m_setUp)
        return false;
    m_stateChange.restore();
    m_samplerBinding.restore();
    glUseProgram(static_cast<GLuint>(m_previousProgram));
    m_setUp = false;
    return true;
}

} // namespace nvFX::detail

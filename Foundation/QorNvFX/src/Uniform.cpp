// Before any GL header: the glUniform* functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "Uniform_p.h"

#include "nvFX/nvFX.h"

#include "ConstantBuffer_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

namespace nvFX::detail {

namespace {

// The highest texture unit a sampler may name: GL 4 offers at least 80.
constexpr int kMaxTextureUnit = 79;

using FloatVectorSetter = void (*)(GLint, GLsizei, const GLfloat*);
using IntVectorSetter = void (*)(GLint, GLsizei, const GLint*);
using MatrixSetter = void (*)(GLint, GLsizei, GLboolean, const GLfloat*);

const FloatVectorSetter kFloatSetters[] = {glUniform1fv, glUniform2fv, glUniform3fv, glUniform4fv};
const IntVectorSetter kIntSetters[] = {glUniform1iv, glUniform2iv, glUniform3iv, glUniform4iv};
const MatrixSetter kMatrixSetters[] = {glUniformMatrix2fv, glUniformMatrix3fv, glUniformMatrix4fv};

} // namespace

Uniform::Uniform(const UniformDescription& description, ConstantBuffer* buffer, int samplerUnit)
    : m_name(description.name),
      m_semantic(description.semantic),
      m_type(*description.type),
      m_arraySize(description.arraySize),
      m_annotations(description.annotations),
      m_buffer(buffer)
{
    const std::size_t size = static_cast<std::size_t>(m_type.components) * elements();
    if (m_type.base == ValueBase::Float) {
        m_floats.assign(size, 0.0f);
        std::copy(description.values.begin(), description.values.end(), m_floats.begin());
    } else if (m_type.base == ValueBase::Sampler) {
        for (int element = 0; element < elements(); ++element)
            m_ints.push_back(samplerUnit + element);
    } else {
        m_ints.assign(size, 0);
        std::transform(description.values.begin(), description.values.end(), m_ints.begin(), [this](double value) {
            return m_type.base == ValueBase::Bool ? (value != 0.0 ? 1 : 0) : static_cast<int>(value);
        });
    }
}

bool Uniform::isUsedBy(int target) const
{
    return (target == TargetGLSL || target == TargetAny) && m_used;
}

const char* Uniform::getBufferName() const
{
    return m_buffer ? m_buffer->name().c_str() : nullptr;
}

bool Uniform::refuse(const char* operation, const char* why) const
{
    nvFX::printf("nvFX: uniform '%s' (%s%s): %s: %s\n", m_name.c_str(), m_type.keyword, m_arraySize ? "[]" : "",
                 operation, why);
    return false;
}

void Uniform::changed()
{
    ++m_version;
    if (m_buffer)
        m_buffer->changed();
}

bool Uniform::setFloats(const char* operation, const float* values, int count, int exactComponents)
{
    if (m_type.base != ValueBase::Float)
        return refuse(operation, "not a float, vector or matrix uniform");
    if (exactComponents && m_type.components != exactComponents)
        return refuse(operation, "the uniform has another number of components");
    if (!values || count < 1 || static_cast<std::size_t>(count) > m_floats.size())
        return refuse(operation, "no values, or more than the uniform holds");
    if (!std::equal(values, values + count, m_floats.begin())) {
        std::copy_n(values, count, m_floats.begin());
        changed();
    }
    return true;
}

bool Uniform::setValue1f(float x)
{
    return setFloats("setValue1f", &x, 1, 1);
}

bool Uniform::setValue2f(float x, float y)
{
    const float values[] = {x, y};
    return setFloats("setValue2f", values, 2, 2);
}

bool Uniform::setValue3f(float x, float y, float z)
{
    const float values[] = {x, y, z};
    return setFloats("setValue3f", values, 3, 3);
}

bool Uniform::setValue4f(float x, float y, float z, float w)
{
    const float values[] = {x, y, z, w};
    return setFloats("setValue4f", values, 4, 4);
}

bool Uniform::setValuefv(const float* values, int count)
{
    return setFloats("setValuefv", values, count, 0);
}

bool Uniform::setMatrix4f(const float* columnMajor)
{
    return setFloats("setMatrix4f", columnMajor, 16, m_type.code == TMat4 ? 16 : -1);
}

bool Uniform::setValueiv(const int* values, int count)
{
    if (m_type.base != ValueBase::Int && m_type.base != ValueBase::Bool)
        return refuse("setValueiv", "not an int or bool uniform");
    if (!values || count < 1 || static_cast<std::size_t>(count) > m_ints.size())
        return refuse("setValueiv", "no values, or more than the uniform holds");
    const bool booleans = m_type.base == ValueBase::Bool;
    bool differs = false;
    for (int i = 0; i < count; ++i) {
        const int value = booleans ? (values[i] != 0 ? 1 : 0) : values[i];
        differs = differs || m_ints[static_cast<std::size_t>(i)] != value;
        m_ints[static_cast<std::size_t>(i)] = value;
    }
    if (differs)
        changed();
    return true;
}

bool Uniform::setSamplerUnit(int unit)
{
    return setSamplerResource(m_texture, unit);
}

bool Uniform::setSamplerResource(unsigned int texture, int unit)
{
    if (m_type.base != ValueBase::Sampler)
        return refuse("setSamplerResource", "not a sampler uniform");
    if (unit < 0 || unit + elements() - 1 > kMaxTextureUnit)
        return refuse("setSamplerResource", "texture unit out of range (0 to 79 for every element)");
    m_texture = texture;
    if (m_ints.front() != unit) {
        for (int element = 0; element < elements(); ++element)
            m_ints[static_cast<std::size_t>(element)] = unit + element;
        changed();
    }
    return true;
}

bool Uniform::getValuefv(float* values, int count) const
{
    if (m_type.base == ValueBase::Sampler)
        return refuse("getValuefv", "a sampler has no value to read");
    const std::size_t size = m_type.base == ValueBase::Float ? m_floats.size() : m_ints.size();
    if (!values || count < 1 || static_cast<std::size_t>(count) > size)
        return refuse("getValuefv", "no room, or more values asked than the uniform holds");
    if (m_type.base == ValueBase::Float)
        std::copy_n(m_floats.begin(), count, values);
    else
        std::transform(m_ints.begin(), m_ints.begin() + count, values, [](int value) { return static_cast<float>(value); });
    return true;
}

void Uniform::push(int location) const
{
    const GLsizei count = elements();
    if (m_type.base != ValueBase::Float)
        kIntSetters[m_type.base == ValueBase::Sampler ? 0 : m_type.components - 1](location, count, m_ints.data());
    else if (m_type.columns)
        kMatrixSetters[m_type.columns - 2](location, count, GL_FALSE, m_floats.data());
    else
        kFloatSetters[m_type.components - 1](location, count, m_floats.data());
}

bool Uniform::bindTexture() const
{
    if (m_type.base != ValueBase::Sampler || m_texture == 0)
        return false;
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(m_ints.front()));
    glBindTexture(m_type.textureTarget, m_texture);
    return true;
}

} // namespace nvFX::detail

// Before any GL header: the glUniform* functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "Uniform_p.h"

#include "Pass_p.h"

#include "nvFX/nvFX.h"

#include "ConstantBuffer_p.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace nvFX::detail {

namespace {

// The highest texture unit a sampler may name: GL 4 offers at least 80.
constexpr int kMaxTextureUnit = 79;

// One pusher per kind of value, chosen once: a pass's setup calls it for every changed
// value of every frame.
template <void (*Set)(GLint, GLsizei, const GLfloat*)>
void PushFloats(const Uniform& uniform, int location)
{
    Set(location, uniform.elements(), uniform.floats());
}

template <void (*Set)(GLint, GLsizei, GLboolean, const GLfloat*)>
void PushMatrices(const Uniform& uniform, int location)
{
    Set(location, uniform.elements(), GL_FALSE, uniform.floats());
}

template <void (*Set)(GLint, GLsizei, const GLint*)>
void PushInts(const Uniform& uniform, int location)
{
    Set(location, uniform.elements(), uniform.ints().data());
}

template <void (*Set)(GLint, GLsizei, const GLuint*)>
void PushUInts(const Uniform& uniform, int location)
{
    // The ints hold the unsigned values' bits; int and unsigned int may alias.
    Set(location, uniform.elements(), reinterpret_cast<const GLuint*>(uniform.ints().data()));
}

const double* AsDoubles(const Uniform& uniform)
{
    thread_local std::vector<double> converted;
    const std::size_t count = static_cast<std::size_t>(uniform.type().components) * uniform.elements();
    converted.assign(uniform.floats(), uniform.floats() + count);
    return converted.data();
}

template <void (*Set)(GLint, GLsizei, const GLdouble*)>
void PushDoubles(const Uniform& uniform, int location)
{
    Set(location, uniform.elements(), AsDoubles(uniform));
}

template <void (*Set)(GLint, GLsizei, GLboolean, const GLdouble*)>
void PushDoubleMatrices(const Uniform& uniform, int location)
{
    Set(location, uniform.elements(), GL_FALSE, AsDoubles(uniform));
}

// By columns, then rows (2 to 4 each).
template <typename Pusher>
using MatrixTable = Pusher[3][3];

Uniform::Pusher ChoosePusher(const ValueType& type)
{
    static const Uniform::Pusher floats[] = {PushFloats<glUniform1fv>, PushFloats<glUniform2fv>,
                                             PushFloats<glUniform3fv>, PushFloats<glUniform4fv>};
    static const Uniform::Pusher doubles[] = {PushDoubles<glUniform1dv>, PushDoubles<glUniform2dv>,
                                              PushDoubles<glUniform3dv>, PushDoubles<glUniform4dv>};
    static const MatrixTable<Uniform::Pusher> matrices = {
        {PushMatrices<glUniformMatrix2fv>, PushMatrices<glUniformMatrix2x3fv>, PushMatrices<glUniformMatrix2x4fv>},
        {PushMatrices<glUniformMatrix3x2fv>, PushMatrices<glUniformMatrix3fv>, PushMatrices<glUniformMatrix3x4fv>},
        {PushMatrices<glUniformMatrix4x2fv>, PushMatrices<glUniformMatrix4x3fv>, PushMatrices<glUniformMatrix4fv>}};
    static const MatrixTable<Uniform::Pusher> doubleMatrices = {
        {PushDoubleMatrices<glUniformMatrix2dv>, PushDoubleMatrices<glUniformMatrix2x3dv>,
         PushDoubleMatrices<glUniformMatrix2x4dv>},
        {PushDoubleMatrices<glUniformMatrix3x2dv>, PushDoubleMatrices<glUniformMatrix3dv>,
         PushDoubleMatrices<glUniformMatrix3x4dv>},
        {PushDoubleMatrices<glUniformMatrix4x2dv>, PushDoubleMatrices<glUniformMatrix4x3dv>,
         PushDoubleMatrices<glUniformMatrix4dv>}};
    static const Uniform::Pusher ints[] = {PushInts<glUniform1iv>, PushInts<glUniform2iv>, PushInts<glUniform3iv>,
                                           PushInts<glUniform4iv>};
    static const Uniform::Pusher uints[] = {PushUInts<glUniform1uiv>, PushUInts<glUniform2uiv>,
                                            PushUInts<glUniform3uiv>, PushUInts<glUniform4uiv>};
    const int index = type.components - 1;
    if (type.columns) {
        const int rows = type.components / type.columns;
        return (type.base == ValueBase::Double ? doubleMatrices : matrices)[type.columns - 2][rows - 2];
    }
    switch (type.base) {
    case ValueBase::Float:
        return floats[index];
    case ValueBase::Double:
        return doubles[index];
    case ValueBase::UInt:
        return uints[index];
    case ValueBase::Sampler:
        return ints[0];
    case ValueBase::Int:
    case ValueBase::Bool:
        break;
    }
    return ints[index];
}

} // namespace

Uniform::Uniform(const UniformDescription& description, ConstantBuffer* buffer, int samplerUnit)
    : m_vectorComponents(isFloating(description.type->base) && !description.type->columns
                             ? description.type->components
                             : 0),
      m_type(*description.type),
      m_arraySize(description.arraySize),
      m_pusher(ChoosePusher(m_type)),
      m_buffer(buffer),
      m_floats(m_inlineFloats),
      m_name(description.name),
      m_semantic(description.semantic),
      m_annotations(description.annotations)
{
    const std::size_t size = static_cast<std::size_t>(m_type.components) * elements();
    if (isFloating(m_type.base)) {
        if (size > std::size(m_inlineFloats)) {
            m_heapFloats.assign(size, 0.0f);
            m_floats = m_heapFloats.data();
        }
        m_floatCount = size;
        std::copy(description.values.begin(), description.values.end(), m_floats);
    } else if (m_type.base == ValueBase::Sampler) {
        for (int element = 0; element < elements(); ++element)
            m_ints.push_back(samplerUnit + element);
    } else {
        m_ints.assign(size, 0);
        std::transform(description.values.begin(), description.values.end(), m_ints.begin(), [this](double value) {
            if (m_type.base == ValueBase::UInt)
                return static_cast<int>(static_cast<unsigned int>(value)); // the parser kept it in range
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

void Uniform::tellWatchers() const
{
    m_watcher.pass->uniformChanged(m_watcher.binding);
    for (const Watcher& watcher : m_moreWatchers)
        watcher.pass->uniformChanged(watcher.binding);
}

void Uniform::bufferChanged()
{
    m_buffer->changed(m_bufferSlot);
}

bool Uniform::setFloats(const char* operation, const float* values, int count)
{
    if (!isFloating(m_type.base))
        return refuse(operation, "not a float, double, vector or matrix uniform");
    if (!values || count < 1 || static_cast<std::size_t>(count) > m_floatCount)
        return refuse(operation, "no values, or more than the uniform holds");
    // One pass that compares and copies: setters run for every value of every frame.
    bool differs = false;
    for (int i = 0; i < count; ++i) {
        differs |= m_floats[i] != values[i];
        m_floats[i] = values[i];
    }
    if (differs)
        changed();
    return true;
}

// The setValueNf road, the one renderers take every frame: one check, a fixed count.
template <int N>
bool Uniform::setVector(const char* operation, const float (&values)[N])
{
    if (m_vectorComponents != N)
        return refuse(operation, "not a float or vector uniform of that many components");
    bool differs = false;
    for (int i = 0; i < N; ++i) {
        differs |= m_floats[i] != values[i];
        m_floats[i] = values[i];
    }
    if (differs)
        changed();
    return true;
}

bool Uniform::setValue1f(float x)
{
    const float values[] = {x};
    return setVector("setValue1f", values);
}

bool Uniform::setValue2f(float x, float y)
{
    const float values[] = {x, y};
    return setVector("setValue2f", values);
}

bool Uniform::setValue3f(float x, float y, float z)
{
    const float values[] = {x, y, z};
    return setVector("setValue3f", values);
}

bool Uniform::setValue4f(float x, float y, float z, float w)
{
    const float values[] = {x, y, z, w};
    return setVector("setValue4f", values);
}

bool Uniform::setValuefv(const float* values, int count)
{
    return setFloats("setValuefv", values, count);
}

bool Uniform::setMatrix4f(const float* columnMajor)
{
    if (m_type.code != TMat4)
        return refuse("setMatrix4f", "not a mat4 uniform");
    return setFloats("setMatrix4f", columnMajor, 16);
}

bool Uniform::setValueiv(const int* values, int count)
{
    if (m_type.base != ValueBase::Int && m_type.base != ValueBase::UInt && m_type.base != ValueBase::Bool)
        return refuse("setValueiv", "not an int, unsigned int or bool uniform");
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

int Uniform::getSamplerUnit() const
{
    return m_type.base == ValueBase::Sampler ? m_ints.front() : -1;
}

bool Uniform::getValuefv(float* values, int count) const
{
    if (m_type.base == ValueBase::Sampler)
        return refuse("getValuefv", "a sampler has no value to read");
    const std::size_t size = isFloating(m_type.base) ? m_floatCount : m_ints.size();
    if (!values || count < 1 || static_cast<std::size_t>(count) > size)
        return refuse("getValuefv", "no room, or more values asked than the uniform holds");
    if (isFloating(m_type.base))
        std::copy_n(m_floats, count, values);
    else if (m_type.base == ValueBase::UInt)
        std::transform(m_ints.begin(), m_ints.begin() + count, values,
                       [](int value) { return static_cast<float>(static_cast<unsigned int>(value)); });
    else
        std::transform(m_ints.begin(), m_ints.begin() + count, values, [](int value) { return static_cast<float>(value); });
    return true;
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

/// @file
/// The value of one user parameter, as plain data whichever back end mirrors it: its
/// kind (type code 1 float, 2/5/6 colour of 4/2/3 floats, 4 texture), its components or
/// its texture file name, the modified mark, and the back end's parameter it mirrors (a
/// Cg parameter, an nvFX uniform), opaque here. Each back end's value classes only name
/// their kinds and their back end's profile, which says where an operation that does not
/// fit the kind is reported ("Should not happen"). Inside a parameter set a texture value
/// with a file holds one reference of the texture registered under that name; the set
/// takes and hands back that reference.
#pragma once

#include "QorVisShaders/QorVisShadersExport.h"

#include "QorVisShaderShared/QorBackEndProfile.h"

#include "QorVisShaders/QorIShaderValue.h"
#include "QorVisShaders/QorShaderValueType.h"

#include <new>
#include <vector>

class QOR_VISSHADERS_API QorMaterialValue : public QorIShaderValue
{
public:
    QorMaterialValue& operator=(const QorMaterialValue&) = delete;
    ~QorMaterialValue() override;

    /// A copy of the same kind and back end, mirroring the same parameter, modified and
    /// in no set; null when out of memory.
    virtual QorMaterialValue* Clone() const = 0;
    /// The back end the value belongs to.
    virtual const QorBackEndProfile& Profile() const = 0;

    void GetType(int* type) final;
    /// The typed reads write the value's own kind to the output and answer the modified
    /// mark; another kind is reported and answers 0, the output untouched.
    int GetFloat(float* value) final;
    int GetColor(float* values) final;
    /// The value's own text, not a copy: valid until the next SetString.
    int GetString(char** file) final;
    /// Stores the mirrored parameter.
    void SetParameter(CGparameter parameter) final { m_binding = parameter; }
    /// The typed writes change the value's own kind and mark it modified (also when the
    /// content is the same); another kind is reported and nothing changes.
    void SetString(const char* file) final;
    void SetColor(const float* values) final
    {
        if (!QorIsColorType(m_type)) {
            Misplaced(&QorValueGuards::setColor);
            return;
        }
        if (values)
            MoveComponents(values, m_components);
        MarkModified();
    }
    void SetFloat(float value) final
    {
        if (m_type != QorValueFloat) {
            Misplaced(&QorValueGuards::setFloat);
            return;
        }
        m_components[0] = value;
        MarkModified();
    }
    /// The raw read into the kind's own output: a float*, the component count's floats,
    /// or a char* (the value's own text). Answers the modified mark.
    int Get(void* out) final;

    // The plain data, for the back ends' pushes and the model's own work.
    int Type() const { return m_type; }
    /// 2 to 4 for colours (a larger count given at construction stays visible; reads and
    /// writes stop at the four stored components), 1 for floats, 0 for textures.
    int ComponentCount() const { return m_count; }
    /// The four stored components of a colour (those past the count are 0); a float's is
    /// the first. Not for texture values.
    const float* Components() const { return m_components; }
    /// A texture value's file; null for the other kinds.
    const char* File() const { return m_type == QorValueTexture ? m_file : nullptr; }
    /// The mirrored parameter; null when unknown (a value read from a stream).
    void* Binding() const { return m_binding; }
    void SetBinding(void* binding) { m_binding = binding; }
    /// 1 after construction, copy and every write; 0 after ResetModified.
    int GetModified() const { return m_modified; }
    void ResetModified() { m_modified = 0; }
    /// 0 when the file name was just set; the renderer marks a loaded texture.
    int GetLoadState() const { return m_loadState; }
    void SetLoadState(int state) { m_loadState = state; }
    /// The mirrored parameter as the 32-bit token that records and GetParameterHandle
    /// carry; a value read from a record answers the token it read. A token only names a
    /// parameter while the writer's effect lives: nothing turns it back into one.
    int GetParameterToken() const;
    void SetParameterToken(int token) { m_token = token; }

    /// The changed-position list of the set that lists this value at `position` (from 0):
    /// the value adds its position there each time it becomes modified, so that an upload
    /// visits only modified values.
    void SetOwner(std::vector<int>* changedPositions, int position)
    {
        m_changedPositions = changedPositions;
        m_position = position;
    }

protected:
    /// A value of `type` mirroring `binding`: a colour takes `count` components (at most
    /// four copied) from `numbers` (null leaves them 0), a float the first number, a
    /// texture a copy of `file` (null: none).
    QorMaterialValue(int type, int count, void* binding, const float* numbers, const char* file);
    QorMaterialValue(const QorMaterialValue& other);

private:
    /// Reports the operation at the kind's place of the profile.
    void Misplaced(int QorValueGuards::*line) const;
    /// How many floats a colour's reads and writes move: at most the four stored.
    int MovedCount() const { return m_count < 0 ? 0 : m_count > 4 ? 4 : m_count; }
    /// Copies MovedCount() floats. Unrolled: a copy of a variable count becomes a call to
    /// memmove, which costs more than the four moves themselves.
    void MoveComponents(const float* from, float* to) const
    {
        switch (MovedCount()) {
        case 4:
            to[3] = from[3];
            [[fallthrough]];
        case 3:
            to[2] = from[2];
            [[fallthrough]];
        case 2:
            to[1] = from[1];
            [[fallthrough]];
        case 1:
            to[0] = from[0];
            break;
        default:
            break;
        }
    }
    /// What every write does last: the value is modified, and its set learns it once.
    /// Inline: it runs for every value a renderer changes, every frame.
    void MarkModified()
    {
        if (m_modified)
            return;
        m_modified = 1;
        if (m_changedPositions)
            m_changedPositions->push_back(m_position);
    }

    // Ordered so that a value fits 56 bytes: a set's values sit densely in memory, and a
    // frame touches some of every material's.
    void* m_binding = nullptr;                      // borrowed: the back end's parameter
    std::vector<int>* m_changedPositions = nullptr; // borrowed from the set that lists the value
    union {
        float m_components[4] = {}; // floats and colours
        char* m_file;               // textures: owned, C heap
    };
    int m_count;
    int m_position = 0;
    int m_token = 0; // what a record read back carried; values that mirror a parameter answer its own
    signed char m_type;
    signed char m_modified = 1;
    signed char m_loadState = 0;
};

/// A new value of one of a back end's kinds (`Float`, `Color`, `String`, each made from
/// its parameter and its content) for `type`: see QorMaterialValue for what each kind
/// takes of `count`, `numbers` and `file`. Null when out of memory.
template <typename Float, typename Color, typename String, typename Parameter>
QorMaterialValue* QorNewValue(int type, int count, Parameter parameter, const float* numbers, const char* file)
{
    if (type == QorValueFloat)
        return new (std::nothrow) Float(parameter, numbers ? numbers[0] : 0.0f);
    if (type == QorValueTexture)
        return new (std::nothrow) String(parameter, file);
    return new (std::nothrow) Color(parameter, numbers, count);
}

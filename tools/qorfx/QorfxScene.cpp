// Before any GL header: the GL 2.0 attribute functions are exported by libGL.
#define GL_GLEXT_PROTOTYPES 1

#include "QorfxScene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

namespace {

constexpr float kPi = 3.14159265358979f;

void AddQuad(std::vector<QorfxVertex>& mesh, const QorfxVertex corners[4])
{
    for (int index : {0, 1, 2, 0, 2, 3})
        mesh.push_back(corners[index]);
}

std::vector<QorfxVertex> Sphere()
{
    std::vector<QorfxVertex> mesh;
    const int rings = 48, segments = 96;
    auto point = [&](int ring, int segment) {
        const float v = static_cast<float>(ring) / rings, u = static_cast<float>(segment) / segments;
        const float theta = v * kPi, phi = u * 2 * kPi;
        const float n[3] = {std::sin(theta) * std::sin(phi), std::cos(theta), std::sin(theta) * std::cos(phi)};
        return QorfxVertex{{n[0], n[1], n[2]}, {n[0], n[1], n[2]}, {u, 1 - v}};
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int segment = 0; segment < segments; ++segment) {
            const QorfxVertex corners[4] = {point(ring, segment), point(ring + 1, segment),
                                            point(ring + 1, segment + 1), point(ring, segment + 1)};
            AddQuad(mesh, corners);
        }
    return mesh;
}

std::vector<QorfxVertex> Cube()
{
    std::vector<QorfxVertex> mesh;
    const float s = 0.75f;
    // Each face: its normal and two in-plane axes (u, v) with u x v = normal.
    const float faces[6][3][3] = {
        {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}},  {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}},  {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},   {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
    };
    for (const auto& face : faces) {
        QorfxVertex corners[4];
        const float signs[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
        for (int c = 0; c < 4; ++c) {
            for (int axis = 0; axis < 3; ++axis) {
                corners[c].position[axis] =
                    s * (face[0][axis] + signs[c][0] * face[1][axis] + signs[c][1] * face[2][axis]);
                corners[c].normal[axis] = face[0][axis];
            }
            corners[c].uv[0] = (signs[c][0] + 1) / 2;
            corners[c].uv[1] = (signs[c][1] + 1) / 2;
        }
        AddQuad(mesh, corners);
    }
    return mesh;
}

std::vector<QorfxVertex> Quad()
{
    std::vector<QorfxVertex> mesh;
    const QorfxVertex corners[4] = {{{-1, -1, 0}, {0, 0, 1}, {0, 0}}, {{1, -1, 0}, {0, 0, 1}, {1, 0}},
                                    {{1, 1, 0}, {0, 0, 1}, {1, 1}}, {{-1, 1, 0}, {0, 0, 1}, {0, 1}}};
    AddQuad(mesh, corners);
    return mesh;
}

void Normalize(float v[3])
{
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    for (int i = 0; i < 3; ++i)
        v[i] /= length;
}

void Cross(const float a[3], const float b[3], float out[3])
{
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

// Which of a vertex's arrays feeds a vertex input the program declares: by a common
// spelling of its name, else by its location (0 position, 1 normal, 2 texture
// coordinates); null for an input neither names.
const float* ArrayForInput(std::string name, GLint location, const QorfxVertex& vertex, GLint& components)
{
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto has = [&name](const char* word) { return name.find(word) != std::string::npos; };
    const int role = has("tex") || has("uv") || has("coord") ? 2
                     : has("normal")                         ? 1
                     : has("pos") || has("vertex")           ? 0
                                                             : location;
    components = role == 2 ? 2 : 3;
    return role == 0 ? vertex.position : role == 1 ? vertex.normal : role == 2 ? vertex.uv : nullptr;
}

// Effects written for core GLSL declare their vertex inputs instead of reading gl_Vertex,
// gl_Normal and gl_MultiTexCoord0: each input of the current program gets the mesh array
// it names. The locations enabled, for the caller to disable after drawing.
std::vector<GLuint> FeedDeclaredInputs(const std::vector<QorfxVertex>& mesh)
{
    std::vector<GLuint> fed;
    GLint program = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    if (program == 0)
        return fed;
    GLint count = 0, longest = 0;
    glGetProgramiv(static_cast<GLuint>(program), GL_ACTIVE_ATTRIBUTES, &count);
    glGetProgramiv(static_cast<GLuint>(program), GL_ACTIVE_ATTRIBUTE_MAX_LENGTH, &longest);
    std::string name(static_cast<std::size_t>(std::max(longest, 1)), '\0');
    for (GLint index = 0; index < count; ++index) {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        glGetActiveAttrib(static_cast<GLuint>(program), static_cast<GLuint>(index), static_cast<GLsizei>(name.size()),
                          &length, &size, &type, name.data());
        const std::string input(name.data(), static_cast<std::size_t>(length));
        if (input.rfind("gl_", 0) == 0)
            continue; // a built-in the client arrays feed
        const GLint location = glGetAttribLocation(static_cast<GLuint>(program), input.c_str());
        GLint components = 0;
        const float* array = location < 0 ? nullptr : ArrayForInput(input, location, mesh[0], components);
        if (!array)
            continue;
        glEnableVertexAttribArray(static_cast<GLuint>(location));
        glVertexAttribPointer(static_cast<GLuint>(location), components, GL_FLOAT, GL_FALSE, sizeof(QorfxVertex), array);
        fed.push_back(static_cast<GLuint>(location));
    }
    return fed;
}

} // namespace

std::vector<QorfxVertex> QorfxMakeMesh(const std::string& kind)
{
    if (kind == "sphere")
        return Sphere();
    if (kind == "cube")
        return Cube();
    if (kind == "quad")
        return Quad();
    return {};
}

void QorfxDrawMesh(const std::vector<QorfxVertex>& mesh)
{
    if (mesh.empty())
        return;
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(QorfxVertex), mesh[0].position);
    glNormalPointer(GL_FLOAT, sizeof(QorfxVertex), mesh[0].normal);
    glTexCoordPointer(2, GL_FLOAT, sizeof(QorfxVertex), mesh[0].uv);
    const std::vector<GLuint> fed = FeedDeclaredInputs(mesh);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(mesh.size()));
    for (GLuint location : fed)
        glDisableVertexAttribArray(location);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

Qor4x4Matrix QorfxInverse(const Qor4x4Matrix& matrix)
{
    // Gauss-Jordan elimination with partial pivoting on [M | I].
    double a[4][8];
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 8; ++c)
            a[r][c] = c < 4 ? matrix.At(r, c) : (c - 4 == r ? 1.0 : 0.0);
    for (int column = 0; column < 4; ++column) {
        int pivot = column;
        for (int r = column + 1; r < 4; ++r)
            if (std::fabs(a[r][column]) > std::fabs(a[pivot][column]))
                pivot = r;
        if (std::fabs(a[pivot][column]) < 1e-12)
            return Qor4x4Matrix::Identity();
        for (int c = 0; c < 8; ++c)
            std::swap(a[column][c], a[pivot][c]);
        const double scale = a[column][column];
        for (int c = 0; c < 8; ++c)
            a[column][c] /= scale;
        for (int r = 0; r < 4; ++r)
            if (r != column) {
                const double factor = a[r][column];
                for (int c = 0; c < 8; ++c)
                    a[r][c] -= factor * a[column][c];
            }
    }
    Qor4x4Matrix inverse;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            inverse.At(r, c) = static_cast<float>(a[r][c + 4]);
    return inverse;
}

Qor4x4Matrix QorfxPerspective(float fovYDegrees, float aspect, float nearPlane, float farPlane)
{
    const float f = 1.0f / std::tan(fovYDegrees * kPi / 360.0f);
    Qor4x4Matrix m;
    m.At(0, 0) = f / aspect;
    m.At(1, 1) = f;
    m.At(2, 2) = (farPlane + nearPlane) / (nearPlane - farPlane);
    m.At(2, 3) = 2 * farPlane * nearPlane / (nearPlane - farPlane);
    m.At(3, 2) = -1;
    m.At(3, 3) = 0;
    return m;
}

Qor4x4Matrix QorfxLookAt(const float eye[3], const float target[3], const float up[3])
{
    float forward[3] = {target[0] - eye[0], target[1] - eye[1], target[2] - eye[2]};
    Normalize(forward);
    float side[3], trueUp[3];
    Cross(forward, up, side);
    Normalize(side);
    Cross(side, forward, trueUp);
    Qor4x4Matrix m;
    for (int c = 0; c < 3; ++c) {
        m.At(0, c) = side[c];
        m.At(1, c) = trueUp[c];
        m.At(2, c) = -forward[c];
    }
    for (int r = 0; r < 3; ++r)
        m.At(r, 3) = -(m.At(r, 0) * eye[0] + m.At(r, 1) * eye[1] + m.At(r, 2) * eye[2]);
    return m;
}

Qor4x4Matrix QorfxRotation(float xDegrees, float yDegrees)
{
    const float x = xDegrees * kPi / 180, y = yDegrees * kPi / 180;
    Qor4x4Matrix rx, ry;
    rx.At(1, 1) = std::cos(x);
    rx.At(1, 2) = -std::sin(x);
    rx.At(2, 1) = std::sin(x);
    rx.At(2, 2) = std::cos(x);
    ry.At(0, 0) = std::cos(y);
    ry.At(0, 2) = std::sin(y);
    ry.At(2, 0) = -std::sin(y);
    ry.At(2, 2) = std::cos(y);
    return rx * ry;
}

// The GLSL 4.x types beyond the classic ones reach GL as they are: unsigned ints by
// glUniform*ui, doubles by glUniform*d, non-square matrices column by column, and
// doubles and unsigned ints in a std140 constant buffer at their own sizes.
// Before any GL header: the GL functions are exported by libGL, which GL tests link.
#define GL_GLEXT_PROTOTYPES 1

#include "NvFXTestSupport.h"

#include "nvFX/IPassEx.h"
#include "nvFX/ITechnique.h"
#include "nvFX/IUniform.h"

#include "QorGL/QorGLContext.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace {

const char* const kEffect = R"(
GLSLShader { #version 450 compatibility
}
uniform uvec2 Counts = {4000000000, 2};
uniform dvec2 Precise = {0.25, 0.5};
uniform mat2x3 Skew;
uniform dmat3 Frame;
ConstantBuffer Block {
    uniform double Weight = 0.125;
    uniform uint Mask = 3000000000;
    uniform mat3x2 Shear = {1, 2, 3, 4, 5, 6};
};
GLSLShader FS {
    void main()
    {
        gl_FragColor = vec4(float(Counts.x) + float(Precise.y) + Skew[1][2] + float(Frame[2][1]),
                            float(Weight) + float(Mask) + Shear[2][1], 0.0, 1.0);
    }
}
Technique T { Pass P { FragmentProgram = FS; } }
)";

template <typename T>
T BlockMember(GLuint program, const char* name)
{
    GLuint index = GL_INVALID_INDEX;
    glGetUniformIndices(program, 1, &name, &index);
    GLint offset = -1;
    glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_OFFSET, &offset);
    GLint buffer = 0;
    glGetIntegeri_v(GL_UNIFORM_BUFFER_BINDING, 0, &buffer);
    glBindBuffer(GL_UNIFORM_BUFFER, static_cast<GLuint>(buffer));
    T value{};
    glGetBufferSubData(GL_UNIFORM_BUFFER, offset, sizeof value, &value);
    return value;
}

} // namespace

TEST(UniformTypesGLTest, UnsignedDoubleAndNonSquareValuesReachTheProgramAndTheBlock)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(8, 8)) << gl.GetError();
    const NvFXTest::Loaded loaded = NvFXTest::Load(kEffect);
    ASSERT_TRUE(loaded.ok) << loaded.messages;
    nvFX::IContainer& effect = *loaded.container;
    const float skew[] = {1, 2, 3, 4, 5, 6};
    ASSERT_TRUE(effect.findUniform("Skew")->setValuefv(skew, 6));
    const float frame[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    ASSERT_TRUE(effect.findUniform("Frame")->setValuefv(frame, 9));
    const float weight = 0.375f;
    ASSERT_TRUE(effect.findBufferUniform("Weight")->setValuefv(&weight, 1));

    nvFX::IPass& pass = *effect.findTechnique(0)->getPass(0);
    ASSERT_TRUE(pass.setup());
    const GLuint program = pass.getExInterface()->getProgram();
    GLuint counts[2] = {};
    glGetUniformuiv(program, glGetUniformLocation(program, "Counts"), counts);
    EXPECT_EQ(counts[0], 4000000000u);
    EXPECT_EQ(counts[1], 2u);
    GLdouble precise[2] = {};
    glGetUniformdv(program, glGetUniformLocation(program, "Precise"), precise);
    EXPECT_EQ(precise[1], 0.5);
    GLfloat skewRead[6] = {};
    glGetUniformfv(program, glGetUniformLocation(program, "Skew"), skewRead);
    EXPECT_EQ(skewRead[5], 6.0f) << "two columns of three";
    GLdouble frameRead[9] = {};
    glGetUniformdv(program, glGetUniformLocation(program, "Frame"), frameRead);
    EXPECT_EQ(frameRead[7], 8.0);

    EXPECT_EQ(BlockMember<double>(program, "Weight"), 0.375) << "eight bytes in the block";
    EXPECT_EQ(BlockMember<GLuint>(program, "Mask"), 3000000000u);
    EXPECT_TRUE(pass.restore());

    // Later setups upload only the members that changed since, at their own offsets.
    const int mask = 7;
    ASSERT_TRUE(effect.findBufferUniform("Mask")->setValueiv(&mask, 1));
    const float shear[] = {6, 5, 4, 3, 2, 1};
    ASSERT_TRUE(effect.findBufferUniform("Shear")->setValuefv(shear, 6));
    ASSERT_TRUE(pass.setup());
    EXPECT_EQ(BlockMember<GLuint>(program, "Mask"), 7u);
    EXPECT_EQ(BlockMember<double>(program, "Weight"), 0.375) << "a member that did not change keeps its value";
    EXPECT_EQ(BlockMember<GLfloat>(program, "Shear"), 6.0f);
    EXPECT_TRUE(pass.restore());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// GL program binaries in the program cache (where the driver offers them): a pass's
// program made again from its binary draws as the one compiled from source, and a
// damaged binary is compiled again.
// Before any GL header: the GL 2.0 functions are exported by libGL, which GL tests link.
#define GL_GLEXT_PROTOTYPES 1

#include "NvFXTestSupport.h"

#include "nvFX/IPassEx.h"
#include "nvFX/ITechniqueEx.h"
#include "nvFX/IUniform.h"

#include "QorGL/QorGLContext.h"
#include "QorTestSupport.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

const char* const kEffect = R"(
uniform vec4 Colour;
GLSLShader VS { void main() { gl_Position = gl_Vertex; } }
GLSLShader FS { void main() { gl_FragColor = Colour; } }
Technique T { Pass P { VertexProgram = VS; FragmentProgram = FS; } }
)";

// The red channel in the middle of a quad drawn by the effect's pass with Colour set.
int DrawnRed(const QorGLContext& gl, std::string& messages)
{
    NvFXTest::Loaded loaded = NvFXTest::Load(kEffect);
    if (!loaded.ok)
        return -1;
    NvFXTest::MessageCapture capture;
    loaded.container->findUniform("Colour")->setValue4f(0.5f, 0.0f, 0.0f, 1.0f);
    nvFX::IPass& pass = *loaded.container->findTechnique(0)->getExInterface()->getPass(0);
    glClear(GL_COLOR_BUFFER_BIT);
    if (!pass.setup())
        return -1;
    static const GLfloat corners[] = {-1.0f, -1.0f, 1.0f, -1.0f, -1.0f, 1.0f, 1.0f, 1.0f};
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(2, GL_FLOAT, 0, corners);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glDisableClientState(GL_VERTEX_ARRAY);
    pass.restore();
    messages = loaded.messages + capture.text();
    const std::vector<unsigned char> pixels = gl.ReadPixels();
    return pixels[(static_cast<std::size_t>(gl.GetHeight() / 2) * gl.GetWidth() + gl.GetWidth() / 2) * 4];
}

// The cache's binary entry (its kind byte follows the 12-byte magic and the format).
std::string BinaryEntry(const std::string& folder)
{
    for (const std::string& name : QorFolderContent(folder))
        if (QorReadFile(folder + "/" + name).find('B', 13) == 13)
            return folder + "/" + name;
    return "";
}

} // namespace

TEST(ProgramCacheGLTest, AProgramFromItsBinaryDrawsAsTheCompiledOne)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(16, 16)) << gl.GetError();
    QorTempDir temp;
    ASSERT_TRUE(nvFX::setCacheFolder(temp.File("cache").c_str()));
    std::string messages;
    EXPECT_NEAR(DrawnRed(gl, messages), 128, 1) << messages;
    const std::string binary = BinaryEntry(temp.File("cache"));
    if (binary.empty()) {
        nvFX::setCacheFolder(nullptr);
        GTEST_SKIP() << "the driver offers no program binaries";
    }
    EXPECT_NEAR(DrawnRed(gl, messages), 128, 1) << messages;
    EXPECT_EQ(messages.find("cache"), std::string::npos) << messages;

    std::ofstream(binary, std::ios::binary | std::ios::trunc) << "damaged";
    EXPECT_NEAR(DrawnRed(gl, messages), 128, 1) << messages;
    EXPECT_NE(messages.find("not used"), std::string::npos) << messages;
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    nvFX::setCacheFolder(nullptr);
}

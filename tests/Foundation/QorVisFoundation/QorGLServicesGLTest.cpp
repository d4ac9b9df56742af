#include "QorVisFoundation/QorGLServices.h"

#include "QorGL/QorGLContext.h"

#include <gtest/gtest.h>

// After gtest: Xlib's macros (None, Bool) would break its templates.
#include <GL/gl.h>
#include <GL/glx.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace {

using ServiceCall = std::pair<QorGLService, std::uintptr_t>;

// An observer that appends every call to `calls`.
QorGLServiceObserver Recorder(std::vector<ServiceCall>& calls)
{
    return [&calls](QorGLService service, std::uintptr_t handle) { calls.emplace_back(service, handle); };
}

GLuint MakeTexture()
{
    GLuint name = 0;
    glGenTextures(1, &name);
    // A generated name becomes a texture object only once bound.
    glBindTexture(GL_TEXTURE_2D, name);
    glBindTexture(GL_TEXTURE_2D, 0);
    return name;
}

} // namespace

TEST(QorGLServicesGLTest, DeleteDLTextureDeletesOnlyInTheCurrentContextAndTellsTheObserver)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(8, 8)) << gl.GetError();
    const GLuint doomed = MakeTexture();
    const GLuint kept = MakeTexture();
    ASSERT_TRUE(glIsTexture(doomed));
    ASSERT_TRUE(glIsTexture(kept));

    std::vector<ServiceCall> calls;
    QorGLServiceObserver previous = QorSetGLServiceObserver(Recorder(calls));
    DeleteDLTexture(doomed);
    EXPECT_FALSE(glIsTexture(doomed));
    EXPECT_TRUE(glIsTexture(kept));

    DeleteDLTexture(0);
    EXPECT_TRUE(glIsTexture(kept));

    // With no context current the name cannot be deleted; it survives until the
    // context is current again.
    Display* display = glXGetCurrentDisplay();
    ASSERT_NE(display, nullptr);
    ASSERT_TRUE(glXMakeContextCurrent(display, None, None, nullptr));
    DeleteDLTexture(kept);
    ASSERT_TRUE(gl.MakeCurrent());
    EXPECT_TRUE(glIsTexture(kept));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    const QorGLService del = QorGLService::DeleteDLTexture;
    EXPECT_EQ(calls, (std::vector<ServiceCall>{{del, doomed}, {del, 0}, {del, kept}}));
    glDeleteTextures(1, &kept);

    // Installing an observer hands back the one it replaces, whole.
    std::vector<ServiceCall> laterCalls;
    QorGLServiceObserver replaced = QorSetGLServiceObserver(Recorder(laterCalls));
    ASSERT_TRUE(replaced);
    replaced(del, 7);
    EXPECT_EQ(calls.back(), ServiceCall(del, 7));
    DeleteDLTexture(0);
    EXPECT_EQ(laterCalls, (std::vector<ServiceCall>{{del, 0}}));
    QorSetGLServiceObserver(std::move(previous));
}

#include "QorVisFoundation/QorGLServices.h"

#include "QorGL/QorGLContext.h"

#include <gtest/gtest.h>

// After gtest: Xlib's macros (None, Bool) would break its templates.
#include <GL/gl.h>
#include <GL/glx.h>

#include <cstdint>
#include <ostream>
#include <utility>
#include <vector>

namespace {

struct ServiceCall
{
    QorGLService service;
    std::uintptr_t handle;

    bool operator==(const ServiceCall& other) const
    {
        return service == other.service && handle == other.handle;
    }
};

void PrintTo(const ServiceCall& call, std::ostream* out)
{
    *out << (call.service == QorGLService::DeleteDLTexture ? "DeleteDLTexture(" : "another service(")
         << call.handle << ")";
}

/// Records every service call while alive, then puts the previous observer back.
class RecordingObserver
{
public:
    RecordingObserver()
    {
        m_previous = QorSetGLServiceObserver(
            [this](QorGLService service, std::uintptr_t handle) { m_calls.push_back({service, handle}); });
    }
    ~RecordingObserver() { QorSetGLServiceObserver(std::move(m_previous)); }
    RecordingObserver(const RecordingObserver&) = delete;
    RecordingObserver& operator=(const RecordingObserver&) = delete;

    const std::vector<ServiceCall>& Calls() const { return m_calls; }

private:
    std::vector<ServiceCall> m_calls;
    QorGLServiceObserver m_previous;
};

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

TEST(QorGLServicesGLTest, DeleteDLTextureDeletesOnlyInTheCurrentContext)
{
    QorGLContext gl;
    ASSERT_TRUE(gl.Open(8, 8)) << gl.GetError();
    const GLuint doomed = MakeTexture();
    const GLuint kept = MakeTexture();
    ASSERT_TRUE(glIsTexture(doomed));
    ASSERT_TRUE(glIsTexture(kept));

    RecordingObserver observer;
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

    EXPECT_EQ(observer.Calls(), (std::vector<ServiceCall>{
                                    {QorGLService::DeleteDLTexture, doomed},
                                    {QorGLService::DeleteDLTexture, 0},
                                    {QorGLService::DeleteDLTexture, kept},
                                }));
    glDeleteTextures(1, &kept);
}

TEST(QorGLServicesGLTest, ObserversAreReplacedWhole)
{
    RecordingObserver observer;
    // Installing an observer hands back the one it replaces.
    std::vector<ServiceCall> replacedCalls;
    QorGLServiceObserver replaced = QorSetGLServiceObserver(
        [&replacedCalls](QorGLService service, std::uintptr_t handle) { replacedCalls.push_back({service, handle}); });
    ASSERT_TRUE(replaced);
    replaced(QorGLService::DeleteDLTexture, 7);
    EXPECT_EQ(observer.Calls().back(), (ServiceCall{QorGLService::DeleteDLTexture, 7}));
    DeleteDLTexture(0);
    EXPECT_EQ(replacedCalls, (std::vector<ServiceCall>{{QorGLService::DeleteDLTexture, 0}}));
    QorSetGLServiceObserver(std::move(replaced));
}

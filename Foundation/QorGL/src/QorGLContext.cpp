#include "QorGL/QorGLContext.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

namespace {

// Size of the pbuffer the context is made current on; everything is drawn into the
// framebuffer object, so the pbuffer only has to exist.
constexpr int kPbufferSize = 16;

// The X error handler is process-wide; the last error code a trap saw lands here.
int g_lastXError = 0;

int RecordXError(Display*, XErrorEvent* event)
{
    g_lastXError = event->error_code;
    return 0;
}

/// While alive, X protocol errors are recorded instead of going to Xlib's default
/// handler, which prints and exits the process. GLX reports refused requests (a pbuffer
/// too large, a context it cannot make) as X errors, and a tool must survive those.
class XErrorTrap
{
public:
    explicit XErrorTrap(Display* display) : m_display(display)
    {
        XSync(m_display, False);
        g_lastXError = 0;
        m_previous = XSetErrorHandler(RecordXError);
    }
    ~XErrorTrap()
    {
        XSync(m_display, False);
        XSetErrorHandler(m_previous);
    }
    XErrorTrap(const XErrorTrap&) = delete;
    XErrorTrap& operator=(const XErrorTrap&) = delete;

    /// Waits for the server to answer every request so far; true when one failed.
    bool Failed()
    {
        XSync(m_display, False);
        return g_lastXError != 0;
    }

private:
    Display* m_display;
    XErrorHandler m_previous;
};

/// GL 3.0 / ARB_framebuffer_object entry points. libGL is only guaranteed to export
/// OpenGL 1.2, so they are looked up through GLX once the context is current.
struct FramebufferFunctions
{
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = nullptr;
    PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = nullptr;
    PFNGLBINDFRAMEBUFFERPROC bindFramebuffer = nullptr;
    PFNGLGENRENDERBUFFERSPROC genRenderbuffers = nullptr;
    PFNGLDELETERENDERBUFFERSPROC deleteRenderbuffers = nullptr;
    PFNGLBINDRENDERBUFFERPROC bindRenderbuffer = nullptr;
    PFNGLRENDERBUFFERSTORAGEPROC renderbufferStorage = nullptr;
    PFNGLFRAMEBUFFERRENDERBUFFERPROC framebufferRenderbuffer = nullptr;
    PFNGLCHECKFRAMEBUFFERSTATUSPROC checkFramebufferStatus = nullptr;
};

template <typename Function>
bool LoadFunction(Function& function, const char* name)
{
    // glXGetProcAddress gives void (*)(void), the generic function pointer type.
    function = reinterpret_cast<Function>(glXGetProcAddress(reinterpret_cast<const GLubyte*>(name)));
    return function != nullptr;
}

bool LoadFramebufferFunctions(FramebufferFunctions& f)
{
    return LoadFunction(f.genFramebuffers, "glGenFramebuffers")
        && LoadFunction(f.deleteFramebuffers, "glDeleteFramebuffers")
        && LoadFunction(f.bindFramebuffer, "glBindFramebuffer")
        && LoadFunction(f.genRenderbuffers, "glGenRenderbuffers")
        && LoadFunction(f.deleteRenderbuffers, "glDeleteRenderbuffers")
        && LoadFunction(f.bindRenderbuffer, "glBindRenderbuffer")
        && LoadFunction(f.renderbufferStorage, "glRenderbufferStorage")
        && LoadFunction(f.framebufferRenderbuffer, "glFramebufferRenderbuffer")
        && LoadFunction(f.checkFramebufferStatus, "glCheckFramebufferStatus");
}

const char* GLString(GLenum name)
{
    const GLubyte* text = glGetString(name);
    return text ? reinterpret_cast<const char*>(text) : "";
}

/// Whether the current context has framebuffer objects in core (3.0) or by extension.
bool HasFramebufferObjects()
{
    int major = 0;
    if (std::sscanf(GLString(GL_VERSION), "%d", &major) == 1 && major >= 3)
        return true;
    // Compatibility contexts below 3.0 still list extensions in one string.
    const std::string extensions = std::string(" ") + GLString(GL_EXTENSIONS) + " ";
    return extensions.find(" GL_ARB_framebuffer_object ") != std::string::npos;
}

/// The GLX context current on the calling thread, with its display and drawables.
struct CurrentBinding
{
    GLXContext context = nullptr;
    Display* display = nullptr;
    GLXDrawable draw = 0;
    GLXDrawable read = 0;

    static CurrentBinding Get()
    {
        return {glXGetCurrentContext(), glXGetCurrentDisplay(), glXGetCurrentDrawable(),
                glXGetCurrentReadDrawable()};
    }
    void Restore() const
    {
        if (context && display)
            glXMakeContextCurrent(display, draw, read, context);
    }
};

/// Whether a loaded module is a Mesa GL driver: a DRI driver, or the gallium library
/// newer Mesa releases put the drivers in.
bool IsMesaDriver(const char* path)
{
    const char* slash = std::strrchr(path, '/');
    const std::string name = slash ? slash + 1 : path;
    const std::string driSuffix = "_dri.so";
    return (name.size() > driSuffix.size()
            && name.compare(name.size() - driSuffix.size(), driSuffix.size(), driSuffix) == 0)
        || name.rfind("libgallium", 0) == 0;
}

int PinMesaDriver(dl_phdr_info* info, size_t, void*)
{
    if (info->dlpi_name && *info->dlpi_name && IsMesaDriver(info->dlpi_name)) {
        // NOLOAD: only ever touches a module that is already there.
        if (void* handle = dlopen(info->dlpi_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE))
            dlclose(handle);
    }
    return 0;
}

/// Keeps the GL driver Mesa loaded for the first context in the process until exit.
/// Mesa unloads its driver when the last display connection closes, so each later Open()
/// would load it and start its LLVM compiler again; and once the driver is unmapped,
/// the memory its globals still point to looks leaked to leak checkers, which can no
/// longer even name the module it came from.
void KeepMesaDriverLoaded()
{
    static std::atomic<bool> pinned{false};
    if (!pinned.exchange(true))
        dl_iterate_phdr(PinMesaDriver, nullptr);
}

/// Connects to the display DISPLAY names. An X server resets when its last client
/// disconnects (Xvfb under xvfb-run does, by default) and refuses connections for a
/// moment while it does, so a tool that closes one context and opens the next, or the
/// next test program, can arrive mid-reset; it tries again for about a second.
Display* OpenDisplay()
{
    Display* display = XOpenDisplay(nullptr);
    const char* name = std::getenv("DISPLAY");
    if (display || !name || !*name)
        return display;
    std::chrono::milliseconds pause(5);
    std::chrono::milliseconds waited(0);
    while (!display && waited < std::chrono::milliseconds(1000)) {
        std::this_thread::sleep_for(pause);
        waited += pause;
        pause = std::min(pause * 2, std::chrono::milliseconds(200));
        display = XOpenDisplay(nullptr);
    }
    return display;
}

std::string NoDisplayMessage()
{
    const char* name = std::getenv("DISPLAY");
    if (!name || !*name)
        return "QorGLContext: no X display (DISPLAY is not set); run under `xvfb-run -a` for a virtual one";
    return std::string("QorGLContext: cannot open X display \"") + name
         + "\"; run under `xvfb-run -a` for a virtual one";
}

} // namespace

/// Everything Open() makes, released in reverse order when destroyed, so a failed
/// Open() cleans up by dropping what it had built so far.
struct QorGLContext::Resources
{
    Display* display = nullptr;
    GLXPbuffer pbuffer = 0;
    GLXContext context = nullptr;
    FramebufferFunctions gl;
    GLuint framebuffer = 0;
    GLuint colour = 0;
    GLuint depth = 0;
    int width = 0;
    int height = 0;

    Resources() = default;
    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;
    ~Resources();

    bool MakeCurrent() const
    {
        return glXMakeContextCurrent(display, pbuffer, pbuffer, context) == True;
    }
};

QorGLContext::Resources::~Resources()
{
    if (!display)
        return;
    {
        XErrorTrap trap(display);
        if (context) {
            // The framebuffer object lives in the context: delete it while the context is
            // current, then leave the thread with whatever context it had before, or none.
            const CurrentBinding previous = CurrentBinding::Get();
            if ((framebuffer || colour || depth) && MakeCurrent()) {
                if (framebuffer) {
                    gl.bindFramebuffer(GL_FRAMEBUFFER, 0);
                    gl.deleteFramebuffers(1, &framebuffer);
                }
                if (colour)
                    gl.deleteRenderbuffers(1, &colour);
                if (depth)
                    gl.deleteRenderbuffers(1, &depth);
            }
            if (previous.context && previous.context != context)
                previous.Restore();
            else
                glXMakeContextCurrent(display, None, None, nullptr);
            glXDestroyContext(display, context);
        }
        if (pbuffer)
            glXDestroyPbuffer(display, pbuffer);
    }
    XCloseDisplay(display);
}

QorGLContext::QorGLContext() = default;

QorGLContext::~QorGLContext() = default;

bool QorGLContext::Open(int width, int height)
{
    Close();
    m_error.clear();
    // A failed Open() gives the thread back the context it had current before.
    const CurrentBinding previous = CurrentBinding::Get();
    auto r = std::make_unique<Resources>();
    auto fail = [this, &r, &previous](std::string message) {
        m_error = std::move(message);
        const bool madeCurrent = r->context && glXGetCurrentContext() == r->context;
        r.reset();
        if (madeCurrent)
            previous.Restore();
        return false;
    };
    if (width <= 0 || height <= 0)
        return fail("QorGLContext: the framebuffer size must be positive, got " + std::to_string(width)
                    + "x" + std::to_string(height));

    r->display = OpenDisplay();
    if (!r->display)
        return fail(NoDisplayMessage());

    int glxMajor = 0;
    int glxMinor = 0;
    if (!glXQueryVersion(r->display, &glxMajor, &glxMinor))
        return fail("QorGLContext: the X display has no GLX extension");
    if (glxMajor < 1 || (glxMajor == 1 && glxMinor < 3))
        return fail("QorGLContext: GLX 1.3 or later is needed for pbuffers, the display offers "
                    + std::to_string(glxMajor) + "." + std::to_string(glxMinor));

    const int configAttributes[] = {
        GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT,
        GLX_RENDER_TYPE, GLX_RGBA_BIT,
        GLX_RED_SIZE, 8,
        GLX_GREEN_SIZE, 8,
        GLX_BLUE_SIZE, 8,
        GLX_ALPHA_SIZE, 8,
        GLX_DEPTH_SIZE, 24,
        None,
    };
    int configCount = 0;
    GLXFBConfig* configs = glXChooseFBConfig(r->display, DefaultScreen(r->display), configAttributes, &configCount);
    if (!configs || configCount == 0) {
        if (configs)
            XFree(configs);
        return fail("QorGLContext: the display has no GLX configuration with RGBA8, 24-bit depth and pbuffers");
    }
    const GLXFBConfig config = configs[0];
    XFree(configs);

    {
        XErrorTrap trap(r->display);
        const int pbufferAttributes[] = {
            GLX_PBUFFER_WIDTH, kPbufferSize,
            GLX_PBUFFER_HEIGHT, kPbufferSize,
            None,
        };
        r->pbuffer = glXCreatePbuffer(r->display, config, pbufferAttributes);
        if (trap.Failed() || !r->pbuffer) {
            r->pbuffer = 0;
            return fail("QorGLContext: GLX refused to create a pbuffer");
        }
        // A context made this way is a compatibility one: the fixed-function state and
        // immediate mode the Cg GL runtime and older drawing code rely on are there.
        r->context = glXCreateNewContext(r->display, config, GLX_RGBA_TYPE, nullptr, True);
        if (trap.Failed() || !r->context) {
            if (r->context)
                glXDestroyContext(r->display, r->context);
            r->context = nullptr;
            return fail("QorGLContext: GLX refused to create an OpenGL context");
        }
        if (!r->MakeCurrent() || trap.Failed())
            return fail("QorGLContext: GLX cannot make the new OpenGL context current");
    }

    KeepMesaDriverLoaded();

    if (!HasFramebufferObjects())
        return fail(std::string("QorGLContext: framebuffer objects need OpenGL 3.0 or ARB_framebuffer_object, the context offers ")
                    + GLString(GL_VERSION) + " (" + GLString(GL_RENDERER) + ")");
    if (!LoadFramebufferFunctions(r->gl))
        return fail("QorGLContext: the OpenGL library does not provide the framebuffer object functions");

    GLint maxSize = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &maxSize);
    if (width > maxSize || height > maxSize)
        return fail("QorGLContext: " + std::to_string(width) + "x" + std::to_string(height)
                    + " exceeds the largest renderbuffer, " + std::to_string(maxSize));

    while (glGetError() != GL_NO_ERROR) {
    }
    r->gl.genRenderbuffers(1, &r->colour);
    r->gl.bindRenderbuffer(GL_RENDERBUFFER, r->colour);
    r->gl.renderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    r->gl.genRenderbuffers(1, &r->depth);
    r->gl.bindRenderbuffer(GL_RENDERBUFFER, r->depth);
    r->gl.renderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
    r->gl.bindRenderbuffer(GL_RENDERBUFFER, 0);
    r->gl.genFramebuffers(1, &r->framebuffer);
    r->gl.bindFramebuffer(GL_FRAMEBUFFER, r->framebuffer);
    r->gl.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, r->colour);
    r->gl.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, r->depth);
    const GLenum status = r->gl.checkFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%04X", status);
        return fail(std::string("QorGLContext: the framebuffer object is incomplete, status ") + hex);
    }
    glDrawBuffer(GL_COLOR_ATTACHMENT0);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glViewport(0, 0, width, height);
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR) {
        char hex[16];
        std::snprintf(hex, sizeof hex, "0x%04X", error);
        return fail(std::string("QorGLContext: OpenGL error ") + hex + " while creating the framebuffer object");
    }

    r->width = width;
    r->height = height;
    m_resources = std::move(r);
    return true;
}

void QorGLContext::Close()
{
    m_resources.reset();
}

bool QorGLContext::IsOpen() const
{
    return m_resources != nullptr;
}

const std::string& QorGLContext::GetError() const
{
    return m_error;
}

bool QorGLContext::MakeCurrent()
{
    if (!m_resources || !m_resources->MakeCurrent())
        return false;
    m_resources->gl.bindFramebuffer(GL_FRAMEBUFFER, m_resources->framebuffer);
    return true;
}

int QorGLContext::GetWidth() const
{
    return m_resources ? m_resources->width : 0;
}

int QorGLContext::GetHeight() const
{
    return m_resources ? m_resources->height : 0;
}

unsigned int QorGLContext::GetFramebuffer() const
{
    return m_resources ? m_resources->framebuffer : 0;
}

std::vector<unsigned char> QorGLContext::ReadPixels() const
{
    if (!m_resources || !m_resources->MakeCurrent())
        return {};
    const Resources& r = *m_resources;
    const std::size_t rowBytes = static_cast<std::size_t>(r.width) * 4;
    std::vector<unsigned char> bottomUp(rowBytes * static_cast<std::size_t>(r.height));

    // Read from our framebuffer object with tightly packed rows whatever the caller had
    // bound or set, and give the caller its state back.
    GLint previousRead = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &previousRead);
    r.gl.bindFramebuffer(GL_READ_FRAMEBUFFER, r.framebuffer);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
    glReadPixels(0, 0, r.width, r.height, GL_RGBA, GL_UNSIGNED_BYTE, bottomUp.data());
    glPopClientAttrib();
    r.gl.bindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(previousRead));

    std::vector<unsigned char> topDown(bottomUp.size());
    for (int row = 0; row < r.height; ++row)
        std::memcpy(topDown.data() + static_cast<std::size_t>(row) * rowBytes,
                    bottomUp.data() + static_cast<std::size_t>(r.height - 1 - row) * rowBytes, rowBytes);
    return topDown;
}

/// @file
/// An offscreen OpenGL context for tests and tools, on the current X display.
#pragma once

#include <memory>
#include <string>
#include <vector>

/// An OpenGL compatibility context made through GLX on the X display named by DISPLAY,
/// drawing into a framebuffer object of the size asked for (RGBA8 colour, 24-bit depth).
///
/// GLX rather than EGL because the Cg GL runtime finds no profiles in an EGL context.
/// The GLX drawable behind the context is a tiny pbuffer that nothing draws into; the
/// framebuffer object is bound as the draw and read framebuffer, with the viewport
/// covering it, so code that draws to "the current framebuffer" lands there.
///
/// The object owns the X connection, the GLX context, its drawable and the framebuffer
/// object; all of them belong to the thread that opened it. Objects made in the context
/// (Cg contexts and effects, textures) must be released before this object goes.
/// Under Mesa, the GL driver loaded for the first context stays loaded until the process
/// exits, so later contexts do not load it again.
/// No method throws; failures are reported through GetError().
class QorGLContext
{
public:
    QorGLContext();
    /// Releases the framebuffer object, the GLX context, its drawable and the X
    /// connection, in that order.
    ~QorGLContext();
    QorGLContext(const QorGLContext&) = delete;
    QorGLContext& operator=(const QorGLContext&) = delete;

    /// Opens the X display, creates the context, makes it current on the calling thread
    /// and creates a width x height framebuffer object. An open context is closed first.
    /// Returns false, with GetError() saying why, when any step fails; nothing is left
    /// open then, and the thread gets back the context it had current before (unless
    /// that was this object's own, which Open() closed first). A display that refuses
    /// the connection is tried again for about a second, since X servers refuse clients
    /// while they reset after their last one left. Without an X display the message
    /// suggests running under `xvfb-run -a`.
    bool Open(int width, int height);
    /// Releases everything Open() made; harmless when not open.
    void Close();
    bool IsOpen() const;
    /// Why the last Open() failed; empty after a successful one.
    const std::string& GetError() const;

    /// Makes this context current on the calling thread and binds its framebuffer object
    /// again, for code that switched to another context or framebuffer in between.
    /// Returns false when not open or when GLX refuses.
    bool MakeCurrent();
    /// Size of the framebuffer object; 0 when not open.
    int GetWidth() const;
    int GetHeight() const;
    /// GL name of the framebuffer object; 0 when not open.
    unsigned int GetFramebuffer() const;

    /// The framebuffer object's colour, RGBA with 8 bits a channel, width * height * 4
    /// bytes. Rows come top row first, flipped from the bottom-up order glReadPixels
    /// gives, so the result reads like an image file. Makes this context current to
    /// read; empty when not open.
    std::vector<unsigned char> ReadPixels() const;

private:
    struct Resources;
    // X11 and GLX declarations stay out of this header: their macros (None, Bool,
    // Status) collide with ordinary code that includes it.
    std::unique_ptr<Resources> m_resources;
    std::string m_error;
};

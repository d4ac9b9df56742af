/// @file
/// The framework's OpenGL services the shader library calls to give back GL objects it no
/// longer needs, and a process-wide observer that sees every such call (the CgFX module's
/// DeleteShaderEffect reports through it too).
#pragma once

#include <cstdint>
#include <functional>

/// Which service an observer is told about.
enum class QorGLService
{
    DeleteDLTexture,
    DeleteShaderEffect,
};

/// Told about every DeleteDLTexture and DeleteShaderEffect call, before anything is
/// deleted, with the texture name or the effect pointer as the handle. Runs on the
/// calling thread, outside any lock of the services, so it may install an observer.
using QorGLServiceObserver = std::function<void(QorGLService service, std::uintptr_t handle)>;

/// Installs the observer for the whole process (an empty function removes it) and
/// returns the previous one, so a caller can put it back.
QorGLServiceObserver QorSetGLServiceObserver(QorGLServiceObserver observer);

/// Deletes the GL texture named `id` in the context current on the calling thread.
/// Does nothing for id 0, or when no GLX context is current: texture names only mean
/// something inside a context, and without one there is nothing to delete them from.
void DeleteDLTexture(unsigned int id);

/// Tells the observer about a service call made outside this module.
void QorNotifyGLService(QorGLService service, std::uintptr_t handle);

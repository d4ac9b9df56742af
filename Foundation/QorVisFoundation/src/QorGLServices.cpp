#include "QorVisFoundation/QorGLServices.h"

#include <GL/gl.h>
#include <GL/glx.h>

#include <mutex>
#include <utility>

namespace {

std::mutex& ObserverMutex()
{
    static std::mutex mutex;
    return mutex;
}

QorGLServiceObserver& Observer()
{
    static QorGLServiceObserver observer;
    return observer;
}

// The observer is copied out under the lock and called outside it, so one may run
// while another thread deletes or swaps observers.
void Notify(QorGLService service, std::uintptr_t handle)
{
    QorGLServiceObserver observer;
    {
        std::lock_guard<std::mutex> lock(ObserverMutex());
        observer = Observer();
    }
    if (observer)
        observer(service, handle);
}

} // namespace

QorGLServiceObserver QorSetGLServiceObserver(QorGLServiceObserver observer)
{
    std::lock_guard<std::mutex> lock(ObserverMutex());
    QorGLServiceObserver previous = std::move(Observer());
    Observer() = std::move(observer);
    return previous;
}

void DeleteDLTexture(unsigned int id)
{
    Notify(QorGLService::DeleteDLTexture, id);
    if (id != 0 && glXGetCurrentContext() != nullptr) {
        const GLuint name = id;
        glDeleteTextures(1, &name);
    }
}

void QorNotifyGLService(QorGLService service, std::uintptr_t handle)
{
    Notify(service, handle);
}

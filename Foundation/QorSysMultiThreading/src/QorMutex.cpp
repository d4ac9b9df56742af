#include "QorSysMultiThreading/QorMutex.h"

void QorMutex::Lock() { m_mutex.lock(); }
void QorMutex::Unlock() { m_mutex.unlock(); }
bool QorMutex::TryLock() { return m_mutex.try_lock(); }

/// @file
/// The framework's mutex, over std::mutex. Not copyable; lock and unlock from one thread.
#pragma once

#include <mutex>

class QorMutex
{
public:
    QorMutex() = default;
    QorMutex(const QorMutex&) = delete;
    QorMutex& operator=(const QorMutex&) = delete;

    void Lock();
    void Unlock();
    /// Returns true when the lock was taken.
    bool TryLock();

    // BasicLockable, so std::lock_guard<QorMutex> works.
    void lock() { Lock(); }
    void unlock() { Unlock(); }

private:
    std::mutex m_mutex;
};

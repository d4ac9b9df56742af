/// @file
/// Move-only owners of Cg objects: the destructor destroys a non-null handle, a move
/// leaves the source empty. Declare a context holder before the effects made in it, so
/// it is destroyed last.
#pragma once

#include <Cg/cg.h>

#include <utility>

/// Owns one Cg object and destroys it with `Destroy`.
template <typename Handle, void (*Destroy)(Handle)>
class QorCgHolder
{
public:
    explicit QorCgHolder(Handle handle) : m_handle(handle) {}
    ~QorCgHolder() { Reset(); }
    QorCgHolder(const QorCgHolder&) = delete;
    QorCgHolder& operator=(const QorCgHolder&) = delete;
    QorCgHolder(QorCgHolder&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    QorCgHolder& operator=(QorCgHolder&& other) noexcept
    {
        if (this != &other) {
            Reset();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    Handle Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

private:
    void Reset()
    {
        if (m_handle)
            Destroy(std::exchange(m_handle, nullptr));
    }
    Handle m_handle;
};

using QorCgContextHolder = QorCgHolder<CGcontext, cgDestroyContext>;
using QorCgEffectHolder = QorCgHolder<CGeffect, cgDestroyEffect>;

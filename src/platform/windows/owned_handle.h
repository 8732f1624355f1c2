// A handle of the system that is closed with its owner.
#pragma once

#include "platform/windows/system.h"

#include <utility>

namespace ruvo {

/// Whichever of its two values for "none" a function of the system returns, it is not open.
class COwnedHandle {
public:
    explicit COwnedHandle(HANDLE handle = nullptr)
        : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    COwnedHandle(COwnedHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    COwnedHandle& operator=(COwnedHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    COwnedHandle(const COwnedHandle&) = delete;
    COwnedHandle& operator=(const COwnedHandle&) = delete;
    ~COwnedHandle() {
        if (IsOpen()) {
            CloseHandle(m_handle);
        }
    }

    [[nodiscard]] bool IsOpen() const { return m_handle != nullptr; }
    [[nodiscard]] HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace ruvo

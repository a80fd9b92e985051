// A file descriptor that is closed when its owner goes.
#pragma once

#include <unistd.h>

#include <utility>

namespace wavo::platform {

class Descriptor {
 public:
    Descriptor() = default;
    explicit Descriptor(int number) noexcept : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            Close();
            m_number = std::exchange(other.m_number, -1);
        }
        return *this;
    }

    /// The number; -1 when there is none.
    [[nodiscard]] int number() const noexcept { return m_number; }
    explicit operator bool() const noexcept { return m_number >= 0; }

    /// Gives the number away; the caller closes it.
    [[nodiscard]] int Release() noexcept { return std::exchange(m_number, -1); }

    void Close() noexcept {
        if (m_number >= 0) {
            // Linux frees the number even when close() is interrupted, so it is not repeated.
            ::close(m_number);
            m_number = -1;
        }
    }

 private:
    int m_number = -1;
};

}  // namespace wavo::platform

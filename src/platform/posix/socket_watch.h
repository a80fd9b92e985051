// Waits for events of many sockets, and for a signal of the process's own.
#pragma once

#include <sys/epoll.h>

#include <chrono>
#include <cstdint>
#include <span>

#include "platform/posix/descriptor.h"

namespace wavo::platform {

class SocketWatch {
 public:
    using Clock = std::chrono::steady_clock;

    /// Called once, first. The events of the signal have the number `signal_id`. False, with the
    /// system's reason, when it cannot.
    bool Open(std::uint64_t signal_id) noexcept;

    /// Readable while there are events.
    [[nodiscard]] int Number() const noexcept { return m_sockets.number(); }

    /// Adds a socket (EPOLL_CTL_ADD), or changes what is waited for (EPOLL_CTL_MOD). Its events
    /// have the number `id`. False, with the system's reason, when it cannot.
    bool Watch(int socket, std::uint64_t id, std::uint32_t events, int operation) noexcept;
    /// Closing a socket is not enough: a forked process may hold a copy, and then its events would
    /// go on.
    void Unwatch(int socket) noexcept;

    /// Fills `events`, from the first on, and waits until `deadline` where there are none;
    /// Clock::time_point::min() does not wait. Returns how many there are, -1 when a signal of the
    /// system ended the wait.
    int Wait(std::span<epoll_event> events, Clock::time_point deadline);

    /// Makes the signal an event, until it is set to false.
    void SetSignal(bool wanted) noexcept;

 private:
    Descriptor m_sockets;  ///< epoll of all sockets and m_signal
    Descriptor m_signal;
    bool m_signalled = false;
};

/// A descriptor to give up when there are no others left; none when there are none already.
Descriptor SpareDescriptor() noexcept;

}  // namespace wavo::platform

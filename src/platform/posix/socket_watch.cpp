#include "platform/posix/socket_watch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <ctime>

#include "platform/last_error.h"

namespace wavo::platform {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

bool SocketWatch::Open(std::uint64_t signal_id) noexcept {
    m_sockets = Descriptor(::epoll_create1(EPOLL_CLOEXEC));
    m_signal = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    return m_sockets && m_signal && Watch(m_signal.number(), signal_id, EPOLLIN, EPOLL_CTL_ADD);
}

bool SocketWatch::Watch(int socket, std::uint64_t id, std::uint32_t events,
                        int operation) noexcept {
    epoll_event event{};
    event.events = events;
    event.data.u64 = id;
    return ::epoll_ctl(m_sockets.number(), operation, socket, &event) == 0;
}

void SocketWatch::Unwatch(int socket) noexcept {
    ::epoll_ctl(m_sockets.number(), EPOLL_CTL_DEL, socket, nullptr);
}

int SocketWatch::Wait(std::span<epoll_event> events, Clock::time_point deadline) {
    for (;;) {
        nanoseconds left = nanoseconds::zero();
        if (deadline != Clock::time_point::min()) {
            left = std::max<nanoseconds>(deadline - Clock::now(), nanoseconds::zero());
        }
        int timeout = 0;
        if (left >= milliseconds(1)) {
            timeout = static_cast<int>(std::min<std::int64_t>(left / milliseconds(1), INT_MAX));
        } else if (left > nanoseconds::zero()) {
            // epoll counts milliseconds only; a master's cycle is timed more finely.
            pollfd sockets{m_sockets.number(), POLLIN, 0};
            const timespec rest{0, static_cast<long>(left.count())};
            if (::ppoll(&sockets, 1, &rest, nullptr) < 0) {
                return -1;
            }
        }
        const int count = ::epoll_wait(m_sockets.number(), events.data(),
                                       static_cast<int>(events.size()), timeout);
        if (count != 0 || timeout == 0) {
            return count;
        }
    }
}

void SocketWatch::SetSignal(bool wanted) noexcept {
    if (wanted == m_signalled) {
        return;
    }
    const LastErrorKeeper keep;
    std::uint64_t count = 1;
    const ssize_t done = wanted ? ::write(m_signal.number(), &count, sizeof count)
                                : ::read(m_signal.number(), &count, sizeof count);
    if (done == static_cast<ssize_t>(sizeof count)) {
        m_signalled = wanted;
    }
}

Descriptor SpareDescriptor() noexcept {
    return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

}  // namespace wavo::platform

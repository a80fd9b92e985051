// The handshake of viewer and master: a message is sent to another process, and its result comes
// back. Ours against bytes over a stream socket, and against two event counters, which carry
// nothing and are as fast as two processes can wake each other.
#include <benchmark/benchmark.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

#include "platform/message_window.h"
#include "platform/posix/message_packet.h"

namespace {

using wavo::platform::Message;
using wavo::platform::MessagePacket;
using wavo::platform::MessageWindow;
using wavo::platform::SendStatus;
using wavo::platform::WindowHandle;

/// The other process; it is killed when the benchmark is over.
class Partner {
 public:
    explicit Partner(const std::function<void()>& body) : m_id(::fork()) {
        if (m_id == 0) {
            body();
            ::_exit(0);
        }
    }
    ~Partner() {
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
    }
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;

 private:
    const pid_t m_id;
};

void Ours(benchmark::State& state) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        state.SkipWithError("no pipe");
        return;
    }
    const Partner partner([&] {
        std::string error;
        const auto window = MessageWindow::Create(
            [](const Message& message) { return message.l_param + 1; }, &error);
        const WindowHandle handle = window != nullptr ? window->handle() : 0;
        if (::write(ends[1], &handle, sizeof handle) != sizeof handle) {
            return;
        }
        for (;;) {
            window->WaitAndDispatch(std::chrono::hours(1));
        }
    });
    WindowHandle target = 0;
    std::string error;
    const auto window = MessageWindow::Create(nullptr, &error);
    if (::read(ends[0], &target, sizeof target) != sizeof target || window == nullptr) {
        state.SkipWithError("no window");
        return;
    }
    std::int64_t count = 0;
    while (state.KeepRunning()) {
        const wavo::platform::SendResult result = window->Send(target, {0x52D, 0, count});
        if (result.status != SendStatus::kDone || result.result != count + 1) {
            state.SkipWithError("no answer");
            break;
        }
        ++count;
    }
    ::close(ends[0]);
    ::close(ends[1]);
}

bool Transfer(ssize_t size) {
    return size == static_cast<ssize_t>(sizeof(MessagePacket));
}

void StreamSocket(benchmark::State& state) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) {
        state.SkipWithError("no sockets");
        return;
    }
    const Partner partner([&] {
        MessagePacket packet;
        while (Transfer(::read(ends[1], &packet, sizeof packet))) {
            packet.l_param += 1;
            if (!Transfer(::write(ends[1], &packet, sizeof packet))) {
                return;
            }
        }
    });
    MessagePacket packet;
    while (state.KeepRunning()) {
        if (!Transfer(::write(ends[0], &packet, sizeof packet)) ||
            !Transfer(::read(ends[0], &packet, sizeof packet))) {
            state.SkipWithError("no answer");
            break;
        }
    }
    ::close(ends[0]);
    ::close(ends[1]);
    state.SetLabel("stream socket");
}

void EventCounters(benchmark::State& state) {
    const int there = ::eventfd(0, 0);
    const int back = ::eventfd(0, 0);
    const Partner partner([&] {
        eventfd_t count = 0;
        while (::eventfd_read(there, &count) == 0 && ::eventfd_write(back, 1) == 0) {
        }
    });
    eventfd_t count = 0;
    while (state.KeepRunning()) {
        if (::eventfd_write(there, 1) != 0 || ::eventfd_read(back, &count) != 0) {
            state.SkipWithError("no answer");
            break;
        }
    }
    ::close(there);
    ::close(back);
    state.SetLabel("eventfd");
}

BENCHMARK(Ours)->Name("handshake/ours")->UseRealTime();
BENCHMARK(StreamSocket)->Name("handshake/rival")->UseRealTime();
BENCHMARK(EventCounters)->Name("handshake/limit")->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

#include "platform/process.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace wavo::platform {

namespace {

// What the signal handler touches: lock-free, so that it may.
std::atomic<int> g_descriptor{-1};
std::atomic<bool> g_requested{false};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void OnTerminationRequest(int /*signal*/) {
    const int error = errno;
    g_requested.store(true);
    const std::uint64_t one = 1;
    // Fails only when it is readable already.
    [[maybe_unused]] const ssize_t written = ::write(g_descriptor.load(), &one, sizeof one);
    errno = error;
}

void Watch(int signal) {
    struct sigaction action {};
    // What the parent had ignored (nohup, background jobs of a shell) stays ignored.
    if (::sigaction(signal, nullptr, &action) != 0 ||
        ((action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN)) {
        return;
    }
    action = {};
    action.sa_handler = &OnTerminationRequest;
    action.sa_flags = SA_RESTART;
    ::sigfillset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

std::uint32_t ProcessId() noexcept {
    return static_cast<std::uint32_t>(::getpid());
}

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

int WatchTerminationRequests() noexcept {
    if (g_descriptor.load() < 0) {
        const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        if (descriptor < 0) {
            return -1;
        }
        g_descriptor.store(descriptor);
        Watch(SIGINT);
        Watch(SIGTERM);
        Watch(SIGHUP);
    }
    return g_descriptor.load();
}

bool TerminationRequested() noexcept {
    return g_requested.load();
}

}  // namespace wavo::platform

#include "platform/win32/peer_watch.h"

#include "platform/last_error.h"

namespace wavo::platform {

namespace {

/// The process of a window; 0 when there is no such window.
DWORD ProcessOf(WindowHandle window) noexcept {
    const LastErrorKeeper keep;
    DWORD process = 0;
    ::GetWindowThreadProcessId(WindowOf(window), &process);
    return process;
}

}  // namespace

HWND WindowOf(WindowHandle handle) noexcept {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

WindowHandle NumberOf(HWND window) noexcept {
    return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(window));
}

void PeerWatch::Add(WindowHandle peer) {
    if (const DWORD process = ProcessOf(peer); process != 0) {
        m_processes.try_emplace(peer, process);
    }
}

std::vector<WindowHandle> PeerWatch::TakeGone() {
    std::vector<WindowHandle> gone;
    std::erase_if(m_processes, [&gone](const auto& peer) {
        const bool is_gone = ProcessOf(peer.first) != peer.second;
        if (is_gone) {
            gone.push_back(peer.first);
        }
        return is_gone;
    });
    return gone;
}

}  // namespace wavo::platform

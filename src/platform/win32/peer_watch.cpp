#include "platform/win32/peer_watch.h"

#include <utility>

namespace wavo::platform {

namespace {

/// In a thread of the system.
void CALLBACK OnProcessEnd(void* own_window, BOOLEAN /*timed_out*/) {
    ::PostMessageW(static_cast<HWND>(own_window), kPeersChanged, 0, 0);
}

bool HasEnded(const Handle& process) noexcept {
    return process && ::WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0;
}

}  // namespace

HWND WindowOf(WindowHandle handle) noexcept {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

WindowHandle NumberOf(HWND window) noexcept {
    return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(window));
}

PeerWatch::~PeerWatch() {
    for (auto& [window, peer] : m_peers) {
        StopWaiting(peer);
    }
}

void PeerWatch::Add(HWND own, WindowHandle peer) {
    const auto [place, is_new] = m_peers.try_emplace(peer);
    if (!is_new) {
        return;
    }
    const LastErrorKeeper keep;
    DWORD process_id = 0;
    ::GetWindowThreadProcessId(WindowOf(peer), &process_id);
    if (process_id == 0 || process_id == ::GetCurrentProcessId()) {
        return;
    }
    Handle process(::OpenProcess(SYNCHRONIZE, FALSE, process_id));
    if (process && ::RegisterWaitForSingleObject(&place->second.wait, process.get(), &OnProcessEnd,
                                                 own, INFINITE, WT_EXECUTEONLYONCE) == 0) {
        place->second.wait = nullptr;
    }
    place->second.process = std::move(process);
}

std::vector<WindowHandle> PeerWatch::TakeGone() {
    std::vector<WindowHandle> gone;
    for (auto place = m_peers.begin(); place != m_peers.end();) {
        if (HasEnded(place->second.process) || !WindowExists(place->first)) {
            gone.push_back(place->first);
            StopWaiting(place->second);
            place = m_peers.erase(place);
        } else {
            ++place;
        }
    }
    return gone;
}

void PeerWatch::StopWaiting(Peer& peer) noexcept {
    if (peer.wait != nullptr) {
        // Returns when the callback, should it run just now, is through.
        ::UnregisterWaitEx(std::exchange(peer.wait, nullptr), INVALID_HANDLE_VALUE);
    }
}

}  // namespace wavo::platform

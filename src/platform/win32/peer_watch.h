// The windows of others that a message window has to do with, and their vanishing.
//
// The system tells nobody that a window of another process is gone. So the process is watched: one
// of the system's own waiting threads posts kPeersChanged to our window when it ends, and does
// nothing else. A process that may not be watched (it runs with more rights), and a window that is
// closed while its process goes on, are noticed when the next message does not get through.
#pragma once

#include <windows.h>

#include <map>
#include <vector>

#include "platform/message_window.h"
#include "platform/win32/handle.h"

namespace wavo::platform {

/// Posted to our window: somebody may have vanished. Outside the numbers of masters and viewers.
inline constexpr UINT kPeersChanged = WM_APP + 1;

HWND WindowOf(WindowHandle handle) noexcept;
WindowHandle NumberOf(HWND window) noexcept;

class PeerWatch {
 public:
    PeerWatch() = default;
    ~PeerWatch();
    PeerWatch(const PeerWatch&) = delete;
    PeerWatch& operator=(const PeerWatch&) = delete;

    /// From now on `peer` is watched for the window `own`; nothing happens when it is already.
    void Add(HWND own, WindowHandle peer);

    /// The peers that have vanished; they are no longer watched.
    std::vector<WindowHandle> TakeGone();

 private:
    struct Peer {
        Handle process;         ///< empty when it may not be watched
        HANDLE wait = nullptr;  ///< the system's registration of our interest
    };
    static void StopWaiting(Peer& peer) noexcept;

    std::map<WindowHandle, Peer> m_peers;
};

}  // namespace wavo::platform

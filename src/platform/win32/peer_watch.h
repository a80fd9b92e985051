// The windows of others that a message window has to do with, and their vanishing.
//
// The system tells nobody that a window of another process is gone: whoever watches looks at them
// from time to time.
#pragma once

#include <windows.h>

#include <chrono>
#include <map>
#include <vector>

#include "platform/message_window.h"

namespace wavo::platform {

/// How often TakeGone should be called.
inline constexpr std::chrono::milliseconds kLookAtPeersEvery{200};

HWND WindowOf(WindowHandle handle) noexcept;
WindowHandle NumberOf(HWND window) noexcept;

class PeerWatch {
 public:
    /// From now on `peer` is watched; nothing happens when it is already, or is no window.
    void Add(WindowHandle peer);

    /// The peers that have vanished; they are no longer watched.
    std::vector<WindowHandle> TakeGone();

    [[nodiscard]] bool IsEmpty() const noexcept { return m_processes.empty(); }

 private:
    /// By window: a handle may come again, for a window of another process.
    std::map<WindowHandle, DWORD> m_processes;
};

}  // namespace wavo::platform

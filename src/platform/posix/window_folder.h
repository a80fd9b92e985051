// The folder in which the message windows of one user meet, and the sockets in it.
//
// $XDG_RUNTIME_DIR/wavo where XDG_RUNTIME_DIR is an absolute path of a folder of this user, else
// /tmp/wavo-<uid>. The second one does not follow TMPDIR: two processes must find each other
// whatever their environments say.
//
// Invariants:
// 1. The folder belongs to this user, is no symbolic link and has no permissions for others.
// 2. A name of digits alone stands for a window that listened when the name appeared: sockets are
//    bound and listen under another name first.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"

namespace wavo::platform {

/// Path of the folder, created when missing. Empty on failure, with the reason in `*error`.
std::string WindowFolder(std::string* error);

/// Makes a non-blocking listening socket under a free handle in `folder` and sweeps out what dead
/// processes left there. Without a descriptor on failure, with the reason in `*error`. The caller
/// removes the name with RemoveWindowName. `propose` gives the handles that are tried, from 1 to
/// kLargestWindowHandle; null: random ones.
Descriptor ListenAsWindow(const std::string& folder, WindowHandle* handle, std::string* error,
                          const std::function<WindowHandle()>& propose = nullptr);

/// The handles of all windows that have a name in `folder`, in no order.
std::vector<WindowHandle> WindowsIn(const std::string& folder);

/// Removes the name of a window.
void RemoveWindowName(const std::string& folder, WindowHandle handle) noexcept;

/// Connects without blocking to the window `handle`. Without a descriptor on failure; errno tells
/// why: ENOENT or ECONNREFUSED when there is no such window, EAGAIN when it accepts nothing now.
Descriptor ConnectToWindow(const std::string& folder, WindowHandle handle) noexcept;

}  // namespace wavo::platform

// Dialogs and menus that the system itself shows, in a message loop of its own (Windows).
#pragma once

namespace wavo::platform {

/// Whether files, printers and pages are chosen in dialogs of the system. A printer is then one
/// that is installed: there is none that writes a file.
bool HasSystemDialogs() noexcept;

/// Cancels those that the calling thread shows, and the dragging of its windows. They close, and
/// their callers go on, once the thread handles messages again.
void CancelSystemDialogs() noexcept;

}  // namespace wavo::platform

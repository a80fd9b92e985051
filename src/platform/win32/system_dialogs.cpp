#include "platform/system_dialogs.h"

#include <windows.h>

#include <array>
#include <string_view>

namespace wavo::platform {

namespace {

BOOL CALLBACK CancelIfDialog(HWND window, LPARAM /*unused*/) noexcept {
    constexpr std::wstring_view kDialogClass = L"#32770";
    std::array<wchar_t, 16> name{};
    ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (kDialogClass == name.data() && ::IsWindowVisible(window) != 0) {
        ::PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    }
    return TRUE;  // go on with the next window
}

}  // namespace

bool HasSystemDialogs() noexcept {
    return true;
}

void CancelSystemDialogs() noexcept {
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    if (::GetGUIThreadInfo(::GetCurrentThreadId(), &thread) != 0) {
        // The loops of a menu of the system, and of a window that is dragged or sized.
        if ((thread.flags & GUI_INMENUMODE) != 0) {
            ::PostMessageW(thread.hwndMenuOwner, WM_CANCELMODE, 0, 0);
        }
        if ((thread.flags & GUI_INMOVESIZE) != 0) {
            ::PostMessageW(thread.hwndMoveSize, WM_CANCELMODE, 0, 0);
        }
    }
    ::EnumThreadWindows(::GetCurrentThreadId(), &CancelIfDialog, 0);
}

}  // namespace wavo::platform

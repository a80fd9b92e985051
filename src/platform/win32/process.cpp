#include "platform/process.h"

#include <windows.h>

// Behind windows.h:
#include <shellapi.h>

#include <atomic>

#include "platform/win32/termination.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

std::atomic<HANDLE> g_event{nullptr};
std::atomic<bool> g_requested{false};

/// In a thread of the system.
BOOL WINAPI OnConsoleEvent(DWORD event) {
    RequestTermination();
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The window closes or the user logs off: the process ends when this returns, so the
        // program gets what time the system grants.
        ::Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void RequestTermination() noexcept {
    g_requested.store(true);
    if (const HANDLE event = g_event.load(); event != nullptr) {
        ::SetEvent(event);
    }
}

HANDLE TerminationEvent() noexcept {
    return g_event.load();
}

std::uint32_t ProcessId() noexcept {
    return ::GetCurrentProcessId();
}

std::vector<std::string> CommandLineArguments(int /*argc*/, char** /*argv*/) {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; words != nullptr && i < count; ++i) {
        arguments.push_back(Utf8(words[i]));
    }
    ::LocalFree(words);
    return arguments;
}

int WatchTerminationRequests() noexcept {
    if (g_event.load() == nullptr) {
        g_event.store(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
        ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
    }
    return -1;
}

bool TerminationRequested() noexcept {
    return g_requested.load();
}

}  // namespace wavo::platform

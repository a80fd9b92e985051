// The process: its end on request, and its crash.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wavo::platform {

/// Number of this process.
std::uint32_t ProcessId() noexcept;

/// The arguments of main() behind the program's name, in UTF-8.
std::vector<std::string> CommandLineArguments(int argc, char** argv);

/// Starts a program that lives on by itself: alone in a session (Windows: without a console
/// window), its standard streams lead nowhere, no file of this process is handed on to it.
/// `program` is its path. False when it could not be started, and the reason in words in `*error`.
bool StartDetached(const std::string& program, const std::vector<std::string>& arguments,
                   std::string* error);

/// Asks the system to tell of a request to end instead of ending the process at once. POSIX:
/// SIGINT, SIGTERM, SIGHUP. Windows: the console's interrupt, break and close; and WM_CLOSE to a
/// thread that shows no window, for which MessageWindow::WaitAndDispatch looks out. Returns a
/// descriptor that becomes readable on the first request, -1 where there is none to watch.
int WatchTerminationRequests() noexcept;

/// Whether the end was requested since WatchTerminationRequests.
bool TerminationRequested() noexcept;

/// Installs the crash hook: on a fatal signal (Windows: an unhandled exception) a record with
/// signal, time, `version` and a symbolised backtrace is appended to `file` and written to standard
/// error; then the process ends as it would have without the hook. `file` may be empty: then only
/// standard error gets the record. Safe to call during static initialisation. Calling it again
/// changes file and version.
void InstallCrashHook(const std::string& file, const std::string& version);

}  // namespace wavo::platform

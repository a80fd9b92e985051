// The crash logger on top of the platform's crash hook.
//
// The one CrashLogDLL object lives here. It has no constructor that does anything, so it does not
// matter in which order the statics of the program come to life; a program gets it, and this file
// out of the static library, by calling InitCrashLogger from the initialiser of a static of its
// own.
#include "support/diagnostics.h"

#include "platform/folders.h"
#include "platform/last_error.h"
#include "platform/process.h"
#include "support/log_file.h"

namespace {

constexpr std::size_t kCrashLogLimit = std::size_t{1024} * 1024;

bool g_installed = false;  // initialised at compile time, so that no call comes too early

CrashLogDLL g_crash_logger;

}  // namespace

void CrashLogDLL::InitCrashLogger() {
    const wavo::platform::LastErrorKeeper keep;
    std::string file = wavo::platform::StateFolder();
    if (!file.empty()) {
        file += wavo::platform::PathSeparator() + "wavo_crash.log";
        wavo::diagnostics::RotateLog(file, kCrashLogLimit);
    }
    // Without a folder the record still goes to standard error.
    wavo::platform::InstallCrashHook(file, WAVO_VERSION);
    g_installed = true;
}

CrashLogDLL::~CrashLogDLL() {
    if (g_installed) {
        wavo::platform::InstallCrashHook({}, {});
        g_installed = false;
    }
}

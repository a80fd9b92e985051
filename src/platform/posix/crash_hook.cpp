// The crash hook: what happens between a fatal signal and the end of the process.
//
// The handler writes the head of the record itself. Finding names reads files and takes locks, in
// a process whose memory may be damaged; so a forked copy does it, with a limit of time, and when
// it does not get through a second one tries again with less.
#include <fcntl.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "platform/last_error.h"
#include "platform/posix/crash_record.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/mapping_guard.h"
#include "platform/posix/symboliser.h"
#include "platform/process.h"

namespace wavo::platform {

namespace {

struct FatalSignal {
    int number;
    const char* name;
};
constexpr std::array<FatalSignal, 5> kFatalSignals{{{SIGSEGV, "SIGSEGV"},
                                                    {SIGBUS, "SIGBUS"},
                                                    {SIGFPE, "SIGFPE"},
                                                    {SIGILL, "SIGILL"},
                                                    {SIGABRT, "SIGABRT"}}};

constexpr std::size_t kStackSize = std::size_t{256} * 1024;
constexpr int kPatience = 5000;        // ms for one attempt at the backtrace
constexpr int kWaitStep = 10;          // ms
constexpr unsigned kAttemptLife = 20;  // s until a copy ends itself, should its parent be killed

// Plain memory, zero before any code runs: the hook may be installed by static initialisation.
struct Hook {
    std::array<char, 4096> file;
    std::array<char, 128> version;
    std::array<struct sigaction, kFatalSignals.size()> previous;
    bool installed;
};
Hook g_hook;
alignas(16) std::array<char, kStackSize> g_stack;
std::atomic<pid_t> g_crashing_thread{0};
static_assert(std::atomic<pid_t>::is_always_lock_free);

void CopyText(const std::string& text, char* target, std::size_t room) noexcept {
    const std::size_t size = std::min(text.size(), room - 1);
    std::memcpy(target, text.data(), size);
    target[size] = '\0';
}

void Sleep(int milliseconds) noexcept {
    const timespec time{milliseconds / 1000, static_cast<long>(milliseconds % 1000) * 1000000};
    ::nanosleep(&time, nullptr);
}

/// The instruction at which the signal came; 0 when it cannot be told.
std::uintptr_t InstructionOf(const void* context) noexcept {
    [[maybe_unused]] const auto& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
    return static_cast<std::uintptr_t>(machine.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return static_cast<std::uintptr_t>(machine.pc);
#else
    return 0;
#endif
}

void WriteHead(CrashRecord* record, const FatalSignal& signal, const siginfo_t& info,
               const void* context) noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    record->Text("---- crash of ").Text(program_invocation_short_name).Text(", process ");
    record->Decimal(static_cast<std::uint64_t>(::getpid())).EndLine();
    record->Text("signal: ").Decimal(static_cast<std::uint64_t>(signal.number));
    record->Text(" (").Text(signal.name).Text(")");
    if (info.si_code > 0) {
        record->Text(", address ").Hex(reinterpret_cast<std::uintptr_t>(info.si_addr));
    } else {
        record->Text(", sent by process ").Decimal(static_cast<std::uint64_t>(info.si_pid));
    }
    record->Text(", instruction ").Hex(InstructionOf(context)).EndLine();
    record->Text("time: ").Time(UtcOf(now)).EndLine();
    record->Text("version: ").Text(g_hook.version.data()).EndLine();
    record->Text("backtrace:").EndLine();
}

/// In the copy: a further fault ends it, and so does the clock.
[[noreturn]] void WriteBacktraceAndExit(CrashRecord* record, const void* context, bool demangle) {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const FatalSignal& fatal : kFatalSignals) {
        ::signal(fatal.number, SIG_DFL);
        ::sigaddset(&signals, fatal.number);
    }
    ::signal(SIGALRM, SIG_DFL);
    ::sigaddset(&signals, SIGALRM);
    ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
    ::alarm(kAttemptLife);
    WriteBacktrace(record, InstructionOf(context), demangle);
    ::_exit(0);
}

/// Lets a copy of the process write the backtrace. Returns whether it got to the end.
bool TryBacktrace(CrashRecord* record, const void* context, bool demangle) {
    const pid_t copy = ::_Fork();
    if (copy == 0) {
        WriteBacktraceAndExit(record, context, demangle);
    }
    if (copy < 0) {
        return false;
    }
    for (int waited = 0; waited < kPatience; waited += kWaitStep) {
        int status = 0;
        const pid_t ended = ::waitpid(copy, &status, WNOHANG);
        if (ended == copy) {
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        if (ended < 0 && errno != EINTR) {
            return true;  // SIGCHLD is ignored, so the system tells nothing of its end but the end
        }
        Sleep(kWaitStep);
    }
    ::kill(copy, SIGKILL);
    ::waitpid(copy, nullptr, 0);
    return false;
}

void OnFatalSignal(int number, siginfo_t* info, void* context) {
    if (number == SIGBUS && info->si_code > 0 && RescueMapping(info->si_addr)) {
        return;  // no crash: somebody cut a segment short
    }
    const int error = errno;
    std::size_t index = 0;
    while (index + 1 < kFatalSignals.size() && kFatalSignals[index].number != number) {
        ++index;
    }
    pid_t nobody = 0;
    if (!g_crashing_thread.compare_exchange_strong(nobody, ::gettid())) {
        // Another thread is writing its record; it ends the process.
        Sleep(3 * kPatience);
    } else {
        const Descriptor file(
            g_hook.file[0] != '\0'
                ? ::open(g_hook.file.data(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600)
                : -1);
        CrashRecord record(file.number());
        WriteHead(&record, kFatalSignals[index], *info, context);
        if (!TryBacktrace(&record, context, true)) {
            record.Text("again, with names as linked:").EndLine();
            TryBacktrace(&record, context, false);
        }
        record.Text("---- end").EndLine();
    }
    // From here on as without the hook. A fault comes again when the instruction is repeated; a
    // signal that was sent has to be sent again, and waits until this handler returns.
    ::sigaction(number, &g_hook.previous[index], nullptr);
    if (info->si_code <= 0) {
        ::raise(number);
    }
    errno = error;
}

/// A stack for the handler: the fault may be that the usual one is full.
void ProvideStack() noexcept {
    stack_t stack{};
    if (::sigaltstack(nullptr, &stack) == 0 && (stack.ss_flags & SS_DISABLE) == 0) {
        return;  // there is one, and it may belong to somebody who removes it again
    }
    stack = {};
    stack.ss_sp = g_stack.data();
    stack.ss_size = g_stack.size();
    ::sigaltstack(&stack, nullptr);
}

}  // namespace

void InstallCrashHook(const std::string& file, const std::string& version) {
    const LastErrorKeeper keep;
    // Without the file while the names change.
    g_hook.file[0] = '\0';
    CopyText(version, g_hook.version.data(), g_hook.version.size());
    if (file.size() < g_hook.file.size()) {
        CopyText(file, g_hook.file.data(), g_hook.file.size());
    }
    if (g_hook.installed) {
        return;
    }
    g_hook.installed = true;
    ProvideStack();
    struct sigaction action {};
    action.sa_sigaction = &OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    for (const FatalSignal& fatal : kFatalSignals) {
        ::sigaddset(&action.sa_mask, fatal.number);
    }
    for (std::size_t i = 0; i < kFatalSignals.size(); ++i) {
        ::sigaction(kFatalSignals[i].number, &action, &g_hook.previous[i]);
    }
}

}  // namespace wavo::platform

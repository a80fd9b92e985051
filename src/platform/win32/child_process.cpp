#include "platform/child_process.h"

#include <windows.h>

#include <array>
#include <utility>

#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/program_line.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

constexpr DWORD kEndPatience = 2000;  // milliseconds
constexpr DWORD kLookAgain = 5;

class WindowsChild final : public ChildProcess {
 public:
    WindowsChild(Handle job, Handle process, DWORD thread, Handle output)
        : m_job(std::move(job)),
          m_process(std::move(process)),
          m_thread(thread),
          m_output(std::move(output)) {}
    ~WindowsChild() override {
        // A program without windows takes this as a request to end.
        if (IsRunning()) {  // its number may be another's afterwards
            ::PostThreadMessageW(m_thread, WM_CLOSE, 0, 0);
        }
        for (DWORD waited = 0; IsRunning() && waited < kEndPatience; waited += kLookAgain) {
            SkipOutput();
            ::WaitForSingleObject(m_process.get(), kLookAgain);
        }
        ::TerminateJobObject(m_job.get(), 1);
    }

    [[nodiscard]] bool IsRunning() override {
        return ::WaitForSingleObject(m_process.get(), 0) == WAIT_TIMEOUT;
    }

    std::string ReadLine(std::chrono::milliseconds timeout) override {
        const auto end = std::chrono::steady_clock::now() + timeout;
        std::string line;
        char c = 0;
        while (c != '\n') {
            const bool is_running = IsRunning();  // what it has said before its end is read
            if (Waiting() > 0) {
                DWORD count = 0;
                if (::ReadFile(m_output.get(), &c, 1, &count, nullptr) == 0 || count == 0) {
                    break;
                }
                if (c != '\n' && c != '\r') {
                    line += c;
                }
            } else if (!is_running || std::chrono::steady_clock::now() >= end) {
                break;
            } else {
                ::WaitForSingleObject(m_process.get(), kLookAgain);
            }
        }
        return line;
    }

    void SkipOutput() override {
        std::array<char, 4096> buffer;
        DWORD count = 0;
        while (Waiting() > 0 && ::ReadFile(m_output.get(), buffer.data(),
                                           static_cast<DWORD>(buffer.size()), &count, nullptr)) {
        }
    }

 private:
    [[nodiscard]] DWORD Waiting() const {
        DWORD waiting = 0;
        return ::PeekNamedPipe(m_output.get(), nullptr, 0, nullptr, &waiting, nullptr) != 0
                   ? waiting
                   : 0;
    }

    Handle m_job;  // ends the process when its last handle goes: that of this process
    Handle m_process;
    DWORD m_thread;
    Handle m_output;
};

/// A job whose processes end with it.
Handle MakeJob() {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (job && ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                         sizeof limits) == 0) {
        job.Close();
    }
    return job;
}

/// The attribute that hands on these handles and no others.
class HandedOn {
 public:
    explicit HandedOn(std::array<HANDLE, 2>& handles) {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_memory.resize(size);
        m_is_made =
            ::InitializeProcThreadAttributeList(List(), 1, 0, &size) != 0 &&
            ::UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                        handles.data(), sizeof handles, nullptr, nullptr) != 0;
    }
    ~HandedOn() {
        if (m_is_made) {
            ::DeleteProcThreadAttributeList(List());
        }
    }
    HandedOn(const HandedOn&) = delete;
    HandedOn& operator=(const HandedOn&) = delete;

    [[nodiscard]] bool IsMade() const { return m_is_made; }
    [[nodiscard]] LPPROC_THREAD_ATTRIBUTE_LIST List() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data());
    }

 private:
    std::vector<std::byte> m_memory;
    bool m_is_made = false;
};

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::Start(const std::string& program,
                                                  const std::vector<std::string>& arguments,
                                                  std::string* error) {
    const auto fail = [error]() -> std::unique_ptr<ChildProcess> {
        *error = ErrorText(LastError());
        return nullptr;
    };
    constexpr DWORD kPipeSize = 65536;
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE ends[2];
    if (::CreatePipe(&ends[0], &ends[1], &inherited, kPipeSize) == 0) {
        return fail();
    }
    Handle from_child(ends[0]);
    const Handle to_parent(ends[1]);
    ::SetHandleInformation(from_child.get(), HANDLE_FLAG_INHERIT, 0);
    const Handle nowhere(::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                       &inherited, OPEN_EXISTING, 0, nullptr));
    Handle job = MakeJob();
    std::array<HANDLE, 2> streams{to_parent.get(), nowhere.get()};
    HandedOn handed_on(streams);
    if (!nowhere || !job || !handed_on.IsMade()) {
        return fail();
    }
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = nowhere.get();
    start.StartupInfo.hStdOutput = to_parent.get();
    start.StartupInfo.hStdError = to_parent.get();
    start.lpAttributeList = handed_on.List();
    std::wstring line = ProgramLine(program, arguments);
    PROCESS_INFORMATION made{};
    if (::CreateProcessW(Wide(program).c_str(), line.data(), nullptr, nullptr, TRUE,
                         CREATE_NO_WINDOW | CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT,
                         nullptr, nullptr, &start.StartupInfo, &made) == 0) {
        return fail();
    }
    const Handle thread(made.hThread);
    Handle process(made.hProcess);
    if (::AssignProcessToJobObject(job.get(), process.get()) == 0) {
        auto none = fail();
        ::TerminateProcess(process.get(), 1);
        return none;
    }
    ::ResumeThread(thread.get());
    return std::make_unique<WindowsChild>(std::move(job), std::move(process), made.dwThreadId,
                                          std::move(from_child));
}

}  // namespace wavo::platform

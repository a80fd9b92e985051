#include "system/started_program.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/win32/wide.h"

namespace wavo::testing {

namespace {

/// A pipe, one end of which can be inherited.
struct Pipe {
    HANDLE read = nullptr;
    HANDLE write = nullptr;

    void Open(HANDLE Pipe::*ours) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        EXPECT_NE(::CreatePipe(&read, &write, &inherited, 0), 0);
        ::SetHandleInformation(this->*ours, HANDLE_FLAG_INHERIT, 0);
    }
};

/// What has been written, with the line ends of C.
void ReadAll(HANDLE pipe, std::string* text) {
    DWORD waiting = 0;
    while (::PeekNamedPipe(pipe, nullptr, 0, nullptr, &waiting, nullptr) != 0 && waiting > 0) {
        std::array<char, 4096> buffer{};
        DWORD size = 0;
        if (::ReadFile(pipe, buffer.data(), buffer.size(), &size, nullptr) == 0) {
            return;
        }
        text->append(buffer.data(), size);
    }
    std::erase(*text, '\r');
}

}  // namespace

struct StartedProgram::System {
    PROCESS_INFORMATION process{};
    Pipe input;
    Pipe output;
    Pipe errors;
};

StartedProgram::StartedProgram(const std::string& program,
                               const std::vector<std::string>& arguments)
    : m_system(std::make_unique<System>()) {
    std::string command = '"' + program + '"';
    for (const std::string& argument : arguments) {
        command += " \"" + argument + '"';
    }
    m_system->input.Open(&Pipe::write);
    m_system->output.Open(&Pipe::read);
    m_system->errors.Open(&Pipe::read);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = m_system->input.read;
    start.hStdOutput = m_system->output.write;
    start.hStdError = m_system->errors.write;
    // In a group of its own: an event of the console is then for it alone.
    m_ended = ::CreateProcessW(nullptr, platform::Wide(command).data(), nullptr, nullptr, TRUE,
                               CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start,
                               &m_system->process) == 0;
    EXPECT_FALSE(m_ended) << program;
    ::CloseHandle(m_system->input.read);
    ::CloseHandle(m_system->output.write);
    ::CloseHandle(m_system->errors.write);
    DWORD at_once = PIPE_READMODE_BYTE | PIPE_NOWAIT;
    ::SetNamedPipeHandleState(m_system->input.write, &at_once, nullptr, nullptr);
}

StartedProgram::~StartedProgram() {
    Kill();
    Wait();
    CloseInput();
    ::CloseHandle(m_system->output.read);
    ::CloseHandle(m_system->errors.read);
    ::CloseHandle(m_system->process.hThread);
    ::CloseHandle(m_system->process.hProcess);
}

void StartedProgram::Collect() {
    ReadAll(m_system->output.read, &m_output);
    ReadAll(m_system->errors.read, &m_errors);
}

std::size_t StartedProgram::FeedSome(std::string_view text) {
    constexpr std::size_t kMostAtOnce = 2048;  // what does not fit is refused as a whole
    DWORD count = 0;
    ::WriteFile(m_system->input.write, text.data(),
                static_cast<DWORD>(std::min(text.size(), kMostAtOnce)), &count, nullptr);
    return count;
}

void StartedProgram::CloseInput() {
    if (m_system->input.write != nullptr) {
        ::CloseHandle(std::exchange(m_system->input.write, nullptr));
    }
}

bool StartedProgram::HasEnded() {
    Collect();
    if (!m_ended) {
        m_ended = ::WaitForSingleObject(m_system->process.hProcess, 0) == WAIT_OBJECT_0;
        Collect();
    }
    return m_ended;
}

bool StartedProgram::RequestEnd() {
    return ::PostThreadMessageW(m_system->process.dwThreadId, WM_CLOSE, 0, 0) != 0;
}

bool StartedProgram::Interrupt() {
    return ::GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, m_system->process.dwProcessId) != 0;
}

void StartedProgram::Kill() {
    if (!HasEnded()) {
        ::TerminateProcess(m_system->process.hProcess, 1);
    }
}

int StartedProgram::ExitStatus() {
    DWORD status = 0;
    ::GetExitCodeProcess(m_system->process.hProcess, &status);
    return static_cast<int>(status);
}

}  // namespace wavo::testing

#include "system/started_program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace wavo::testing {

namespace {

void ReadAll(int pipe, std::string* text) {
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    while ((size = ::read(pipe, buffer.data(), buffer.size())) > 0) {
        text->append(buffer.data(), static_cast<std::size_t>(size));
    }
}

}  // namespace

struct StartedProgram::System {
    pid_t process = -1;
    int input_pipe = -1;
    int output_pipe = -1;
    int error_pipe = -1;
    int status = 0;
};

StartedProgram::StartedProgram(const std::string& program,
                               const std::vector<std::string>& arguments)
    : m_system(std::make_unique<System>()) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    EXPECT_EQ(::pipe2(input.data(), O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC | O_NONBLOCK), 0);
    EXPECT_EQ(::pipe2(errors.data(), O_CLOEXEC | O_NONBLOCK), 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const int failure =
        ::posix_spawn(&m_system->process, program.c_str(), &actions, nullptr, argv.data(), environ);
    EXPECT_EQ(failure, 0) << program;
    m_ended = failure != 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    ::close(errors[1]);
    ::fcntl(input[1], F_SETFL, O_NONBLOCK);
    m_system->input_pipe = input[1];
    m_system->output_pipe = output[0];
    m_system->error_pipe = errors[0];
}

StartedProgram::~StartedProgram() {
    Kill();
    Wait();
    CloseInput();
    ::close(m_system->output_pipe);
    ::close(m_system->error_pipe);
}

void StartedProgram::Collect() {
    ReadAll(m_system->output_pipe, &m_output);
    ReadAll(m_system->error_pipe, &m_errors);
}

std::size_t StartedProgram::FeedSome(std::string_view text) {
    // A program that has ended reads no more; its end is seen elsewhere.
    struct sigaction ignored {};
    struct sigaction before {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignored, &before);
    const ssize_t count = ::write(m_system->input_pipe, text.data(), text.size());
    ::sigaction(SIGPIPE, &before, nullptr);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void StartedProgram::CloseInput() {
    if (m_system->input_pipe >= 0) {
        ::close(std::exchange(m_system->input_pipe, -1));
    }
}

bool StartedProgram::HasEnded() {
    Collect();
    if (!m_ended) {
        m_ended = ::waitpid(m_system->process, &m_system->status, WNOHANG) == m_system->process;
        Collect();
    }
    return m_ended;
}

bool StartedProgram::RequestEnd() {
    return !HasEnded() && ::kill(m_system->process, SIGTERM) == 0;
}

bool StartedProgram::Interrupt() {
    return !HasEnded() && ::kill(m_system->process, SIGINT) == 0;
}

void StartedProgram::Kill() {
    if (!HasEnded()) {
        ::kill(m_system->process, SIGKILL);
    }
}

int StartedProgram::ExitStatus() {
    return WIFEXITED(m_system->status) ? WEXITSTATUS(m_system->status)
                                       : 1000 + WTERMSIG(m_system->status);
}

}  // namespace wavo::testing

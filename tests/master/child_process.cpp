#include "child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace wavo::testing {

namespace {

constexpr std::chrono::milliseconds kPause{5};

void ReadAll(int pipe, std::string* text) {
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    while ((size = ::read(pipe, buffer.data(), buffer.size())) > 0) {
        text->append(buffer.data(), static_cast<std::size_t>(size));
    }
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments) {
    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC | O_NONBLOCK), 0);
    EXPECT_EQ(::pipe2(errors.data(), O_CLOEXEC | O_NONBLOCK), 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errors[1], STDERR_FILENO);
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const int failure =
        ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, argv.data(), environ);
    EXPECT_EQ(failure, 0) << program;
    m_ended = failure != 0;
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(output[1]);
    ::close(errors[1]);
    m_output_pipe = output[0];
    m_error_pipe = errors[0];
}

ChildProcess::~ChildProcess() {
    Kill();
    Wait();
    ::close(m_output_pipe);
    ::close(m_error_pipe);
}

void ChildProcess::Collect() {
    ReadAll(m_output_pipe, &m_output);
    ReadAll(m_error_pipe, &m_errors);
}

bool ChildProcess::HasEnded() {
    Collect();
    if (!m_ended) {
        m_ended = ::waitpid(m_process, &m_status, WNOHANG) == m_process;
        Collect();
    }
    return m_ended;
}

void ChildProcess::RequestEnd() {
    if (!HasEnded()) {
        ::kill(m_process, SIGTERM);
    }
}

void ChildProcess::Interrupt() {
    if (!HasEnded()) {
        ::kill(m_process, SIGINT);
    }
}

void ChildProcess::Kill() {
    if (!HasEnded()) {
        ::kill(m_process, SIGKILL);
    }
}

int ChildProcess::Wait() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!HasEnded()) {
        if (std::chrono::steady_clock::now() > end) {
            return -1;
        }
        std::this_thread::sleep_for(kPause);
    }
    return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 1000 + WTERMSIG(m_status);
}

std::string ChildProcess::Output() {
    Collect();
    return m_output;
}

std::string ChildProcess::Errors() {
    Collect();
    return m_errors;
}

bool ChildProcess::WaitForOutput(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Output().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > end || HasEnded()) {
            return Output().find(text) != std::string::npos;
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

}  // namespace wavo::testing

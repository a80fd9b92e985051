#include "child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace wavo::testing {

namespace {

constexpr int kPipeBroke = 99;

}  // namespace

void NumberPipe::Put(std::uint64_t number) const {
    if (::write(m_out, &number, sizeof number) != static_cast<ssize_t>(sizeof number)) {
        std::perror("writing to the other process");
    }
}

std::uint64_t NumberPipe::Get() const {
    std::uint64_t number = 0;
    ssize_t size = -1;
    do {
        size = ::read(m_in, &number, sizeof number);
    } while (size < 0 && errno == EINTR);
    if (size != static_cast<ssize_t>(sizeof number)) {
        if (m_in_child) {
            ::_exit(kPipeBroke);
        }
        ADD_FAILURE() << "the other process is gone";
        return 0;
    }
    return number;
}

void NumberPipe::Close() {
    ::close(m_in);
    ::close(m_out);
    m_in = -1;
    m_out = -1;
}

ChildProcess::ChildProcess(const std::function<int(NumberPipe&)>& body) {
    std::array<int, 2> down{};
    std::array<int, 2> up{};
    if (::pipe2(down.data(), O_CLOEXEC) != 0 || ::pipe2(up.data(), O_CLOEXEC) != 0) {
        std::perror("pipe2");
        std::abort();
    }
    m_id = ::fork();
    if (m_id == 0) {
        ::close(down[1]);
        ::close(up[0]);
        NumberPipe pipe(down[0], up[1], true);
        const int code = body(pipe);
        std::fflush(nullptr);
        ::_exit(code);
    }
    ::close(down[0]);
    ::close(up[1]);
    m_pipe = NumberPipe(up[0], down[1], false);
}

ChildProcess::~ChildProcess() {
    if (m_id > 0) {
        Signal(SIGKILL);
        Wait();
    }
    m_pipe.Close();
}

void ChildProcess::Stop() const {
    Signal(SIGSTOP);
    int status = 0;
    ::waitpid(m_id, &status, WUNTRACED);
}

void ChildProcess::Continue() const {
    Signal(SIGCONT);
}

void ChildProcess::Signal(int number) const {
    ::kill(m_id, number);
}

int ChildProcess::Wait() {
    int status = 0;
    while (::waitpid(m_id, &status, 0) < 0 && errno == EINTR) {
    }
    m_id = -1;
    return status;
}

}  // namespace wavo::testing

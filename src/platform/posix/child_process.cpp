#include "platform/child_process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <thread>
#include <utility>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"

namespace wavo::platform {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kEndPatience{2000};
constexpr milliseconds kLookAgain{5};

/// In the child: becomes the program. Calls nothing that is unsafe between fork and exec.
[[noreturn]] void BecomeChild(char* const* arguments, pid_t parent, int output, int report) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() == parent) {  // else it has gone before it could be watched
        const int nowhere = ::open("/dev/null", O_RDWR);
        if (::dup2(nowhere, 0) >= 0 && ::dup2(output, 1) >= 0 && ::dup2(output, 2) >= 0) {
            ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
            sigset_t none;
            ::sigemptyset(&none);
            ::sigprocmask(SIG_SETMASK, &none, nullptr);
            for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
                ::signal(signal, SIG_DFL);
            }
            ::execv(arguments[0], arguments);
        }
    }
    const int why = errno;
    [[maybe_unused]] const ssize_t written = ::write(report, &why, sizeof why);
    ::_exit(127);
}

class PosixChild final : public ChildProcess {
 public:
    PosixChild(pid_t child, Descriptor output) : m_child(child), m_output(std::move(output)) {}
    ~PosixChild() override {
        if (!IsRunning()) {
            return;
        }
        ::kill(m_child, SIGTERM);
        const Clock::time_point end = Clock::now() + kEndPatience;
        while (IsRunning() && Clock::now() < end) {
            SkipOutput();
            std::this_thread::sleep_for(kLookAgain);
        }
        if (IsRunning()) {
            ::kill(m_child, SIGKILL);
            while (::waitpid(m_child, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
    }

    [[nodiscard]] bool IsRunning() override {
        if (m_child > 0) {
            const pid_t ended = ::waitpid(m_child, nullptr, WNOHANG);
            if (ended == m_child || (ended < 0 && errno == ECHILD)) {
                m_child = 0;
            }
        }
        return m_child > 0;
    }

    std::string ReadLine(milliseconds timeout) override {
        const Clock::time_point end = Clock::now() + timeout;
        std::string line;
        char c = 0;
        while (Await(end) && ::read(m_output.number(), &c, 1) == 1 && c != '\n') {
            line += c;
        }
        return line;
    }

    void SkipOutput() override {
        std::array<char, 4096> buffer;
        while (::read(m_output.number(), buffer.data(), buffer.size()) > 0) {
        }
    }

 private:
    /// Until there is something to read, the end of it included. False at `end`.
    [[nodiscard]] bool Await(Clock::time_point end) const {
        pollfd wanted{m_output.number(), POLLIN, 0};
        for (;;) {
            const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
            const int count =
                ::poll(&wanted, 1, static_cast<int>(std::max(left, milliseconds(0)).count()));
            if (count >= 0 || errno != EINTR) {
                return count > 0;
            }
        }
    }

    pid_t m_child;  // 0: it has ended
    Descriptor m_output;
};

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::Start(const std::string& program,
                                                  const std::vector<std::string>& arguments,
                                                  std::string* error) {
    std::vector<char*> texts{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    int output[2];
    int report[2];
    if (::pipe2(output, O_CLOEXEC) != 0) {
        *error = ErrorText(errno);
        return nullptr;
    }
    Descriptor from_child(output[0]);
    Descriptor said(output[1]);
    if (::pipe2(report, O_CLOEXEC) != 0) {
        *error = ErrorText(errno);
        return nullptr;
    }
    // Closed by a successful exec: then nothing comes.
    const Descriptor from_report(report[0]);
    Descriptor to_report(report[1]);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0) {
        *error = ErrorText(errno);
        return nullptr;
    }
    if (child == 0) {
        BecomeChild(texts.data(), parent, said.number(), to_report.number());
    }
    said.Close();
    to_report.Close();
    int why = 0;
    ssize_t count = 0;
    while ((count = ::read(from_report.number(), &why, sizeof why)) < 0 && errno == EINTR) {
    }
    ::fcntl(from_child.number(), F_SETFL, O_NONBLOCK);
    auto process = std::make_unique<PosixChild>(child, std::move(from_child));
    if (count > 0) {
        *error = ErrorText(why);
        return nullptr;
    }
    return process;
}

}  // namespace wavo::platform

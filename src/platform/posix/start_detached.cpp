#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"
#include "platform/process.h"

namespace wavo::platform {

namespace {

/// In the child: ends it, after it has said why.
[[noreturn]] void Give(int report, int error) {
    [[maybe_unused]] const ssize_t written = ::write(report, &error, sizeof error);
    ::_exit(127);
}

/// In the child, alone in a session: becomes the program, with nothing of its parent's but the
/// environment and the current folder. Calls nothing that is unsafe between fork and exec.
[[noreturn]] void Become(char* const* arguments, int report) {
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (int stream = 0; stream < 3; ++stream) {
        if (nowhere < 0 || ::dup2(nowhere, stream) < 0) {
            Give(report, errno);
        }
    }
    // What else the parent has open is not handed on.
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        ::signal(signal, SIG_DFL);
    }
    ::execv(arguments[0], arguments);
    Give(report, errno);
}

}  // namespace

bool StartDetached(const std::string& program, const std::vector<std::string>& arguments,
                   std::string* error) {
    std::vector<char*> texts{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        *error = ErrorText(errno);
        return false;
    }
    // Closed by a successful exec: then nothing comes.
    const Descriptor from_child(ends[0]);
    Descriptor to_parent(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) {
        *error = ErrorText(errno);
        return false;
    }
    if (child == 0) {
        ::setsid();
        // The grandchild is nobody's to wait for.
        const pid_t grandchild = ::fork();
        if (grandchild < 0) {
            Give(ends[1], errno);
        }
        if (grandchild > 0) {
            ::_exit(0);
        }
        Become(texts.data(), ends[1]);
    }
    to_parent = Descriptor();
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    int why = 0;
    ssize_t count = 0;
    while ((count = ::read(ends[0], &why, sizeof why)) < 0 && errno == EINTR) {
    }
    if (count > 0) {
        *error = ErrorText(why);
        return false;
    }
    return true;
}

}  // namespace wavo::platform

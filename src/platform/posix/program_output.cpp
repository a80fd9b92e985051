#include "platform/posix/program_output.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "platform/posix/descriptor.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace wavo::platform {

namespace {

std::string ReadToEnd(int pipe) {
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t size = ::read(pipe, buffer.data(), buffer.size());
        if (size > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(size));
        } else if (size == 0 || errno != EINTR) {
            return text;
        }
    }
}

int WaitForEnd(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace

std::optional<std::string> OutputOf(const std::vector<std::string>& command) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const Descriptor output(ends[0]);
    Descriptor input(ends[1]);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, input.number(), STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int failure =
        ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    input.Close();
    if (failure != 0) {
        errno = failure;
        return std::nullopt;
    }
    std::string text = ReadToEnd(output.number());
    const int status = WaitForEnd(process);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(std::move(text))
                                                         : std::nullopt;
}

std::string ProgramPath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace wavo::platform

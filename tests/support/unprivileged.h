// Permissions mean nothing to the superuser: what is to be refused runs in a child process with
// the rights of nobody.
#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

namespace wavo::testing {

/// Runs `body` in a child without the superuser's rights and returns the text it gave. Nothing
/// when there is no way to give the rights up.
inline std::optional<std::string> RunUnprivileged(const std::function<std::string()>& body) {
    constexpr unsigned kNobody = 65534;
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) {
        return std::nullopt;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        const bool is_ready =
            ::geteuid() != 0 ||
            (::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        const std::string text = is_ready ? "+" + body() : "-";
        const bool is_told =
            ::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        ::_exit(is_told ? 0 : 1);
    }
    ::close(ends[1]);
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t got = 0; (got = ::read(ends[0], buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0 || !text.starts_with('+')) {
        return std::nullopt;
    }
    return text.substr(1);
}

}  // namespace wavo::testing

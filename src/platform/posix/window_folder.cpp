#include "platform/posix/window_folder.h"

#include <dirent.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/last_error.h"
#include "platform/posix/message_packet.h"
#include "platform/posix/packet_socket.h"

namespace wavo::platform {

namespace {

constexpr std::string_view kUnfinishedPrefix = ".new-";
constexpr int kCreationAttempts = 100;

std::string Reason(const std::string& what, int error) {
    return what + ": " + ErrorText(error);
}

/// The runtime folder of the session, when it can be relied on.
std::string RuntimeFolder() {
    const char* value = std::getenv("XDG_RUNTIME_DIR");
    if (value == nullptr || value[0] != '/') {
        return {};
    }
    struct stat info {};
    if (::stat(value, &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::geteuid()) {
        return {};
    }
    return value;
}

std::string FolderPath() {
    const std::string runtime = RuntimeFolder();
    if (!runtime.empty()) {
        return runtime + "/wavo";
    }
    return "/tmp/wavo-" + std::to_string(::geteuid());
}

/// Whether `path` fits into a socket address; then `*address` holds it.
bool MakeAddress(const std::string& path, sockaddr_un* address) noexcept {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof address->sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address->sun_path, path.data(), path.size());
    return true;
}

Descriptor NewSocket() noexcept {
    return Descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

Descriptor ConnectToPath(const std::string& path) noexcept {
    sockaddr_un address{};
    if (!MakeAddress(path, &address)) {
        return {};
    }
    Descriptor socket = NewSocket();
    if (!socket) {
        return {};
    }
    for (;;) {
        if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                      sizeof address) == 0) {
            return socket;
        }
        if (errno != EINTR) {
            const LastErrorKeeper keep;
            socket.Close();
            return {};
        }
    }
}

std::optional<long> Number(std::string_view digits) {
    long number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc{} || end != digits.data() + digits.size() || number <= 0) {
        return std::nullopt;
    }
    return number;
}

bool IsAllDigits(std::string_view name) {
    return !name.empty() && name.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Whether a name looks like one that a process left which is gone now.
bool MayBeLeftover(std::string_view name) {
    if (IsAllDigits(name)) {
        return true;
    }
    if (name.substr(0, kUnfinishedPrefix.size()) != kUnfinishedPrefix) {
        return false;
    }
    name.remove_prefix(kUnfinishedPrefix.size());
    const std::optional<long> process = Number(name.substr(0, name.find('-')));
    return process && ::kill(static_cast<pid_t>(*process), 0) != 0 && errno == ESRCH;
}

std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), &::closedir);
    if (!entries) {
        return names;
    }
    while (const dirent* entry = ::readdir(entries.get())) {  // NOLINT(concurrency-mt-unsafe)
        names.emplace_back(entry->d_name);
    }
    return names;
}

/// Removes the sockets of processes that ended without removing them.
void Sweep(const std::string& folder) {
    for (const std::string& name : NamesIn(folder)) {
        if (!MayBeLeftover(name)) {
            continue;
        }
        std::string path = folder;
        path.append("/").append(name);
        // Only nobody listening is a refusal; a stopped or busy owner accepts or lets us wait.
        if (!ConnectToPath(path) && errno == ECONNREFUSED) {
            ::unlink(path.c_str());
        }
    }
}

WindowHandle RandomHandle() noexcept {
    std::uint64_t bits = 0;
    if (::getrandom(&bits, sizeof bits, 0) != static_cast<ssize_t>(sizeof bits)) {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        bits = static_cast<std::uint64_t>(now.tv_nsec) * 2654435761U +
               static_cast<std::uint64_t>(::getpid());
    }
    return bits % kLargestWindowHandle + 1;
}

std::string WindowPath(const std::string& folder, WindowHandle handle) {
    return folder + "/" + std::to_string(handle);
}

/// A listening socket under a name that nobody else uses; the name goes to `*path`.
Descriptor ListenUnfinished(const std::string& folder, std::string* path) {
    static std::atomic<unsigned> counter{0};
    for (int attempt = 0; attempt < kCreationAttempts; ++attempt) {
        *path = folder + "/" + std::string(kUnfinishedPrefix) + std::to_string(::getpid()) + "-" +
                std::to_string(++counter);
        sockaddr_un address{};
        if (!MakeAddress(*path, &address)) {
            return {};
        }
        Descriptor socket = NewSocket();
        if (!socket) {
            return {};
        }
        if (::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
            0) {
            if (errno == EADDRINUSE) {
                continue;  // left by an earlier process of our number
            }
            return {};
        }
        if (::listen(socket.number(), SOMAXCONN) != 0) {
            const LastErrorKeeper keep;
            ::unlink(path->c_str());
            return {};
        }
        return socket;
    }
    errno = EADDRINUSE;
    return {};
}

}  // namespace

std::string WindowFolder(std::string* error) {
    std::string path = FolderPath();
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        *error = Reason("cannot create the folder " + path, errno);
        return {};
    }
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) {
        *error = Reason("cannot look at the folder " + path, errno);
        return {};
    }
    if (!S_ISDIR(info.st_mode)) {
        *error = path + " is not a folder";
        return {};
    }
    if (info.st_uid != ::geteuid()) {
        *error = "the folder " + path + " belongs to another user";
        return {};
    }
    if ((info.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        *error = "the folder " + path + " is open to other users";
        return {};
    }
    return path;
}

Descriptor ListenAsWindow(const std::string& folder, WindowHandle* handle, std::string* error,
                          const std::function<WindowHandle()>& propose) {
    Sweep(folder);
    int failure = EADDRINUSE;
    for (int attempt = 0; attempt < kCreationAttempts; ++attempt) {
        std::string unfinished;
        Descriptor socket = ListenUnfinished(folder, &unfinished);
        if (!socket) {
            *error = Reason("cannot listen on a socket in " + folder, errno);
            return {};
        }
        // link() never replaces a name, so two processes cannot take the same number.
        const WindowHandle wanted = propose ? propose() : RandomHandle();
        const bool named = ::link(unfinished.c_str(), WindowPath(folder, wanted).c_str()) == 0;
        failure = named ? 0 : errno;
        ::unlink(unfinished.c_str());
        if (named) {
            *handle = wanted;
            return socket;
        }
        // ENOENT: a sweep of a process that cannot see ours took the unfinished name away.
        if (failure != EEXIST && failure != ENOENT) {
            break;
        }
    }
    *error = Reason("cannot name a socket in " + folder, failure);
    return {};
}

std::vector<WindowHandle> WindowsIn(const std::string& folder) {
    std::vector<WindowHandle> windows;
    for (const std::string& name : NamesIn(folder)) {
        const std::optional<long> number = IsAllDigits(name) ? Number(name) : std::nullopt;
        if (number && static_cast<WindowHandle>(*number) <= kLargestWindowHandle) {
            windows.push_back(static_cast<WindowHandle>(*number));
        }
    }
    return windows;
}

void RemoveWindowName(const std::string& folder, WindowHandle handle) noexcept {
    ::unlink(WindowPath(folder, handle).c_str());
}

Descriptor ConnectToWindow(const std::string& folder, WindowHandle handle) noexcept {
    if (handle == 0 || handle > kLargestWindowHandle) {
        errno = ENOENT;
        return {};
    }
    Descriptor socket = ConnectToPath(WindowPath(folder, handle));
    if (socket && !PeerIsTrusted(socket.number())) {
        socket.Close();
        errno = ECONNREFUSED;
    }
    return socket;
}

}  // namespace wavo::platform

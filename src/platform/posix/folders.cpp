#include "platform/folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/last_error.h"

namespace wavo::platform {

namespace {

constexpr char kMakerFolder[] = "Velk";

/// The user's home folder; empty when it cannot be told.
std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') {
        return home;
    }
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    if (found == nullptr || found->pw_dir == nullptr || found->pw_dir[0] != '/') {
        errno = error != 0 ? error : ENOENT;
        return {};
    }
    return found->pw_dir;
}

bool IsFolder(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/// Creates the folder and those above it. New ones are for the user alone.
bool CreateFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        if (::mkdir(part.c_str(), 0700) != 0 && !IsFolder(part)) {
            if (errno == EEXIST || errno == 0) {
                errno = ENOTDIR;
            }
            return false;
        }
        if (end == std::string::npos) {
            return true;
        }
    }
}

/// The maker's folder below what `variable` names, else below `fallback` in the home folder.
std::string MakerFolder(const char* variable, const char* fallback) {
    // A relative path would depend on where the program was started: it counts as not set.
    const char* value = std::getenv(variable);
    std::string base = value != nullptr && value[0] == '/' ? value : "";
    if (base.empty()) {
        base = HomeFolder();
        if (base.empty()) {
            return {};
        }
        base += fallback;
    }
    while (base.size() > 1 && base.back() == '/') {
        base.pop_back();
    }
    std::string path = (base == "/" ? std::string() : base) + "/" + kMakerFolder;
    return CreateFolders(path) ? path : std::string();
}

}  // namespace

std::string PathSeparator() {
    return "/";
}

std::string NativePath(std::string path) {
    return path;
}

std::string DataFolder() {
    return MakerFolder("XDG_DATA_HOME", "/.local/share");
}

std::string StateFolder() {
    return MakerFolder("XDG_STATE_HOME", "/.local/state");
}

std::string CacheFolder() {
    return MakerFolder("XDG_CACHE_HOME", "/.cache");
}

bool HasStandardOutput() noexcept {
    return true;
}

bool HasStandardError() noexcept {
    return true;
}

bool WriteToConsoleOfStarter(const std::string& /*text*/) noexcept {
    return false;
}

void PrepareTerminal() noexcept {}

bool StandardErrorIsTerminal() noexcept {
    const LastErrorKeeper keep;
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace wavo::platform

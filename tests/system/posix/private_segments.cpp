// Linked into tests that publish as a master does. The names of its segments exist once on a
// machine, and it tells all windows of the user that it is there: before main() the process and the
// programs that it will start get a place of their own for segments and for windows, so that these
// tests run beside each other, beside other runs of them and beside a real master. Where the system
// grants none they wait for each other.
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

bool Write(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool written =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return written;
}

/// The same user in a namespace of users of our own, in which mounting is allowed.
bool MapOwnUser(uid_t user, gid_t group) {
    const auto itself = [](auto id) {
        return std::to_string(id) + ' ' + std::to_string(id) + " 1";
    };
    return Write("/proc/self/setgroups", "deny") && Write("/proc/self/gid_map", itself(group)) &&
           Write("/proc/self/uid_map", itself(user));
}

bool HasPrivateSegments() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    const bool is_apart = (user == 0 && unshare(CLONE_NEWNS) == 0) ||
                          (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && MapOwnUser(user, group));
    return is_apart && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", "/dev/shm", "tmpfs", 0, "mode=1777") == 0;
}

/// For the windows, where the segments are: it goes with them.
bool HasPrivateWindows() {
    constexpr char kFolder[] = "/dev/shm/.windows";
    return mkdir(kFolder, 0700) == 0 && setenv("XDG_RUNTIME_DIR", kFolder, 1) == 0;
}

/// Until the end of the process no other test of this user has it.
void WaitForOthers() {
    const std::string name = "/tmp/wavo-tests-" + std::to_string(geteuid()) + ".lock";
    const int file = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0 || flock(file, LOCK_EX) != 0) {
        std::perror(name.c_str());
    }
}

[[maybe_unused]] const bool g_prepared = [] {
    if (!HasPrivateSegments() || !HasPrivateWindows()) {
        WaitForOthers();
    }
    return true;
}();

}  // namespace

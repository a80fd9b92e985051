#include "system/other_process.h"

#include <sys/types.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace wavo::testing {

namespace fs = std::filesystem;

void FreezeProcess(std::int64_t id) {
    ::kill(static_cast<pid_t>(id), SIGSTOP);
}

void ThawProcess(std::int64_t id) {
    ::kill(static_cast<pid_t>(id), SIGCONT);
}

std::vector<std::string> NamesInUse() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator("/dev/shm")) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("MachineTools_InfoData") || name.starts_with("MValues_") ||
            name.starts_with("DataModCap")) {
            names.push_back(name);
        }
    }
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    const fs::path sockets = fs::path(runtime != nullptr ? runtime : "") / "wavo";
    if (fs::exists(sockets)) {
        for (const auto& entry : fs::directory_iterator(sockets)) {
            names.push_back("socket " + entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace wavo::testing

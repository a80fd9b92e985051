#include "support/kept_file.h"

#include <array>
#include <cstring>

#include "platform/file.h"
#include "platform/folders.h"
#include "support/fast_file.h"

namespace wavo {

namespace {

/// Copies what a file holds into another one, byte for byte, to the device.
bool CopyContent(const std::string& from, const std::string& to) {
    platform::FileHandle source = platform::kInvalidFile;
    if (!openfile(from, 0, source)) {
        return false;
    }
    const platform::FileHandle target = openwritefile(to, kWriteOverwrite | kWriteFlush);
    bool copied = target != platform::kInvalidFile;
    std::array<char, 1U << 16U> bytes;
    for (std::size_t count = 1; copied && count > 0;) {
        std::size_t written = 0;
        copied = read64(source, bytes.data(), bytes.size(), count) &&
                 write64(target, bytes.data(), count, written);
    }
    if (target != platform::kInvalidFile) {
        copied = copied && platform::Files().Flush(target);
        copied = platform::Files().Close(target) && copied;
    }
    platform::Files().Close(source);
    return copied;
}

/// A name for what is kept of `path` that no file has; empty when there are too many.
std::string FreeNameFor(const std::string& path) {
    constexpr int kMostKept = 99;
    for (int number = 1; number <= kMostKept; ++number) {
        std::string name = path + ".bak";
        if (number > 1) {
            name += std::to_string(number);
        }
        if (!platform::Files().Exists(name)) {
            return name;
        }
    }
    return {};
}

}  // namespace

bool KeepFile(const std::string& path) {
    const std::string target = FreeNameFor(path);
    if (target.empty()) {
        return false;
    }
    // "ffw", four digits, ".tmp" and a NUL; with the permissions of the file itself.
    constexpr std::size_t kTemporaryName = 12;
    const std::size_t folder = path.rfind(platform::PathSeparator());
    std::string temporary(path.size() + kTemporaryName, '\0');
    if (!platform::Files().CreateTemporaryFile(
            folder == std::string::npos ? std::string() : path.substr(0, folder + 1), "ffw", path,
            temporary.data())) {
        return false;
    }
    temporary.resize(std::strlen(temporary.c_str()));
    if (CopyContent(path, temporary) && file_rename(temporary, target)) {
        return true;
    }
    platform::Files().Remove(temporary);
    return false;
}

}  // namespace wavo

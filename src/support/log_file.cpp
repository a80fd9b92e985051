#include "support/log_file.h"

#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "platform/append.h"

namespace wavo::diagnostics {

namespace {

namespace fs = std::filesystem;

/// Paths are UTF-8 on every system.
fs::path PathOf(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

/// Moves the file aside. When something stands in the way of the old generation the file goes: the
/// limit matters more than what it holds. False when it stays as it is.
bool MoveAside(const fs::path& path) {
    fs::path previous = path;
    previous += ".1";
    std::error_code error;
    fs::rename(path, previous, error);
    if (error) {
        fs::remove(path, error);
    }
    if (error) {
        fs::resize_file(path, 0, error);
    }
    return !error;
}

/// Whether a line has stayed half. One that another process is just writing is whole in a moment.
bool EndsInHalfLine(const fs::path& path) {
    constexpr int kLooks = 3;
    for (int look = 0; look < kLooks; ++look) {
        if (look > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::ifstream stream(path, std::ios::binary);
        stream.seekg(-1, std::ios::end);
        const int last = stream.get();
        if (!stream.good() || last == '\n') {
            return false;
        }
    }
    return true;
}

bool Append(const std::string& name, std::string_view line, std::size_t limit) {
    const fs::path path = PathOf(name);
    std::error_code error;
    const auto size = fs::file_size(path, error);
    const bool has_lines = !error && size > 0;
    const std::string_view begin = has_lines && EndsInHalfLine(path) ? "\n" : "";
    std::string text(begin);
    text += line;
    if (has_lines && size + text.size() > limit) {
        if (!MoveAside(path)) {
            return false;
        }
        text = line;
    }
    return platform::AppendToFile(name, text);
}

}  // namespace

void RotateLog(const std::string& path, std::size_t limit) noexcept {
    try {
        const fs::path file = PathOf(path);
        std::error_code error;
        const auto size = fs::file_size(file, error);
        if (!error && size >= limit) {
            MoveAside(file);
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nowhere to report it
    }
}

bool AppendToLog(const std::string& path, std::string_view line, std::size_t limit) noexcept {
    try {
        return Append(path, line, limit);
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace wavo::diagnostics

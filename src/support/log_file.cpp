#include "support/log_file.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace wavo::diagnostics {

namespace {

namespace fs = std::filesystem;

/// Paths are UTF-8 on every system.
fs::path PathOf(const std::string& path) {
    return {std::u8string(path.begin(), path.end())};
}

void MoveAside(const fs::path& path) {
    fs::path previous = path;
    previous += ".1";
    std::error_code error;
    fs::rename(path, previous, error);
    if (error) {
        // Something stands in the way of the old generation; the limit matters more than it.
        fs::remove(path, error);
    }
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

void AppendToLog(const std::string& path, std::string_view line, std::size_t limit) noexcept {
    try {
        const fs::path file = PathOf(path);
        std::error_code error;
        const auto size = fs::file_size(file, error);
        if (!error && size > 0 && size + line.size() > limit) {
            MoveAside(file);
        }
        std::ofstream stream;
        // Unbuffered: the line reaches the system in one piece.
        stream.rdbuf()->pubsetbuf(nullptr, 0);
        stream.open(file, std::ios::binary | std::ios::app);
        stream.write(line.data(), static_cast<std::streamsize>(line.size()));
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nowhere to report it
    }
}

}  // namespace wavo::diagnostics

// A folder for the files of one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace wavo::testing {

/// A new folder of this user alone under the temporary one, removed with all it holds.
class TemporaryFolder {
 public:
    TemporaryFolder()
        : m_path(std::filesystem::temp_directory_path() /
                 ("wavo-support-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(m_path);
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] std::string path() const { return m_path.string(); }
    [[nodiscard]] std::string File(const std::string& name) const {
        return (m_path / name).string();
    }

    /// Contents of a file; empty when there is none.
    [[nodiscard]] std::string Read(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(m_path / name, std::ios::binary).rdbuf();
        return text.str();
    }

    [[nodiscard]] std::vector<std::string> Lines(const std::string& name) const {
        std::istringstream text(Read(name));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

 private:
    const std::filesystem::path m_path;
};

}  // namespace wavo::testing

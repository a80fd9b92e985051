// A machine's INI file, as LinuxCNC reads it.
//
// Entries are KEY = value below [SECTION]; names are told apart by case, a key may stand there more
// than once. Lines that begin with "#" or ";" are comments, a backslash at the end of a line joins
// it with the next one, "#INCLUDE FILE" puts another file in its place.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::master {

class MachineIni {
 public:
    /// Gives the text of a file; nothing when it cannot be read.
    using ReadFile = std::function<std::optional<std::string>(const std::string& path)>;

    /// Reads the file and those that it includes. Nothing on failure; `*error` then says in words
    /// which file is not there.
    static std::optional<MachineIni> Read(const std::string& path, const ReadFile& read_file,
                                          std::string* error);

    /// The first value of a key.
    [[nodiscard]] std::optional<std::string> Find(const std::string& section,
                                                  const std::string& key) const;

    /// All values of a key, in order.
    [[nodiscard]] std::vector<std::string> FindAll(const std::string& section,
                                                   const std::string& key) const;

    /// The number that the first value of a key begins with; nothing when there is none.
    [[nodiscard]] std::optional<double> Number(const std::string& section,
                                               const std::string& key) const;

 private:
    struct Entry {
        std::string key;
        std::string value;
    };

    bool Add(const std::string& path, const ReadFile& read_file, int depth, std::string* error);
    void AddLine(std::string_view line);

    std::map<std::string, std::vector<Entry>> m_sections;
    std::string m_section;  ///< the one that is being read
};

/// The folder that a path names a file in, with the separator; empty for the current one.
std::string FolderOf(const std::string& path);

}  // namespace wavo::master

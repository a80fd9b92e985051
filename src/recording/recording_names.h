// Names of recordings that belong together: NAME.mcap, NAME-2.mcap, NAME-3.mcap and so on.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recording/recording_writer.h"
#include "support/fault.h"

namespace wavo::recording {

inline constexpr std::string_view kExtension = ".mcap";

class RecordingNames {
 public:
    /// `path` names the first one, with or without ".mcap".
    explicit RecordingNames(const std::string& path);

    [[nodiscard]] std::string PathOf(std::uint64_t number) const;
    /// The number of a file in the same folder; nothing when its name is another one.
    [[nodiscard]] std::optional<std::uint64_t> NumberOf(std::string_view file_name) const;
    /// The folder with its separator; empty for the current one.
    [[nodiscard]] const std::string& Folder() const { return m_folder; }

    struct File {
        std::uint64_t number = 0;
        std::uint64_t size = 0;
    };
    /// The recordings of these names that are there, by number. Empty when that cannot be told.
    [[nodiscard]] std::vector<File> Files() const;

    /// Makes the next recording: the first one when there is none of these names, else one more
    /// than the highest number. Nothing that is there is ever replaced, whoever makes files
    /// meanwhile.
    [[nodiscard]] Expected<std::unique_ptr<RecordingWriter>> CreateNext(
        const RecordingHead& head, const std::optional<GraphFile>& graph_file) const;

 private:
    std::string m_folder;
    std::string m_base;
};

/// The recordings that stand before and behind one in the numbers of their names: those beside
/// NAME-2.mcap are NAME.mcap and NAME-3.mcap, or what comes next where numbers are missing.
struct Neighbours {
    std::string previous;  ///< path; empty: none
    std::string next;

    friend bool operator==(const Neighbours&, const Neighbours&) = default;
};
[[nodiscard]] Neighbours NeighboursOf(const std::string& path);

}  // namespace wavo::recording

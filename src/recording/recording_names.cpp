#include "recording/recording_names.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/data_file.h"
#include "platform/folders.h"

namespace wavo::recording {

namespace {

/// Others that make files of the same names at the same time are given way so many times.
constexpr int kMostTries = 1000;

/// The name of the first recording of those that one belongs to.
std::string FirstOf(const std::string& path) {
    const std::size_t end = path.size() - kExtension.size();
    const std::size_t digits = path.find_last_not_of("0123456789", end - 1) + 1;
    const bool is_numbered = digits > 1 && digits < end && path[digits - 1] == '-';
    const std::string first =
        is_numbered ? path.substr(0, digits - 1) + std::string(kExtension) : path;
    const std::size_t name = path.rfind(platform::PathSeparator()) + 1;
    return RecordingNames(first).NumberOf(std::string_view(path).substr(name)) ? first : path;
}

}  // namespace

RecordingNames::RecordingNames(const std::string& path) {
    const std::size_t end = path.rfind(platform::PathSeparator());
    const std::size_t name = end == std::string::npos ? 0 : end + 1;
    m_folder = path.substr(0, name);
    m_base = path.substr(name);
    if (m_base.size() > kExtension.size() && m_base.ends_with(kExtension)) {
        m_base.resize(m_base.size() - kExtension.size());
    }
}

std::string RecordingNames::PathOf(std::uint64_t number) const {
    const std::string suffix = number > 1 ? "-" + std::to_string(number) : "";
    return m_folder + m_base + suffix + std::string(kExtension);
}

std::optional<std::uint64_t> RecordingNames::NumberOf(std::string_view file_name) const {
    if (!file_name.starts_with(m_base) || !file_name.ends_with(kExtension) ||
        file_name.size() < m_base.size() + kExtension.size()) {
        return std::nullopt;
    }
    file_name.remove_prefix(m_base.size());
    file_name.remove_suffix(kExtension.size());
    if (file_name.empty()) {
        return 1;
    }
    if (file_name[0] != '-') {
        return std::nullopt;
    }
    file_name.remove_prefix(1);
    std::uint64_t number = 0;
    const char* const end = file_name.data() + file_name.size();
    const auto result = std::from_chars(file_name.data(), end, number);
    const bool is_ours = result.ec == std::errc() && result.ptr == end && number > 1 &&
                         file_name == std::to_string(number);  // no zeros in front
    return is_ours ? std::optional(number) : std::nullopt;
}

std::vector<RecordingNames::File> RecordingNames::Files() const {
    std::vector<platform::FolderFile> all;
    std::vector<File> files;
    platform::DataFiles().List(m_folder, all);
    for (const platform::FolderFile& file : all) {
        if (const std::optional<std::uint64_t> number = NumberOf(file.name)) {
            files.push_back({*number, file.size});
        }
    }
    std::sort(files.begin(), files.end(),
              [](const File& a, const File& b) { return a.number < b.number; });
    return files;
}

Expected<std::unique_ptr<RecordingWriter>> RecordingNames::CreateNext(
    const RecordingHead& head, const std::optional<GraphFile>& graph_file) const {
    const std::vector<File> files = Files();
    std::uint64_t number = files.empty() ? 1 : files.back().number + 1;
    for (int tries = 0;; ++tries, ++number) {
        auto writer = RecordingWriter::Create(PathOf(number), head, graph_file);
        if (writer || tries == kMostTries ||
            writer.Why().code != static_cast<int>(RecordingFault::kExists)) {
            return writer;
        }
    }
}

Neighbours NeighboursOf(const std::string& path) {
    Neighbours neighbours;
    if (path.size() <= kExtension.size() || !path.ends_with(kExtension)) {
        return neighbours;
    }
    const RecordingNames names(FirstOf(path));
    const std::uint64_t own =
        names.NumberOf(std::string_view(path).substr(names.Folder().size())).value_or(1);
    for (const RecordingNames::File& file : names.Files()) {
        if (file.number < own) {
            neighbours.previous = names.PathOf(file.number);
        } else if (file.number > own && neighbours.next.empty()) {
            neighbours.next = names.PathOf(file.number);
        }
    }
    return neighbours;
}

}  // namespace wavo::recording

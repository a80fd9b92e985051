#include "programs/table_file.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <span>
#include <utility>

#include "platform/data_file.h"
#include "platform/file_name.h"
#include "recording/recording_file.h"
#include "recording/recording_reader.h"
#include "support/file_name.h"
#include "tables/table_bytes.h"

namespace wavo::programs {

namespace {

/// Values that a report can be made of at once.
constexpr std::uint64_t kMostValues = std::uint64_t{1} << 28U;

measure::Told<TableFile> ReadRecording(recording::RecordingReader& reader) {
    TableFile file;
    file.table.names = reader.Head().axis_names;
    file.cycle_time = reader.Head().cycle_time;
    const std::uint64_t first = reader.FirstLine();
    const std::uint64_t lines = reader.EndLine() - first;
    if (lines == 0) {
        return measure::Told<TableFile>::Not(reader.path() + ": no lines of values");
    }
    if (lines > kMostValues / std::max<std::size_t>(file.table.names.size(), 1)) {
        return measure::Told<TableFile>::Not(
            reader.path() + ": too long for a report; export the part that it is about");
    }
    for (std::size_t axis = 0; axis < file.table.names.size(); ++axis) {
        auto& column = file.table.columns.emplace_back(static_cast<std::size_t>(lines));
        reader.ReadValues(axis, 0, first, std::numeric_limits<double>::quiet_NaN(), column);
    }
    file.notes = reader.Notices();
    if (!reader.IsComplete()) {
        file.notes.push_back(reader.CutOffText());
    }
    return file;
}

}  // namespace

measure::Told<std::string> ReadWholeFile(const std::string& path) {
    using Result = measure::Told<std::string>;
    const recording::RecordingFile file(platform::DataFiles().OpenForReading(path));
    if (!file.IsOpen()) {
        return Result::Not(path + ": no such file");
    }
    std::uint64_t size = 0;
    const bool is_told = platform::DataFiles().Size(file.handle(), size);
    std::string text(is_told ? static_cast<std::size_t>(size) : 0, '\0');
    if (!is_told || !file.ReadAt(0, std::as_writable_bytes(std::span(text)))) {
        return Result::Not(path + ": cannot be read");
    }
    return text;
}

bool WriteWholeFile(const std::string& path, const std::string& text) {
    if (!IsFileName(path)) {
        return false;
    }
    std::ofstream stream(platform::StreamPath(path), std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    return !stream.fail();
}

measure::Told<TableFile> ReadTable(const std::string& path) {
    using Result = measure::Told<TableFile>;
    auto recording = recording::RecordingReader::Open(path);
    if (recording) {
        return ReadRecording(**recording);
    }
    constexpr auto kOpenedNot = static_cast<int>(recording::RecordingFault::kCannotOpen);
    constexpr auto kSomethingElse = static_cast<int>(recording::RecordingFault::kNotRecording);
    if (recording.Why().code != kOpenedNot && recording.Why().code != kSomethingElse) {
        return Result::Not(recording.Why().text);
    }
    auto bytes = tables::TableBytes::Open(path);
    if (!bytes) {
        return Result::Not(bytes.Why().text);
    }
    auto table = tables::ReadColumns(std::move(*bytes));
    if (!table) {
        return Result::Not(path + ": " + table.Why().text);
    }
    return TableFile{std::move(*table), std::nullopt, {}};
}

}  // namespace wavo::programs

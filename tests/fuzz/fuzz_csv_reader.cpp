// Any bytes as a table: reading, looking at its beginning and importing it end in bounded memory,
// and what is read does not depend on where the buffer ends or on the size of the steps. The first
// byte of an input chooses separator, buffer and time; the rest is the file.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "check.h"
#include "memory_data_files.h"
#include "platform/process.h"
#include "recording/recording_reader.h"
#include "tables/column_table.h"
#include "tables/table_import.h"

namespace wavo::tables {
namespace {

/// Bytes that gzip makes of one, at most.
constexpr std::size_t kMostUnpacked = 1100;
/// Steps that the import of an input of this size may take.
constexpr int kMostSteps = 10'000;

using CutField = std::tuple<std::string, bool, FieldFault, std::uint64_t>;

/// All fields; empty when one is too long for the buffer.
std::vector<CutField> Cut(std::string_view text, char separator, std::size_t buffer_size,
                          bool& is_whole) {
    const auto bytes = TableBytes::Of(text);
    FieldCutter cutter(*bytes, buffer_size);
    cutter.SetSeparator(separator);
    std::vector<CutField> fields;
    is_whole = true;
    for (Field field; cutter.Next(field) == FieldCutter::Cut::kField;) {
        is_whole = is_whole && field.fault != FieldFault::kTooLong;
        fields.emplace_back(field.text, field.is_last, field.fault, cutter.LineNumber());
    }
    CHECK(fields.empty() || std::get<1>(fields.back()));
    CHECK(fields.size() <= kMostUnpacked * text.size() + 1);
    return fields;
}

void CheckCutter(std::string_view text, unsigned choice) {
    constexpr char kSeparators[] = {',', ';', '\t', ' '};
    const char separator = kSeparators[choice % 4];
    bool is_whole = true;
    const auto expected = Cut(text, separator, FieldCutter::kLongestField, is_whole);
    const bool can_compare = is_whole;
    const auto fields = Cut(text, separator, 4 + choice / 4 % 32, is_whole);
    CHECK(!can_compare || !is_whole || fields == expected);
}

void CheckColumns(std::string_view text) {
    const auto table = ParseColumns(text);
    if (!table) {
        CHECK(!table.Why().text.empty());
        return;
    }
    CHECK(table->Lines() > 0 && table->names.size() == table->columns.size());
    for (const auto& column : table->columns) {
        CHECK(column.size() == table->Lines());
    }
}

void CheckRecording(const TableImport& import, const std::string& path) {
    auto reader = recording::RecordingReader::Open(path);
    CHECK(reader);
    CHECK((*reader)->IsComplete() && (*reader)->LineCount() > 0);
    CHECK((*reader)->Head().cycle_time == import.CycleTime());
    std::vector<double> line((*reader)->Head().axis_names.size());
    CHECK((*reader)->ReadLine((*reader)->FirstLine(), line));
    CHECK((*reader)->ReadLine((*reader)->EndLine() - 1, line));
    CHECK((*reader)->Notices().empty());
}

void CheckImport(const std::string& path, unsigned choice) {
    const auto preview = PreviewTable(path);
    if (!preview) {
        CHECK(preview.Why().text.starts_with(path + ": "));
        return;
    }
    CHECK(preview->names.size() == preview->is_text.size() && !preview->names.empty());
    TimeChoice time = preview->guess.value_or(TimeChoice());
    if ((choice & 1U) != 0) {
        time.column = choice / 2 % preview->names.size();
    }
    wavo::testing::MemoryDataFiles files;
    auto import = TableImport::Begin(*preview, time, "folder", "fuzzer");
    if (!import) {
        CHECK(!import.Why().text.empty());
        return;
    }
    StepState state = StepState::kWorking;
    for (int steps = 0; state == StepState::kWorking; ++steps) {
        CHECK(steps < kMostSteps);
        state = (*import)->Step();
    }
    if (state == StepState::kFailed) {
        CHECK(!(*import)->Why().text.empty());
        return;
    }
    const TemporaryRecording recording = (*import)->Take();
    CheckRecording(**import, recording.Path());
}

/// The file that the inputs go through.
const std::string& InputPath() {
    static const std::string path = (std::filesystem::temp_directory_path() /
                                     ("wavo-fuzz-" + std::to_string(platform::ProcessId())))
                                        .string();
    static const int removes_it = std::atexit([] { std::remove(InputPath().c_str()); });
    static_cast<void>(removes_it);
    return path;
}

}  // namespace
}  // namespace wavo::tables

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    wavo::tables::CheckCutter(text, data[0]);
    wavo::tables::CheckColumns(text);
    std::ofstream(wavo::tables::InputPath(), std::ios::binary) << text;
    wavo::tables::CheckImport(wavo::tables::InputPath(), data[0]);
    return 0;
}

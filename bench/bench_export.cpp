// Writing 1e6 rows of 4 columns to a text file, ns per number.
//
// The values are those of a machine: positions, a velocity and an acceleration. All three write the
// same bytes over the same file in pieces of the same size, without a flush to the device. The
// limit has the text ready.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "bench/bench_common.h"
#include "platform/file.h"
#include "session/save_values.h"

namespace {

constexpr std::size_t kRows = 1'000'000;
constexpr std::size_t kColumns = 4;
constexpr std::size_t kPiece = 1U << 16U;
/// Largest text of a number here, and what follows it.
constexpr std::size_t kLongestNumber = 400;

using Columns = std::array<std::vector<double>, kColumns>;

const Columns& Values() {
    static const Columns values = [] {
        Columns columns;
        std::uint32_t noise = 1;
        for (std::size_t i = 0; i < kRows; ++i) {
            noise = noise * 1664525U + 1013904223U;
            const double wobble = static_cast<double>(noise >> 8U) * 1e-9;
            const double angle = static_cast<double>(i) * 1e-4;
            columns[0].push_back(50.0 * std::cos(angle) + wobble);
            columns[1].push_back(250.0 * std::sin(angle) + wobble);
            columns[2].push_back(-50.0 * std::sin(angle) / 0.004 * 1e-3 - wobble);
            columns[3].push_back(3000.0 * std::cos(3.0 * angle) + wobble);
        }
        return columns;
    }();
    return values;
}

/// The file that is written, removed at the end of the program.
class TextFile {
 public:
    TextFile()
        : m_path((std::filesystem::temp_directory_path() / "wavo-bench-export").string() +
                 std::to_string(
                     std::filesystem::file_time_type::clock::now().time_since_epoch().count()) +
                 ".txt") {}
    ~TextFile() {
        std::error_code error;
        std::filesystem::remove(m_path, error);
    }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

 private:
    const std::string m_path;
};

const std::string& TextPath() {
    static const TextFile file;
    return file.path();
}

bool WriteOurs() {
    static wavo::SaveValues values;
    static const bool is_filled = [] {
        constexpr std::array<const char*, kColumns> names{"X", "Y", "X'", "X''"};
        for (std::size_t c = 0; c < kColumns; ++c) {
            values.FindOrAddColumn(names[c]) = Values()[c];
        }
        wavo::ExportSettings settings;
        settings.data_file = TextPath();
        values.SetSettings(settings);
        return true;
    }();
    return is_filled && values.CreateDataFile();
}

class PlainFile {
 public:
    PlainFile()
        : m_file(
              m_files.OpenForWriting(TextPath(), wavo::platform::Creation::kCreateAlways, false)) {}
    [[nodiscard]] bool Write(const char* text, std::size_t size) {
        std::size_t count = 0;
        return m_files.Write(m_file, text, size, count) && count == size;
    }
    [[nodiscard]] bool Close() { return m_files.Close(m_file); }

 private:
    wavo::platform::FileOperations& m_files = wavo::platform::SystemFiles();
    wavo::platform::FileHandle m_file;
};

bool WriteRival() {
    PlainFile file;
    constexpr char kHeader[] = "X,Y,X',X''\r\n";
    bool written = file.Write(kHeader, sizeof kHeader - 1);
    std::vector<char> piece(kPiece + kColumns * kLongestNumber);
    const Columns& columns = Values();
    for (std::size_t row = 0; row < kRows && written;) {
        char* to = piece.data();
        for (; row < kRows && to < piece.data() + kPiece; ++row) {
            for (std::size_t c = 0; c < kColumns; ++c) {
                to = std::to_chars(to, to + kLongestNumber, columns[c][row],
                                   std::chars_format::fixed, 6)
                         .ptr;
                *to++ = ',';
            }
            to[-1] = '\r';
            *to++ = '\n';
        }
        written = file.Write(piece.data(), static_cast<std::size_t>(to - piece.data()));
    }
    return file.Close() && written;
}

std::string TextOf(bool (*write)()) {
    write();
    std::ifstream file(TextPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void ExportOurs(benchmark::State& state) {
    if (TextOf(WriteOurs) != TextOf(WriteRival)) {
        state.SkipWithError("the files differ");
        return;
    }
    for (auto _ : state) {
        if (!WriteOurs()) {
            state.SkipWithError("the file could not be written");
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kRows * kColumns);
}

void ExportRival(benchmark::State& state) {
    for (auto _ : state) {
        if (!WriteRival()) {
            state.SkipWithError("the file could not be written");
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kRows * kColumns);
    state.SetLabel("std::to_chars");
}

void ExportLimit(benchmark::State& state) {
    const std::string text = TextOf(WriteRival);
    for (auto _ : state) {
        PlainFile file;
        bool written = true;
        for (std::size_t begin = 0; begin < text.size() && written; begin += kPiece) {
            written = file.Write(text.data() + begin, std::min(kPiece, text.size() - begin));
        }
        if (!file.Close() || !written) {
            state.SkipWithError("the file could not be written");
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kRows * kColumns);
    state.SetLabel("plain write");
}

BENCHMARK(ExportOurs)->Name("export_text/ours");
BENCHMARK(ExportRival)->Name("export_text/rival");
BENCHMARK(ExportLimit)->Name("export_text/limit");

}  // namespace

BENCHMARK_MAIN();

// Reading and saving an INI file of 1 MB with 34,000 values and comments, ns per value.
//
// ini_parse: the file is opened, read and taken in; the store is thrown away. The limit reads the
// same bytes into memory. ini_save: the unchanged store is written over its file, without a flush
// to the device. The limit writes the same bytes over the same file in one call.
// Bytes as they are, as ours takes them: the fastest that the rival can do.
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "bench/bench_common.h"
#include "platform/file.h"
#include "support/fast_file.h"
#include "support/mini_data.h"

namespace {

constexpr std::size_t kSections = 680;
constexpr std::size_t kValuesPerSection = 50;
constexpr std::size_t kValues = kSections * kValuesPerSection;

std::string MakeContent() {
    std::string content = "; settings of many graphs\r\n";
    std::uint32_t random = 1;
    for (std::size_t section = 0; section < kSections; ++section) {
        content += "\r\n# graph number " + std::to_string(section) + "\r\n";
        content += "[Graph" + std::to_string(section) + "]\r\n";
        for (std::size_t value = 0; value < kValuesPerSection; ++value) {
            random = random * 1664525U + 1013904223U;
            content += "GuidingCircle" + std::to_string(value) + "=" + std::to_string(random >> 2) +
                       (value % 3 == 0 ? ".125" : "") + "\r\n";
        }
    }
    return content;
}

/// The file that is read and saved, removed at the end of the program.
class IniFile {
 public:
    IniFile()
        : m_path((std::filesystem::temp_directory_path() / "wavo-bench-ini").string() +
                 std::to_string(
                     std::filesystem::file_time_type::clock::now().time_since_epoch().count()) +
                 ".ini") {
        const std::string content = MakeContent();
        wavo::MFastFile_WriteAtOnce(m_path, content.data(), content.size(), wavo::kWriteOverwrite);
    }
    ~IniFile() {
        std::error_code error;
        std::filesystem::remove(m_path, error);
    }
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

 private:
    const std::string m_path;
};

const std::string& IniPath() {
    static const IniFile file;
    return file.path();
}

void ParseOurs(benchmark::State& state) {
    std::string value;
    for (auto _ : state) {
        wavo::MIniData store;
        if (!store.Open(IniPath()) || !store.GetStringEntry("Graph679", "GuidingCircle49", value)) {
            state.SkipWithError(store.LastErrorText().c_str());
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kValues);
}

void ParseRival(benchmark::State& state) {
    for (auto _ : state) {
        CSimpleIniCaseA store;
        if (store.LoadFile(IniPath().c_str()) != SI_OK ||
            store.GetValue("Graph679", "GuidingCircle49") == nullptr) {
            state.SkipWithError("the file could not be read");
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kValues);
    state.SetLabel("SimpleIni");
}

void ParseLimit(benchmark::State& state) {
    const std::size_t size = std::filesystem::file_size(IniPath());
    const auto buffer = std::make_unique<char[]>(size);
    wavo::platform::FileOperations& files = wavo::platform::SystemFiles();
    for (auto _ : state) {
        const wavo::platform::FileHandle file = files.OpenForReading(IniPath());
        std::size_t count = 0;
        if (!files.Read(file, buffer.get(), size, count) || count != size || !files.Close(file)) {
            state.SkipWithError("the file could not be read");
            return;
        }
        benchmark::ClobberMemory();
    }
    wavo::bench::SetTimePerItem(state, kValues);
    state.SetLabel("plain read");
}

void SaveOurs(benchmark::State& state) {
    wavo::MIniData store;
    if (!store.Open(IniPath())) {
        state.SkipWithError(store.LastErrorText().c_str());
        return;
    }
    for (auto _ : state) {
        if (!store.Save()) {
            state.SkipWithError(store.LastErrorText().c_str());
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kValues);
}

void SaveRival(benchmark::State& state) {
    CSimpleIniCaseA store;
    if (store.LoadFile(IniPath().c_str()) != SI_OK) {
        state.SkipWithError("the file could not be read");
        return;
    }
    const std::string copy = IniPath() + ".rival";
    for (auto _ : state) {
        if (store.SaveFile(copy.c_str(), false) != SI_OK) {
            state.SkipWithError("the file could not be written");
            break;
        }
    }
    std::filesystem::remove(copy);
    wavo::bench::SetTimePerItem(state, kValues);
    state.SetLabel("SimpleIni");
}

void SaveLimit(benchmark::State& state) {
    const std::string content = MakeContent();
    wavo::platform::FileOperations& files = wavo::platform::SystemFiles();
    const std::string copy = IniPath() + ".limit";
    for (auto _ : state) {
        const wavo::platform::FileHandle file =
            files.OpenForWriting(copy, wavo::platform::Creation::kCreateAlways, false);
        std::size_t count = 0;
        if (!files.Write(file, content.data(), content.size(), count) || count != content.size() ||
            !files.Close(file)) {
            state.SkipWithError("the file could not be written");
            break;
        }
    }
    std::filesystem::remove(copy);
    wavo::bench::SetTimePerItem(state, kValues);
    state.SetLabel("plain write");
}

BENCHMARK(ParseOurs)->Name("ini_parse/ours");
BENCHMARK(ParseRival)->Name("ini_parse/rival");
BENCHMARK(ParseLimit)->Name("ini_parse/limit");
BENCHMARK(SaveOurs)->Name("ini_save/ours");
BENCHMARK(SaveRival)->Name("ini_save/rival");
BENCHMARK(SaveLimit)->Name("ini_save/limit");

}  // namespace

BENCHMARK_MAIN();

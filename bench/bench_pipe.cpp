// Lines of eight numbers that come through a pipe, ns per line.
//
// pipe/8: the lines that `cat` writes are cut, read and published into a value FIFO, as wavo_pipe
// does. The rival reads them into values with std::from_chars and keeps none of them. The limit
// takes the bytes out of the pipe.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "master/line_fifo_writer.h"
#include "master/pipe/line_cutter.h"
#include "master/pipe/number_stream.h"

namespace {

using namespace wavo::master;

constexpr std::size_t kLines = 500000;
constexpr std::size_t kColumns = 8;

/// A text file of lines with millimetres in them, removed at the end of the program.
class TextFile {
 public:
    TextFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("wavo-bench-pipe" +
                  std::to_string(
                      std::filesystem::file_time_type::clock::now().time_since_epoch().count()))) {
        std::mt19937 random(1);
        std::ofstream file(m_path);
        for (std::size_t line = 0; line < kLines; ++line) {
            for (std::size_t column = 0; column < kColumns; ++column) {
                char number[32];
                std::snprintf(number, sizeof number, "%.3f",
                              static_cast<double>(random() % 200000) / 1000.0 - 100.0);
                file << number << (column + 1 < kColumns ? ' ' : '\n');
            }
        }
    }
    ~TextFile() {
        std::error_code error;
        std::filesystem::remove(m_path, error);
    }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    [[nodiscard]] std::string path() const { return m_path.string(); }

 private:
    const std::filesystem::path m_path;
};

/// What another process writes of the file.
class Cat {
 public:
    Cat() {
        static const TextFile file;
        m_pipe = ::popen(("cat " + file.path()).c_str(), "r");
    }
    ~Cat() { ::pclose(m_pipe); }
    Cat(const Cat&) = delete;
    Cat& operator=(const Cat&) = delete;

    std::size_t Read(std::span<char> room) {
        const ssize_t count = ::read(::fileno(m_pipe), room.data(), room.size());
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }

 private:
    std::FILE* m_pipe = nullptr;
};

/// A value FIFO whose reader takes all lines as soon as it is full.
class FifoSink : public LineSink {
 public:
    bool Begin(const std::vector<std::string>& axes, double /*cycle_time*/) override {
        m_fifo = LineFifoWriter::Create("wavo-bench-pipe", axes.size(), 10000);
        return static_cast<bool>(m_fifo);
    }
    bool Line(std::span<const double> values) override {
        if (!m_fifo.Push(values)) {
            m_fifo.Clear();
            m_fifo.Push(values);
        }
        ++m_lines;
        return true;
    }
    [[nodiscard]] std::size_t lines() const { return m_lines; }

 private:
    LineFifoWriter m_fifo;
    std::size_t m_lines = 0;
};

void PipeOurs(benchmark::State& state) {
    for (auto _ : state) {
        FifoSink sink;
        Reports reports([](const std::string&) {});
        StreamOptions options;
        options.axes = {"a", "b", "c", "d", "e", "f", "g", "h"};
        options.cycle_time = 0.001;
        NumberStream stream(options, sink, reports, reports);
        stream.Start();
        LineCutter cutter;
        Cat cat;
        for (std::size_t count = 1; count > 0;) {
            count = cat.Read(cutter.Room());
            cutter.Add(count);
            for (std::string_view line; cutter.Next(&line) == LineCutter::Piece::kLine;) {
                stream.Take(line);
            }
        }
        if (sink.lines() != kLines || reports.count() != 0) {
            state.SkipWithError("lines are missing");
            return;
        }
    }
    wavo::bench::SetTimePerItem(state, kLines);
}

void PipeRival(benchmark::State& state) {
    std::vector<char> buffer(128 * 1024);
    for (auto _ : state) {
        Cat cat;
        std::size_t kept = 0;
        std::array<double, kColumns> values{};
        for (;;) {
            const std::size_t count = cat.Read(std::span(buffer).subspan(kept, 64 * 1024));
            if (count == 0) {
                break;
            }
            const char* at = buffer.data();
            const char* const end = at + kept + count;
            while (const void* line_end =
                       std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
                for (double& value : values) {
                    at = std::from_chars(at, end, value).ptr + 1;
                }
                benchmark::DoNotOptimize(values);
                at = static_cast<const char*>(line_end) + 1;
            }
            kept = static_cast<std::size_t>(end - at);
            std::memmove(buffer.data(), at, kept);
        }
    }
    wavo::bench::SetTimePerItem(state, kLines);
    state.SetLabel("cat into a loop of from_chars");
}

void PipeLimit(benchmark::State& state) {
    std::vector<char> buffer(64 * 1024);
    for (auto _ : state) {
        Cat cat;
        while (cat.Read(buffer) > 0) {
            benchmark::DoNotOptimize(buffer.data());
        }
    }
    wavo::bench::SetTimePerItem(state, kLines);
    state.SetLabel("plain read");
}

BENCHMARK(PipeOurs)->Name("pipe/8/ours")->UseRealTime();
BENCHMARK(PipeRival)->Name("pipe/8/rival")->UseRealTime();
BENCHMARK(PipeLimit)->Name("pipe/8/limit")->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

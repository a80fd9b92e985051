// A writer in another process at full speed: every line that the reader accepts is the one that
// was written, whole and in its place.
//
// Beside programs that take the processors each turn of a small ring waits for theirs: a run ends
// after kLongest with the lines that it got by then. WAVO_TORN_VALUE_LINES sets a number of lines,
// and all of them are awaited.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "link/ax_value_reader.h"
#include "master/line_fifo_writer.h"
#include "platform/child_process.h"

namespace wavo {
namespace {

using master::LineFifoWriter;
using testing::ChildProcess;
using testing::NumberPipe;

using Clock = std::chrono::steady_clock;

constexpr std::uint64_t kUsualLines = 10'000'000;
constexpr std::uint64_t kFewestLines = 1000;
constexpr std::chrono::seconds kLongest{10};

/// The number of lines that was asked for; null: none was.
const char* WantedLines() {
    return std::getenv("WAVO_TORN_VALUE_LINES");
}

std::uint64_t LinesOfThisRun() {
    const char* const wanted = WantedLines();
    return wanted == nullptr ? kUsualLines : std::strtoull(wanted, nullptr, 10);
}

std::uint64_t Mix(std::uint64_t number) {
    number = (number ^ number >> 31U) * 0x7FB5D329728EA185U;
    return number ^ number >> 27U;
}

/// Line number `number`: the number, words that follow from it, and the sum of all of them. The
/// words travel as the bits of doubles.
template <std::size_t kAxes>
void MakeLine(std::uint64_t number, std::array<double, kAxes>& line) {
    std::array<std::uint64_t, kAxes> words{};
    words[0] = number;
    std::uint64_t sum = number;
    for (std::size_t i = 1; i + 1 < kAxes; ++i) {
        words[i] = Mix(number * kAxes + i);
        sum += words[i];
    }
    words[kAxes - 1] = sum;
    std::memcpy(line.data(), words.data(), sizeof words);
}

struct Shape {
    std::uint64_t ring;   ///< slots
    std::uint64_t share;  ///< of all lines, one in so many
};

class TornValues : public ::testing::TestWithParam<Shape> {
 protected:
    template <std::size_t kAxes>
    void Run(std::uint64_t lines);

    // Not the name of a value FIFO: a master that starts removes those that are left over.
    const std::string m_name = "wavo-test-torn-" + std::to_string(::getpid());
};

template <std::size_t kAxes>
void TornValues::Run(std::uint64_t lines) {
    const std::uint64_t ring = GetParam().ring;
    ChildProcess writer([&](NumberPipe& pipe) {
        LineFifoWriter fifo = LineFifoWriter::Create(m_name, kAxes, ring);
        pipe.Put(fifo ? 1 : 0);
        std::array<double, kAxes> line{};
        for (std::uint64_t number = 0; number < lines; ++number) {
            MakeLine(number, line);
            while (!fifo.Push(line)) {
                std::this_thread::yield();  // there may be one processor only
            }
        }
        pipe.Get();
        return 0;
    });
    ASSERT_EQ(writer.pipe().Get(), 1U);
    AxValueReader reader;
    ASSERT_TRUE(reader.Open(m_name.c_str()));
    std::vector<double> buffer(kAxes * ring);
    std::array<double, kAxes> expected{};
    std::uint64_t number = 0;
    std::uint64_t wrong = 0;
    const bool is_bounded = WantedLines() == nullptr;
    const Clock::time_point end = Clock::now() + kLongest;
    const auto goes_on = [&] {
        return number < lines && (!is_bounded || number < kFewestLines || Clock::now() < end);
    };
    while (goes_on()) {
        const std::uint64_t waiting = reader.LinesWaiting();
        if (waiting == 0) {
            std::this_thread::yield();
            continue;
        }
        ASSERT_TRUE(
            reader.Read(buffer.data(), sizeof expected, waiting, buffer.size() * sizeof(double)));
        for (std::uint64_t i = 0; i < waiting; ++i, ++number) {
            MakeLine(number, expected);
            wrong += std::memcmp(&buffer[i * kAxes], expected.data(), sizeof expected) != 0 ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0U);
    RecordProperty("lines", std::to_string(number));
    if (number == lines) {
        writer.pipe().Put(1);
        EXPECT_EQ(writer.Wait(), 0);
    } else {
        writer.Signal(SIGKILL);
        writer.Wait();
    }
}

TEST_P(TornValues, NoWrongLineIsAccepted) {
    const std::uint64_t lines = LinesOfThisRun() / GetParam().share;
    Run<3>(lines / 2);
    Run<8>(lines - lines / 2);
}

// A ring of two slots has every line in flight at once; large ones let the writer run ahead.
INSTANTIATE_TEST_SUITE_P(
    Rings, TornValues, ::testing::Values(Shape{2, 20}, Shape{3, 20}, Shape{64, 5}, Shape{10000, 1}),
    [](const auto& info) { return "Of" + std::to_string(info.param.ring) + "Slots"; });

}  // namespace
}  // namespace wavo

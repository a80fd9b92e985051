// Segments that change while they are mapped: cut short, made longer, removed, replaced, rewritten.
// Nothing of that ends the reader's process; each is told in the error log and cured by opening
// anew.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "expect_errors.h"
#include "link/ax_value_reader.h"
#include "link/wire_format.h"
#include "master/line_fifo_writer.h"
#include "platform/child_process.h"
#include "platform/shared_memory.h"

namespace wavo {
namespace {

using master::LineFifoWriter;
using platform::SegmentState;
using testing::ChildProcess;
using testing::ExpectAnyErrorLog;
using testing::ExpectErrorLog;
using testing::NumberPipe;

constexpr std::size_t kAxes = 64;
constexpr std::uint64_t kLines = 1000;  // about 126 pages
constexpr std::size_t kLineLength = kAxes * sizeof(double);

/// The segment as any process reaches it.
class Segment {
 public:
    explicit Segment(std::string name) : m_name("/" + std::move(name)) {}

    void Resize(off_t size) const {
        const int file = ::shm_open(m_name.c_str(), O_RDWR, 0);
        ASSERT_GE(file, 0);
        EXPECT_EQ(::ftruncate(file, size), 0);
        ::close(file);
    }
    [[nodiscard]] off_t Size() const {
        const int file = ::shm_open(m_name.c_str(), O_RDONLY, 0);
        struct stat info {};
        EXPECT_EQ(::fstat(file, &info), 0);
        ::close(file);
        return info.st_size;
    }
    void Remove() const { EXPECT_EQ(::shm_unlink(m_name.c_str()), 0); }

 private:
    std::string m_name;
};

class ChangingSegment : public ::testing::Test {
 protected:
    ChangingSegment() { MakeFifo(); }

    void MakeFifo() {
        m_writer = {};
        m_writer = LineFifoWriter::Create(m_name, kAxes, kLines);
        ASSERT_TRUE(m_writer);
    }
    void Push(std::size_t lines) {
        for (std::size_t i = 0; i < lines; ++i) {
            ASSERT_TRUE(m_writer.Push(std::vector<double>(kAxes, ++m_value)));
        }
    }
    bool Read(std::uint64_t lines) {
        return m_reader.Read(m_buffer.data(), kLineLength, lines, m_buffer.size() * sizeof(double));
    }
    [[nodiscard]] std::string Fault(const char* what) const {
        return "AxValueReader::Read(): value fifo " + m_name + " " + what;
    }
    void ExpectWorksWhenOpenedAnew() {
        EXPECT_TRUE(m_reader.IsDamaged());
        EXPECT_FALSE(m_writer.IsIntact());
        m_reader.Close();
        MakeFifo();
        ASSERT_TRUE(m_reader.Open(m_name.c_str()));
        Push(3);
        ASSERT_TRUE(Read(3));
        EXPECT_EQ(m_buffer[2 * kAxes], m_value);
    }

    // Not the name of a value FIFO: a master that starts removes those that are left over.
    const std::string m_name = "wavo-test-changing-" + std::to_string(::getpid());
    const Segment m_segment{m_name};
    LineFifoWriter m_writer;
    AxValueReader m_reader;
    std::vector<double> m_buffer = std::vector<double>(kAxes * kLines);
    double m_value = 0.0;
};

TEST_F(ChangingSegment, CutToAnySizeEndsInTheErrorLog) {
    const off_t whole = m_segment.Size();
    for (const off_t size : {off_t{0}, off_t{1}, off_t{63}, off_t{64}, off_t{4096}, off_t{8192},
                             whole / 2, whole - 1}) {
        SCOPED_TRACE(size);
        ASSERT_TRUE(m_reader.Open(m_name.c_str()));
        Push(900);
        ASSERT_TRUE(Read(m_reader.LinesWaiting()));
        Push(900);
        m_segment.Resize(size);
        {
            const ExpectErrorLog expected({Fault("has changed its size")});
            EXPECT_FALSE(Read(m_reader.LinesWaiting()));
        }
        ExpectWorksWhenOpenedAnew();
    }
}

TEST_F(ChangingSegment, MadeLongerEndsInTheErrorLogToo) {
    ASSERT_TRUE(m_reader.Open(m_name.c_str()));
    Push(1);
    m_segment.Resize(m_segment.Size() + 100000);
    {
        const ExpectErrorLog expected({Fault("has changed its size")});
        EXPECT_FALSE(Read(1));
    }
    ExpectWorksWhenOpenedAnew();
}

TEST_F(ChangingSegment, CutBehindTheFirstLookIsNoticedBeforeALineIsBelieved) {
    // The mapping is touched first behind the end of the segment: what the reader copies is zeros.
    ASSERT_TRUE(m_reader.Open(m_name.c_str()));
    Push(900);
    const std::uint64_t waiting = m_reader.LinesWaiting();
    m_segment.Resize(4096);
    EXPECT_EQ(waiting, 900U);
    {
        const ExpectErrorLog expected({Fault("has changed its size")});
        EXPECT_FALSE(Read(waiting));
    }
    ExpectWorksWhenOpenedAnew();
}

TEST_F(ChangingSegment, RemovedOrReplacedEndsInTheErrorLog) {
    for (const bool replaced : {false, true}) {
        ASSERT_TRUE(m_reader.Open(m_name.c_str()));
        Push(5);
        m_segment.Remove();
        platform::SharedSegment other;
        if (replaced) {
            other = platform::SharedSegment::Create(m_name, 4096);
            ASSERT_TRUE(other);
        }
        {
            const ExpectErrorLog expected({Fault("was removed or replaced")});
            EXPECT_FALSE(Read(5));
        }
        other = {};
        ExpectWorksWhenOpenedAnew();
    }
}

// From here on somebody changes the segment while it is being read: what the reader accepts is
// right, and it always gets to an end.

TEST_F(ChangingSegment, CutAtAnyMomentNeverGivesAWrongLine) {
    constexpr int kRounds = 200;
    constexpr std::uint64_t kBatch = 20;
    std::mt19937 random(8);
    int cut_while_read = 0;
    std::uint64_t accepted = 0;  // lines
    for (int round = 0; round < kRounds; ++round) {
        ASSERT_TRUE(m_reader.Open(m_name.c_str()));
        std::atomic<bool> go{false};
        const auto delay = static_cast<int>(random() % 20000);
        const auto size = static_cast<off_t>(random() % 400000);
        std::thread cutter([&] {
            while (!go.load()) {
            }
            for (std::atomic<int> i{0}; i < delay; ++i) {
            }
            m_segment.Resize(size);
        });
        const ExpectAnyErrorLog expected;
        const std::uint64_t thrown_away = m_reader.LinesThrownAway();
        const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        bool is_wrong = false;
        go.store(true);
        while (!is_wrong && std::chrono::steady_clock::now() < give_up) {
            const double first = m_value + 1;
            for (std::uint64_t i = 0; i < kBatch; ++i) {
                m_writer.Push(std::vector<double>(kAxes, ++m_value));
            }
            if (!Read(kBatch)) {
                break;
            }
            accepted += kBatch;
            for (std::size_t i = 0; i < kBatch * kAxes; ++i) {
                is_wrong = is_wrong || m_buffer[i] != first + static_cast<double>(i / kAxes);
            }
        }
        cutter.join();
        ASSERT_FALSE(is_wrong) << round;
        ASSERT_TRUE(m_reader.IsDamaged()) << round;
        // What was read before the second look at the segment, and not believed.
        cut_while_read += m_reader.LinesThrownAway() != thrown_away ? 1 : 0;
        m_reader.Close();
        MakeFifo();
    }
    EXPECT_GT(accepted, static_cast<std::uint64_t>(kRounds) * kBatch);
    EXPECT_GT(cut_while_read, 0) << "no cut fell within a read";
    RecordProperty("cut_while_read", cut_while_read);
}

/// Somebody who rewrites header words as fast as he can, or at the pace of a reader.
class Vandal {
 public:
    enum class Target { kIndices, kAnyWord };
    Vandal(LineFifoHeader& header, Target target)
        : m_thread([this, &header, target] {
              std::mt19937_64 random(3);
              while (!m_stop.load()) {
                  Rewrite(header, target, random);
                  for (std::atomic<int> i{static_cast<int>(random() % 4000)}; i > 0; --i) {
                  }
              }
          }) {}
    ~Vandal() {
        m_stop.store(true);
        m_thread.join();
    }
    Vandal(const Vandal&) = delete;
    Vandal& operator=(const Vandal&) = delete;

 private:
    static void Rewrite(LineFifoHeader& header, Target target, std::mt19937_64& random) {
        // Mostly the write index, to another slot: the reader believes it and goes on.
        std::uint64_t* word = random() % 16 == 0 ? &header.read_index : &header.write_index;
        std::uint64_t value = random() % 16 == 0 ? random() : random() % kLines;
        if (target == Target::kAnyWord) {
            std::uint64_t* const words[] = {&header.write_index, &header.read_index,
                                            &header.line_size, &header.line_count};
            word = words[random() % 4];
            value = random() % 4 == 0 ? random() : random() % (2 * kLines);
            if (word == &header.line_size) {  // whole values: else halves of two would be read
                value -= value % sizeof(double);
            }
        }
        std::atomic_ref(*word).store(value);
    }

    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class RewrittenSegment : public ChangingSegment {
 protected:
    RewrittenSegment() : m_handle(platform::OpenSharedMemory(m_name)) {
        m_header = static_cast<LineFifoHeader*>(platform::MapSharedMemory(m_handle));
        // Slot k holds k + 1 in each column, the last one of the ring nothing.
        Push(kLines - 1);
    }
    ~RewrittenSegment() override {
        platform::UnmapSharedMemory(m_header, platform::SharedMemorySize(m_header, m_handle));
        platform::CloseSharedMemory(m_handle);
    }

    /// Opens the FIFO and reads it twice; looks at every line with `check` (its values, number).
    void Round(const std::function<void(const double*, std::size_t)>& check) {
        const ExpectAnyErrorLog expected;
        if (!m_reader.Open(m_name.c_str())) {
            ++m_refused;
            m_reader.Close();
            return;
        }
        ++m_opened;
        m_last = -1.0;
        for (int i = 0; i < 2 && !m_reader.IsDamaged(); ++i) {
            const std::uint64_t waiting = m_reader.LinesWaiting();
            ASSERT_LT(waiting, kLines * kLineLength);
            std::fill(m_buffer.begin(), m_buffer.end(), -1.0);
            if (Read(std::min<std::uint64_t>(waiting, kLines))) {
                for (std::size_t line = 0; line < kLines && m_buffer[line * kAxes] != -1.0;
                     ++line, ++m_lines) {
                    check(&m_buffer[line * kAxes], line);
                }
            } else {
                m_failed_otherwise += m_reader.IsDamaged() ? 0 : 1;
                break;
            }
        }
        m_damaged += m_reader.IsDamaged() ? 1 : 0;
        m_reader.Close();
    }

    platform::MappingHandle m_handle;
    LineFifoHeader* m_header;
    double m_last = -1.0;  // value of the line before, of this round
    int m_opened = 0;
    int m_refused = 0;
    int m_damaged = 0;
    int m_failed_otherwise = 0;  ///< reads: slots of the size that was linked are too small
    std::uint64_t m_lines = 0;
};

TEST_F(RewrittenSegment, OfWhichOnlyTheIndicesChangeGivesLinesThatWereWritten) {
    ASSERT_NE(m_header, nullptr);
    constexpr int kRounds = 3000;
    {
        const Vandal vandal(*m_header, Vandal::Target::kIndices);
        for (int round = 0; round < kRounds && !HasFailure(); ++round) {
            SCOPED_TRACE(round);
            Round([this](const double* values, std::size_t line) {
                const double value = values[0];
                ASSERT_TRUE(value >= 0.0 && value < kLines && value == std::floor(value)) << line;
                ASSERT_EQ(std::count(values, values + kAxes, value), kAxes) << "torn, " << line;
                // That of the next slot; that of the same one when the write index was set to it
                // while it was copied.
                const double next = m_last == kLines - 1 ? 0.0 : m_last + 1;
                ASSERT_TRUE(m_last < 0 || value == m_last || value == next)
                    << value << " behind " << m_last;
                m_last = value;
            });
        }
    }
    EXPECT_EQ(m_opened + m_refused, kRounds);
    EXPECT_GT(m_opened, kRounds / 10);
    EXPECT_GT(m_lines, 0U);
    EXPECT_GT(m_damaged, 0);
    EXPECT_EQ(m_failed_otherwise, 0);
    RecordProperty("opened", m_opened);
    RecordProperty("lines", static_cast<int>(m_lines));
}

TEST_F(RewrittenSegment, OfWhichAnyWordChangesNeverHoldsTheReader) {
    ASSERT_NE(m_header, nullptr);
    constexpr int kRounds = 1000;
    {
        const Vandal vandal(*m_header, Vandal::Target::kAnyWord);
        for (int round = 0; round < kRounds && !HasFailure(); ++round) {
            SCOPED_TRACE(round);
            if (round % 4 == 0) {  // not only refused
                std::atomic_ref(m_header->line_size).store(kLineLength);
                std::atomic_ref(m_header->line_count).store(kLines);
                std::atomic_ref(m_header->write_index).store(kLines / 2);
                std::atomic_ref(m_header->read_index).store(0);
            }
            Round([](const double* values, std::size_t line) {
                // Lines of another size are parts of those that were written.
                for (std::size_t i = 0; i < kAxes; ++i) {
                    ASSERT_TRUE(values[i] >= 0.0 && values[i] < kLines &&
                                values[i] == std::floor(values[i]))
                        << line;
                }
            });
        }
    }
    EXPECT_EQ(m_opened + m_refused, kRounds);
    EXPECT_GT(m_opened, 0);
    EXPECT_GT(m_refused, 0);
    RecordProperty("opened", m_opened);
    RecordProperty("lines", static_cast<int>(m_lines));
}

TEST_F(ChangingSegment, CutUnderItsWriterIsNoticedThereToo) {
    ASSERT_TRUE(m_writer.IsIntact());
    m_segment.Resize(0);
    EXPECT_FALSE(m_writer.IsIntact());
    Push(1);  // into zeros of its own
    EXPECT_FALSE(m_writer.IsIntact());
}

// ---- the mappings themselves ----

class CutMapping : public ChangingSegment {
 protected:
    CutMapping() {
        m_handle = platform::OpenSharedMemory(m_name);
        m_bytes = static_cast<volatile char*>(platform::MapSharedMemory(m_handle));
        m_size = platform::SharedMemorySize(Address(), m_handle);
    }
    ~CutMapping() override {
        platform::UnmapSharedMemory(Address(), m_size);
        platform::CloseSharedMemory(m_handle);
    }
    [[nodiscard]] void* Address() const { return const_cast<char*>(m_bytes); }

    platform::MappingHandle m_handle = 0;
    volatile char* m_bytes = nullptr;
    std::uint64_t m_size = 0;
};

TEST_F(CutMapping, BecomesZerosAndSaysSo) {
    Push(900);
    EXPECT_EQ(platform::SharedMemoryState(Address(), m_handle), SegmentState::kWhole);
    EXPECT_NE(m_bytes[33], 0);
    m_segment.Resize(4096);
    EXPECT_EQ(platform::SharedMemoryState(Address(), m_handle), SegmentState::kResized);
    EXPECT_NE(m_bytes[33], 0) << "what is still there is still seen";
    EXPECT_EQ(m_bytes[m_size - 1], 0);
    EXPECT_EQ(m_bytes[33], 0) << "never a header of another time than the body";
    m_bytes[m_size - 1] = 7;
    EXPECT_EQ(m_bytes[m_size - 1], 7);
    EXPECT_EQ(platform::SharedMemorySize(Address(), m_handle), m_size);
    m_segment.Resize(static_cast<off_t>(m_size));
    EXPECT_EQ(platform::SharedMemoryState(Address(), m_handle), SegmentState::kResized)
        << "once lost, always lost";
}

TEST_F(CutMapping, OfOneSegmentLeavesTheOthersAlone) {
    const std::string name = m_name + "_other";
    const platform::SharedSegment other = platform::SharedSegment::Create(name, 8192);
    std::memset(other.data(), 5, 8192);
    m_segment.Resize(0);
    EXPECT_EQ(m_bytes[0], 0);
    EXPECT_EQ(static_cast<char*>(other.data())[8191], 5);
    EXPECT_EQ(other.State(), SegmentState::kWhole);
}

TEST_F(CutMapping, IsRescuedInAnyThreadAtOnce) {
    m_segment.Resize(0);
    std::vector<std::thread> threads;
    std::atomic<int> sum{0};
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (std::uint64_t at = 0; at < m_size; at += 512) {
                sum += m_bytes[at];
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(sum, 0);
}

TEST_F(CutMapping, OtherBusErrorsAreWhatTheyWere) {
    // A mapping that is nobody's: cut under its user it is a crash, as ever.
    ChildProcess child([](NumberPipe&) {
        const int file = ::memfd_create("mapped", 0);
        if (::ftruncate(file, 4096) != 0) {
            return 1;
        }
        auto* const bytes = static_cast<volatile char*>(
            ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
        if (::ftruncate(file, 0) != 0) {
            return 2;
        }
        return bytes[0] + 3;
    });
    const int status = child.Wait();
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 3);
    ChildProcess sent([](NumberPipe&) {
        ::raise(SIGBUS);
        return 0;
    });
    const int sent_status = sent.Wait();
    EXPECT_FALSE(WIFEXITED(sent_status) && WEXITSTATUS(sent_status) == 0);
}

}  // namespace
}  // namespace wavo

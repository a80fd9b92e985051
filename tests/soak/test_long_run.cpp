// The long run: a viewer with 16 graphs beside a master of 64 axes at 4 kHz, and a user who edits,
// zooms and arms triggers all the time. Nothing is lost, every batch is answered once, and the
// memory stays what it is.
//
// WAVO_SOAK_MINUTES sets how long; without it the run is a few seconds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <set>

#include "expect_errors.h"
#include "memory_watch.h"
#include "soak_scene.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using std::chrono::nanoseconds;
using ::testing::IsEmpty;

constexpr std::int64_t kSecondsOfAnOrdinaryTest = 5;
constexpr std::int64_t kStepEvery = 500;  // ms
constexpr unsigned kSeed = 7;

std::int64_t SecondsOfThisRun() {
    const char* const minutes = std::getenv("WAVO_SOAK_MINUTES");
    return minutes == nullptr ? kSecondsOfAnOrdinaryTest
                              : static_cast<std::int64_t>(std::atof(minutes) * 60.0);
}

/// Times in a fixed number of classes, so that a long run needs no more memory than a short one.
class Times {
 public:
    void Add(nanoseconds time) {
        const auto place = static_cast<std::size_t>(std::max<std::int64_t>(0, time / kClass));
        ++m_counts[std::min(place, m_counts.size() - 1)];
        ++m_total;
        m_largest = std::max(m_largest, time);
    }
    /// Milliseconds that `part` of the times do not exceed.
    [[nodiscard]] double Quantile(double part) const {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            sum += m_counts[i];
            if (static_cast<double>(sum) >= part * static_cast<double>(m_total)) {
                return static_cast<double>(i + 1) * static_cast<double>(kClass.count()) / 1e6;
            }
        }
        return 0.0;
    }
    [[nodiscard]] double Largest() const { return static_cast<double>(m_largest.count()) / 1e6; }

 private:
    static constexpr nanoseconds kClass{20000};
    std::vector<std::uint64_t> m_counts = std::vector<std::uint64_t>(50000);
    std::uint64_t m_total = 0;
    nanoseconds m_largest{0};
};

class LongRun : public Viewer {
 protected:
    void Start() {
        m_frame = std::make_unique<CMainFrame>(m_prompts);
        m_frame->show();
        View().OnInitialUpdate(WriteGraphFile(SoakGraphs()));
        QObject::connect(&View().News(), &ViewNews::BatchShown, &View(), [this] {
            m_drawing.Add(Cycle().LastBatchTimes().drawing);
            m_to_ready.Add(Cycle().LastBatchTimes().to_ready);
        });
        const QString recording = m_folder.filePath(QStringLiteral("soak.csv"));
        WriteSoakRecording(recording);
        QStringList axes;
        for (const std::string& name : SoakAxisNames()) {
            axes << QString::fromStdString(name);
        }
        m_master = std::make_unique<DemoMaster>(
            QStringList{"--recording", recording, "--axes", axes.join(u','), "--cycle",
                        QString::number(kSoakCycleTime), "--fifo-lines", "40000"});
        m_frame->Action(CommandId::kConnect)->trigger();
    }

    void Run(std::int64_t seconds) {
        SoakUser user(View(), kSeed);
        const QMetaObject::Connection look = QObject::connect(
            &View().News(), &ViewNews::BatchShown, &View(), [&user] { user.LookForTriggers(); });
        std::set<std::int64_t> seconds_met;  // a busy machine may leave some out
        QElapsedTimer clock;
        clock.start();
        for (std::int64_t due = kStepEvery; clock.elapsed() < 1000 * seconds; due += kStepEvery) {
            QTest::qWait(static_cast<int>(std::max<std::int64_t>(1, due - clock.elapsed())));
            user.Step();
            const std::int64_t second = clock.elapsed() / 1000;
            seconds_met.insert(second);
            m_memory.Sample(second);
            ASSERT_THAT(TakeBoxes(), IsEmpty());
        }
        QObject::disconnect(look);
        ExpectEffects(user.Done());
        EXPECT_GT(m_memory.Smallest(), 1U << 20U) << "bytes";
        EXPECT_EQ(m_memory.Samples(), seconds_met.size());
        EXPECT_EQ(m_memory.First() != 0, seconds > MemoryWatch::kWarmUp);
    }

    /// The user was no idle one.
    static void ExpectEffects(const SoakUser::Deeds& done) {
        std::cout << "user: " << done.edits_shown << " of " << done.edits << " edits shown, "
                  << done.zooms_shown << " of " << done.zooms << " zooms shown, "
                  << done.zooms_undone << " stepped back, " << done.arms << " starts armed "
                  << done.armed << " graphs, " << done.fired << " triggers fired\n";
        EXPECT_GT(done.edits, 0U);
        EXPECT_EQ(done.edits_shown, done.edits);
        EXPECT_EQ(done.edits_not_shown, 0U);
        EXPECT_GT(done.zooms_shown, 0U);
        EXPECT_GE(done.zooms_shown, done.zooms / 2);
        EXPECT_GT(done.arms, 0U);
        EXPECT_GT(done.armed, 0U);
        EXPECT_GT(done.fired, done.arms / 2);
        EXPECT_EQ(done.runs_not_changed, 0U);
    }

    void Print() const {
        constexpr double kMegabyte = 1048576.0;
        std::cout << "paint time (ms): median " << m_drawing.Quantile(0.5) << ", p99 "
                  << m_drawing.Quantile(0.99) << ", largest " << m_drawing.Largest() << "\n"
                  << "batch to ready (ms): median " << m_to_ready.Quantile(0.5) << ", p99 "
                  << m_to_ready.Quantile(0.99) << ", largest " << m_to_ready.Largest() << "\n"
                  << "resident memory (MB): after warm-up "
                  << static_cast<double>(m_memory.First()) / kMegabyte << ", at the end "
                  << static_cast<double>(m_memory.Last()) / kMegabyte << ", largest change "
                  << 100.0 * m_memory.LargestChange() << " %\n"
                  << "by minute: " << m_memory.ByMinute() << "\n";
    }

    std::unique_ptr<DemoMaster> m_master;
    Times m_drawing;
    Times m_to_ready;
    MemoryWatch m_memory;
};

TEST_F(LongRun, LosesNothingAnswersEachBatchOnceAndNeedsNoMoreMemory) {
    // A zoom that comes before its values is refused, and says so.
    const ExpectAnyErrorLog expected;
    Start();
    ASSERT_TRUE(WaitForLines(1000));
    ASSERT_NO_FATAL_FAILURE(Run(SecondsOfThisRun()));
    const auto totals = m_master->End();
    ASSERT_TRUE(totals);
    const LinkCounters counters = Cycle().Counters();
    for (const CounterLine& line : Describe(counters)) {
        std::cout << line.name << ": " << line.count << "\n";
    }
    Print();
    EXPECT_EQ(counters.lines_read, totals->lines_sent);
    EXPECT_EQ(counters.lines_read, counters.lines_shown + counters.lines_not_shown);
    EXPECT_EQ(counters.lines_thrown_away, 0U);
    EXPECT_EQ(counters.batches_announced, counters.batches_answered);
    EXPECT_EQ(counters.batches_answered, totals->batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_LE(m_memory.LargestChange(), 0.02);
}

}  // namespace
}  // namespace wavo::testing

// Start and stop triggers on recorded movements of a machine. What a graph has to show after each
// paint is worked out here from the columns of the recordings alone, and compared at every paint.
//
// How the samples are cut into paints (batches) matters in three places, and in no other:
// 1. Of several entries that fire in one batch the first in axis order wins, though another may
//    have fired at an earlier sample.
// 2. The recorded time is counted from the paint after the one that fires, so the rest of that
//    batch comes on top of the range of the graph.
// 3. Over an axis the end of a recording is not cut: it ends with the batch that reaches it.
#include "recorded_motion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace wavo {
namespace {

using testing::Always;
using testing::BatchKind;
using testing::BatchKinds;
using testing::Column;
using testing::Player;
using testing::PlayToTheEnd;
using testing::ReadMotion;
using testing::Trial;

constexpr auto kStartAbove = TriggerTypeCode::kStartAbove;
constexpr auto kStartBelow = TriggerTypeCode::kStartBelow;
constexpr auto kStopAbove = TriggerTypeCode::kStopAbove;
constexpr auto kStopBelow = TriggerTypeCode::kStopBelow;

const std::string kCircle = "circle_xy_r50.csv.gz";
const std::string kDrill = "drill_g81_g83_g82.csv.gz";
const std::string kHelix = "helix_4axis.csv.gz";
const std::string kRose = "rose_small_segments.csv.gz";

/// One trigger each, and the sample at which it fires: the line of the file, counted from 0 after
/// the names.
struct Row {
    Trial trial;
    std::int64_t fires_at;
};

std::vector<Row> StartRows() {
    return {
        {{kDrill, {{"Z", 0, kStartBelow, 0.0000005}}, 800'000, GraphMode::kClassic}, 756},
        {{kDrill, {{"Z_cmd", 1}, {"Z", 1, kStartBelow, -20.0005}}, 500'000, GraphMode::kClassic},
         504},
        {{kDrill, {{"Z_cmd", 2}, {"Z", 2, kStartBelow, -500.5}}, 500'000}, 404},
        {{kCircle, {{"X", 0, kStartAbove, 49.5000005}, {"Y"}}, 400'000}, 412},
        {{kCircle, {{"Y"}, {"Y", 1, kStartAbove, 40.0005}, {"Y", 2}}, 300'000}, 478},
        {{kHelix, {{"X"}, {"A", 2, kStartAbove, 1200.5}}, 300'000, GraphMode::kClassic}, 10707},
        {{kRose, {{"Z", 1, kStartBelow, -30.0005}, {"X", 1}, {"Y", 1}}, 250'000}, 325},
    };
}

std::vector<Row> StopRows() {
    return {
        {{kDrill, {{"X"}, {"Z", 0, kStopBelow, 0.0000005}}, 700'000}, 756},
        {{kDrill, {{"Z", 1, kStopAbove, 200.0005}}, 300'000, GraphMode::kClassic}, 1365},
        {{kDrill, {{"Z", 2, kStopBelow, -2900.5}, {"Z", 1}, {"Z"}}, 300'000}, 506},
        {{kCircle, {{"Y", 0, kStopAbove, 30.0000005}}, 400'000}, 1101},
        {{kHelix, {{"X"}, {"A", 0, kStopAbove, 359.0000005}}, 400'000, GraphMode::kClassic}, 7237},
        {{kRose, {{"Y", 1, kStopBelow, -40.0005}, {"X"}}, 300'000}, 19972},
        {{kRose, {{"X"}, {"X", 2, kStopAbove, 2500.5}}, 300'000}, 208},
    };
}

std::string Describe(const Row& row, const BatchKind& kind) {
    return row.trial.file + ", sample " + std::to_string(row.fires_at) + ", batches of " +
           kind.name;
}

/// Runs each row with each kind of batches to its end; `check` has the last word.
void PlayAll(const std::vector<Row>& rows, const std::function<void(const Player&)>& check) {
    for (const Row& row : rows) {
        for (const BatchKind& kind : BatchKinds()) {
            SCOPED_TRACE(Describe(row, kind));
            Player player(row.trial);
            PlayToTheEnd(player, kind.make());
            ASSERT_FALSE(::testing::Test::HasFatalFailure());
            EXPECT_EQ(player.expected.fired_at, row.fires_at);
            check(player);
        }
    }
}

TEST(RecordedMotion, AStartTriggerFiresAtItsSampleWhateverTheBatches) {
    PlayAll(StartRows(), [](const Player& player) {
        EXPECT_EQ(player.scope.draw->State(), RunState::kStoppedAfterStart);
        EXPECT_EQ(player.scope.host.ended, 1);
        EXPECT_EQ(player.expected.curve_begin, player.expected.fired_at);
    });
}

TEST(RecordedMotion, AStopTriggerFiresAtItsSampleWhateverTheBatches) {
    PlayAll(StopRows(), [](const Player& player) {
        EXPECT_EQ(player.scope.draw->State(), RunState::kStoppedAfterStop);
        EXPECT_EQ(player.scope.host.ended, 0);
        const std::size_t numbers = player.scope.draw->Lines().size() - 1;
        EXPECT_EQ(player.scope.Shown(numbers).back(),
                  static_cast<double>(player.expected.fired_at));
    });
}

TEST(RecordedMotion, WhatAStopTriggerLeavesOnTheScreenDoesNotDependOnTheBatches) {
    for (const Row& row : StopRows()) {
        std::vector<std::vector<double>> shown;
        for (const BatchKind& kind : BatchKinds()) {
            SCOPED_TRACE(Describe(row, kind));
            Player player(row.trial);
            PlayToTheEnd(player, kind.make());
            ASSERT_FALSE(HasFatalFailure());
            shown.push_back(player.scope.Shown(0));
            EXPECT_EQ(shown.back(), shown.front());
        }
    }
}

TEST(RecordedMotion, ARecordingHasTheRangeAndTheRestOfTheBatchThatFired) {
    const Trial trial{kDrill, {{"Z", 0, kStartBelow, 0.0000005}}, 800'000};  // fires at 756
    struct Length {
        std::int64_t batch;
        std::int64_t recorded;
    };
    // A batch of 7 begins with sample 756; one of 100 holds 700 to 799.
    for (const Length& length : {Length{1, 1 + 800}, Length{7, 7 + 800}, Length{100, 44 + 800}}) {
        SCOPED_TRACE(length.batch);
        Player player(trial);
        PlayToTheEnd(player, Always(length.batch));
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_EQ(player.expected.curve_end - 756, length.recorded);
        EXPECT_EQ(player.scope.Shown(1).back(), static_cast<double>(756 + length.recorded - 1));
        EXPECT_EQ(player.scope.Shown(1).size(), 801U) << "the newest that the curve has room for";
    }
}

TEST(RecordedMotion, AStartTriggerShowsItsSampleFirstInThePaintThatFires) {
    for (const std::int64_t batch : {1, 7, 100}) {
        SCOPED_TRACE(batch);
        Player player({kDrill, {{"Z", 0, kStartBelow, 0.0000005}}, 800'000});
        while (player.expected.state == RunState::kWaitingForStart) {
            player.Paint(batch);
            ASSERT_FALSE(HasFatalFailure());
        }
        EXPECT_EQ(player.scope.Shown(1).front(), 756.0);
        EXPECT_EQ(player.scope.Line().Point(0).x_value, 0.0);
        EXPECT_EQ(player.scope.draw->Recorder().ElapsedAfterTrigger(), 0.0);
    }
}

TEST(RecordedMotion, ARangeBetweenTwoSamplesIsCutToTheNearest) {
    struct Range {
        std::int64_t microseconds;
        std::int64_t samples;
    };
    for (const Range& range : {Range{300'000, 300}, Range{300'400, 300}, Range{300'600, 301}}) {
        for (const BatchKind& kind : BatchKinds()) {
            SCOPED_TRACE(std::to_string(range.microseconds) + " us, batches of " + kind.name);
            Player player({kCircle, {{"X", 0, kStartAbove, 49.5000005}}, range.microseconds});
            while (player.expected.state == RunState::kWaitingForStart) {
                player.Paint(kind.name == "1" ? 1 : 10);
                ASSERT_FALSE(HasFatalFailure());
            }
            const std::int64_t counted_from = player.Next();
            PlayToTheEnd(player, kind.make());
            ASSERT_FALSE(HasFatalFailure());
            EXPECT_EQ(player.expected.curve_end - counted_from, range.samples);
            EXPECT_EQ(player.scope.Shown(1).back(),
                      static_cast<double>(counted_from + range.samples - 1));
        }
    }
}

TEST(RecordedMotion, OfTwoEntriesTheFirstInAxisOrderWinsWithinABatch) {
    // Z falls fastest at sample 506 and is caught at 578.
    const auto trial = [](TriggerTypeCode above, TriggerTypeCode below) {
        return Trial{kDrill, {{"Z", 2, above, 2000.5}, {"Z", 2, below, -2900.5}}, 300'000};
    };
    struct Case {
        std::int64_t batch;
        std::int64_t fires_at;
    };
    for (const Case& one : {Case{1, 506}, Case{7, 506}, Case{100, 578}}) {
        SCOPED_TRACE(one.batch);
        Player start(trial(kStartAbove, kStartBelow));
        while (start.expected.state == RunState::kWaitingForStart) {
            start.Paint(one.batch);
            ASSERT_FALSE(HasFatalFailure());
        }
        EXPECT_EQ(start.scope.Shown(2).front(), static_cast<double>(start.expected.fired_at));
        Player stop(trial(kStopAbove, kStopBelow));
        PlayToTheEnd(stop, Always(one.batch));
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_EQ(start.expected.fired_at, one.fires_at);
        EXPECT_EQ(stop.expected.fired_at, one.fires_at);
    }
}

TEST(RecordedMotion, ALevelThatIsPassedFromTheStartFiresAtTheFirstSample) {
    for (const BatchKind& kind : BatchKinds()) {
        SCOPED_TRACE(kind.name);
        Player start({kRose, {{"X", 0, kStartBelow, 30.0000005}}, 200'000});
        PlayToTheEnd(start, kind.make());
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_EQ(start.expected.fired_at, 0);
        Player stop({kRose, {{"X", 0, kStopBelow, 30.0000005}}, 200'000});
        PlayToTheEnd(stop, kind.make());
        ASSERT_FALSE(HasFatalFailure());
        EXPECT_EQ(stop.scope.Shown(0).size(), 1U);
    }
}

TEST(RecordedMotion, OverAnAxisARecordingEndsWithTheBatchThatReachesTheFadeOutTime) {
    const std::vector<Row> rows{
        {{kCircle, {{"Y", 0, kStartAbove, 30.0000005}}, 400'000, GraphMode::kContinuity, true},
         1101},
        {{kHelix, {{"A", 2, kStartAbove, 1200.5}}, 300'000, GraphMode::kContinuity, true}, 10707},
        {{kDrill, {{"Z", 1, kStartBelow, -20.0005}}, 300'000, GraphMode::kClassic, true}, 504},
    };
    PlayAll(rows, [](const Player& player) {
        EXPECT_EQ(player.scope.host.ended, 1);
        EXPECT_EQ(player.scope.draw->Graph().XScale.TimeRange,
                  player.scope.draw->Graph().FadeOutTime);
    });
    for (const std::int64_t batch : {1, 7, 100}) {
        Player player(rows.front().trial);
        PlayToTheEnd(player, Always(batch));
        ASSERT_FALSE(HasFatalFailure());
        // The batch of sample 1101, and as many more as it takes for 400 samples.
        const std::int64_t end = (1101 / batch + 1 + (400 + batch - 1) / batch) * batch;
        EXPECT_EQ(player.expected.curve_end, end) << batch;
    }
}

TEST(RecordedMotion, OverAnAxisAStopTriggerCutsBothCoordinates) {
    const std::vector<Row> rows{
        {{kCircle, {{"Y", 0, kStopAbove, 30.0000005}}, 400'000, GraphMode::kContinuity, true},
         1101},
        {{kRose, {{"X", 2, kStopAbove, 2500.5}}, 400'000, GraphMode::kContinuity, true}, 208},
        {{kDrill, {{"Z", 2, kStopBelow, -2900.5}}, 300'000, GraphMode::kContinuity, true}, 506},
    };
    PlayAll(rows, [](const Player& player) {
        EXPECT_EQ(player.scope.Line().Point(player.scope.Line().Size() - 1).x_value,
                  static_cast<double>(player.expected.fired_at));
    });
}

TEST(RecordedMotion, StartingAgainRecordsStrokeAfterStroke) {
    const Trial trial{kDrill, {{"Z", 0, kStartBelow, 0.0000005}}, 100'000};
    const Column& z = ReadMotion(kDrill).at("Z");
    for (const std::int64_t batch : {7, 100}) {
        SCOPED_TRACE(batch);
        Player player(trial);
        int recordings = 0;
        std::int64_t armed_at = 0;
        while (player.Left() > 0) {
            player.Paint(batch);
            ASSERT_FALSE(HasFatalFailure());
            if (player.scope.host.ended == recordings) {
                continue;
            }
            ++recordings;
            const auto begin = z.begin() + armed_at;
            const auto fired = std::find_if(begin, z.end(), [](double value) { return value < 0; });
            ASSERT_EQ(player.expected.fired_at, fired - z.begin());
            player.Paint(batch);  // stops the buffers
            player.StartAgain();
            armed_at = player.Next();
        }
        EXPECT_GT(recordings, 19) << "each stroke, the long ones several times";
        EXPECT_EQ(player.scope.host.ended, recordings);
    }
}

TEST(RecordedMotion, NothingIsDrawnWhileWaitingAndTheCurveStandsStillOnceStopped) {
    const QColor curve(255, 255, 0);
    Player player({kDrill, {{"Z", 1, kStartBelow, -20.0005}}, 500'000}, QRect(0, 0, 400, 200));
    while (player.expected.state == RunState::kWaitingForStart) {
        EXPECT_EQ(player.scope.Count(curve), 0) << "before sample " << player.Next();
        player.Paint(50);
        ASSERT_FALSE(HasFatalFailure());
    }
    EXPECT_GT(player.scope.Count(curve), 0);
    PlayToTheEnd(player, Always(50));
    ASSERT_FALSE(HasFatalFailure());
    const QImage stopped = player.scope.Image();
    player.Paint(50);
    EXPECT_EQ(player.scope.Image(), stopped);
}

}  // namespace
}  // namespace wavo

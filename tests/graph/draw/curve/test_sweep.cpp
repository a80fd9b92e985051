// What a mark in a swept picture means, and the zoom to it.
#include "graph/draw/curve/sweep.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/graph_draw.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

constexpr double kSweepCycle = 0.25;

/// 9 points of a sweep over 8 steps: the newest three at steps 1 to 3, the older ones from 3 on.
const std::vector<CurveRun> kWrapped{{0, 6, 3, false}, {6, 3, 1, false}};

void ExpectStretch(const std::vector<CurveRun>& runs, const TimeWindow& marked,
                   const TimeWindow& expected) {
    const std::optional<TimeWindow> stretch = StretchOfPlaces(runs, kSweepCycle, marked);
    ASSERT_TRUE(stretch.has_value());
    EXPECT_NEAR(stretch->start, expected.start, 1e-6);
    EXPECT_NEAR(stretch->end, expected.end, 1e-6);
}

TEST(StretchOfPlaces, OfASweepThatHasNotWrappedIsTheMark) {
    const std::vector<CurveRun> first{{0, 5, 0, false}};
    EXPECT_EQ(StretchOfPlaces(first, kSweepCycle, {0.3, 0.7}), (TimeWindow{0.3, 0.7}));
    EXPECT_EQ(StretchOfPlaces(first, kSweepCycle, {0.3, 2.0}), (TimeWindow{0.3, 2.0}))
        << "beyond the newest sample";
    EXPECT_FALSE(StretchOfPlaces(first, kSweepCycle, {1.5, 2.0}).has_value());
    EXPECT_FALSE(StretchOfPlaces({}, kSweepCycle, {0.0, 2.0}).has_value());
}

TEST(StretchOfPlaces, OnTheLeftOfTheGapIsThatOfTheNewestSamples) {
    // Position 6 stands at step 1.
    ExpectStretch(kWrapped, {0.3, 0.7}, {1.55, 1.95});
    // The left border is where the sweep before has ended.
    ExpectStretch(kWrapped, {0.0, 0.6}, {1.25, 1.85});
}

TEST(StretchOfPlaces, OnTheRightOfTheGapIsThatOfTheOldestSamples) {
    ExpectStretch(kWrapped, {1.3, 2.0}, {0.55, 1.25});
}

TEST(StretchOfPlaces, AcrossTheGapIsThatOfTheLongerSide) {
    // The newest sample fills the step up to 1.0, the oldest begins at 0.75.
    ExpectStretch(kWrapped, {0.2, 1.2}, {1.45, 2.25});
    ExpectStretch(kWrapped, {0.6, 1.9}, {0.0, 1.15});
}

TEST(StretchOfPlaces, WithASweepThatBeganAnewIsThatOfTheLongestPart) {
    const std::vector<CurveRun> runs{{0, 2, 7, false}, {2, 4, 1, false}, {6, 2, 0, false}};
    ExpectStretch(runs, {0.5, 1.2}, {0.75, 1.45});
    ExpectStretch(runs, {0.0, 0.5}, {1.5, 2.0});
    ExpectStretch(runs, {1.8, 2.0}, {0.05, 0.25});
}

WavoGraph Classic(double range) {
    WavoGraph graph = TimeGraph(range, GraphMode::kClassic);
    AddAxis(graph, "X", ManualScale(0.0, 100.0));
    return graph;
}

/// Zooms as the view does.
void Zoom(Scope& scope, const TimeWindow& marked) {
    const TimeWindow span = scope.draw->Places().ZoomSpanOf(marked);
    scope.draw->SetZoomRange(span.start, span.end);
    scope.Draw();
}

/// The samples that stand at places of the present picture, oldest first.
std::vector<double> SamplesAt(const Scope& scope, const TimeWindow& marked) {
    std::vector<double> samples;
    const std::size_t write = scope.Line().WriteIndex();
    for (std::size_t i = 0; i < scope.Line().Size(); ++i) {
        const LinePoint point = scope.Line().Point((write + i) % scope.Line().Size());
        if (point.x_value >= marked.start && point.x_value < marked.end) {
            samples.push_back(point.y_value);
        }
    }
    return samples;
}

TEST(SweptZoom, ShowsTheMarkedSamplesUnderTheirTimes) {
    Scope scope(Classic(2.0));
    scope.Feed({Ramp(0, 9)});
    scope.Feed({Ramp(9, 4)});  // 9 to 12 at steps 1 to 4, 5 to 8 behind them
    EXPECT_EQ(SamplesAt(scope, {1.2, 1.8}), (std::vector<double>{5, 6, 7}));
    Zoom(scope, {1.25, 2.0});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{5, 6, 7}));
    EXPECT_EQ(XText(scope.draw->Graph(), scope.draw->DisplayedWindow()), "T: (0.0 ... 0.75)s");
    EXPECT_EQ(scope.Line().Point(0).x_value, 0.0);
    // A zoom within the zoom is in the order of time already.
    EXPECT_EQ(scope.draw->Places().ZoomSpanOf({0.25, 0.5}), (TimeWindow{0.25, 0.5}));
    Zoom(scope, {0.25, 0.75});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{6, 7}));
}

TEST(SweptZoom, OfTheNewestSamplesIsMeasuredFromTheOldest) {
    Scope scope(Classic(2.0));
    scope.Feed({Ramp(0, 9)});
    scope.Feed({Ramp(9, 4)});
    Zoom(scope, {0.5, 1.0});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{10, 11}));
    EXPECT_EQ(XText(scope.draw->Graph(), scope.draw->DisplayedWindow()), "T: (1.25 ... 1.75)s");
}

TEST(SweptZoom, AcrossTheGapTakesTheLongerSide) {
    Scope scope(Classic(2.0));
    scope.Feed({Ramp(0, 9)});
    scope.Feed({Ramp(9, 4)});
    Zoom(scope, {0.25, 1.5});
    EXPECT_EQ(scope.Shown(), (std::vector<double>{9, 10, 11, 12}));
}

TEST(SweptZoom, OfARecordingShowsTheMarkedSamples) {
    WavoGraph graph = Classic(2.0);
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 50.0, "X"};
    Scope scope(graph, kSweepCycle, QRect(0, 0, 400, 200), 20.0);
    scope.Feed({Ramp(60, 4)});  // the range begins to count behind these
    scope.Feed({Ramp(64, 8)});
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    const TimeWindow marked{1.25, 2.0};
    const std::vector<double> expected = SamplesAt(scope, marked);
    ASSERT_EQ(expected.size(), 3U);
    Zoom(scope, marked);
    EXPECT_EQ(scope.Shown(), expected);
}

TEST(SweptZoom, InContinuityAndOverAnAxisIsTheMark) {
    WavoGraph graph = Classic(2.0);
    graph.Mode = GraphMode::kContinuity;
    Scope scope(graph);
    scope.Feed({Ramp(0, 8)});
    scope.Feed({Ramp(8, 5)});
    EXPECT_EQ(scope.draw->Places().ZoomSpanOf({0.3, 1.1}), (TimeWindow{0.3, 1.1}));
}

TEST(SweptZoom, ShowsTheMarkedSamplesWhateverTheSweepHasDone) {
    std::mt19937 random(7);
    const auto below = [&random](std::size_t end) { return random() % end; };
    int zooms = 0;
    for (int round = 0; round < 3000; ++round) {
        const double range =
            kSweepCycle * static_cast<double>(4 + below(30)) + (round % 3) * 0.0625;
        const bool longer = below(2) == 0;
        WavoGraph graph = Classic(range);
        if (below(4) == 0) {
            graph.Triggers[0] = {TriggerTypeCode::kStartAbove, -1.0, "X"};
        }
        Scope scope(graph, kSweepCycle, QRect(0, 0, 200, 100), longer ? 3.0 * range : 0.0);
        double next = 0.0;
        for (std::size_t batches = below(30); batches > 0; --batches) {
            const int count = static_cast<int>(below(5));
            scope.Feed({Ramp(next, count)});
            next += count;
        }
        TimeWindow marked;
        marked.start = static_cast<double>(below(1000)) / 1000.0 * range;
        marked.end = marked.start + static_cast<double>(below(1000)) / 1000.0 * range;
        marked.end = std::min(marked.end, range);
        const TimeWindow span = scope.draw->Places().ZoomSpanOf(marked);
        if (marked.end - marked.start < kSweepCycle || span.end - span.start < kSweepCycle) {
            continue;
        }
        ++zooms;
        const bool wrapped = scope.Line().OverTime()->Runs().size() > 1;
        std::vector<double> at_places =
            SamplesAt(scope, {marked.start - kSweepCycle, marked.end + kSweepCycle});
        Zoom(scope, marked);
        const std::vector<double> shown = scope.Shown();
        for (std::size_t i = 0; i < shown.size(); ++i) {
            // At the left border stands, as far as it can be seen, the last sample of a sweep.
            const bool at_border = i == 0 && marked.start < kSweepCycle;
            EXPECT_TRUE(at_border || std::count(at_places.begin(), at_places.end(), shown[i]) > 0)
                << "round " << round << ": " << shown[i] << " was not marked: " << marked.start
                << " to " << marked.end << " of " << range << " s, " << next << " lines";
            EXPECT_EQ(shown[i], shown[0] + static_cast<double>(i)) << "they follow one another";
        }
        // Of a side of the gap all that was marked, but for the sample that the buffer has dropped.
        const double length = span.end - span.start;
        if (wrapped) {
            EXPECT_GE(static_cast<double>(shown.size()) + 2.001, length / kSweepCycle)
                << "round " << round;
        }
        ASSERT_FALSE(::testing::Test::HasFailure());
    }
    EXPECT_GT(zooms, 1000);
}

}  // namespace
}  // namespace wavo

// Pixels, times, lines and values of a graph, each from each.
#include "graph/draw/graph_places.h"

#include <gtest/gtest.h>

#include <cmath>

#include "drawing_fixture.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::ScopeLooks;
using testing::TimeGraph;

WavoGraph PlacesGraph(GraphMode mode, TriggerTypeCode trigger = TriggerTypeCode::kNone,
                      double limit = 0.0) {
    WavoGraph graph = TimeGraph(10.0, mode);
    AddAxis(graph, "X", ManualScale(0.0, 1000.0), trigger, limit);
    return graph;
}

/// Feeds values that say which line they came with.
void FeedLines(Scope& scope, std::int64_t first, int count) {
    scope.values[0].ExpectLine(first);
    scope.Feed({Ramp(static_cast<double>(first), count)});
}

/// Each line that is seen stands where it says, and has its own number as its value.
void ExpectLinesBothWays(const Scope& scope, std::int64_t from, std::int64_t to) {
    const GraphPlaces places = scope.draw->Places();
    for (std::int64_t line = from; line < to; ++line) {
        const std::optional<double> time = places.TimeOf(line);
        ASSERT_TRUE(time.has_value()) << line;
        EXPECT_EQ(places.LineAt(*time), line);
        EXPECT_EQ(places.ValueAt(0, *time), static_cast<double>(line));
    }
    EXPECT_EQ(places.TimeOf(from - 1), std::nullopt);
    EXPECT_EQ(places.TimeOf(to), std::nullopt);
}

TEST(GraphPlaces, PixelsAndTimesAreEachOthersInverse) {
    for (const double ratio : {1.0, 1.25, 2.0}) {
        ScopeLooks looks;
        looks.ratio = ratio;
        Scope scope(PlacesGraph(GraphMode::kContinuity), 0.25, QRect(0, 0, 400, 200), 0.0, looks);
        scope.Draw();
        const QRect& plot = scope.draw->PlotArea();
        for (int x = plot.left(); x <= plot.right(); ++x) {
            const std::optional<int> back =
                scope.draw->Places().PixelAt(scope.draw->PixelToTime(x));
            ASSERT_TRUE(back.has_value()) << x;
            EXPECT_LE(std::abs(*back - x), 1) << x;
        }
        EXPECT_EQ(scope.draw->Places().PixelAt(0.0), plot.left());
        EXPECT_EQ(scope.draw->Places().PixelAt(10.0), plot.right());
        EXPECT_EQ(scope.draw->Places().PixelAt(10.1), std::nullopt);
        EXPECT_EQ(scope.draw->Places().PixelAt(-0.1), std::nullopt);
        EXPECT_EQ(scope.draw->Places().PixelAt(std::nan("")), std::nullopt);
    }
}

TEST(GraphPlaces, LinesKeepTheirNumbersWhileTheCurveScrolls) {
    Scope scope(PlacesGraph(GraphMode::kContinuity));
    FeedLines(scope, 100, 30);
    ExpectLinesBothWays(scope, 100, 130);
    FeedLines(scope, 130, 30);
    ExpectLinesBothWays(scope, 119, 160);
    EXPECT_EQ(scope.draw->Places().TimeOf(160), std::nullopt);
    EXPECT_EQ(scope.draw->Places().LineAt(10.2), std::nullopt);
}

TEST(GraphPlaces, OfASweepTheNewerLineIsSeen) {
    Scope scope(PlacesGraph(GraphMode::kClassic));
    FeedLines(scope, 100, 41);
    FeedLines(scope, 141, 12);
    const GraphPlaces places = scope.draw->Places();
    EXPECT_EQ(places.LineAt(0.25), 141);
    EXPECT_EQ(places.TimeOf(152), 3.0);
    EXPECT_EQ(places.LineAt(3.25), 113);
    EXPECT_EQ(places.TimeOf(112), 3.0) << "under the newest";
    EXPECT_EQ(places.TimeOf(111), std::nullopt);
    EXPECT_EQ(places.ValueAt(0, 3.0), 152.0);
}

TEST(GraphPlaces, MissedLinesHaveNoPlace) {
    Scope scope(PlacesGraph(GraphMode::kContinuity));
    FeedLines(scope, 100, 10);
    FeedLines(scope, 500, 10);
    const GraphPlaces places = scope.draw->Places();
    EXPECT_EQ(places.TimeOf(109), 2.25);
    EXPECT_EQ(places.TimeOf(110), std::nullopt);
    EXPECT_EQ(places.TimeOf(500), 2.5);
    EXPECT_EQ(places.LineAt(2.5), 500);
}

TEST(GraphPlaces, LinesSurviveAReset) {
    Scope scope(PlacesGraph(GraphMode::kContinuity));
    FeedLines(scope, 100, 30);
    scope.Draw(true);
    EXPECT_EQ(scope.draw->Places().LineAt(0.0), std::nullopt);
    FeedLines(scope, 130, 5);
    ExpectLinesBothWays(scope, 130, 135);
    EXPECT_EQ(scope.draw->Places().TimeOf(134), 1.0);
}

TEST(GraphPlaces, AStartTriggerBeginsWithItsLine) {
    Scope scope(PlacesGraph(GraphMode::kClassic, TriggerTypeCode::kStartAbove, 120.5));
    FeedLines(scope, 100, 15);
    EXPECT_EQ(scope.draw->Places().LineAt(0.0), std::nullopt);
    FeedLines(scope, 115, 15);
    ExpectLinesBothWays(scope, 121, 130);
    EXPECT_EQ(scope.draw->Places().TimeOf(121), 0.0);
    for (const std::int64_t first : {130, 155}) {
        FeedLines(scope, first, 25);
    }
    ASSERT_EQ(scope.draw->State(), RunState::kStoppedAfterStart);
    EXPECT_EQ(scope.draw->Places().LineAt(5.0), 141);
    // A window of the recording, while the buffer runs on.
    scope.draw->SetZoomRange(2.0, 4.0);
    scope.values[0].SetEnabled(true);
    FeedLines(scope, 180, 7);
    // The batch that fired is recorded besides the range: line 129 is the oldest held.
    ExpectLinesBothWays(scope, 137, 145);
    EXPECT_EQ(scope.draw->Places().TimeOf(137), 0.0);
}

TEST(GraphPlaces, AZoomShowsTheSameLinesElsewhere) {
    Scope scope(PlacesGraph(GraphMode::kContinuity));
    FeedLines(scope, 100, 40);
    scope.draw->SetZoomRange(2.0, 4.0);
    scope.Draw();
    ExpectLinesBothWays(scope, 108, 116);
    EXPECT_EQ(scope.draw->Places().TimeOf(108), 0.0);
    EXPECT_EQ(scope.draw->Places().ValueAt(0, 1.0), 112.0);
    scope.draw->DetachValues();
    scope.Draw();
    EXPECT_EQ(scope.draw->Places().LineAt(0.0), std::nullopt) << "nobody knows it any more";
    EXPECT_EQ(scope.draw->Places().ValueAt(0, 1.0), 112.0);
}

TEST(GraphPlaces, LinesThatWereNeverToldCountBackFromTheNewest) {
    Scope scope(PlacesGraph(GraphMode::kContinuity));
    scope.Feed({Ramp(0, 10)});
    scope.Feed({Ramp(10, 10)});
    EXPECT_EQ(scope.draw->Places().LineAt(4.75), -1);
    EXPECT_EQ(scope.draw->Places().TimeOf(-20), 0.0);
}

TEST(GraphPlaces, LinesThatAreNotSeenStandBesideTheNewest) {
    Scope scrolled(PlacesGraph(GraphMode::kContinuity));
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(100), std::nullopt);
    FeedLines(scrolled, 100, 30);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(100), 0.0);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(140), 10.0);
    FeedLines(scrolled, 130, 30);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(159), 10.0);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(163), 11.0);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(99), -5.0);
    // Lines that were missed are left out of the picture: those beside the newest count.
    FeedLines(scrolled, 1000, 10);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(1000), 7.75);
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(999), 7.5);

    Scope swept(PlacesGraph(GraphMode::kClassic));
    FeedLines(swept, 100, 41);
    FeedLines(swept, 141, 12);
    EXPECT_EQ(swept.draw->Places().TimeOfLine(152), 3.0);
    EXPECT_EQ(swept.draw->Places().TimeOfLine(160), 5.0) << "ahead of the sweep";
    EXPECT_EQ(swept.draw->Places().TimeOfLine(141), 0.25);

    scrolled.draw->SetZoomRange(2.0, 4.0);
    scrolled.Draw();
    const std::optional<std::int64_t> first = scrolled.draw->Places().LineAt(0.0);
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(scrolled.draw->Places().TimeOfLine(*first + 1), 0.25);
}

TEST(GraphPlaces, OverAnAxisNothingStandsAnywhere) {
    Scope scope(AxisGraph(1.0, ManualScale(0, 1), ManualScale(0, 1)));
    scope.Feed({{0.1, 0.2}, {0.1, 0.2}});
    const GraphPlaces places = scope.draw->Places();
    EXPECT_EQ(places.TimeAt(scope.draw->PlotArea().center().x()), -1.0);
    EXPECT_EQ(places.PixelAt(0.5), std::nullopt);
    EXPECT_EQ(places.LineAt(0.25), std::nullopt);
    EXPECT_EQ(places.TimeOf(-1), std::nullopt);
    EXPECT_EQ(places.ValueAt(0, 0.25), std::nullopt);
}

}  // namespace
}  // namespace wavo

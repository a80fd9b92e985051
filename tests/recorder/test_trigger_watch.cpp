// Triggers over lines: the tests that graphs have, and when a graph fires again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "graph/record/run_state.h"
#include "graph/values/graph_value.h"
#include "graph/values/trigger_test.h"
#include "recorder/trigger_watch.h"

namespace wavo::recorder {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A graph over time with one trigger.
WavoGraph MakeGraph(const std::string& axis, std::int32_t order, TriggerTypeCode type, double limit,
                    double range = 2.0) {
    WavoGraph graph;
    graph.GraphNumber = 1;
    graph.XScale = {ScaleTypeCode::kTime, range, {}, 0.0, 0.0};
    graph.FadeOutTime = 0.5;
    graph.YCoorAxName = {axis};
    graph.YCoorAxDerivation = {order};
    graph.Triggers = {{type, limit, axis}};
    return graph;
}

LineBlock Block(std::uint64_t first, std::vector<double> values, std::size_t axes = 1) {
    const std::size_t lines = values.size() / axes;
    return {first, lines, std::move(values)};
}

/// The lines that fire in blocks of any size.
std::vector<std::uint64_t> FiringLines(TriggerWatch& watch, const LineBlock& block) {
    std::vector<std::uint64_t> lines;
    watch.Take(block);
    for (std::size_t i = 0; i < block.lines; ++i) {
        for (const Firing& firing : watch.Fire(i)) {
            lines.push_back(firing.line);
        }
    }
    return lines;
}

TEST(TriggerTest, FindsWhatGraphsFind) {
    std::mt19937 random(3);
    const double limits[] = {0.0,
                             -0.0,
                             5.0,
                             -1e308,
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
    const double values[] = {0.0,
                             -0.0,
                             1.0,
                             5.0,
                             6.0,
                             -3.0,
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
    for (int round = 0; round < 2000; ++round) {
        std::vector<double> samples;
        for (std::size_t i = random() % 6; i > 0; --i) {
            samples.push_back(values[random() % std::size(values)]);
        }
        for (const double limit : limits) {
            std::uint64_t index = 0;
            const bool above = TestTriggerGreater(samples, index, limit);
            const auto found_above = FirstBeyond(samples, TriggerSide::kAbove, limit);
            ASSERT_EQ(found_above.has_value(), above);
            ASSERT_TRUE(!above || *found_above == index);
            const bool below = TestTriggerLess(samples, index, limit);
            const auto found_below = FirstBeyond(samples, TriggerSide::kBelow, limit);
            ASSERT_EQ(found_below.has_value(), below);
            ASSERT_TRUE(!below || *found_below == index);
        }
    }
}

TEST(TriggerWatching, LevelsCountFromTheFirstLineOn) {
    TriggerWatch above({MakeGraph("X", 0, TriggerTypeCode::kStartAbove, 5.0)}, {"X"}, 0.001);
    EXPECT_THAT(FiringLines(above, Block(10, {1, 3, 7, 9})), ElementsAre(12));
    TriggerWatch at_once({MakeGraph("X", 0, TriggerTypeCode::kStartAbove, 5.0)}, {"X"}, 0.001);
    EXPECT_THAT(FiringLines(at_once, Block(0, {6.0})), ElementsAre(0));
    TriggerWatch below({MakeGraph("X", 0, TriggerTypeCode::kStopBelow, -1.0)}, {"X"}, 0.001);
    EXPECT_THAT(FiringLines(below, Block(0, {-1.0, 0.0, -1.5})), ElementsAre(2));
}

TEST(TriggerWatching, AGraphFiresAgainWhenItWasFalseAndIsArmed) {
    TriggerWatch watch({MakeGraph("X", 0, TriggerTypeCode::kStartAbove, 5.0)}, {"X"}, 0.001);
    EXPECT_THAT(FiringLines(watch, Block(0, {6, 7, 1, 6})), ElementsAre(0)) << "not armed";
    watch.Arm();
    EXPECT_THAT(FiringLines(watch, Block(4, {8})), ElementsAre(4)) << "it was false since";
    watch.Arm();
    EXPECT_THAT(FiringLines(watch, Block(5, {9, 9})), IsEmpty()) << "it was never false";
    EXPECT_THAT(FiringLines(watch, Block(7, {0, 6, 6})), ElementsAre(8));
}

TEST(TriggerWatching, DerivedStreamsAreThoseOfGraphs) {
    std::mt19937 random(5);
    for (std::int32_t order = 0; order <= 4; ++order) {
        std::vector<double> samples;
        for (int i = 0; i < 200; ++i) {
            samples.push_back(static_cast<double>(random() % 1000) * 0.01);
        }
        GraphValue stream("X", 0.004, 10.0, order);
        for (const double sample : samples) {
            stream.SetValue(sample);
        }
        std::vector<double> derived;
        double start = 0.0;
        stream.GetNewValues(derived, start);
        // Each of the values as a limit: the same line fires as in the stream.
        for (std::size_t i = 0; i < derived.size(); i += 7) {
            TriggerWatch watch({MakeGraph("X", order, TriggerTypeCode::kStartAbove, derived[i])},
                               {"X"}, 0.004);
            std::vector<std::uint64_t> expected;
            if (const auto first = FirstBeyond(derived, TriggerSide::kAbove, derived[i])) {
                expected.push_back(*first);
            }
            std::vector<std::uint64_t> found = FiringLines(
                watch, Block(0, std::vector<double>(samples.begin(), samples.begin() + 77)));
            const auto more = FiringLines(
                watch, Block(77, std::vector<double>(samples.begin() + 77, samples.end())));
            found.insert(found.end(), more.begin(), more.end());
            EXPECT_EQ(found, expected) << order << " " << i;
        }
    }
}

TEST(TriggerWatching, DerivativesBeginAnewBehindAGap) {
    TriggerWatch watch({MakeGraph("X", 1, TriggerTypeCode::kStartAbove, 100.0)}, {"X"}, 0.001);
    EXPECT_THAT(FiringLines(watch, Block(0, {0.0, 0.0})), IsEmpty());
    watch.BeginAnew();
    EXPECT_THAT(FiringLines(watch, Block(50, {1000.0, 1000.0})), IsEmpty());
    EXPECT_THAT(FiringLines(watch, Block(52, {1001.0})), ElementsAre(52));
}

TEST(TriggerWatching, TellsWhatFired) {
    WavoGraph graph = MakeGraph("X", 1, TriggerTypeCode::kStartBelow, -2.5);
    graph.GraphNumber = 7;
    WavoGraph over_axis = MakeGraph("Y", 0, TriggerTypeCode::kStopAbove, 1.0);
    over_axis.XScale.ScaleType = ScaleTypeCode::kAxis;
    TriggerWatch watch({graph, over_axis, MakeGraph("Q", 0, TriggerTypeCode::kStartAbove, 1.0)},
                       {"X", "Y"}, 1.0);
    EXPECT_THAT(watch.Unknown(), ElementsAre("Q > 1 (graph 1)"));
    EXPECT_EQ(watch.LongestStopRange(), 0.5);
    watch.Take(Block(0, {0, 0, -10, 2}, 2));
    EXPECT_THAT(watch.Fire(0), IsEmpty());
    const std::vector<Firing> firings = watch.Fire(1);
    ASSERT_EQ(firings.size(), 2U);
    EXPECT_EQ(firings[0].text, "X' < -2.5 (graph 7)");
    EXPECT_FALSE(firings[0].is_stop);
    EXPECT_EQ(firings[0].time_range, 2.0);
    EXPECT_EQ(firings[1].text, "Y > 1 (graph 1)");
    EXPECT_TRUE(firings[1].is_stop);
    EXPECT_EQ(firings[1].time_range, 0.5) << "the fade-out time";
}

}  // namespace
}  // namespace wavo::recorder

// Another run behind the curves of a graph.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "drawing_fixture.h"
#include "graph/values/ring_history.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ManualScale;
using testing::Scope;
using testing::TimeGraph;

constexpr double kStepOfRun = 0.25;  // s

/// A run in memory.
class RunInMemory {
 public:
    explicit RunInMemory(const std::vector<double>& values)
        : m_value("run", kStepOfRun, static_cast<double>(values.size() + 1) * kStepOfRun, 0),
          m_history(m_value) {
        m_value.ExpectLine(0);
        for (const double value : values) {
            m_value.SetValue(value);
        }
    }
    [[nodiscard]] History* Stream() { return &m_history; }

 private:
    GraphValue m_value;
    RingHistory m_history;
};

std::vector<double> Swinging(int count) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        values.push_back(50.0 + 40.0 * std::sin(i * 0.7));
    }
    return values;
}

/// Values of lines from 0 on.
void FeedFirst(Scope& scope, const std::vector<double>& values) {
    scope.values[0].ExpectLine(0);
    scope.Feed({values});
}

WavoGraph TimeGraphOf(GraphMode mode) {
    WavoGraph graph = TimeGraph(10.0, mode);
    AddAxis(graph, "X", ManualScale(0.0, 100.0));
    return graph;
}

BackRun Behind(RunInMemory& run, std::int64_t lines, std::optional<std::int64_t> shift) {
    BackRun behind;
    behind.y = {run.Stream()};
    behind.lines = lines;
    behind.shift = shift;
    return behind;
}

/// The columns of the plot area, from its left border, with a pixel of a colour.
std::pair<int, int> ColumnsOf(const Scope& scope, const QColor& color) {
    const QRect plot = scope.draw->PlotArea();
    std::pair<int, int> columns{-1, -1};
    for (int x = plot.left(); x <= plot.right(); ++x) {
        for (int y = plot.top(); y <= plot.bottom(); ++y) {
            if (scope.Image().pixelColor(x, y) == color) {
                columns.first = columns.first < 0 ? x - plot.left() : columns.first;
                columns.second = x - plot.left();
                break;
            }
        }
    }
    return columns;
}

TEST(BackCurves, AreCoveredByTheSameCurve) {
    const std::vector<double> values = Swinging(30);
    RunInMemory run(values);
    Scope alone(TimeGraphOf(GraphMode::kContinuity), kStepOfRun);
    Scope both(TimeGraphOf(GraphMode::kContinuity), kStepOfRun);
    both.host.behind = Behind(run, 30, 0);
    for (Scope* const scope : {&alone, &both}) {
        FeedFirst(*scope, values);
    }
    EXPECT_EQ(both.Image(), alone.Image());
    // One line later it is seen; taken away nothing of it stays.
    both.host.behind->shift = 1;
    both.Feed({{}});
    alone.Feed({{}});
    EXPECT_NE(both.Image(), alone.Image());
    EXPECT_GT(both.Count(both.Line().BackStyle().color), 0);
    both.host.behind.reset();
    both.Feed({{}});
    EXPECT_EQ(both.Image(), alone.Image());
}

TEST(BackCurves, StandAtTheirLinesAndNowhereElse) {
    RunInMemory run(std::vector<double>(13, 80.0));
    Scope scope(TimeGraphOf(GraphMode::kContinuity), kStepOfRun);
    scope.host.behind = Behind(run, 13, 20);
    FeedFirst(scope, std::vector<double>(30, 20.0));
    const QColor dimmed = scope.Line().BackStyle().color;
    const double width = scope.draw->PlotArea().width() - 1;
    const auto [first, last] = ColumnsOf(scope, dimmed);
    // Lines 20 to 32 of a graph that shows 0 to 40: ahead of the curve, too.
    EXPECT_NEAR(first, 20.0 / 40.0 * width, 1.0);
    EXPECT_NEAR(last, 32.0 / 40.0 * width, 1.0);
    EXPECT_NE(dimmed, scope.Line().ShownColor());
}

TEST(BackCurves, LieAheadOfASweep) {
    RunInMemory run(std::vector<double>(200, 80.0));
    Scope scope(TimeGraphOf(GraphMode::kClassic), kStepOfRun);
    FeedFirst(scope, std::vector<double>(41, 20.0));
    scope.host.behind = Behind(run, 200, 0);
    scope.Feed({std::vector<double>(12, 20.0)});
    const auto [first, last] = ColumnsOf(scope, scope.Line().BackStyle().color);
    EXPECT_LE(first, 1);
    EXPECT_GE(last, scope.draw->PlotArea().width() - 2);
}

TEST(BackCurves, WithoutAPlaceOrValuesAreNotDrawn) {
    RunInMemory run(std::vector<double>(40, 80.0));
    Scope scope(TimeGraphOf(GraphMode::kContinuity), kStepOfRun);
    scope.host.behind = Behind(run, 40, 0);
    scope.Draw();
    EXPECT_EQ(scope.Count(scope.Line().BackStyle().color), 0) << "no line is seen";
    scope.host.behind->shift.reset();
    FeedFirst(scope, std::vector<double>(30, 20.0));
    EXPECT_EQ(scope.Count(scope.Line().BackStyle().color), 0);
    scope.host.behind = Behind(run, 40, 0);
    scope.host.behind->y = {nullptr};
    scope.Feed({{}});
    EXPECT_EQ(scope.Count(scope.Line().BackStyle().color), 0);
}

TEST(BackCurves, FollowTheSizeAndTheScale) {
    RunInMemory run(std::vector<double>(60, 80.0));
    Scope scope(TimeGraphOf(GraphMode::kContinuity), kStepOfRun);
    scope.host.behind = Behind(run, 60, 0);
    FeedFirst(scope, std::vector<double>(41, 20.0));
    scope.draw->SetRectangle(QRect(0, 0, 300, 120));
    scope.Feed({{}});
    const QRect plot = scope.draw->PlotArea();
    const QColor dimmed = scope.Line().BackStyle().color;
    const int row = plot.bottom() - static_cast<int>(0.8 * plot.height());
    bool is_there = false;
    for (int y = row - 1; y <= row + 1; ++y) {
        is_there = is_there || scope.Image().pixelColor(plot.center().x(), y) == dimmed;
    }
    EXPECT_TRUE(is_there);
}

TEST(BackCurves, OverAnAxisAllOfTheRunIsSeen) {
    RunInMemory x({10.0, 90.0, 90.0, 10.0});
    RunInMemory y({10.0, 10.0, 90.0, 90.0});
    Scope scope(AxisGraph(10.0, ManualScale(0.0, 100.0), ManualScale(0.0, 100.0)), kStepOfRun);
    BackRun behind = Behind(y, 4, std::nullopt);
    scope.host.behind = behind;
    scope.Feed({{50.0, 51.0}, {50.0, 51.0}});
    EXPECT_EQ(scope.Count(scope.Line().BackStyle().color), 0) << "nothing to stand over";
    behind.x = x.Stream();
    scope.host.behind = behind;
    scope.Feed({{52.0}, {52.0}});
    EXPECT_GT(scope.Count(scope.Line().BackStyle().color), scope.draw->PlotArea().width());
}

}  // namespace
}  // namespace wavo

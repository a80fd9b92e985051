// Curves that are told apart by their dashes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "drawing_fixture.h"
#include "graph/draw/raster/dash_pattern.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ManualScale;
using testing::Scope;
using testing::ScopeLooks;
using testing::TimeGraph;

constexpr double kStep = 0.01;
const QSize kDashedSize(400, 200);

ScopeLooks DashedLooks(bool line_styles, double ratio = 1.0) {
    ScopeLooks looks;
    looks.size = kDashedSize;
    looks.ratio = ratio;
    looks.settings.line_styles = line_styles;
    return looks;
}

/// The first curve, which is solid, has no values: what is seen is the second one.
WavoGraph SecondOfTwo(double range, GraphMode mode) {
    WavoGraph graph = TimeGraph(range, mode);
    AddAxis(graph, "none", ManualScale(-10.0, 10.0));
    AddAxis(graph, "X", ManualScale(-10.0, 10.0));
    return graph;
}

class DashedScope {
 public:
    DashedScope(const WavoGraph& graph, bool line_styles, double ratio = 1.0)
        : scope(graph, kStep, QRect(QPoint(0, 0), kDashedSize), 0.0,
                DashedLooks(line_styles, ratio)) {
        scope.Draw();
    }
    void FeedSecond(const std::vector<double>& values) {
        scope.Feed({std::vector<double>(values.size(), kNaN), values});
    }

    Scope scope;
};

QRect DevicePlot(const Scope& scope) {
    return scope.draw->Frame().DevicePlotArea();
}

std::vector<double> Wave(int count, double period, double amplitude) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        values.push_back(amplitude * std::sin(2.0 * std::numbers::pi * i / period));
    }
    return values;
}

TEST(LineStyles, AreOffUnlessTheyAreWanted) {
    EXPECT_FALSE(GraphDisplaySettings().line_styles);
    const std::vector<double> values = Wave(300, 90.0, 8.0);
    DashedScope plain(SecondOfTwo(4.0, GraphMode::kContinuity), false);
    plain.FeedSecond(values);
    const QImage before = plain.scope.Image();
    plain.scope.draw->SetLineStyles(true);
    plain.scope.Draw();
    EXPECT_NE(plain.scope.Image(), before);
    plain.scope.draw->SetLineStyles(false);
    plain.scope.Draw();
    EXPECT_EQ(plain.scope.Image(), before);
}

TEST(LineStyles, LeaveTheFirstCurveAsItIsButForItsText) {
    const std::vector<double> values = Wave(300, 90.0, 8.0);
    DashedScope plain(SecondOfTwo(4.0, GraphMode::kContinuity), false);
    DashedScope dashed(SecondOfTwo(4.0, GraphMode::kContinuity), true);
    for (DashedScope* const each : {&plain, &dashed}) {
        each->scope.Feed({values, std::vector<double>(values.size(), kNaN)});
    }
    const QRect plot = DevicePlot(plain.scope);
    EXPECT_EQ(dashed.scope.Image().copy(plot), plain.scope.Image().copy(plot));
    EXPECT_NE(dashed.scope.Image(), plain.scope.Image());
}

struct DashedCase {
    GraphMode mode;
    double range;  ///< 40: more samples than columns; 1: less
    double ratio;
};

class EveryTimeCurve : public ::testing::TestWithParam<DashedCase> {};

TEST_P(EveryTimeCurve, PaintsItsDashesColumnByColumnAndNothingElse) {
    const DashedCase& kind = GetParam();
    DashedScope plain(SecondOfTwo(kind.range, kind.mode), false, kind.ratio);
    DashedScope dashed(SecondOfTwo(kind.range, kind.mode), true, kind.ratio);
    const DashPattern pattern(1, kind.ratio);
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> noise(-2.0, 2.0);
    for (int batch = 0; batch < 30; ++batch) {
        std::vector<double> values = Wave(static_cast<int>(kind.range * 5), 90.0, 6.0);
        for (double& value : values) {
            value += noise(random);
        }
        plain.FeedSecond(values);
        dashed.FeedSecond(values);
    }
    const QRect plot = DevicePlot(plain.scope);
    ASSERT_EQ(DevicePlot(dashed.scope), plot);
    const QRgb color = plain.scope.Line(1).ShownColor().rgb();
    int gaps = 0;
    for (int column = 1; column + 1 < plot.width(); ++column) {
        for (int y = plot.top() + 1; y < plot.bottom(); ++y) {
            const bool is_whole = plain.scope.Image().pixel(plot.left() + column, y) == color;
            const bool is_painted = dashed.scope.Image().pixel(plot.left() + column, y) == color;
            ASSERT_TRUE(is_whole || !is_painted) << column << " " << y;
            ASSERT_TRUE(is_painted || !is_whole || !pattern.Paints(column)) << column << " " << y;
            gaps += is_whole && !is_painted ? 1 : 0;
        }
    }
    EXPECT_GT(gaps, plot.width() / 8);
}

INSTANTIATE_TEST_SUITE_P(LineStyles, EveryTimeCurve,
                         ::testing::Values(DashedCase{GraphMode::kContinuity, 40.0, 1.0},
                                           DashedCase{GraphMode::kClassic, 40.0, 1.0},
                                           DashedCase{GraphMode::kContinuity, 40.0, 1.5},
                                           DashedCase{GraphMode::kContinuity, 1.0, 1.0},
                                           DashedCase{GraphMode::kClassic, 1.0, 2.0}));

TEST(LineStyles, StandStillWhileTheCurveScrolls) {
    DashedScope dashed(SecondOfTwo(4.0, GraphMode::kContinuity), true);
    for (int batch = 0; batch < 8; ++batch) {
        dashed.FeedSecond(std::vector<double>(100, 3.0));
    }
    const QImage before = dashed.scope.Image();
    for (const int count : {1, 3, 7, 50}) {
        dashed.FeedSecond(std::vector<double>(static_cast<std::size_t>(count), 3.0));
        EXPECT_EQ(dashed.scope.Image(), before) << count;
    }
}

TEST(LineStyles, ShowASpikeWhereverItStands) {
    for (const double range : {40.0, 1.0}) {
        for (int place = 0; place < 24; ++place) {
            DashedScope dashed(SecondOfTwo(range, GraphMode::kContinuity), true);
            const auto all = static_cast<std::size_t>(std::lround(range / kStep)) + 1;
            std::vector<double> values(all, -5.0);
            const std::size_t at =
                all / 2 + static_cast<std::size_t>(place * (range > 2.0 ? 10 : 1));
            values[at] = 5.0;
            dashed.FeedSecond(values);
            const QRect plot = DevicePlot(dashed.scope);
            const QRgb color = dashed.scope.Line(1).ShownColor().rgb();
            int seen = 0;  // of the upper third
            for (int x = plot.left() + 1; x < plot.right(); ++x) {
                for (int y = plot.top() + 1; y < plot.top() + plot.height() / 3; ++y) {
                    seen += dashed.scope.Image().pixel(x, y) == color ? 1 : 0;
                }
            }
            EXPECT_GE(seen, 2) << range << " " << place;
        }
    }
}

/// Y, which is solid, and Z, over X: Z goes round in a circle.
WavoGraph CircleGraph() {
    WavoGraph graph = AxisGraph(0.0, ManualScale(-10.0, 10.0), ManualScale(-10.0, 10.0));
    graph.FadeOutTime = 0.0;
    graph.XScale.TimeRange = 100.0;
    AddAxis(graph, "Z", ManualScale(-10.0, 10.0));
    graph.YCoorAxColor = {0x00FFFF, 0x00FF00};
    return graph;
}

/// Those of the second curve, however faded.
int GreenPixels(const Scope& scope) {
    int count = 0;
    const QRect plot = DevicePlot(scope);
    for (int y = plot.top(); y <= plot.bottom(); ++y) {
        for (int x = plot.left(); x <= plot.right(); ++x) {
            const QColor color = scope.Image().pixelColor(x, y);
            count += color.green() > color.red() + 20 ? 1 : 0;
        }
    }
    return count;
}

/// Feeds rounds of so many samples each.
void FeedRounds(Scope& scope, int rounds, int samples) {
    constexpr int kBatch = 100;
    for (int first = 0; first < rounds * samples; first += kBatch) {
        std::vector<double> x;
        std::vector<double> z;
        for (int i = first; i < std::min(first + kBatch, rounds * samples); ++i) {
            // Other places in each round.
            const double angle = 2.0 * std::numbers::pi * (i + 0.37 * (i / samples)) / samples;
            x.push_back(8.0 * std::cos(angle));
            z.push_back(8.0 * std::sin(angle));
        }
        scope.Feed({std::vector<double>(x.size(), kNaN), z, x});
    }
}

TEST(LineStyles, DashACircleAndDoNotFillItUpWithTheRounds) {
    for (const int samples : {60, 700, 3000}) {
        WavoGraph graph = CircleGraph();
        graph.FadeOutTime = 300.0;
        const auto scope = [&graph](bool line_styles) {
            return std::make_unique<Scope>(graph, kStep, QRect(QPoint(0, 0), kDashedSize), 300.0,
                                           DashedLooks(line_styles));
        };
        const auto plain = scope(false);
        const auto dashed = scope(true);
        for (Scope* const each : {plain.get(), dashed.get()}) {
            each->Draw();
            FeedRounds(*each, 1, samples);
        }
        const double whole = GreenPixels(*plain);
        const double once = GreenPixels(*dashed);
        EXPECT_GT(once, 0.5 * whole) << samples;
        EXPECT_LT(once, 0.85 * whole) << samples;
        FeedRounds(*plain, 7, samples);
        FeedRounds(*dashed, 7, samples);
        EXPECT_LT(GreenPixels(*dashed), 0.88 * GreenPixels(*plain)) << samples;
    }
}

TEST(LineStyles, LeavePointsAsTheyAre) {
    WavoGraph graph = CircleGraph();
    graph.FadeOutTime = 300.0;
    graph.ModeAx = AxisDrawMode::kPoints;
    std::vector<QImage> pictures;
    for (const bool line_styles : {false, true}) {
        Scope scope(graph, kStep, QRect(QPoint(0, 0), kDashedSize), 300.0,
                    DashedLooks(line_styles));
        scope.Draw();
        FeedRounds(scope, 1, 500);
        pictures.push_back(scope.Image().copy(DevicePlot(scope)));
    }
    EXPECT_EQ(pictures[0], pictures[1]);
}

TEST(LineStyles, AreShownBelowTheTextsOfTheCurves) {
    for (const QSize size : {kDashedSize, QSize(400, 50)}) {  // the second has one line of text
        std::vector<QImage> pictures;
        for (const bool line_styles : {false, true}) {
            ScopeLooks looks = DashedLooks(line_styles);
            looks.size = size;
            Scope scope(SecondOfTwo(4.0, GraphMode::kContinuity), kStep, QRect(QPoint(0, 0), size),
                        0.0, looks);
            scope.Draw();
            pictures.push_back(scope.Image());
        }
        int different = 0;
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                different += pictures[0].pixel(x, y) != pictures[1].pixel(x, y) ? 1 : 0;
            }
        }
        EXPECT_GT(different, 80) << size.height();
    }
}

}  // namespace
}  // namespace wavo

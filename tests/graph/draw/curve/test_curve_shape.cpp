#include "graph/draw/curve/curve_shape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "graph/draw/curve/scroll_curve.h"
#include "graph/draw/raster/mapping.h"

namespace wavo {
namespace {

constexpr double kStep = 0.25;
constexpr QRect kPlot(5, 7, 40, 30);

/// A curve with its shape on a plot area.
struct Shown {
    explicit Shown(std::uint64_t most, const QRect& area = kPlot)
        : plot(area),
          x(Coordinate::kX, VerticalScaleLines(area, 3)),
          y(Coordinate::kY, HorizontalScaleLines(area, 3)),
          curve(kStep, most) {
        x.Fill({0.0, static_cast<double>(most - 1) * kStep});
        y.Fill({-1.0, 1.0});
    }

    void Add(std::size_t count) {
        std::vector<double> samples;
        for (std::size_t i = 0; i < count; ++i) {
            samples.push_back(std::sin(0.1 * static_cast<double>(next++)));
        }
        curve.Add(samples, false, 0.0);
    }

    bool Update() { return shape.Update(curve, x, y, plot, kStep); }

    /// The shape that a new one finds.
    void ExpectAsNew() {
        CurveShape other;
        ASSERT_TRUE(other.Update(curve, x, y, plot, kStep));
        ASSERT_EQ(shape.HasSpans(), other.HasSpans());
        ASSERT_EQ(shape.Segments(), other.Segments());
        if (shape.HasSpans()) {
            ASSERT_EQ(shape.Spans().top, other.Spans().top);
            ASSERT_EQ(shape.Spans().bottom, other.Spans().bottom);
            ASSERT_EQ(shape.Spans().more, other.Spans().more);
        }
    }

    QRect plot;
    AxisMapping x;
    AxisMapping y;
    ScrollCurve curve;
    CurveShape shape;
    std::uint64_t next = 0;
};

TEST(CurveShape, OfFewSamplesIsSegmentsAndOfManyIsSpans) {
    Shown few(10);
    few.Add(10);
    ASSERT_TRUE(few.Update());
    EXPECT_FALSE(few.shape.HasSpans());
    ASSERT_EQ(few.shape.Segments().size(), 9U);
    EXPECT_EQ(few.shape.Segments().front().p1(), QPoint(5, few.y.MapForced(0.0)));
    EXPECT_EQ(few.shape.Segments().back().p2(), QPoint(44, few.y.MapForced(std::sin(0.9))));
    Shown many(400);
    many.Add(400);
    ASSERT_TRUE(many.Update());
    EXPECT_TRUE(many.shape.HasSpans());
    EXPECT_TRUE(many.shape.Segments().empty());
    EXPECT_EQ(many.shape.Spans().Columns(), 40);
}

TEST(CurveShape, FollowsCurveAndScalesAsIfItWereNew) {
    for (const std::uint64_t most : {2U, 17U, 41U, 300U}) {
        Shown shown(most);
        for (int round = 0; round < 40; ++round) {
            switch (round % 8) {
                case 3:
                    shown.y.Fill({-1.0 - 0.1 * round, 2.0});
                    shown.shape.YChanged();
                    break;
                case 5:
                    shown.x.Fill({0.0, static_cast<double>(most + round) * kStep});
                    shown.shape.XChanged();
                    break;
                case 6:
                    shown.curve.Clear();
                    break;
                case 7:
                    shown.curve.ShowOwnWindow({0, shown.curve.HeldSamples() / 2});
                    break;
                default:
                    if (round % 8 == 0) {
                        shown.curve.Clear();
                    }
                    shown.Add(1 + static_cast<std::size_t>(round) % most);
            }
            ASSERT_TRUE(shown.Update());
            shown.ExpectAsNew();
            if (HasFatalFailure()) {
                FAIL() << most << " points, round " << round;
            }
        }
    }
}

TEST(CurveShape, FollowsACurveThatScrollsOnAndOn) {
    // Columns of few samples and of many; rows of one byte and of two.
    for (const int height : {30, 300}) {
        for (const std::uint64_t most : {300U, 2000U, 5000U}) {
            Shown shown(most, QRect(5, 7, 40, height));
            for (int step = 0; step < 400; ++step) {
                shown.Add(1 + static_cast<std::size_t>(step * step) % (most / 10));
                if (step % 100 == 50) {
                    shown.curve.Add(std::vector<double>{std::nan("")}, false, 0.0);
                }
                if (step % 100 == 99) {
                    shown.curve.Clear();
                    shown.Add(most / 2);
                }
                ASSERT_TRUE(shown.Update());
                shown.ExpectAsNew();
                if (HasFatalFailure()) {
                    FAIL() << height << " rows, " << most << " points, step " << step;
                }
            }
        }
    }
}

TEST(CurveShape, IsKeptWhileNothingChanges) {
    Shown shown(300);
    shown.Add(200);
    ASSERT_TRUE(shown.Update());
    const std::uint64_t version = shown.shape.Version();
    ASSERT_TRUE(shown.Update());
    EXPECT_EQ(shown.shape.Version(), version);
    shown.shape.YChanged();
    ASSERT_TRUE(shown.Update());
    EXPECT_NE(shown.shape.Version(), version);
}

TEST(CurveShape, OfNoSampleAndOfOneShowsNothing) {
    for (const std::size_t count : {0U, 1U}) {
        Shown shown(300);
        shown.Add(count);
        ASSERT_TRUE(shown.Update());
        EXPECT_TRUE(shown.shape.Segments().empty());
        for (std::int32_t column = 0; column < kPlot.width(); ++column) {
            const auto at = static_cast<std::size_t>(column);
            EXPECT_GT(shown.shape.Spans().top[at], shown.shape.Spans().bottom[at]);
        }
    }
}

TEST(CurveShape, NeedsAPlotAreaThatItCanCount) {
    struct Case {
        QRect plot;
        bool drawn;
    };
    for (const Case& test : {Case{QRect(0, 0, 0, 10), false}, Case{QRect(0, 0, 10, 0), false},
                             Case{QRect(3, 3, 1, 1), true}, Case{QRect(-4, -9, 2, 2), true},
                             Case{QRect(0, 0, 2, ColumnSpans::kMostRows), true},
                             Case{QRect(0, 0, 2, ColumnSpans::kMostRows + 1), false},
                             Case{QRect(0, 0, ColumnSpans::kMostRows + 1, 2), false}}) {
        Shown shown(300, test.plot);
        shown.Add(300);
        EXPECT_EQ(shown.Update(), test.drawn) << test.plot.width() << " x " << test.plot.height();
    }
}

TEST(CurveShape, ReachesTheLastRowOfTheHighestPlotArea) {
    Shown shown(300, QRect(0, 0, 2, ColumnSpans::kMostRows));
    shown.y.Fill({0.0, 1.0});
    shown.curve.Add(std::vector<double>{1, 0, 1, 0, 0, 0}, false, 0.0);
    ASSERT_TRUE(shown.Update());
    ASSERT_TRUE(shown.shape.HasSpans());
    EXPECT_EQ(shown.shape.Spans().top[0], 0);
    EXPECT_EQ(shown.shape.Spans().bottom[0], ColumnSpans::kMostRows - 1);
}

}  // namespace
}  // namespace wavo

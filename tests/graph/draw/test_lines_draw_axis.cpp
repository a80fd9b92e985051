#include "graph/draw/lines_draw_axis.h"

#include <gtest/gtest.h>

#include <QImage>
#include <limits>
#include <memory>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "special_values.h"
#include "support/diagnostics.h"

namespace wavo {
namespace {

using testing::AutomaticScale;
using testing::CollectReports;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::TimeScale;

/// A curve over a plot area of 0 to 400 x 0 to 200 pixels.
struct Curve {
    Curve(GraphMode mode, double range, double step,
          const ScaleDefinition& y = ManualScale(0.0, 10.0))
        : Curve(TimeScale(range), y, mode, range, step) {}

    /// Over an axis.
    Curve(const ScaleDefinition& x, const ScaleDefinition& y, double range = 1.0)
        : Curve(x, y, GraphMode::kContinuity, range, 0.25) {}

    Curve(const ScaleDefinition& x, const ScaleDefinition& y, GraphMode mode, double range,
          double step)
        : x_scale(x), y_scale(y) {
        LinesDrawAxis::Settings settings;
        settings.x_type = x.ScaleType == ScaleTypeCode::kTime ? CoorType::kTime : CoorType::kAxis;
        settings.mode = mode;
        settings.axis_name = "X";
        settings.color = 0x0000FF;  // red
        settings.cycle_time = step;
        settings.range = range;
        line = std::make_unique<LinesDrawAxis>(Geometry(), x_scale, y_scale, settings);
    }

    static PlotGeometry Geometry() {
        const QRect plot(0, 0, 401, 201);
        return {plot, VerticalScaleLines(plot, 3), HorizontalScaleLines(plot, 3)};
    }

    void Add(const std::vector<double>& values, double start_time) const {
        line->DrawLinesXIsTime(values, start_time, nullptr);
    }

    [[nodiscard]] std::vector<double> Times() const {
        std::vector<double> times;
        for (std::size_t i = 0; i < line->Size(); ++i) {
            times.push_back(line->Point(i).x_value);
        }
        return times;
    }
    [[nodiscard]] std::vector<double> Values() const {
        std::vector<double> values;
        for (std::size_t i = 0; i < line->Size(); ++i) {
            values.push_back(line->Point(i).y_value);
        }
        return values;
    }

    /// Number of pixels that are not background after drawing.
    [[nodiscard]] int Drawn(ColorRef color = kOwnColor) const {
        QImage image(401, 201, QImage::Format_RGB32);
        image.fill(Qt::black);
        PlotCanvas canvas;
        const QImage background = image;
        canvas.Begin(image, background, QPoint(), image.rect());
        line->DrawAllLinesXIsTime(color, &canvas);
        canvas.End();
        last_image = image;
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                count += image.pixelColor(x, y) != QColor(Qt::black) ? 1 : 0;
            }
        }
        return count;
    }
    [[nodiscard]] QColor PixelAt(int x, int y) const { return last_image.pixelColor(x, y); }

    ScaleDefinition x_scale;
    ScaleDefinition y_scale;
    std::unique_ptr<LinesDrawAxis> line;
    mutable QImage last_image;
};

TEST(CurvePoints, OneMoreThanStepsInTheRange) {
    EXPECT_EQ(MaxCurvePoints(1.0, 0.25), 5U);
    EXPECT_EQ(MaxCurvePoints(2.0, 0.004), 501U);
    EXPECT_EQ(MaxCurvePoints(0.3, 0.1), 4U) << "rounded, not truncated";
    EXPECT_EQ(MaxCurvePoints(0.0, 0.1), 1U);
}

TEST(CurvePoints, AreBoundedForEveryRange) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(MaxCurvePoints(-5.0, 0.1), 1U);
    EXPECT_EQ(MaxCurvePoints(kNaN, 0.1), 1U);
    EXPECT_EQ(MaxCurvePoints(0.0, 0.0), 1U);
    EXPECT_EQ(MaxCurvePoints(1.0, 0.0), MaxCurvePoints(inf, 1.0));
    EXPECT_EQ(MaxCurvePoints(1e300, 1e-300), MaxCurvePoints(inf, 1.0));
}

TEST(ClassicCurve, SweepsAndGoesOnFromTheLeftBorder) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add({0, 1, 2, 3, 4}, 0.0);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0, 0.25, 0.5, 0.75, 1.0}));
    curve.Add({5}, 1.25);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0.25, 0.25, 0.5, 0.75, 1.0}));
    EXPECT_EQ(curve.Values(), (std::vector<double>{5, 1, 2, 3, 4}));
}

TEST(ClassicCurve, EveryRoundIsLikeTheFirstHoweverItIsCutIntoBatches) {
    const std::vector<double> expected{0,    0.25, 0.5,  0.75, 1.0,  0.25, 0.5,
                                       0.75, 1.0,  0.25, 0.5,  0.75, 1.0,  0.25};
    for (const std::size_t batch : {1U, 2U, 3U, 5U, 14U}) {
        const Curve curve(GraphMode::kClassic, 1.0, 0.25);
        std::vector<double> newest;
        for (std::size_t first = 0; first < expected.size(); first += batch) {
            const std::size_t count = std::min(batch, expected.size() - first);
            curve.Add(Ramp(static_cast<double>(first), static_cast<int>(count)),
                      static_cast<double>(first) * 0.25);
            std::vector<double> values;
            curve.line->GetYValues(values);
            EXPECT_EQ(values.back(), static_cast<double>(first + count - 1));
            for (std::size_t i = 0; i < curve.line->Size(); ++i) {
                const LinePoint point = curve.line->Point(i);
                EXPECT_EQ(point.x_value, expected[static_cast<std::size_t>(point.y_value)])
                    << "batch of " << batch << ", value " << point.y_value;
            }
        }
    }
}

TEST(ClassicCurve, WriteIndexStaysZeroUntilTheFifoIsFull) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add({0, 1, 2, 3, 4}, 0.0);
    EXPECT_EQ(curve.line->WriteIndex(), 0U);
    curve.Add({5, 6, 7, 8, 9}, 1.25);
    EXPECT_EQ(curve.line->WriteIndex(), 5U);
    curve.Add({10}, 2.5);
    EXPECT_EQ(curve.line->WriteIndex(), 1U) << "reset before the write";
    EXPECT_EQ(curve.Values(), (std::vector<double>{10, 6, 7, 8, 9}));
}

TEST(ClassicCurve, GivesItsValuesInTheOrderOfTime) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    std::vector<double> values;
    for (int i = 0; i < 13; ++i) {
        curve.Add({static_cast<double>(i)}, i * 0.25);
    }
    curve.line->GetYValues(values);
    EXPECT_EQ(values, Ramp(8, 5));
}

TEST(ClassicCurve, StartTimeZeroBeginsAtTheLeft) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add({0, 1}, 0.0);
    curve.Add({2}, 0.0);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0, 0.25, 0}));
}

TEST(ClassicCurve, FirstValueAfterEmptyingStandsAtTheLeft) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add({0, 1, 2}, 0.0);
    curve.line->Empty();
    EXPECT_EQ(curve.line->Size(), 0U);
    curve.Add({7, 8}, 3.5);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0, 0.25}));
}

TEST(ClassicCurve, LeavesAGapBetweenNewestAndOldest) {
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add({0, 0, 0, 0, 0}, 0.0);
    curve.Add({10, 10}, 1.25);  // at 0.25 and 0.5: new at the top, old at the bottom
    EXPECT_GT(curve.Drawn(), 0);
    EXPECT_EQ(curve.PixelAt(150, 0), QColor(Qt::red)) << "new";
    EXPECT_EQ(curve.PixelAt(250, 200), QColor(Qt::red)) << "old";
    for (int y = 1; y < 200; ++y) {
        EXPECT_EQ(curve.PixelAt(200, y), QColor(Qt::black)) << "no line from new to old";
    }
}

TEST(ClassicCurve, HasNoHoleWhereItsRingIsClosed) {
    // The ring holds 5 values, a round has 4: the newest sweep runs over the end of the ring.
    const Curve curve(GraphMode::kClassic, 1.0, 0.25);
    curve.Add(std::vector<double>(12, 5.0), 0.0);
    ASSERT_EQ(curve.line->WriteIndex(), 2U);
    ASSERT_EQ(curve.line->Point(4).x_value, 0.25);
    ASSERT_EQ(curve.line->Point(0).x_value, 0.5);
    EXPECT_GT(curve.Drawn(), 0);
    EXPECT_EQ(curve.PixelAt(150, 100), QColor(Qt::red));
}

TEST(ClassicCurve, AStepLongerThanTheRangeIsHarmless) {
    const Curve curve(GraphMode::kClassic, 0.1, 1.0);
    curve.Add(Ramp(0, 10), 0.0);
    curve.Add(Ramp(10, 10), 10.0);
    EXPECT_EQ(curve.line->Size(), curve.line->MaxPoints());
}

TEST(ContinuityCurve, FillsFromTheLeftThenScrolls) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add({0, 1, 2}, 0.0);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0, 0.25, 0.5}));
    EXPECT_EQ(curve.line->Point(1).x, 100);
    curve.Add({3, 4, 5, 6}, 0.75);
    EXPECT_EQ(curve.Times(), (std::vector<double>{0, 0.25, 0.5, 0.75, 1.0}));
    EXPECT_EQ(curve.Values(), Ramp(2, 5));
    EXPECT_EQ(curve.line->Point(0).x, 0);
    EXPECT_EQ(curve.line->Point(4).x, 400);
    EXPECT_EQ(curve.line->Point(4).y, 80);
    EXPECT_EQ(curve.line->WriteIndex(), 0U);
}

TEST(ContinuityCurve, TimesAreSumsUntilTheFifoIsFullThenPlaces) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.1);
    curve.Add(Ramp(0, 11), 0.0);
    double sum = 0.0;
    for (std::size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(curve.line->Point(i).x_value, sum);
        sum += 0.1;
    }
    curve.Add({11}, 1.1);
    for (std::size_t i = 0; i < 11; ++i) {
        EXPECT_EQ(curve.line->Point(i).x_value, static_cast<double>(i) * 0.1);
    }
}

TEST(ContinuityCurve, ABatchOfTheWholeFifoReplacesIt) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add(Ramp(0, 5), 0.0);
    curve.Add(Ramp(5, 5), 1.25);
    EXPECT_EQ(curve.Values(), Ramp(5, 5));
}

TEST(ContinuityCurve, ALargerBatchIsRejected) {
    const ExpectErrorLog expected(
        {"LinesDrawAxis::DrawLinesXIsTime(): number of new values > number of max. values in "
         "line-fifo"});
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add(Ramp(0, 3), 0.0);
    curve.Add(Ramp(3, 6), 0.75);
    EXPECT_EQ(curve.Values(), Ramp(0, 3));
}

TEST(Curve, WithoutNewValuesNothingIsDrawnOrTraced) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add(Ramp(0, 3), 0.0);
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(diagnostics::Service::kTrace);
    curve.Add({}, 0.75);
    EXPECT_TRUE(traces.Texts().empty());
    _MTrace_SetLevel("default", 1);
}

TEST(Curve, OnePointDrawsNothingTwoDrawALine) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    EXPECT_EQ(curve.Drawn(), 0);
    curve.Add({5}, 0.0);
    EXPECT_EQ(curve.Drawn(), 0);
    curve.Add({5}, 0.25);
    EXPECT_EQ(curve.Drawn(), 101);
}

TEST(Curve, IsDrawnInTheColorGivenOrInItsOwn) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add({5, 5}, 0.0);
    (void)curve.Drawn(0x00FF00);
    EXPECT_EQ(curve.PixelAt(50, 100), QColor(0, 255, 0));
    (void)curve.Drawn(0x1000FF00);
    EXPECT_EQ(curve.PixelAt(50, 100), QColor(255, 0, 0));
}

TEST(Curve, NaNIsAGap) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add({5, 5, kNaN, 5, 5}, 0.0);
    EXPECT_EQ(curve.Drawn(), 2 * 101);
    EXPECT_EQ(curve.PixelAt(200, 100), QColor(Qt::black));
    EXPECT_EQ(curve.PixelAt(0, 0), QColor(Qt::black));
}

TEST(Curve, InfiniteValuesClampToTheBorder) {
    const double inf = std::numeric_limits<double>::infinity();
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add({inf, -inf, 1e300}, 0.0);
    EXPECT_EQ(curve.line->Point(0).y, 0);
    EXPECT_EQ(curve.line->Point(1).y, 200);
    EXPECT_EQ(curve.line->Point(2).y, 0);
}

TEST(Curve, AutomaticScaleMapsThePointsAgain) {
    Curve curve(GraphMode::kContinuity, 1000.0, 0.25, AutomaticScale());
    curve.line->CheckYScaleValue({0.0, 10.0});
    curve.Add({0.0, 10.0}, 0.0);
    const std::int32_t before = curve.line->Point(1).y;
    curve.line->CheckYScaleValue({110.0});
    EXPECT_DOUBLE_EQ(curve.y_scale.Maximum, 115.5);
    EXPECT_DOUBLE_EQ(curve.line->YLines().back().value, 115.5);
    EXPECT_GT(curve.line->Point(1).y, before);
}

TEST(Curve, AutomaticScaleShrinksWhenTheLargeValuesHaveLeft) {
    Curve curve(GraphMode::kContinuity, 10.0, 0.25, AutomaticScale());
    for (int i = 0; i < 100; ++i) {
        const double value = i == 0 ? 1000.0 : static_cast<double>(i % 3);
        curve.line->CheckYScaleValue({value});
        curve.Add({value}, i * 0.25);
    }
    EXPECT_DOUBLE_EQ(curve.y_scale.Maximum, 2.1);
    EXPECT_DOUBLE_EQ(curve.y_scale.Minimum, -0.1);
}

TEST(Curve, EmptyingForgetsTheExtremes) {
    Curve curve(GraphMode::kContinuity, 1000.0, 0.25, AutomaticScale());
    curve.line->CheckYScaleValue({0.0, 1000.0});
    curve.line->Empty();
    curve.line->CheckYScaleValue({4.0, 6.0});
    EXPECT_DOUBLE_EQ(curve.y_scale.Maximum, 6.1);
    EXPECT_DOUBLE_EQ(curve.y_scale.Minimum, 3.9);
}

TEST(Curve, MovingTheGraphMapsEverythingAgain) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    curve.Add(Ramp(0, 5), 0.0);
    const QRect plot(100, 50, 201, 101);
    curve.line->SetGeometry({plot, VerticalScaleLines(plot, 3), HorizontalScaleLines(plot, 3)},
                            1.0);
    EXPECT_EQ(curve.line->Point(0).x, 100);
    EXPECT_EQ(curve.line->Point(4).x, 300);
    EXPECT_EQ(curve.line->Point(0).y, 150);
    EXPECT_EQ(curve.line->Point(4).y, 110);
}

TEST(Curve, StaysInsideThePlotArea) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    const QRect plot(100, 50, 201, 101);
    curve.line->SetGeometry({plot, VerticalScaleLines(plot, 3), HorizontalScaleLines(plot, 3)},
                            1.0);
    curve.Add({-100, 100, -100, 100, 5}, 0.0);
    (void)curve.Drawn();
    for (int y = 0; y < 201; ++y) {
        for (int x = 0; x < 401; ++x) {
            if (!plot.contains(x, y)) {
                ASSERT_EQ(curve.PixelAt(x, y), QColor(Qt::black));
            }
        }
    }
}

TEST(Curve, TellsThatItsXScaleIsNoTime) {
    Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    EXPECT_EQ(curve.line->GetXTimeRange(), 1.0);
    curve.x_scale = ManualScale(0.0, 1.0);
    const ExpectErrorLog expected({"LinesDrawAxis::GetXTimeRange(): x scale is not a time range"});
    EXPECT_EQ(curve.line->GetXTimeRange(), 0.0);
}

TEST(CurveOverAnAxis, KeepsTheNewestPoints) {
    const Curve curve(ManualScale(0.0, 10.0), ManualScale(0.0, 10.0));
    curve.line->DrawLinesXIsAx({1, 2, 3}, {4, 5, 6}, nullptr);
    EXPECT_EQ(curve.line->Point(0).x, 40);
    EXPECT_EQ(curve.line->Point(0).y, 120);
    curve.line->DrawLinesXIsAx({4, 5, 6, 7}, {7, 8, 9, 10}, nullptr);
    EXPECT_EQ(curve.Times(), Ramp(3, 5));
    EXPECT_EQ(curve.Values(), Ramp(6, 5));
}

TEST(CurveOverAnAxis, ListsOfDifferentLengthAreReportedAndNotAdded) {
    const Curve curve(ManualScale(0.0, 10.0), ManualScale(0.0, 10.0));
    const ExpectErrorLog expected(
        {"LinesDrawAxis::DrawLinesXIsAx(): number of values x-coor. and number of values y-coor. "
         "are not equal"});
    curve.line->DrawLinesXIsAx({1, 2}, {1}, nullptr);
    EXPECT_EQ(curve.line->Size(), 0U);
}

TEST(CurveOverAnAxis, AutomaticXScaleFollowsItsOwnValues) {
    Curve curve(GraphMode::kContinuity, 1000.0, 0.25, AutomaticScale());
    curve.x_scale = AutomaticScale();
    curve.line->CheckYScaleValue({0.0, 1.0});
    curve.line->CheckXScaleValue({100.0, 300.0});
    EXPECT_DOUBLE_EQ(curve.x_scale.Minimum, 90.0);
    EXPECT_DOUBLE_EQ(curve.x_scale.Maximum, 310.0);
    EXPECT_DOUBLE_EQ(curve.line->XLines().front().value, 90.0);
    EXPECT_DOUBLE_EQ(curve.y_scale.Maximum, 1.05);
}

TEST(CurveOverAnAxis, AChangedScaleForcesTheYMappingAlone) {
    const Curve curve(AutomaticScale(), AutomaticScale(), 1000.0);
    const auto add = [&curve](double value) {
        curve.line->CheckYScaleValue({value});
        curve.line->CheckXScaleValue({value});
        curve.line->DrawLinesXIsAx({value}, {value}, nullptr);
    };
    add(5.0);
    EXPECT_EQ(curve.line->Point(0).x, 200);
    EXPECT_EQ(curve.line->Point(0).y, 100);
    add(105.0);
    EXPECT_EQ(curve.line->Point(0).x, 200) << "the x value mapped last keeps its pixel";
    EXPECT_EQ(curve.line->Point(0).y, 199);
    add(205.0);
    EXPECT_EQ(curve.line->Point(0).x, 0) << "another one was mapped in between";
}

TEST(CurveTraces, AreExactAtLevelFour) {
    Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    _MTrace_SetLevel("default", 4);
    const CollectReports traces(diagnostics::Service::kTrace);
    curve.line->CheckXScaleValue({});
    curve.line->CheckYScaleValue({});
    curve.Add({1}, 0.0);
    curve.line->DrawAllLinesXIsAx(kOwnColor, nullptr);
    EXPECT_EQ(traces.Texts(),
              (std::vector<std::string>{
                  "CheckXScaleValue(): --- starting", "CheckXScaleValue(): --- leaving",
                  "CheckYScaleValue(): --- starting", "CheckYScaleValue(): --- leaving",
                  "DrawAllLinesXIsTime(): --- starting", "DrawAllLinesXIsTime(): --- leaving",
                  "DrawAllLinesXIsAx(): --- starting", "DrawAllLines(): --- leaving"}));
    _MTrace_SetLevel("default", 1);
}

TEST(CurveTraces, AreSilentBelowLevelFour) {
    const Curve curve(GraphMode::kContinuity, 1.0, 0.25);
    _MTrace_SetLevel("default", 3);
    const CollectReports traces(diagnostics::Service::kTrace);
    curve.Add({1}, 0.0);
    EXPECT_TRUE(traces.Texts().empty());
    _MTrace_SetLevel("default", 1);
}

}  // namespace
}  // namespace wavo

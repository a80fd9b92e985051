// A run that lies behind a graph, against the segments between its values.
#include "graph/draw/curve/history_curve.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "counted_history.h"
#include "graph/values/graph_value.h"
#include "graph/values/missing_value.h"
#include "graph/values/ring_history.h"
#include "special_values.h"

namespace wavo {
namespace {

constexpr double kRunStep = 0.001;
constexpr std::int64_t kRunBegins = 500;
constexpr QRect kRunPlot(6, 18, 377, 231);

/// A buffer that holds a run, and the plot of a graph over time.
struct OtherRun {
    OtherRun(const std::vector<double>& samples, double range)
        : value("X", kRunStep, static_cast<double>(samples.size() + 1) * kRunStep, 0),
          history(value),
          plot({kRunPlot, VerticalScaleLines(kRunPlot, 7), HorizontalScaleLines(kRunPlot, 5)}, 1.0),
          given(samples) {
        plot.x.Fill({0.0, range});
        plot.y.Fill({-10.0, 10.0});
        value.ExpectLine(kRunBegins);
        value.SetValues(samples.data(), samples.size(), 1);
        picture = QImage(400, 260, QImage::Format_RGB32);
        picture.fill(Qt::black);
        background = picture.copy();
    }

    const QImage& Draw(HistoryCurve& curve) {
        CurveStyle style;
        style.color = Qt::white;
        canvas.Begin(picture, background, QPoint(), kRunPlot);
        curve.Draw(plot, style, canvas);
        canvas.End();
        return picture;
    }

    /// The segments between successive values within the scale, one by one.
    [[nodiscard]] QImage Reference(const HistoryCurve::Place& place, double range) const {
        std::vector<QLine> lines;
        bool open = false;
        QPoint last;
        for (std::size_t i = 0; i < given.size(); ++i) {
            const std::int64_t line = kRunBegins + static_cast<std::int64_t>(i);
            const double time =
                static_cast<double>(line - place.first_line) * place.step + place.offset;
            if (line < place.first_line || time < 0.0 || time > range || std::isnan(given[i])) {
                open = false;
                continue;
            }
            const QPoint point(plot.x.MapForced(time), plot.y.MapForced(given[i]));
            if (open) {
                lines.emplace_back(last, point);
            }
            open = true;
            last = point;
        }
        QImage image = background.copy();
        QPainter painter(&image);
        painter.setPen(QPen(Qt::white, 1));
        painter.drawLines(lines.data(), static_cast<int>(lines.size()));
        return image;
    }

    GraphValue value;
    RingHistory history;
    CurvePlot plot;
    std::vector<double> given;
    QImage picture;
    QImage background;
    PlotCanvas canvas;
};

std::vector<double> WildSamples(std::size_t count, unsigned gap_of, std::mt19937& random) {
    std::vector<double> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double noise = static_cast<double>(random() % 2000) / 1000.0 - 1.0;
        samples[i] = 8.0 * std::sin(static_cast<double>(i) * 0.01) + noise;
        if (gap_of != 0 && random() % gap_of == 0) {
            samples[i] = i % 2 == 0 ? kNaN : NoSample();
        } else if (gap_of != 0 && random() % 97 == 0) {
            samples[i] = kInf;
        }
    }
    return samples;
}

TEST(HistoryCurve, IsTheSegmentsBetweenItsValuesWhereverItStands) {
    std::mt19937 random(3);
    for (const std::size_t count : {2U, 40U, 376U, 900U, 20000U}) {
        for (const unsigned gap_of : {0U, 5U, 700U}) {
            const std::vector<double> samples = WildSamples(count, gap_of, random);
            const double range = static_cast<double>(count) * kRunStep * 0.8;
            for (const double offset : {0.0, 0.25 * range, -0.3 * range, 0.0001, 5.0 * range}) {
                for (const std::int64_t first : {kRunBegins, kRunBegins - 7, kRunBegins + 1}) {
                    OtherRun run(samples, range);
                    const HistoryCurve::Place place{first, offset, kRunStep};
                    HistoryCurve curve(run.history, place);
                    ASSERT_EQ(run.Draw(curve), run.Reference(place, range))
                        << count << " lines from " << first << " on, at " << offset;
                    EXPECT_TRUE(curve.IsComplete());
                }
            }
        }
    }
}

TEST(HistoryCurve, FollowsItsHistoryAndTheScales) {
    std::mt19937 random(4);
    const double range = 1.0;
    OtherRun run(WildSamples(500, 0, random), range);
    const HistoryCurve::Place place{kRunBegins, 0.0, kRunStep};
    HistoryCurve curve(run.history, place);
    run.Draw(curve);
    run.value.SetValue(9.0);
    run.given.push_back(9.0);
    EXPECT_EQ(run.Draw(curve), run.Reference(place, range));
    run.plot.y.Fill({-20.0, 10.0});
    curve.Remap(run.plot, {.y_changed = true});
    EXPECT_EQ(run.Draw(curve), run.Reference(place, range));
}

/// Has nothing of a column until it is loaded.
class UnloadedHistory final : public History {
 public:
    [[nodiscard]] LineRange Lines() const override { return {0, 5000}; }
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override {
        row.Reset(bounds.size() - 1);
        ++questions;
        return HistoryAnswer::kNotLoaded;
    }
    HistoryAnswer Values(std::int64_t, std::span<double> values) override {
        std::fill(values.begin(), values.end(), NoSample());
        return HistoryAnswer::kNotLoaded;
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }

    int questions = 0;
};

TEST(HistoryCurve, AsksForAllColumnsAtOnceAndSaysWhatIsNotThere) {
    OtherRun run({1, 2, 3}, 5.0);
    UnloadedHistory history;
    HistoryCurve curve(history, {0, 0.0, kRunStep});
    EXPECT_EQ(run.Draw(curve), run.background);
    EXPECT_FALSE(curve.IsComplete());
    EXPECT_EQ(history.questions, 1);
}

/// Draws as often as it takes with so many looks each; with `fits` the scale follows. Returns how
/// often that was.
int DrawUntilComplete(OtherRun& run, HistoryCurve& curve, testing::CountedHistory& history,
                      std::size_t looks, bool fits = false) {
    int drawings = 0;
    do {
        history.looks_left = looks;
        if (fits) {
            (void)curve.FiniteExtremes(run.plot);
        }
        run.Draw(curve);
    } while (++drawings < 5000 && !curve.IsComplete());
    EXPECT_TRUE(curve.IsComplete());
    return drawings;
}

TEST(HistoryCurve, GetsItsScaleInAsManyStepsAsItTakes) {
    std::mt19937 random(6);
    testing::CountedHistory history(WildSamples(5000, 0, random));
    OtherRun run({1, 2, 3}, 4.999);
    HistoryCurve curve(history, {0, 0.0, kRunStep, 4999});
    EXPECT_GT(DrawUntilComplete(run, curve, history, 1, true), 100);
    const MinMax range = curve.FiniteExtremes(run.plot);
    EXPECT_EQ(range.minimum, *std::ranges::min_element(history.values));
    EXPECT_EQ(range.maximum, *std::ranges::max_element(history.values));
}

TEST(HistoryCurve, KeepsWhatItKnowsWhereLinesComeAndForgetsItWhereTheyAreLost) {
    std::mt19937 random(7);
    testing::CountedHistory history(WildSamples(5000, 0, random));
    OtherRun run({1, 2, 3}, 3.999);
    HistoryCurve curve(history, {0, 0.0, kRunStep, 3999});
    DrawUntilComplete(run, curve, history, 1'000'000, true);
    const std::size_t before = history.closer_looks;
    history.Grow({1.0, 2.0, 3.0});
    EXPECT_TRUE(curve.IsComplete());
    DrawUntilComplete(run, curve, history, 1'000'000, true);
    EXPECT_EQ(history.closer_looks, before);
    const QImage whole = run.picture.copy();
    history.Lose({1000, 2000});
    EXPECT_FALSE(curve.IsComplete()) << "it shows what is there no more";
    DrawUntilComplete(run, curve, history, 1'000'000, true);
    EXPECT_GT(history.closer_looks, before);
    EXPECT_NE(run.picture, whole);
}

/// Loses lines while it is looked at.
class HistoryThatLoses final : public testing::CountedHistory {
 public:
    using CountedHistory::CountedHistory;
    HistoryAnswer LookCloser(const LineRange& lines, ColumnOutline& column) override {
        const HistoryAnswer answer = CountedHistory::LookCloser(lines, column);
        if (closer_looks == 500) {
            Lose({10, 700});
        }
        return answer;
    }
};

TEST(HistoryCurve, IsNotCompleteWhereLinesWereLostAsItWasDrawn) {
    std::mt19937 random(8);
    const std::vector<double> samples = WildSamples(5000, 0, random);
    OtherRun run({1, 2, 3}, 4.999);
    HistoryThatLoses history(samples);
    history.looks_left = 1'000'000;
    HistoryCurve curve(history, {0, 0.0, kRunStep, 4999});
    run.Draw(curve);
    ASSERT_GT(history.closer_looks, 500U);
    EXPECT_FALSE(curve.IsComplete());
    DrawUntilComplete(run, curve, history, 1'000'000);
    OtherRun anew({1, 2, 3}, 4.999);
    HistoryCurve other(history, {0, 0.0, kRunStep, 4999});
    DrawUntilComplete(anew, other, history, 1'000'000);
    EXPECT_EQ(run.picture, anew.picture);
}

TEST(HistoryCurve, IsCompleteWhereAllLinesAreLost) {
    testing::CountedHistory history(std::vector<double>(5000, 1.0));
    OtherRun run({1, 2, 3}, 4.999);
    HistoryCurve curve(history, {0, 0.0, kRunStep, 4999});
    history.is_known_from_far = false;
    (void)curve.FiniteExtremes(run.plot);
    run.Draw(curve);
    ASSERT_FALSE(curve.IsComplete());
    history.values.clear();
    ++history.version;
    ++history.losses;
    (void)curve.FiniteExtremes(run.plot);
    EXPECT_EQ(run.Draw(curve), run.background);
    EXPECT_TRUE(curve.IsComplete());
}

TEST(HistoryCurve, FindsTheFiniteExtremesWhereNothingIsKnownFromFar) {
    std::vector<double> samples(5000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = i % 3 == 0 ? kInf : static_cast<double>(i % 100);
    }
    samples[1000] = 1000.0;
    samples[1004] = -7.0;
    OtherRun run({1, 2, 3}, 4.999);
    testing::CountedHistory history(samples);
    history.is_known_from_far = false;
    HistoryCurve curve(history, {0, 0.0, kRunStep, 4999});
    DrawUntilComplete(run, curve, history, 100, true);
    history.looks_left = 1'000'000;
    const MinMax range = curve.FiniteExtremes(run.plot);
    EXPECT_EQ(range.minimum, -7.0);
    EXPECT_EQ(range.maximum, 1000.0);
}

TEST(HistoryCurve, LooksIntoBreaksWhenItsScaleStands) {
    std::vector<double> samples(5000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = i % 9 == 0 ? kNaN : 0.001 * static_cast<double>(i);
    }
    OtherRun run({1, 2, 3}, 4.999);
    testing::CountedHistory history(samples);
    history.is_known_from_far = false;
    HistoryCurve curve(history, {0, 0.0, kRunStep, 4999});
    int drawings = 0;
    do {
        history.looks_left = 10;
        const MinMax range = curve.FiniteExtremes(run.plot);
        if (!range.IsEmpty()) {
            run.plot.y.Fill({range.minimum, range.maximum});
            curve.Remap(run.plot, {.y_changed = true});
        }
        run.Draw(curve);
    } while (++drawings < 5000 && !curve.IsComplete());
    // Of 377 columns each is looked at twice, then read with its ends.
    EXPECT_LT(drawings, 377 * 5 / 10 + 20);
    EXPECT_TRUE(curve.IsComplete());
}

TEST(HistoryCurve, NeedsAPlotAreaThatSpansCanBeOf) {
    OtherRun run({1, 2, 3}, 5.0);
    run.plot.area = QRect();
    HistoryCurve curve(run.history, {kRunBegins, 0.0, kRunStep});
    EXPECT_EQ(run.Draw(curve), run.background);
}

}  // namespace
}  // namespace wavo

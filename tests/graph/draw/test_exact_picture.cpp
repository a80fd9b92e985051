// The picture of a long signal is, pixel for pixel, the union of the segments between its samples,
// each drawn by the painter, with places mapped one by one.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "graph/draw/lines_draw_axis.h"
#include "graph/draw/raster/column_spans.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::ManualScale;
using testing::TimeScale;

constexpr double kCycleTime = 0.001;

using Shape = std::function<double(std::uint64_t sample, std::uint64_t window)>;

struct NamedShape {
    const char* name;
    Shape shape;
};

double Turn(std::uint64_t sample, std::uint64_t window, double turns) {
    return 2.0 * std::numbers::pi * turns * static_cast<double>(sample) /
           static_cast<double>(window);
}

double NoiseOf(std::uint64_t sample) {
    std::uint64_t mixed = (sample + 1) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ (mixed >> 29U)) * 0xBF58476D1CE4E5B9U;
    return static_cast<double>((mixed >> 32U) % 20001) / 1000.0 - 10.0;
}

/// On a scale from -10 to 10; some leave it.
std::vector<NamedShape> Shapes() {
    return {
        {"slow sine", [](auto i, auto n) { return 9.5 * std::sin(Turn(i, n, 3.3)); }},
        {"fast sine", [](auto i, auto n) { return 12.0 * std::sin(Turn(i, n, 97.0)); }},
        {"square", [](auto i, auto n) { return i * 23 / n % 2 == 0 ? -8.0 : 8.25; }},
        {"saw tooth", [](auto i, auto n) { return static_cast<double>(i * 40 / n % 8) * 2.5 - 9; }},
        {"noise", [](auto i, auto) { return NoiseOf(i); }},
        {"spikes", [](auto i, auto n) { return i % (n / 37 + 1) == 5 ? 10.0 : -9.0 + i % 3; }},
    };
}

/// A curve of `window` samples over a plot area, and the picture that its segments give.
class DrawnCurve {
 public:
    DrawnCurve(GraphMode mode, std::uint64_t window, const QRect& plot)
        : m_plot(plot),
          m_x_scale(TimeScale(static_cast<double>(window - 1) * kCycleTime)),
          m_y_scale(ManualScale(-10.0, 10.0)),
          m_geometry{plot, VerticalScaleLines(plot, 7), HorizontalScaleLines(plot, 5)} {
        LinesDrawAxis::Settings settings;
        settings.mode = mode;
        settings.color = 0x00FFFFFF;
        settings.cycle_time = kCycleTime;
        settings.range = m_x_scale.TimeRange;
        m_line = std::make_unique<LinesDrawAxis>(m_geometry, m_x_scale, m_y_scale, settings);
        m_background = QImage(plot.right() + 3, plot.bottom() + 3, QImage::Format_RGB32);
        m_background.fill(Qt::black);
        m_picture = m_background.copy();
    }

    void Add(const Shape& shape, std::uint64_t first, std::uint64_t count, std::uint64_t window) {
        std::vector<double> values;
        for (std::uint64_t i = first; i < first + count; ++i) {
            values.push_back(shape(i, window));
        }
        m_line->DrawLinesXIsTime(values, first == 0 ? 0.0 : 1.0, nullptr);
    }

    /// Draws over what the drawing before left.
    const QImage& Draw() {
        m_canvas.Begin(m_picture, m_background, QPoint(), m_plot);
        m_line->DrawAllLinesXIsTime(kOwnColor, &m_canvas);
        m_canvas.End();
        return m_picture;
    }

    /// All segments in the order of time, each mapped and drawn by itself.
    [[nodiscard]] QImage Reference() const {
        AxisMapping x(Coordinate::kX, m_geometry.vertical);
        AxisMapping y(Coordinate::kY, m_geometry.horizontal);
        x.Fill({0.0, m_x_scale.TimeRange});
        y.Fill({-10.0, 10.0});
        std::vector<QLine> lines;
        std::vector<double> samples;
        m_line->GetYValues(samples);
        const std::size_t write_index = m_line->WriteIndex() % samples.size();
        QPoint last;
        double last_time = 0.0;
        bool open = false;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const double time = m_line->Point((write_index + i) % samples.size()).x_value;
            if (std::isnan(samples[i])) {
                open = false;
                continue;
            }
            const QPoint point(x.MapForced(time), y.MapForced(samples[i]));
            if (open && last_time <= time) {
                const QLine line(last, point);
                if (lines.empty() || lines.back() != line) {
                    lines.push_back(line);
                }
            }
            open = true;
            last = point;
            last_time = time;
        }
        QImage image = m_background.copy();
        QPainter painter(&image);
        QPen pen(Qt::white);
        pen.setWidth(1);
        pen.setCosmetic(true);
        painter.setPen(pen);
        painter.drawLines(lines.data(), static_cast<int>(lines.size()));
        return image;
    }

    [[nodiscard]] LinesDrawAxis& Line() { return *m_line; }

 private:
    QRect m_plot;
    ScaleDefinition m_x_scale;
    ScaleDefinition m_y_scale;
    PlotGeometry m_geometry;
    std::unique_ptr<LinesDrawAxis> m_line;
    QImage m_background;
    QImage m_picture;
    PlotCanvas m_canvas;
};

int DifferentPixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            count += a.pixel(x, y) != b.pixel(x, y) ? 1 : 0;
        }
    }
    return count;
}

constexpr QRect kWidePlot(6, 18, 777, 431);

TEST(ExactPicture, OfAScrollingCurve) {
    for (const std::uint64_t window : {800U, 1600U, 5000U, 40000U, 1000000U}) {
        for (const NamedShape& named : Shapes()) {
            DrawnCurve drawn(GraphMode::kContinuity, window, kWidePlot);
            std::uint64_t next = 0;
            const auto add = [&](std::uint64_t count) {
                drawn.Add(named.shape, next, count, window);
                next += count;
            };
            add(window / 3);
            ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0)
                << named.name << ", filling, " << window;
            add(window - window / 3);
            for (const std::uint64_t count : {0U, 1U, 1U, 100U, 337U}) {
                if (window == 1000000 && count != 100) {
                    continue;  // the segments of a million samples take their time
                }
                add(count);
                ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0)
                    << named.name << ", " << next << " of " << window;
            }
        }
    }
}

TEST(ExactPicture, OfASweep) {
    for (const std::uint64_t window : {800U, 3000U, 50000U}) {
        for (const NamedShape& named : Shapes()) {
            DrawnCurve drawn(GraphMode::kClassic, window, kWidePlot);
            std::uint64_t next = 0;
            for (const std::uint64_t count :
                 {window / 2, window / 2, window / 3, std::uint64_t{1}, std::uint64_t{100}, window,
                  window / 2, std::uint64_t{3}}) {
                drawn.Add(named.shape, next, count, window);
                next += count;
                ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0)
                    << named.name << ", " << next << " of " << window;
            }
        }
    }
}

TEST(ExactPicture, OfGapsAndInfiniteSamples) {
    for (const std::uint64_t window : {900U, 4000U, 60000U}) {
        for (const std::uint64_t distance : {1U, 2U, 3U, 41U, 700U, 5000U}) {
            const Shape shape = [distance](std::uint64_t i, std::uint64_t n) {
                if (i % (2 * distance) >= distance) {
                    return kNaN;
                }
                const double infinite = std::numeric_limits<double>::infinity();
                return i % 501 == 7   ? infinite
                       : i % 607 == 9 ? -infinite
                                      : 9 * std::sin(Turn(i, n, 9));
            };
            for (const GraphMode mode : {GraphMode::kContinuity, GraphMode::kClassic}) {
                DrawnCurve drawn(mode, window, kWidePlot);
                drawn.Add(shape, 0, window / 2, window);
                ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0);
                drawn.Add(shape, window / 2, window / 2 + 123, window);
                ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0)
                    << "gaps of " << distance << " in " << window;
            }
        }
    }
}

TEST(ExactPicture, OfHighPlotAreasWhereThePainterEndsLongWaysEarly) {
    for (const int height : {180, 400, 1500}) {
        DrawnCurve drawn(GraphMode::kContinuity, 3000, QRect(0, 0, 1000, height));
        drawn.Add([](auto i, auto) { return NoiseOf(i); }, 0, 3000, 3000);
        ASSERT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0) << height;
    }
}

TEST(ExactPicture, OfEverySegmentDown) {
    for (int rows = 0; rows < 3000; ++rows) {
        QImage image(4, rows + 2, QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        QPen pen(Qt::white);
        pen.setWidth(1);
        pen.setCosmetic(true);
        painter.setPen(pen);
        const QLine line(1, 1, 2, 1 + rows);
        painter.drawLines(&line, 1);
        painter.end();
        const bool early = rows > 0 && (image.pixel(1, 1 + rows) & 0xFFFFFFU) != 0;
        ASSERT_EQ(EndsEarly(rows), early) << rows << " rows";
        ASSERT_NE((image.pixel(2, 1 + rows) & 0xFFFFFFU) != 0, early) << rows << " rows";
    }
}

TEST(ExactPicture, OfATwoColumnPlot) {
    DrawnCurve drawn(GraphMode::kContinuity, 100, QRect(3, 3, 2, 50));
    drawn.Add([](auto i, auto) { return NoiseOf(i); }, 0, 100, 100);
    EXPECT_EQ(DifferentPixels(drawn.Draw(), drawn.Reference()), 0);
}

}  // namespace
}  // namespace wavo

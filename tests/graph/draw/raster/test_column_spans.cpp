#include "graph/draw/raster/column_spans.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "graph/draw/raster/mapping.h"

namespace wavo {
namespace {

constexpr int kColumns = 60;

struct Point {
    std::int32_t column;
    double sample;
    bool joined;
};

PixelEdges Rows(int height) {
    AxisMapping y(Coordinate::kY, HorizontalScaleLines(QRect(0, 0, kColumns, height), 3));
    y.Fill({-1.0, 1.0});
    PixelEdges rows;
    rows.Find(y, Coordinate::kY, height - 1, height);
    return rows;
}

/// Each segment painted by itself.
QImage Painted(const std::vector<Point>& points, const PixelEdges& rows) {
    QImage image(kColumns, rows.Size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    QPen pen(Qt::white);
    pen.setWidth(1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    const auto place = [&](const Point& point) {
        return QPoint(point.column, rows.Size() - 1 - rows.IndexOf(point.sample));
    };
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (points[i].joined) {
            const QLine line(place(points[i - 1]), place(points[i]));
            painter.drawLines(&line, 1);
        }
    }
    return image;
}

QImage Filled(const ColumnSpans& spans, int height) {
    QImage image(kColumns, height, QImage::Format_RGB32);
    image.fill(Qt::black);
    const auto fill = [&](std::int32_t column, int top, int bottom) {
        for (int row = top; row <= bottom; ++row) {
            image.setPixel(column, row, qRgb(255, 255, 255));
        }
    };
    for (std::int32_t column = 0; column < kColumns; ++column) {
        const auto at = static_cast<std::size_t>(column);
        fill(column, spans.top[at], spans.bottom[at]);
    }
    for (const ColumnSpans::Span& span : spans.more) {
        fill(span.column, span.top, span.bottom);
    }
    return image;
}

/// Points from column to column, `each` of them at most in one; now and then a gap.
std::vector<Point> RandomPoints(std::mt19937& random, std::size_t each, bool gaps, double swing) {
    std::vector<Point> points;
    double level = 0.0;
    for (std::int32_t column = 0; column < kColumns; ++column) {
        const std::size_t count = 1 + random() % each;
        for (std::size_t i = 0; i < count; ++i) {
            level += swing * (static_cast<double>(random() % 2001) / 1000.0 - 1.0);
            level = std::abs(level) > 1.2 ? 0.0 : level;
            const bool gap = gaps && random() % 4 == 0;
            points.push_back({column, level, !points.empty() && !gap});
        }
        if (gaps && random() % 9 == 0 && column + 3 < kColumns) {
            column += 2;
            points.push_back({column, -level, false});
        }
    }
    return points;
}

void BuildEach(const std::vector<Point>& points, SpanBuilder& builder) {
    for (const Point& point : points) {
        if (!point.joined) {
            builder.Break();
        }
        builder.Sample(point.column, point.sample);
    }
}

void BuildColumns(const std::vector<Point>& points, SpanBuilder& builder) {
    for (std::size_t i = 0; i < points.size();) {
        std::size_t end = i + 1;
        MinMax range{points[i].sample, points[i].sample};
        while (end < points.size() && points[end].column == points[i].column &&
               points[end].joined) {
            range.minimum = std::min(range.minimum, points[end].sample);
            range.maximum = std::max(range.maximum, points[end].sample);
            ++end;
        }
        if (!points[i].joined) {
            builder.Break();
        }
        builder.Column(points[i].column, points[i].sample, range, points[end - 1].sample,
                       end - i > 1);
        i = end;
    }
}

TEST(SpanBuilder, CoversWhatThePainterPaintsSegmentBySegment) {
    std::mt19937 random(3);
    for (const int height : {1, 2, 17, 180, 500, 1500}) {
        const PixelEdges rows = Rows(height);
        for (const double swing : {0.001, 0.2, 2.0}) {
            for (int round = 0; round < 24; ++round) {
                const std::vector<Point> points =
                    RandomPoints(random, 1 + random() % 6, round % 2 == 1, swing);
                const QImage painted = Painted(points, rows);
                for (const bool by_column : {false, true}) {
                    ColumnSpans spans;
                    spans.Clear(kColumns);
                    {
                        SpanBuilder builder(spans, rows);
                        by_column ? BuildColumns(points, builder) : BuildEach(points, builder);
                    }
                    ASSERT_EQ(Filled(spans, height), painted)
                        << height << " rows, swing " << swing << ", round " << round;
                }
            }
        }
    }
}

TEST(SpanBuilder, ASampleAloneDrawsNothing) {
    const PixelEdges rows = Rows(50);
    ColumnSpans spans;
    spans.Clear(kColumns);
    {
        SpanBuilder builder(spans, rows);
        builder.Sample(3, 0.5);
        builder.Break();
        builder.Sample(4, 0.5);
        builder.Sample(4, 0.5);
    }
    EXPECT_GT(spans.top[3], spans.bottom[3]);
    EXPECT_EQ(spans.top[4], spans.bottom[4]) << "two in one place are a segment of one pixel";
    EXPECT_TRUE(spans.more.empty());
}

TEST(ColumnSpans, RowsThatTouchAreOneSpanAndOthersAreKeptApart) {
    ColumnSpans spans;
    spans.Clear(3);
    EXPECT_EQ(spans.Columns(), 3);
    EXPECT_GT(spans.top[1], spans.bottom[1]);
    spans.Add(1, 10, 12);
    spans.Add(1, 13, 14);
    spans.Add(1, 8, 9);
    EXPECT_EQ(spans.top[1], 8);
    EXPECT_EQ(spans.bottom[1], 14);
    EXPECT_TRUE(spans.more.empty());
    spans.Add(1, 16, 17);
    EXPECT_EQ(spans.more, (std::vector<ColumnSpans::Span>{{1, 16, 17}}));
    EXPECT_EQ(spans.bottom[1], 14);
    spans.Add(0, ColumnSpans::kMostRows - 1, ColumnSpans::kMostRows - 1);
    EXPECT_EQ(spans.top[0], ColumnSpans::kMostRows - 1);
    EXPECT_LE(spans.top[0], spans.bottom[0]);
}

}  // namespace
}  // namespace wavo

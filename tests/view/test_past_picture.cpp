// The picture of a window of a recording is, pixel for pixel, the one that the segments between its
// samples give, whatever was read of it and in how many steps.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "graph/draw/curve/history_curve.h"
#include "graph/values/missing_value.h"
#include "past_fixture.h"
#include "recording/recording_history.h"
#include "special_values.h"

namespace wavo {
namespace {

using recording::ReadingBudget;
using recording::RecordingHistory;

constexpr double kPictureCycle = 0.001;
constexpr QRect kPicturePlot(6, 18, 377, 431);
constexpr std::int64_t kPictureFirst = 40;

/// A recording of one axis, and what its segments look like.
class PictureOfRecording {
 public:
    explicit PictureOfRecording(const std::vector<double>& values, std::uint64_t lost = 0) {
        std::vector<std::vector<double>> lines;
        lines.reserve(values.size());
        for (const double value : values) {
            lines.push_back({value, 1.0});
        }
        const std::string path = m_folder.filePath(QStringLiteral("one.mcap")).toStdString();
        testing::WriteRecording(path, testing::MakeHead(2, kPictureCycle), lines, kPictureFirst,
                                lost);
        auto opened = recording::RecordingReader::Open(path);
        EXPECT_TRUE(opened.HasValue());
        m_reader = std::move(*opened);
    }

    /// Draws lines of the stream, with no more than `budget` in each of as many drawings as it
    /// takes; returns how many these were.
    int Draw(std::int32_t order, const LineRange& lines, std::uint64_t budget) {
        m_history = std::make_unique<RecordingHistory>(*m_reader, 0, order, NoSample(), &m_budget);
        m_plot.x.Fill({0.0, static_cast<double>(lines.Count() - 1) * kPictureCycle});
        m_plot.y.Fill({-10.0, 10.0});
        HistoryCurve curve(*m_history, {lines.begin, 0.0, kPictureCycle, lines.end - 1});
        m_picture.fill(Qt::black);
        int drawings = 0;
        PlotCanvas canvas;
        CurveStyle style;
        style.color = Qt::white;
        m_most_read = 0;
        do {
            const std::uint64_t read_before = m_reader->BytesRead();
            m_budget.Renew(budget);
            canvas.Begin(m_picture, m_background, QPoint(), kPicturePlot);
            curve.Draw(m_plot, style, canvas);
            canvas.End();
            m_most_read = std::max(m_most_read, m_reader->BytesRead() - read_before);
        } while (++drawings < 20000 && !curve.IsComplete());
        EXPECT_TRUE(curve.IsComplete());
        return drawings;
    }

    [[nodiscard]] const QImage& Picture() const { return m_picture; }
    /// Bytes that one of the drawings has read.
    [[nodiscard]] std::uint64_t MostReadAtOnce() const { return m_most_read; }

    [[nodiscard]] QImage Segments(const LineRange& lines) const {
        std::vector<double> values(static_cast<std::size_t>(lines.Count()));
        m_history->Values(lines.begin, values);
        std::vector<QLine> segments;
        bool open = false;
        QPoint last;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (std::isnan(values[i])) {
                open = false;
                continue;
            }
            const QPoint point(m_plot.x.MapForced(static_cast<double>(i) * kPictureCycle),
                               m_plot.y.MapForced(values[i]));
            if (open) {
                segments.emplace_back(last, point);
            }
            open = true;
            last = point;
        }
        QImage image = m_background.copy();
        QPainter painter(&image);
        painter.setPen(QPen(Qt::white, 1));
        painter.drawLines(segments.data(), static_cast<int>(segments.size()));
        return image;
    }

    [[nodiscard]] const recording::RecordingReader& Reader() const { return *m_reader; }

 private:
    QTemporaryDir m_folder;
    std::uint64_t m_most_read = 0;
    std::unique_ptr<recording::RecordingReader> m_reader;
    ReadingBudget m_budget;
    std::unique_ptr<RecordingHistory> m_history;
    CurvePlot m_plot{
        {kPicturePlot, VerticalScaleLines(kPicturePlot, 7), HorizontalScaleLines(kPicturePlot, 5)},
        1.0};
    QImage m_background = [] {
        QImage image(400, 460, QImage::Format_RGB32);
        image.fill(Qt::black);
        return image;
    }();
    QImage m_picture = m_background.copy();
};

struct PictureShape {
    const char* name;
    std::function<double(std::size_t, std::mt19937_64&)> value;
};

double At(std::size_t i) {
    return static_cast<double>(i);
}

double UnitNoise(std::mt19937_64& random) {
    return static_cast<double>(random() % 2001) / 1000.0 - 1.0;
}

const std::vector<PictureShape>& PictureShapes() {
    static const std::vector<PictureShape> shapes = {
        {"slow sine", [](auto i, auto&) { return 9.0 * std::sin(0.0003 * At(i)); }},
        {"sine with noise",
         [](auto i, auto& r) { return 8.0 * std::sin(0.01 * At(i)) + 0.5 * UnitNoise(r); }},
        {"noise", [](auto, auto& r) { return 11.0 * UnitNoise(r); }},
        {"steps", [](auto i, auto&) { return i / 3001 % 2 == 0 ? -9.0 : 9.5; }},
        {"spikes", [](auto i, auto&) { return i % 7919 == 5 ? 9.75 : -9.0; }},
        {"missing",
         [](auto i, auto& r) { return r() % 900 == 0 ? testing::kNaN : At(i % 17) - 8.0; }},
        {"missing everywhere",
         [](auto i, auto& r) { return r() % 15 == 0 ? testing::kNaN : At(i % 301) / 20.0 - 8.0; }},
        {"two levels with breaks",
         [](auto i, auto& r) {
             return r() % 60 == 0 ? testing::kNaN
                                  : (i / 7001 % 2 == 0 ? -8.0 : 7.0) + 0.4 * UnitNoise(r);
         }},
        {"ramps with breaks",
         [](auto i, auto& r) {
             return r() % 40 == 0 ? testing::kNaN : At(i % 9001) / 500.0 - 9.0;
         }},
        {"values alone",
         [](auto i, auto&) { return i % 3 == 0   ? 5.0
                                    : i % 3 == 1 ? testing::kNaN
                                                 : -5.0; }},
        {"steep between breaks",
         [](auto i, auto& r) { return i % 700 > 600 ? testing::kNaN : 10.0 * UnitNoise(r); }},
        {"infinite", [](auto, auto& r) { return r() % 700 == 0 ? INFINITY : UnitNoise(r); }},
    };
    return shapes;
}

TEST(PastPicture, IsThatOfTheSegments) {
    constexpr std::size_t kLines = 40000;
    for (const PictureShape& shape : PictureShapes()) {
        for (const std::uint64_t lost : {0, 3000}) {
            std::mt19937_64 random(11);
            std::vector<double> values;
            for (std::size_t i = 0; i < kLines; ++i) {
                values.push_back(shape.value(i, random));
            }
            PictureOfRecording picture(values, lost);
            const auto end = static_cast<std::int64_t>(picture.Reader().EndLine());
            for (const LineRange& lines :
                 {LineRange{kPictureFirst, end}, LineRange{kPictureFirst + 37, end - 12345},
                  LineRange{15011, 26000}, LineRange{19000, 24500}, LineRange{5000, 5401},
                  LineRange{20000, 20050}, LineRange{31007, 31013}}) {
                for (const std::uint64_t budget : {ReadingBudget::kUnlimited, std::uint64_t{40}}) {
                    picture.Draw(0, lines, budget);
                    ASSERT_EQ(picture.Picture(), picture.Segments(lines))
                        << shape.name << ", lost " << lost << ", " << lines.begin << " to "
                        << lines.end << ", budget " << budget;
                }
            }
        }
    }
}

TEST(PastPicture, OfDerivativesToo) {
    std::mt19937_64 random(12);
    std::vector<double> values;
    for (std::size_t i = 0; i < 20000; ++i) {
        values.push_back(0.004 * std::sin(0.002 * At(i)) + 1e-9 * UnitNoise(random));
    }
    PictureOfRecording picture(values, 500);
    const auto end = static_cast<std::int64_t>(picture.Reader().EndLine());
    for (std::int32_t order = 0; order <= 4; ++order) {
        for (const LineRange& lines : {LineRange{kPictureFirst, end}, LineRange{9000, 12000}}) {
            for (const std::uint64_t budget : {ReadingBudget::kUnlimited, std::uint64_t{40}}) {
                picture.Draw(order, lines, budget);
                ASSERT_EQ(picture.Picture(), picture.Segments(lines)) << "order " << order;
            }
        }
    }
}

TEST(PastPicture, OfDerivativesWithBreaks) {
    std::mt19937_64 random(14);
    std::vector<double> values;
    for (std::size_t i = 0; i < 20000; ++i) {
        values.push_back(random() % 80 == 0 ? testing::kNaN : 0.004 * std::sin(0.002 * At(i)));
    }
    PictureOfRecording picture(values, 500);
    const LineRange lines{kPictureFirst, static_cast<std::int64_t>(picture.Reader().EndLine())};
    for (std::int32_t order = 1; order <= 4; ++order) {
        for (const std::uint64_t budget : {ReadingBudget::kUnlimited, std::uint64_t{40}}) {
            picture.Draw(order, lines, budget);
            ASSERT_EQ(picture.Picture(), picture.Segments(lines)) << "order " << order;
        }
    }
}

TEST(PastPicture, OfABrokenLineIsReadInSteps) {
    std::mt19937_64 random(15);
    const auto recording = [&random](unsigned break_of) {
        std::vector<double> values;
        for (std::size_t i = 0; i < 400000; ++i) {
            values.push_back(random() % break_of == 0
                                 ? testing::kNaN
                                 : (i % 2 == 0 ? 9.0 : -9.0) + UnitNoise(random));
        }
        return values;
    };
    const LineRange all{kPictureFirst, kPictureFirst + 400000};
    constexpr std::uint64_t kFrame = 140;
    {
        PictureOfRecording picture(recording(1000));
        picture.Draw(0, all, kFrame);
        // 20 MB of lines: nearly all that a break leaves open is covered by what is known.
        EXPECT_LT(picture.Reader().BytesRead(), 3'000'000U);
        EXPECT_EQ(picture.Picture(), picture.Segments(all));
    }
    {
        PictureOfRecording picture(recording(9));  // in each block there are breaks
        const int drawings = picture.Draw(0, all, kFrame);
        // No more than its budget and what one look may take.
        EXPECT_LT(picture.MostReadAtOnce(), kFrame * ReadingBudget::kBytesPerUnit + 300'000U);
        EXPECT_GT(drawings, 5);
        EXPECT_EQ(picture.Picture(), picture.Segments(all));
    }
}

TEST(PastPicture, ReadsOnlyWhatCanChangeAPixel) {
    std::mt19937_64 random(13);
    std::vector<double> fast;
    std::vector<double> slow;
    for (std::size_t i = 0; i < 400000; ++i) {
        fast.push_back(9.0 * std::sin(0.05 * At(i)));
        slow.push_back(9.0 * std::sin(0.0001 * At(i)));
    }
    const LineRange all{kPictureFirst, kPictureFirst + 400000};
    PictureOfRecording of_fast(fast);
    EXPECT_EQ(of_fast.Draw(0, all, 1000000), 1);
    // A line of two axes has 51 bytes; what was read is levels, and a block here and there.
    EXPECT_LT(of_fast.Reader().BytesRead(), 400000U);
    PictureOfRecording of_slow(slow);
    EXPECT_GT(of_slow.Draw(0, all, 20), 3) << "in steps";
    EXPECT_EQ(of_slow.Picture(), of_slow.Segments(all));
}

}  // namespace
}  // namespace wavo

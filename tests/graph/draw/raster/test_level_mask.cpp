#include "graph/draw/raster/level_mask.h"

#include <gtest/gtest.h>

#include <QColor>
#include <limits>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace wavo {
namespace {

using Pixels = std::set<std::pair<int, int>>;

constexpr LevelMask::Level kOpaque = LevelMask::kOpaque;
constexpr std::int32_t kLeastRow = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMostRow = std::numeric_limits<std::int32_t>::max();

QImage BlackPicture(int width = 40, int height = 30) {
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(Qt::black);
    return picture;
}

Pixels PaintedPlaces(const QImage& picture) {
    Pixels pixels;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != qRgb(0, 0, 0)) {
                pixels.emplace(x, y);
            }
        }
    }
    return pixels;
}

/// The pixels of a line in a picture of the size given, drawn in the whole picture.
Pixels LinePixels(int x1, int y1, int x2, int y2, const QSize& size = {40, 30}) {
    QImage picture = BlackPicture(size.width(), size.height());
    LevelMask mask;
    mask.Begin(picture.rect());
    mask.Line({x1, y1, kOpaque}, {x2, y2, kOpaque});
    mask.BlendInto(picture, qRgb(255, 255, 255));
    return PaintedPlaces(picture);
}

TEST(BlendPixel, TheEndsAreExactAndTheMiddleIsRounded) {
    for (const QRgb under : {qRgb(0, 0, 0), qRgb(255, 255, 255), qRgb(16, 20, 24)}) {
        for (const QRgb over : {qRgb(255, 255, 0), qRgb(1, 2, 3)}) {
            EXPECT_EQ(BlendPixel(under, over, 0), under);
            EXPECT_EQ(BlendPixel(under, over, 255), over);
        }
    }
    EXPECT_EQ(BlendPixel(qRgb(0, 0, 0), qRgb(255, 100, 10), 51), qRgb(51, 20, 2));
    EXPECT_EQ(BlendPixel(qRgb(255, 255, 255), qRgb(0, 0, 0), 128), qRgb(127, 127, 127));
}

TEST(LevelMask, ALineHasOnePixelPerStepOfItsLongerSideAndNoHoles) {
    struct Row {
        int x1, y1, x2, y2;
        std::size_t pixels;
    };
    for (const Row& row : {Row{3, 4, 23, 9, 21}, Row{23, 9, 3, 4, 21}, Row{5, 2, 9, 28, 27},
                           Row{9, 28, 5, 2, 27}, Row{2, 2, 20, 20, 19}, Row{4, 7, 30, 7, 27},
                           Row{7, 4, 7, 20, 17}, Row{5, 5, 5, 5, 1}, Row{5, 5, 6, 4, 2}}) {
        SCOPED_TRACE(::testing::Message()
                     << row.x1 << "," << row.y1 << " to " << row.x2 << "," << row.y2);
        const Pixels pixels = LinePixels(row.x1, row.y1, row.x2, row.y2);
        EXPECT_EQ(pixels.size(), row.pixels);
        EXPECT_TRUE(pixels.contains({row.x1, row.y1}));
        EXPECT_TRUE(pixels.contains({row.x2, row.y2}));
        for (const auto& [x, y] : pixels) {
            const double dx = row.x2 - row.x1;
            const double dy = row.y2 - row.y1;
            const double off = std::abs((x - row.x1) * dy - (y - row.y1) * dx);
            EXPECT_LE(off, 0.5 * std::max(std::abs(dx), std::abs(dy)) + 1e-9) << x << "," << y;
        }
    }
}

TEST(LevelMask, AClippedLineIsThePartOfTheWholeLine) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> place(-60, 100);
    for (int i = 0; i < 500; ++i) {
        const int x1 = place(random);
        const int y1 = place(random);
        const int x2 = place(random);
        const int y2 = place(random);
        Pixels expected;
        for (const auto& [x, y] : LinePixels(x1 + 60, y1 + 60, x2 + 60, y2 + 60, {161, 161})) {
            if (x >= 60 && x < 100 && y >= 60 && y < 90) {
                expected.emplace(x - 60, y - 60);
            }
        }
        EXPECT_EQ(LinePixels(x1, y1, x2, y2), expected)
            << x1 << "," << y1 << " to " << x2 << "," << y2;
    }
}

TEST(LevelMask, ALineBetweenTheFarthestPointsCrossesTheArea) {
    const Pixels rising = LinePixels(kLeastRow, kLeastRow, kMostRow, kMostRow);
    EXPECT_EQ(rising.size(), 30U);
    EXPECT_TRUE(rising.contains({10, 10}));
    EXPECT_EQ(LinePixels(kLeastRow, 5, kMostRow, 5).size(), 40U);
    EXPECT_EQ(LinePixels(5, kMostRow, 5, kLeastRow).size(), 30U);
    EXPECT_TRUE(LinePixels(kLeastRow, kLeastRow, kMostRow, kLeastRow).empty());
    EXPECT_TRUE(LinePixels(kMostRow, 5, kMostRow, 9).empty());
}

TEST(LevelMask, TheLevelRunsEvenlyAlongALine) {
    QImage picture = BlackPicture();
    LevelMask mask;
    mask.Begin(picture.rect());
    mask.Line({0, 3, 0}, {30, 3, kOpaque});
    mask.BlendInto(picture, qRgb(255, 255, 255));
    for (int x = 0; x <= 30; ++x) {
        EXPECT_NEAR(picture.pixelColor(x, 3).red(), 255.0 * x / 30.0, 1.0) << x;
    }
}

TEST(LevelMask, WhatIsDrawnLaterReplacesWhatWasThere) {
    QImage picture = BlackPicture();
    LevelMask mask;
    mask.Begin(picture.rect());
    mask.Square({10, 10, kOpaque}, 5);
    mask.Pixel({10, 10, kOpaque / 5});
    mask.BlendInto(picture, qRgb(255, 255, 255));
    EXPECT_EQ(picture.pixel(10, 10), qRgb(51, 51, 51));
    EXPECT_EQ(picture.pixel(11, 10), qRgb(255, 255, 255));
}

TEST(LevelMask, ASquareIsCutToTheArea) {
    QImage picture = BlackPicture();
    LevelMask mask;
    mask.Begin(QRect(10, 10, 8, 6));
    mask.Square({10, 10, kOpaque}, 4);  // two pixels of each side are outside
    mask.Square({kMostRow, kLeastRow, kOpaque}, 4000);
    mask.BlendInto(picture, qRgb(255, 255, 255));
    EXPECT_EQ(PaintedPlaces(picture), (Pixels{{10, 10}, {11, 10}, {10, 11}, {11, 11}}));
}

TEST(LevelMask, BlendingEmptiesTheMask) {
    QImage picture = BlackPicture();
    LevelMask mask;
    mask.Begin(picture.rect());
    mask.Line({0, 0, kOpaque}, {39, 29, kOpaque});
    mask.BlendInto(picture, qRgb(255, 255, 255));

    QImage other = BlackPicture();
    mask.Begin(QRect(3, 3, 17, 9));
    mask.BlendInto(other, qRgb(255, 255, 255));
    EXPECT_TRUE(PaintedPlaces(other).empty());
}

TEST(LevelMask, LinesAreThoseFromEachPlaceToTheNextWhereverTheyLeaveTheArea) {
    std::mt19937 random(8);
    for (const QRect& area : {QRect(5, 4, 20, 15), QRect(0, 0, 40, 30), QRect(12, 9, 1, 1)}) {
        for (int round = 0; round < 50; ++round) {
            std::vector<LevelMask::Spot> spots{{15, 10, kOpaque / 2}};
            while (spots.size() < 300) {
                const std::int32_t reach = random() % 40 == 0 ? 30 : 1;
                const auto step = [&] {
                    return static_cast<std::int32_t>(random() % (2 * reach + 1)) - reach;
                };
                const LevelMask::Spot& last = spots.back();
                spots.push_back({last.x + step(), last.y + step(),
                                 static_cast<LevelMask::Level>(random() % kOpaque)});
            }
            spots.push_back(spots.back());  // no line ends the row
            std::vector<LevelMask::Place> places;
            std::vector<LevelMask::Level> levels;
            for (const LevelMask::Spot& spot : spots) {
                const bool is_gap = random() % 30 == 0;
                places.push_back({is_gap ? LevelMask::kGap : spot.x, spot.y});
                levels.push_back(spot.level);
            }
            const auto is_gap = [&](std::size_t i) { return places[i].x == LevelMask::kGap; };
            LevelMask mask;
            QImage picture = BlackPicture();
            mask.Begin(area);
            mask.Lines(places, levels.data());
            mask.BlendInto(picture, qRgb(255, 255, 255));
            QImage expected = BlackPicture();
            mask.Begin(area);
            for (std::size_t i = 0; i < spots.size(); ++i) {
                if (is_gap(i)) {
                    continue;
                }
                if (i > 0 && !is_gap(i - 1)) {
                    mask.Line(spots[i - 1], spots[i]);
                }
                // The levels of a long line are rounded, but where only such lines meet.
                const bool leads_on = i + 1 < spots.size() && !is_gap(i + 1);
                const bool is_alone = i == 0 || is_gap(i - 1);
                if (is_alone || leads_on || i + 1 == spots.size()) {
                    mask.Pixel(spots[i]);
                }
            }
            mask.BlendInto(expected, qRgb(255, 255, 255));
            ASSERT_EQ(picture, expected) << round;
        }
    }
}

}  // namespace
}  // namespace wavo

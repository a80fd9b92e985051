#include "graph/draw/curve/axis_curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "special_values.h"

namespace wavo {
namespace {

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

const QRect kPointsPlot(20, 10, 160, 100);

LinePoint At(std::int32_t x, std::int32_t y) {
    return {x, y, 1.0, 1.0};
}

LinePoint Gap() {
    return {0, 0, kNaN, 1.0};
}

/// White on black; nothing fades.
AxisCurve::Style Plain() {
    AxisCurve::Style style;
    style.color = Qt::white;
    style.background = Qt::black;
    return style;
}

AxisCurve::Style Fading(double age) {
    AxisCurve::Style style = Plain();
    style.fade_out_age = age;
    return style;
}

QImage Picture(const QColor& color = Qt::black) {
    QImage picture(200, 120, QImage::Format_RGB32);
    picture.fill(color);
    return picture;
}

AxisCurve CurveOf(const std::vector<LinePoint>& points) {
    AxisCurve curve(100000);
    for (const LinePoint& point : points) {
        curve.Add(point);
    }
    return curve;
}

QImage Drawn(const std::vector<LinePoint>& points, const AxisCurve::Style& style,
             const QColor& background = Qt::black) {
    QImage picture = Picture(background);
    CurveOf(points).Draw(picture, kPointsPlot, style);
    return picture;
}

int Red(const QImage& picture, int x, int y) {
    return picture.pixelColor(x, y).red();
}

/// The smallest rectangle around all pixels in which two pictures differ.
QRect Changed(const QImage& before, const QImage& after) {
    QRect changed;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            if (before.pixel(x, y) != after.pixel(x, y)) {
                changed |= QRect(x, y, 1, 1);
            }
        }
    }
    return changed;
}

TEST(AxisCurve, TheOldestPointLeavesAFullCurve) {
    AxisCurve curve(3);
    for (int i = 0; i < 2000; ++i) {
        curve.Add(At(i, -i));
        const auto size = static_cast<std::size_t>(std::min(i + 1, 3));
        ASSERT_EQ(curve.Size(), size);
        ASSERT_EQ(curve[size - 1], At(i, -i));
        ASSERT_EQ(curve[0], At(std::max(i - 2, 0), -std::max(i - 2, 0)));
        ASSERT_EQ(curve.end() - curve.begin(), static_cast<std::ptrdiff_t>(size));
    }
}

TEST(AxisCurve, PointsCanBeMappedAgainInPlace) {
    AxisCurve curve = CurveOf({At(1, 2), At(3, 4)});
    for (LinePoint& point : curve) {
        point.x += 10;
    }
    EXPECT_EQ(curve[0], At(11, 2));
    EXPECT_EQ(curve[1], At(13, 4));
}

TEST(AxisCurve, AClearedCurveIsEmptyAndTakesPointsAgain) {
    AxisCurve curve(2);
    for (int i = 0; i < 5; ++i) {
        curve.Add(At(i, i));
    }
    curve.Clear();
    EXPECT_EQ(curve.Size(), 0U);
    EXPECT_EQ(curve.begin(), curve.end());
    curve.Add(At(9, 9));
    EXPECT_EQ(curve.Size(), 1U);
    EXPECT_EQ(curve[0], At(9, 9));
}

TEST(AxisCurve, FewerThanTwoPointsDrawNothing) {
    QImage picture = Picture();
    EXPECT_TRUE(CurveOf({}).Draw(picture, kPointsPlot, Plain()).isEmpty());
    EXPECT_TRUE(CurveOf({At(50, 50)}).Draw(picture, kPointsPlot, Plain()).isEmpty());
    EXPECT_EQ(picture, Picture());
}

TEST(AxisCurve, LinesAreOnePixelWide) {
    const QImage picture = Drawn({At(40, 50), At(120, 50), At(120, 90)}, Plain());
    for (int x = 40; x <= 110; ++x) {
        EXPECT_EQ(Red(picture, x, 49), 0) << x;
        EXPECT_EQ(Red(picture, x, 50), 255) << x;
        EXPECT_EQ(Red(picture, x, 51), 0) << x;
    }
}

TEST(AxisCurve, OlderPartsAreFainterAndTheOldestHaveVanished) {
    std::vector<LinePoint> points;
    for (int i = 0; i <= 100; ++i) {
        points.push_back(At(30 + i, 50));
    }
    const QImage picture = Drawn(points, Fading(80.0));
    for (int age = 7; age <= 100; ++age) {  // the newest stands under its mark
        const double expected = std::max(0.0, 255.0 * (1.0 - age / 80.0));
        EXPECT_NEAR(Red(picture, 130 - age, 50), expected, 1.0) << age;
        EXPECT_LE(Red(picture, 130 - age, 50), Red(picture, 131 - age, 50)) << age;
    }
    EXPECT_EQ(Red(picture, 50, 50), 0);
}

TEST(AxisCurve, AFadingPartLetsThroughWhatIsBehind) {
    std::vector<LinePoint> points;
    for (int i = 0; i <= 100; ++i) {
        points.push_back(At(30 + i, 50));
    }
    QImage picture = Picture(Qt::white);
    for (int y = 0; y < picture.height(); ++y) {
        picture.setPixelColor(80, y, QColor(0, 200, 0));
    }
    AxisCurve::Style style = Fading(100.0);
    style.color = QColor(255, 0, 0);
    CurveOf(points).Draw(picture, kPointsPlot, style);
    // Half red at the age of 50, over the green line and beside it.
    EXPECT_NEAR(picture.pixelColor(80, 50).red(), 128, 1);
    EXPECT_NEAR(picture.pixelColor(80, 50).green(), 100, 1);
    EXPECT_EQ(picture.pixelColor(80, 50).blue(), 0);
    EXPECT_NEAR(picture.pixelColor(79, 50).green(), 130, 2);
    EXPECT_EQ(picture.pixelColor(31, 50).red(), 255);
    EXPECT_NEAR(picture.pixelColor(31, 50).green(), 252, 1);
}

TEST(AxisCurve, OfACrossingTheNewerPartIsSeen) {
    std::vector<LinePoint> points;
    for (int x = 60; x <= 140; ++x) {
        points.push_back(At(x, 60));
    }
    points.push_back(Gap());
    for (int y = 30; y <= 100; ++y) {
        points.push_back(At(100, y));
    }
    const QImage picture = Drawn(points, Fading(200.0));
    const int age = 100 - 60;
    EXPECT_NEAR(Red(picture, 100, 60), 255.0 * (1.0 - age / 200.0), 1.0);
    EXPECT_GE(Red(picture, 100, 60), Red(picture, 100, 59));
    EXPECT_LE(Red(picture, 100, 60), Red(picture, 100, 61));
    EXPECT_LT(Red(picture, 101, 60), Red(picture, 100, 60));
}

TEST(AxisCurve, PartsDrawnManyTimesDoNotAddUp) {
    std::vector<LinePoint> points;
    for (int i = 0; i < 40; ++i) {
        points.push_back(At(60, 50));
        points.push_back(At(61, 50));
    }
    for (int i = 0; i < 100; ++i) {
        points.push_back(At(150, 50));
    }
    const QImage picture = Drawn(points, Fading(200.0));
    EXPECT_NEAR(Red(picture, 61, 50), 255.0 * 0.5, 1.0);
}

TEST(AxisCurve, ALongSegmentFadesAlongItsLength) {
    const QImage picture = Drawn({At(40, 50), At(140, 50), At(140, 90)}, Fading(4.0));
    EXPECT_NEAR(Red(picture, 40, 50), 127, 2);
    EXPECT_NEAR(Red(picture, 90, 50), 159, 2);
    EXPECT_NEAR(Red(picture, 139, 50), 191, 2);
}

TEST(AxisCurve, AnAgeThatIsNoneKeepsEverythingVisible) {
    for (const double age : {0.0, -1.0, kNaN, std::numeric_limits<double>::infinity()}) {
        const QImage picture = Drawn({At(40, 50), At(140, 50), At(140, 90)}, Fading(age));
        EXPECT_EQ(Red(picture, 40, 50), 255) << age;
    }
    const QImage shortest =
        Drawn({At(40, 50), At(140, 50), At(140, 90)}, Fading(std::numeric_limits<double>::min()));
    EXPECT_EQ(Red(shortest, 40, 50), 0);
    EXPECT_EQ(Red(shortest, 140, 90), 255);
}

TEST(AxisCurve, AValueThatIsNoneIsAGap) {
    for (const LinePoint& gap : {LinePoint{80, 50, kNaN, 1.0}, LinePoint{80, 50, 1.0, kNaN}}) {
        const QImage picture =
            Drawn({At(40, 50), At(60, 50), gap, At(100, 50), At(120, 50), At(150, 90)}, Plain());
        EXPECT_EQ(Red(picture, 60, 50), 255);
        for (int x = 61; x < 100; ++x) {
            EXPECT_EQ(Red(picture, x, 50), 0) << x;
        }
        EXPECT_EQ(Red(picture, 100, 50), 255);
    }
}

TEST(AxisCurve, AGapAgesLikeAPoint) {
    std::vector<LinePoint> points{At(40, 50), At(60, 50)};
    points.insert(points.end(), 50, Gap());
    const QImage picture = Drawn(points, Fading(100.0));
    EXPECT_NEAR(Red(picture, 60, 50), 127, 2);
    EXPECT_EQ(Changed(Picture(), picture), QRect(40, 50, 21, 1));  // and nothing is marked
}

TEST(AxisCurve, TheNewestPointIsMarkedByADiscWithARim) {
    for (const double ratio : {1.0, 2.0}) {
        AxisCurve::Style style = Plain();
        style.device_ratio = ratio;
        style.color = Qt::red;
        style.background = Qt::blue;
        const QImage picture = Drawn({At(40, 60), At(100, 60)}, style, QColor(90, 90, 90));
        const auto radius = static_cast<int>(3.0 * ratio);
        for (const QPoint& side :
             {QPoint(0, 0), QPoint(radius, 0), QPoint(0, radius), QPoint(0, -radius)}) {
            EXPECT_EQ(picture.pixelColor(QPoint(100, 60) + side), QColor(Qt::red));
        }
        const auto rim = static_cast<int>(std::lround(4.25 * ratio));
        EXPECT_GT(picture.pixelColor(100, 60 + rim).blue(), 150);
        EXPECT_GT(picture.pixelColor(100 - rim, 60).blue(), 150);  // sets the curve off, too
        EXPECT_EQ(picture.pixelColor(100, 60 + 2 * rim), QColor(90, 90, 90));
    }
}

TEST(AxisCurve, AMarkAtTheEdgeIsMovedInside) {
    struct Row {
        LinePoint newest;
        QPoint centre;
    };
    for (const Row& row : {Row{At(179, 109), {174, 104}}, Row{At(20, 10), {25, 15}},
                           Row{At(kMost, 60), {174, 60}}, Row{At(100, kLeast), {100, 15}}}) {
        const QImage picture = Drawn({Gap(), row.newest}, Plain());
        for (const QPoint& side : {QPoint(3, 0), QPoint(-3, 0), QPoint(0, 3), QPoint(0, -3)}) {
            EXPECT_EQ(picture.pixelColor(row.centre + side), QColor(Qt::white));
        }
    }
}

TEST(AxisCurve, PointsAreSquaresWithoutALineBetween) {
    AxisCurve::Style style = Plain();
    style.points = true;
    style.point_size = 4;
    const QImage picture = Drawn({At(60, 50), At(60, 50), At(80, 50), Gap()}, style);
    QImage expected = Picture();
    for (const int x : {60, 80}) {
        for (int i = 0; i < 16; ++i) {
            expected.setPixelColor(x - 2 + i % 4, 48 + i / 4, Qt::white);
        }
    }
    EXPECT_EQ(picture, expected);
}

TEST(AxisCurve, APointIsNeverSmallerThanAPixel) {
    AxisCurve::Style style = Plain();
    style.points = true;
    for (const std::int32_t size : {kLeast, 0, 1}) {
        style.point_size = size;
        EXPECT_EQ(Changed(Picture(), Drawn({At(60, 50), Gap()}, style)), QRect(60, 50, 1, 1));
    }
}

TEST(AxisCurve, OfPointsThatOverlapTheNewerIsSeen) {
    AxisCurve::Style style = Fading(4.0);
    style.points = true;
    style.point_size = 6;
    const QImage picture = Drawn({At(60, 50), At(63, 50), Gap()}, style);
    EXPECT_NEAR(Red(picture, 58, 50), 128, 1);
    EXPECT_NEAR(Red(picture, 61, 50), 191, 1);
    EXPECT_NEAR(Red(picture, 65, 50), 191, 1);
}

TEST(AxisCurve, NothingIsDrawnOutsideThePlotAreaOrThePicture) {
    const std::vector<LinePoint> points{At(kLeast, kLeast), At(kMost, kMost),  At(0, 0),
                                        At(199, 119),       At(kLeast, kMost), At(kMost, kLeast),
                                        At(100, kMost),     At(kLeast, 60)};
    for (const bool as_points : {false, true}) {
        AxisCurve::Style style = Plain();
        style.points = as_points;
        style.point_size = kMost;
        EXPECT_TRUE(kPointsPlot.contains(Changed(Picture(), Drawn(points, style))));
        QImage picture = Picture();
        const QRect beyond(-1000, -1000, 5000, 5000);
        EXPECT_EQ(CurveOf(points).Draw(picture, beyond, style), picture.rect());
    }
}

TEST(AxisCurve, APlotAreaWithoutPixelsDrawsNothing) {
    QImage picture = Picture();
    AxisCurve curve = CurveOf({At(40, 50), At(60, 50)});
    for (const QRect& plot : {QRect(), QRect(40, 50, 0, 0), QRect(40, 50, -5, 10),
                              QRect(40, 50, 10, 0), QRect(1000, 1000, 50, 50)}) {
        EXPECT_TRUE(curve.Draw(picture, plot, Plain()).isEmpty());
    }
    EXPECT_EQ(picture, Picture());
    EXPECT_EQ(curve.Draw(picture, QRect(50, 50, 1, 1), Plain()), QRect(50, 50, 1, 1));
}

TEST(AxisCurve, TheRectangleReturnedHoldsAllPixelsChanged) {
    for (const bool as_points : {false, true}) {
        AxisCurve::Style style = Plain();
        style.points = as_points;
        style.point_size = 7;
        QImage picture = Picture();
        const QRect touched =
            CurveOf({At(40, 30), At(90, 80), At(60, 50)}).Draw(picture, kPointsPlot, style);
        EXPECT_TRUE(touched.contains(Changed(Picture(), picture)));
        EXPECT_TRUE(QRect(30, 20, 70, 70).contains(touched));
    }
}

TEST(AxisCurve, TheRatioOfThePictureChangesNothing) {
    QImage picture = Picture();
    picture.setDevicePixelRatio(2.0);
    CurveOf({At(40, 50), At(150, 90)}).Draw(picture, kPointsPlot, Plain());
    const QImage plain = Drawn({At(40, 50), At(150, 90)}, Plain());
    EXPECT_TRUE(Changed(plain, picture).isEmpty());
}

TEST(AxisCurve, ASecondPictureIsLikeTheFirst) {
    AxisCurve curve = CurveOf({At(40, 50), At(150, 90), At(30, 100)});
    QImage first = Picture();
    QImage second = Picture();
    curve.Draw(first, kPointsPlot, Fading(3.0));
    curve.Draw(second, kPointsPlot, Fading(3.0));
    EXPECT_EQ(first, second);
}

/// A picture with a curve on it that goes on from drawing to drawing.
class LivePicture {
 public:
    explicit LivePicture(std::mt19937& random) : m_background(Picture()), m_rows(120) {
        // Lines of a scale, and pixels of any colour.
        for (int y = 0; y < m_background.height(); ++y) {
            for (int x = 0; x < m_background.width(); ++x) {
                if (x % 40 == 0 || y % 30 == 0 || random() % 50 == 0) {
                    m_background.setPixel(x, y, 0xFF000000U | static_cast<QRgb>(random()));
                }
            }
        }
        std::iota(m_rows.begin(), m_rows.end(), 0);
        m_picture = m_background.copy();
    }

    void Draw(AxisCurve& curve, const AxisCurve::Style& style) {
        const bool go_on = m_drawn && curve.CanGoOn(style);
        if (!go_on) {
            m_picture = m_background.copy();
        }
        for (const PixelRun& run : m_touched) {
            for (int x = run.first; x < run.end; ++x) {
                m_picture.setPixel(x, run.row, m_background.pixel(x, run.row));
            }
        }
        m_touched.clear();
        const QPoint corner = kPointsPlot.topLeft();
        const auto stride = m_picture.bytesPerLine() / 4;
        const PixelColumns target{
            reinterpret_cast<QRgb*>(m_picture.scanLine(corner.y())) + corner.x(),
            stride,
            reinterpret_cast<const QRgb*>(m_background.constScanLine(corner.y())) + corner.x(),
            stride,
            m_rows.data(),
            0,
            kPointsPlot.width()};
        curve.DrawOn(m_picture, kPointsPlot, target, style, go_on, m_touched);
        m_drawn = true;
        m_went_on = m_went_on || go_on;
    }

    [[nodiscard]] QImage Expected(AxisCurve& curve, const AxisCurve::Style& style) const {
        QImage expected = m_background.copy();
        curve.Draw(expected, kPointsPlot, style);
        return expected;
    }
    [[nodiscard]] const QImage& Image() const { return m_picture; }
    [[nodiscard]] bool WentOn() const { return m_went_on; }

 private:
    QImage m_background;
    std::vector<int> m_rows;
    QImage m_picture;
    PixelRuns m_touched;
    bool m_drawn = false;
    bool m_went_on = false;
};

TEST(AxisCurve, DrawnOnAndOnItLooksAsDrawnAnew) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        LivePicture live(random);
        AxisCurve curve(2 + random() % 300);
        AxisCurve::Style style = Fading(seed % 3 == 0 ? 0.0 : 1.0 + random() % 200);
        style.color = QColor::fromRgb(static_cast<QRgb>(random()));
        int x = 100;
        int y = 60;
        for (int frame = 0; frame < 60; ++frame) {
            const std::size_t far = random() % 20 == 0 ? 200 : 3;  // near each other, or not
            for (std::size_t i = random() % 40 + (frame == 0 ? 2 : 0); i > 0; --i) {
                x += static_cast<int>(random() % far) - static_cast<int>(far / 2);
                y += static_cast<int>(random() % far) - static_cast<int>(far / 2);
                x = std::clamp(x, 0, 199);
                y = std::clamp(y, 0, 119);
                curve.Add(random() % 30 == 0 ? Gap() : At(x, y));
            }
            switch (random() % 25) {
                case 0:
                    for (LinePoint& point : curve) {
                        point.x += 3;
                    }
                    curve.PointsMoved();
                    break;
                case 1:
                    style.fade_out_age += 5.0;
                    break;
                case 2:
                    curve.Clear();
                    curve.Add(At(x, y));
                    curve.Add(At(y, x));
                    break;
                default:
                    break;
            }
            const QImage expected = live.Expected(curve, style);
            live.Draw(curve, style);
            ASSERT_EQ(live.Image(), expected) << "seed " << seed << ", frame " << frame;
        }
        EXPECT_TRUE(live.WentOn());
    }
}

TEST(AxisCurve, ManyPointsAreDrawnAsFewAre) {
    // Beyond some number nobody looks where they all are first.
    std::mt19937 random(7);
    AxisCurve curve(100000);
    for (int i = 0; i < 30000; ++i) {
        curve.Add(At(60 + static_cast<int>(random() % 9), 50 + static_cast<int>(random() % 9)));
    }
    AxisCurve few(100000);
    for (std::size_t i = 15000; i < curve.Size(); ++i) {
        few.Add(curve[i]);
    }
    QImage picture = Picture();
    QImage expected = Picture();
    curve.Draw(picture, kPointsPlot, Fading(10000.0));
    few.Draw(expected, kPointsPlot, Fading(10000.0));
    EXPECT_EQ(picture, expected);
}

}  // namespace
}  // namespace wavo

#include "view/text_band.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <cmath>

#include "graph/draw/display_settings.h"

namespace wavo {
namespace {

constexpr QSize kBandSize(400, 200);
constexpr double kRatios[] = {1.0, 1.25, 1.5, 2.0, 3.0};

/// A picture of which no two neighbouring pixels are alike.
QImage Picture(double ratio = 1.0, const QSize& size = kBandSize) {
    QImage picture((QSizeF(size) * ratio).toSize(), QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            picture.setPixel(x, y, qRgb(x % 7, y % 11, (x + y) % 5));
        }
    }
    picture.setDevicePixelRatio(ratio);
    return picture;
}

BandText White(const std::string& text, std::int32_t height = -16) {
    BandText band{text, {}, 0xFFFFFF};
    band.font.face = "DejaVu Sans";
    band.font.height = height;
    return band;
}

/// The smallest rectangle around the pixels in which the pictures differ; empty when there is none.
QRect Difference(const QImage& a, const QImage& b) {
    QRect difference;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y)) {
                difference |= QRect(x, y, 1, 1);
            }
        }
    }
    return difference;
}

TEST(TextBand, StandsAtTheBottomOneTextLineHigh) {
    for (const double ratio : kRatios) {
        SCOPED_TRACE(ratio);
        TextBand band;
        QImage picture = Picture(ratio);
        const BandText text = White("Quality gjpÄ");
        band.PutOn(picture, text);
        const QRect place = TextBand().Band(picture, text);
        const int height = QFontMetrics(MakeFont(text.font)).height();
        EXPECT_EQ(place.height(), static_cast<int>(std::ceil(height * ratio)));
        EXPECT_EQ(place.bottom(), picture.height() - 1);
        EXPECT_EQ(place.width(), picture.width());
        const QRect changed = Difference(picture, Picture(ratio));
        EXPECT_TRUE(place.contains(changed));
        EXPECT_GT(changed.height(), place.height() / 2);
    }
}

TEST(TextBand, IsCentred) {
    for (const double ratio : kRatios) {
        SCOPED_TRACE(ratio);
        TextBand band;
        QImage picture = Picture(ratio);
        band.PutOn(picture, White("HHHHHH"));
        const QRect changed = Difference(picture, Picture(ratio));
        const int right = picture.width() - 1 - changed.right();
        EXPECT_NEAR(changed.left(), right, 3.0 * ratio);
        EXPECT_GT(changed.left(), picture.width() / 4);
    }
}

TEST(TextBand, HasTheColourGiven) {
    TextBand band;
    QImage picture = Picture();
    BandText text = White("HHHHHH", -40);
    text.color = 0x2040E0;
    band.PutOn(picture, text);
    int count = 0;
    for (int y = 150; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += picture.pixel(x, y) == qRgb(0xE0, 0x40, 0x20) ? 1 : 0;
        }
    }
    EXPECT_GT(count, 100);
}

TEST(TextBand, TakenOffThePictureIsAsBeforeToTheBit) {
    for (const double ratio : kRatios) {
        SCOPED_TRACE(ratio);
        TextBand band;
        QImage picture = Picture(ratio);
        for (const char* const text : {"one", "another text", "x"}) {
            band.PutOn(picture, White(text, text[0] == 'x' ? -60 : -16));
            EXPECT_FALSE(Difference(picture, Picture(ratio)).isEmpty());
            band.TakeOff(picture);
            EXPECT_EQ(picture, Picture(ratio));
        }
        band.TakeOff(picture);
        EXPECT_EQ(picture, Picture(ratio));
    }
}

TEST(TextBand, WithoutATextNothingHappens) {
    TextBand band;
    QImage picture = Picture();
    band.PutOn(picture, White(""));
    EXPECT_EQ(picture, Picture());
    band.TakeOff(picture);
    EXPECT_EQ(picture, Picture());
    QImage none;
    band.PutOn(none, White("text"));
    band.TakeOff(none);
    EXPECT_TRUE(none.isNull());
}

TEST(TextBand, AForgottenTextIsNotTakenOff) {
    TextBand band;
    QImage picture = Picture();
    band.PutOn(picture, White("text"));
    const QImage with_text = picture.copy();
    band.Forget();
    band.TakeOff(picture);
    EXPECT_EQ(picture, with_text);
}

TEST(TextBand, ALongTextEndsInDotsAndStaysInThePicture) {
    const BandText text = White(std::string(300, 'm'));
    TextBand band;
    QImage picture = Picture();
    band.PutOn(picture, text);
    const QString shown = QFontMetrics(MakeFont(text.font))
                              .elidedText(QString(300, u'm'), Qt::ElideRight, kBandSize.width());
    ASSERT_TRUE(shown.endsWith(u'…'));
    QImage expected = Picture();
    TextBand().PutOn(expected, White(shown.toStdString()));
    EXPECT_EQ(picture, expected);
}

TEST(TextBand, IsOneLineWithoutMnemonicsOrMarkup) {
    const BandText text = White("a & <b>b</b> &c");
    TextBand band;
    QImage picture = Picture();
    band.PutOn(picture, text);
    const int width =
        QFontMetrics(MakeFont(text.font)).horizontalAdvance(QStringLiteral("a & <b>b</b> &c"));
    EXPECT_NEAR(Difference(picture, Picture()).width(), width, 4);
}

TEST(TextBand, FillsAPictureThatIsLowerThanALine) {
    for (const QSize& size : {QSize(400, 5), QSize(1, 1), QSize(3, 200)}) {
        TextBand band;
        QImage picture = Picture(1.0, size);
        band.PutOn(picture, White("text"));
        band.TakeOff(picture);
        EXPECT_EQ(picture, Picture(1.0, size));
    }
    EXPECT_EQ(TextBand().Band(Picture(1.0, QSize(400, 5)), White("text")), QRect(0, 0, 400, 5));
}

TEST(TextBand, ItsFontCanChange) {
    TextBand band;
    QImage picture = Picture();
    band.PutOn(picture, White("HHH", -10));
    const int lower = Difference(picture, Picture()).height();
    band.TakeOff(picture);
    band.PutOn(picture, White("HHH", -40));
    EXPECT_GT(Difference(picture, Picture()).height(), 3 * lower);
}

}  // namespace
}  // namespace wavo

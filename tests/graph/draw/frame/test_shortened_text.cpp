#include "graph/draw/frame/shortened_text.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QFontDatabase>

namespace wavo {
namespace {

const QChar kEllipsis(0x2026);

QFontMetrics Metrics() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(12);
    return QFontMetrics(font);
}

TEST(ShortenedText, NoTextWantsNoWidth) {
    EXPECT_EQ(TextWidth(Metrics(), QString()), 0);
    EXPECT_GT(TextWidth(Metrics(), "X"), 1);
}

TEST(ShortenedText, WhatFitsStays) {
    for (const QString text : {"Y: X=(-10.0 ... 10.0)", "T: (0 ... 4.0)s", "?", "X:   dx=5.0"}) {
        EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), text)), text);
    }
}

TEST(ShortenedText, NeverExceedsTheWidth) {
    for (const QString text :
         {"Y: ActualPositionOfTheCarrier=(-10.0 ... 10.0)", "T: (0 ... 4.0)s",
          "Y: X=(-100000000.0 ... 100000000.0)", "waiting for start-trigger"}) {
        for (int width = 20; width < 400; ++width) {
            EXPECT_LE(TextWidth(Metrics(), ShortenedText(text, Metrics(), width)), width + 1)
                << text.toStdString() << " " << width;
        }
    }
}

TEST(ShortenedText, ALongNameLosesItsMiddleAndKeepsTheRange) {
    const QString range = "=(-10.0 ... 10.0)";
    const int width = TextWidth(Metrics(), range) + 12 * Metrics().averageCharWidth();
    const QString shown = ShortenedText("Y: ActualPositionOfTheCarrierB" + range, Metrics(), width);
    EXPECT_TRUE(shown.startsWith("Y: A")) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith("B" + range)) << shown.toStdString();
    EXPECT_TRUE(shown.contains(kEllipsis)) << shown.toStdString();
}

TEST(ShortenedText, ARangeIsNeverCut) {
    const QString text = "Y: X=(-10.0 ... 10.0)";
    EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), text) - 1), "Y: X");
    EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), "Y: X")), "Y: X");
    const QString time = "T: (0 ... 123456.0)s";
    EXPECT_EQ(ShortenedText(time, Metrics(), TextWidth(Metrics(), time) - 1), QString());
}

TEST(ShortenedText, ANameWithARangeInItKeepsItsOwnRange) {
    const int width = TextWidth(Metrics(), "=(0.0 ... 1.0)") + 10 * Metrics().averageCharWidth();
    EXPECT_TRUE(ShortenedText("Y: strange=(name)OfAnAxis=(0.0 ... 1.0)", Metrics(), width)
                    .endsWith("=(0.0 ... 1.0)"));
}

TEST(ShortenedText, OtherTextsLoseTheirEnd) {
    const QString shown =
        ShortenedText("waiting for start-trigger", Metrics(), 10 * Metrics().averageCharWidth());
    EXPECT_TRUE(shown.startsWith("wait")) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(kEllipsis)) << shown.toStdString();
}

}  // namespace
}  // namespace wavo

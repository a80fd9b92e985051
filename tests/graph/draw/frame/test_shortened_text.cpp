#include "graph/draw/frame/shortened_text.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QFontDatabase>
#include <optional>
#include <string>

namespace wavo {
namespace {

const QChar kEllipsis(0x2026);

QFontMetrics Metrics() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(12);
    return QFontMetrics(font);
}

AxisText OfAxis(const std::string& name, const std::string& range) {
    return {"Y: ", name, range, ""};
}

const AxisText kTime{"T: ", std::nullopt, "(0 ... 4.0)", "s"};
const AxisText kUnknown{"?", std::nullopt, "", ""};

QString Whole(const AxisText& text) {
    return QString::fromStdString(Joined(text));
}

TEST(ShortenedText, NoTextWantsNoWidth) {
    EXPECT_EQ(TextWidth(Metrics(), QString()), 0);
    EXPECT_GT(TextWidth(Metrics(), "X"), 1);
}

TEST(ShortenedText, WhatFitsStays) {
    for (const AxisText& text : {OfAxis("X", "(-10.0 ... 10.0)"), kTime, kUnknown}) {
        EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), Whole(text))), Whole(text));
    }
    const QString spacing = "X:   dx=5.0";
    EXPECT_EQ(ShortenedText(spacing, Metrics(), TextWidth(Metrics(), spacing)), spacing);
    EXPECT_EQ(Whole(OfAxis("X", "(-10.0 ... 10.0)")), "Y: X=(-10.0 ... 10.0)");
    EXPECT_EQ(Whole(kTime), "T: (0 ... 4.0)s");
    EXPECT_EQ(Whole(kUnknown), "?");
}

TEST(ShortenedText, NeverExceedsTheWidth) {
    const QString status = "waiting for start-trigger";
    for (int width = 20; width < 400; ++width) {
        for (const AxisText& text : {OfAxis("ActualPositionOfTheCarrier", "(-10.0 ... 10.0)"),
                                     kTime, OfAxis("X", "(-100000000.0 ... 100000000.0)")}) {
            EXPECT_LE(TextWidth(Metrics(), ShortenedText(text, Metrics(), width)), width + 1)
                << Joined(text) << " " << width;
        }
        EXPECT_LE(TextWidth(Metrics(), ShortenedText(status, Metrics(), width)), width + 1);
    }
}

TEST(ShortenedText, ALongNameLosesItsMiddleAndKeepsTheRange) {
    const QString range = "=(-10.0 ... 10.0)";
    const int width = TextWidth(Metrics(), range) + 12 * Metrics().averageCharWidth();
    const QString shown =
        ShortenedText(OfAxis("ActualPositionOfTheCarrierB", "(-10.0 ... 10.0)"), Metrics(), width);
    EXPECT_TRUE(shown.startsWith("Y: A")) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith("B" + range)) << shown.toStdString();
    EXPECT_TRUE(shown.contains(kEllipsis)) << shown.toStdString();
}

TEST(ShortenedText, ARangeIsNeverCut) {
    const AxisText text = OfAxis("X", "(-10.0 ... 10.0)");
    EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), Whole(text)) - 1), "Y: X");
    EXPECT_EQ(ShortenedText(text, Metrics(), TextWidth(Metrics(), "Y: X")), "Y: X");
    const AxisText time{"T: ", std::nullopt, "(0 ... 123456.0)", "s"};
    EXPECT_EQ(ShortenedText(time, Metrics(), TextWidth(Metrics(), Whole(time)) - 1), QString());
}

TEST(ShortenedText, ANameWithARangeInItKeepsItsOwnRange) {
    const int width = TextWidth(Metrics(), "=(0.0 ... 1.0)") + 10 * Metrics().averageCharWidth();
    EXPECT_TRUE(ShortenedText(OfAxis("strange=(name)OfAnAxis", "(0.0 ... 1.0)"), Metrics(), width)
                    .endsWith("=(0.0 ... 1.0)"));
}

TEST(ShortenedText, ANameIsNeverTakenForARange) {
    const AxisText named_like_a_range{"", "Axis=(OfTheCarrier)", "", ""};
    const int width = TextWidth(Metrics(), "Axis=(OfTheCa");
    EXPECT_TRUE(ShortenedText(named_like_a_range, Metrics(), width).startsWith("Axis=(Of"))
        << ShortenedText(named_like_a_range, Metrics(), width).toStdString();
    const AxisText named_like_a_time{"", "T: (OfTheCarrier)", "", ""};
    EXPECT_FALSE(ShortenedText(named_like_a_time, Metrics(), width).isEmpty());
}

TEST(ShortenedText, WhereManyShareALineTheCoordinateGoesBeforeTheRangeAndBothBeforeTheName) {
    const AxisText text = OfAxis("Carrier", "(0.0 ... 1.0)");
    const auto shown = [&](const QString& room) {
        return Whole(WithoutWhatIsKnown(text, Metrics(), TextWidth(Metrics(), room)));
    };
    EXPECT_EQ(shown("Y: Carrier=(0.0 ... 1.0)"), "Y: Carrier=(0.0 ... 1.0)");
    EXPECT_EQ(shown("Carrier=(0.0 ... 1.0)"), "Carrier=(0.0 ... 1.0)");
    EXPECT_EQ(shown("Y: Carrier"), "Y: Carrier=(0.0 ... 1.0)") << "shortened to its name";
    EXPECT_EQ(shown("Carrier"), "Carrier");
    EXPECT_EQ(Whole(WithoutWhatIsKnown(kUnknown, Metrics(), 1)), "?");
}

TEST(ShortenedText, OtherTextsLoseTheirEnd) {
    const QString status = "waiting for start-trigger";
    const QString shown = ShortenedText(status, Metrics(), 10 * Metrics().averageCharWidth());
    EXPECT_TRUE(shown.startsWith("wait")) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith(kEllipsis)) << shown.toStdString();
}

}  // namespace
}  // namespace wavo

#include "session/seen_lines.h"

#include <gtest/gtest.h>

#include <random>

namespace wavo {
namespace {

constexpr LineRange kHeld{1000, 11001};  // 10000 steps

SeenLines All() {
    SeenLines lines;
    lines.ShowAll(kHeld);
    return lines;
}

TEST(SeenLines, BeginWithAllThereIs) {
    const SeenLines lines = All();
    EXPECT_EQ(lines.Seen(), kHeld);
    EXPECT_TRUE(lines.IsAllSeen());
}

TEST(SeenLines, ZoomKeepsTheLineUnderThePointer) {
    for (const double place : {0.0, 0.25, 0.5, 1.0}) {
        SeenLines lines = All();
        lines.Zoom(place, 0.5);
        EXPECT_EQ(lines.Seen().Count(), 5001);
        EXPECT_EQ(lines.Seen().begin + static_cast<std::int64_t>(place * 5000),
                  1000 + static_cast<std::int64_t>(place * 10000));
        lines.Zoom(place, 2.0);
        EXPECT_EQ(lines.Seen(), kHeld);
    }
}

TEST(SeenLines, ZoomEndsAtFewLinesAndAtAll) {
    SeenLines lines = All();
    for (int i = 0; i < 100; ++i) {
        lines.Zoom(0.3, 0.8);
    }
    EXPECT_EQ(lines.Seen().Count(), SeenLines::kFewest);
    lines.Zoom(0.3, 1.01);
    EXPECT_EQ(lines.Seen().Count(), SeenLines::kFewest + 1) << "each notch does something";
    for (int i = 0; i < 100; ++i) {
        lines.Zoom(0.3, 1.25);
    }
    EXPECT_EQ(lines.Seen(), kHeld);
}

TEST(SeenLines, MoveEndsAtBothEnds) {
    SeenLines lines = All();
    lines.Show({3000, 4001});
    lines.Move(0.5);
    EXPECT_EQ(lines.Seen(), (LineRange{3500, 4501}));
    lines.Move(-1.0);
    EXPECT_EQ(lines.Seen(), (LineRange{2500, 3501}));
    lines.Move(-100.0);
    EXPECT_EQ(lines.Seen(), (LineRange{1000, 2001}));
    lines.MoveToEnd();
    EXPECT_EQ(lines.Seen(), (LineRange{10000, 11001}));
    lines.Move(1e300);
    EXPECT_EQ(lines.Seen(), (LineRange{10000, 11001}));
    lines.MoveToBegin();
    EXPECT_EQ(lines.Seen(), (LineRange{1000, 2001}));
}

TEST(SeenLines, ALineIsBroughtIntoTheMiddleUnlessItIsSeen) {
    SeenLines lines = All();
    lines.Show({3000, 4001});
    lines.BringIn(3500);
    EXPECT_EQ(lines.Seen(), (LineRange{3000, 4001}));
    lines.BringIn(4000);
    EXPECT_EQ(lines.Seen(), (LineRange{3500, 4501}));
    lines.BringIn(1000);
    EXPECT_EQ(lines.Seen(), (LineRange{1000, 2001}));
}

TEST(SeenLines, OfAlmostNothingHaveALengthAllTheSame) {
    for (const LineRange held : {LineRange{}, LineRange{5, 6}, LineRange{5, 7}}) {
        SeenLines lines;
        lines.ShowAll(held);
        EXPECT_EQ(lines.Seen(), (LineRange{held.begin, held.begin + 2}));
        lines.Zoom(0.5, 0.5);
        lines.Zoom(0.5, 2.0);
        lines.Move(1.0);
        lines.MoveToEnd();
        EXPECT_EQ(lines.Seen(), (LineRange{held.begin, held.begin + 2}));
    }
}

TEST(SeenLines, WhatGrowsLeavesThemWhatShrinksTakesThemAlong) {
    SeenLines lines = All();
    lines.Show({3000, 4001});
    lines.SetHeld({1000, 20000});
    EXPECT_EQ(lines.Seen(), (LineRange{3000, 4001}));
    lines.SetHeld({1000, 3500});
    EXPECT_EQ(lines.Seen(), (LineRange{2499, 3500}));
}

TEST(SeenLines, NeverLeaveWhatThereIs) {
    std::mt19937_64 random(5);
    SeenLines lines = All();
    for (int i = 0; i < 20000; ++i) {
        const double part = static_cast<double>(random() % 1001) / 1000.0;
        switch (random() % 4) {
            case 0:
                lines.Zoom(part, 0.25 + 2.0 * static_cast<double>(random() % 100) / 100.0);
                break;
            case 1:
                lines.Move(4.0 * part - 2.0);
                break;
            case 2:
                lines.Show({static_cast<std::int64_t>(random() % 20000),
                            static_cast<std::int64_t>(random() % 20000)});
                break;
            default:
                lines.BringIn(static_cast<std::int64_t>(random() % 20000));
        }
        ASSERT_GE(lines.Seen().begin, kHeld.begin);
        ASSERT_LE(lines.Seen().end, kHeld.end);
        ASSERT_GE(lines.Seen().Count(), SeenLines::kFewest);
    }
}

}  // namespace
}  // namespace wavo

#include "graph/draw/frame/labels.h"

#include <gtest/gtest.h>

namespace wavo {
namespace {

constexpr LabelMetrics kMetrics{18, 250, 40, 14};

std::vector<QRect> AllRectangles(const FrameLayout& layout) {
    std::vector<QRect> all{layout.plot, layout.top_line};
    all.insert(all.end(), layout.y_slots.begin(), layout.y_slots.end());
    return all;
}

TEST(Labels, NothingOverlapsAndNothingLeavesTheGraphAtAnySize) {
    for (int width = 0; width <= 900; width += 37) {
        for (int height = 0; height <= 500; height += 23) {
            for (const int axes : {0, 1, 2, 3, 7, 40}) {
                const QRect rectangle(11, 13, width, height);
                const FrameLayout layout = LayoutFrame(rectangle, kMetrics, axes);
                ASSERT_EQ(layout.y_slots.size(), static_cast<std::size_t>(axes));
                const std::vector<QRect> all = AllRectangles(layout);
                for (std::size_t i = 0; i < all.size(); ++i) {
                    ASSERT_TRUE(all[i].isEmpty() || rectangle.contains(all[i]))
                        << width << "x" << height << " " << axes << " rectangle " << i;
                    for (std::size_t k = i + 1; k < all.size(); ++k) {
                        ASSERT_FALSE(all[i].intersects(all[k]))
                            << width << "x" << height << " " << axes << ": " << i << ", " << k;
                    }
                }
                if (width >= 2 && height >= 2 && !layout.low) {
                    ASSERT_GE(layout.plot.height() * 2, height - 1);
                }
                ASSERT_EQ(layout.low, axes > 0 && width >= 60 && height < 72 && height >= 21);
            }
        }
    }
}

TEST(Labels, AnOrdinaryGraphHasATopLineAndASlotPerAxis) {
    const FrameLayout layout = LayoutFrame(QRect(0, 0, 800, 400), kMetrics, 3);
    EXPECT_EQ(layout.top_line, QRect(6, 0, 788, 18));
    EXPECT_EQ(layout.plot, QRect(6, 18, 788, 400 - 2 * 18));
    EXPECT_EQ(layout.y_slots[0], QRect(6, 382, 248, 18));
    EXPECT_EQ(layout.y_slots[1], QRect(268, 382, 248, 18));
    EXPECT_EQ(layout.y_slots[2], QRect(530, 382, 248, 18));
}

TEST(Labels, SlotsGoToASecondLineWhenTheyDoNotFitIntoOne) {
    const FrameLayout layout = LayoutFrame(QRect(0, 0, 600, 400), kMetrics, 3);
    EXPECT_EQ(layout.y_slots[0].top(), layout.y_slots[1].top());
    EXPECT_GT(layout.y_slots[2].top(), layout.y_slots[0].bottom());
    EXPECT_EQ(layout.y_slots[2].left(), layout.y_slots[0].left());
}

TEST(Labels, SlotsGetNarrowerBeforeTheyTakeMoreThanAThirdOfTheHeight) {
    const FrameLayout full = LayoutFrame(QRect(0, 0, 640, 216), kMetrics, 8);
    EXPECT_EQ(full.plot.height(), 216 - 18 - 4 * 18);
    EXPECT_EQ(full.y_slots[2].left(), full.y_slots[0].left());
    const FrameLayout ranges = LayoutFrame(QRect(0, 0, 640, 215), kMetrics, 8);
    EXPECT_EQ(ranges.plot.height(), 215 - 18 - 2 * 18);
    EXPECT_EQ(ranges.y_slots[3].top(), ranges.y_slots[0].top());
    EXPECT_EQ(ranges.y_slots[4].left(), ranges.y_slots[0].left());
    const FrameLayout names = LayoutFrame(QRect(0, 0, 640, 107), kMetrics, 8);
    EXPECT_EQ(names.plot.height(), 107 - 18 - 18);
    EXPECT_EQ(names.y_slots[7].top(), names.y_slots[0].top());
}

TEST(Labels, LowGraphsHaveOneLineForAllTexts) {
    const FrameLayout two_lines = LayoutFrame(QRect(0, 0, 200, 72), kMetrics, 2);
    EXPECT_FALSE(two_lines.top_line.isEmpty());
    EXPECT_FALSE(two_lines.y_slots[1].isEmpty());
    EXPECT_FALSE(two_lines.low);
    const FrameLayout one_line = LayoutFrame(QRect(0, 0, 200, 71), kMetrics, 2);
    EXPECT_TRUE(one_line.low);
    EXPECT_EQ(one_line.top_line, QRect(6, 0, 188, 18));
    EXPECT_EQ(one_line.plot, QRect(6, 18, 188, 71 - 18 - 3));
    EXPECT_TRUE(one_line.y_slots[0].isEmpty());
    // The line gives up the room around its letters before it goes.
    const FrameLayout lowest = LayoutFrame(QRect(0, 0, 200, 21), kMetrics, 2);
    EXPECT_EQ(lowest.top_line, QRect(6, 0, 188, 14));
    EXPECT_EQ(lowest.plot.height(), 4);
    const FrameLayout bare = LayoutFrame(QRect(0, 0, 200, 20), kMetrics, 2);
    EXPECT_TRUE(bare.top_line.isEmpty());
    EXPECT_FALSE(bare.plot.isEmpty());
}

TEST(Labels, InALowLineTheNamesOfTheAxesAreTheLastToGo) {
    // A y axis wants 125 pixels, and a gap of 14.
    const auto places = [](int width, int status) {
        return PlaceLowLine(QRect(10, 0, width, 18), kMetrics, 100, status, 80, 2);
    };
    const LowLinePlaces all = places(486, 0);
    EXPECT_EQ(all.top.x_text, QRect(10, 0, 100, 18));
    EXPECT_EQ(all.y[0], QRect(124, 0, 125, 18));
    EXPECT_EQ(all.y[1], QRect(263, 0, 125, 18));
    EXPECT_EQ(all.top.x_spacing, QRect(416, 0, 80, 18));
    const LowLinePlaces no_spacing = places(485, 0);
    EXPECT_TRUE(no_spacing.top.x_spacing.isEmpty());
    EXPECT_FALSE(no_spacing.top.x_text.isEmpty());
    const LowLinePlaces names = places(391, 0);
    EXPECT_TRUE(names.top.x_text.isEmpty());
    EXPECT_EQ(names.y[0], QRect(10, 0, 125, 18));
    const LowLinePlaces narrow = places(100, 0);
    EXPECT_EQ(narrow.y[0], QRect(10, 0, 43, 18));
    EXPECT_EQ(narrow.y[1], QRect(67, 0, 43, 18));
    EXPECT_TRUE(places(100, 90).top.status.isEmpty()) << "the state goes before the names";
    EXPECT_FALSE(places(100, 90).y[1].isEmpty());
    EXPECT_EQ(places(800, 90).top.status.left(), 10 + 392) << "behind the axes";
    EXPECT_EQ(places(1200, 90).top.status.left(), 10 + 555) << "in the middle";
}

TEST(Labels, InALowLineNothingOverlapsAtAnyWidth) {
    for (int width = 0; width <= 1500; width += 7) {
        for (const int axes : {0, 1, 2, 5, 16}) {
            for (const int status : {0, 130}) {
                const QRect line(11, 13, width, 18);
                const LowLinePlaces places = PlaceLowLine(line, kMetrics, 90, status, 60, axes);
                std::vector<QRect> all{places.top.x_text, places.top.status, places.top.x_spacing};
                all.insert(all.end(), places.y.begin(), places.y.end());
                for (std::size_t i = 0; i < all.size(); ++i) {
                    ASSERT_TRUE(all[i].isEmpty() || line.contains(all[i])) << width << " " << i;
                    for (std::size_t k = i + 1; k < all.size(); ++k) {
                        ASSERT_FALSE(all[i].intersects(all[k]))
                            << width << " " << axes << ": " << i << ", " << k;
                    }
                }
            }
        }
    }
}

TEST(Labels, TooManyAxesForTheWidthShowNoSlots) {
    const FrameLayout layout = LayoutFrame(QRect(0, 0, 120, 80), kMetrics, 9);
    EXPECT_FALSE(layout.low);
    for (const QRect& slot : layout.y_slots) {
        EXPECT_TRUE(slot.isEmpty());
    }
    EXPECT_EQ(layout.plot.bottom(), 80 - 1 - 3);
}

struct TopLineRow {
    int x_text;
    int status;
    int spacing;
    QRect expected_x_text;
    QRect expected_status;
    QRect expected_spacing;
};

TEST(Labels, TopLineTextsDropOutInOrder) {
    const QRect line(10, 0, 400, 18);
    const auto at = [](int left, int width) { return QRect(10 + left, 0, width, 18); };
    for (const TopLineRow& row : {
             TopLineRow{100, 0, 80, at(0, 100), QRect(), at(320, 80)},
             TopLineRow{100, 100, 80, at(0, 100), at(150, 100), at(320, 80)},
             TopLineRow{310, 0, 90, at(0, 310), QRect(), QRect()},
             TopLineRow{100, 200, 80, QRect(), at(100, 200), QRect()},
             TopLineRow{80, 200, 87, at(0, 80), at(100, 200), QRect()},
             TopLineRow{100, 500, 80, QRect(), at(0, 400), QRect()},
             TopLineRow{500, 0, 80, at(0, 400), QRect(), QRect()},
         }) {
        const TopLinePlaces places = PlaceTopLine(line, 14, row.x_text, row.status, row.spacing);
        EXPECT_EQ(places.x_text, row.expected_x_text) << row.x_text << " " << row.status;
        EXPECT_EQ(places.status, row.expected_status) << row.x_text << " " << row.status;
        EXPECT_EQ(places.x_spacing, row.expected_spacing) << row.x_text << " " << row.status;
    }
    EXPECT_TRUE(PlaceTopLine(QRect(), 14, 10, 10, 10).status.isEmpty());
}

TEST(Labels, ASlotDropsItsSpacingFirst) {
    const QRect slot(10, 100, 200, 18);
    const SlotPlaces both = PlaceSlot(slot, 14, 100, 86);
    EXPECT_EQ(both.text, QRect(10, 100, 100, 18));
    EXPECT_EQ(both.spacing, QRect(124, 100, 86, 18));
    const SlotPlaces range_only = PlaceSlot(slot, 14, 100, 87);
    EXPECT_EQ(range_only.text, QRect(10, 100, 100, 18));
    EXPECT_TRUE(range_only.spacing.isEmpty());
    const SlotPlaces cut = PlaceSlot(slot, 14, 300, 87);
    EXPECT_EQ(cut.text, slot);
    EXPECT_TRUE(cut.spacing.isEmpty());
}

}  // namespace
}  // namespace wavo

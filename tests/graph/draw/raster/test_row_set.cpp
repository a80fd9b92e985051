#include "graph/draw/raster/row_set.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace wavo {
namespace {

TEST(RowSet, IsTheRowsThatWereAdded) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 200; ++round) {
        RowSet rows;
        std::set<std::int32_t> plain;
        for (int step = 0; step < 30; ++step) {
            const auto top = static_cast<std::int32_t>(random() % 100);
            const RowStretch added{top, top - 1 + static_cast<std::int32_t>(random() % 9)};
            rows.Add(added);
            for (std::int32_t row = added.top; row <= added.bottom; ++row) {
                plain.insert(row);
            }
            std::set<std::int32_t> held;
            std::int32_t end = -2;
            for (const RowStretch& stretch : rows.Stretches()) {
                ASSERT_GT(stretch.top, end + 1) << "stretches do not touch";
                ASSERT_LE(stretch.top, stretch.bottom);
                end = stretch.bottom;
                for (std::int32_t row = stretch.top; row <= stretch.bottom; ++row) {
                    held.insert(row);
                }
            }
            ASSERT_EQ(held, plain);
            const auto asked = static_cast<std::int32_t>(random() % 100);
            const RowStretch some{asked, asked + static_cast<std::int32_t>(random() % 4)};
            bool are_all = true;
            for (std::int32_t row = some.top; row <= some.bottom; ++row) {
                are_all = are_all && plain.contains(row);
            }
            ASSERT_EQ(rows.Holds(some), are_all);
        }
    }
}

TEST(RowSet, NoRowsAreAlwaysHeldAndAddNothing) {
    RowSet rows;
    EXPECT_TRUE(rows.Holds({}));
    rows.Add({});
    EXPECT_TRUE(rows.Stretches().empty());
    EXPECT_EQ(RowStretch().Joined({3, 4}), (RowStretch{3, 4}));
    EXPECT_EQ((RowStretch{3, 4}).Joined({}), (RowStretch{3, 4}));
    EXPECT_EQ((RowStretch{3, 4}).Joined({9, 12}), (RowStretch{3, 12}));
    EXPECT_TRUE((RowStretch{3, 4}).Within({5, 9}).IsEmpty());
}

}  // namespace
}  // namespace wavo

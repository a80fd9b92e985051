#include "graph/values/graph_value.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "expect_errors.h"
#include "graph_value_texts.h"
#include "special_values.h"

namespace wavo {
namespace {

using ::testing::DoubleEq;
using testing::ExpectErrorLog;
using ::testing::Pointwise;

constexpr double kLargest = std::numeric_limits<double>::max();

std::vector<double> Held(const GraphValue& value) {
    std::vector<double> out;
    CopyOut(value.Values(), out, 0, value.Values().Size());
    return out;
}

std::vector<double> New(const GraphValue& value) {
    std::vector<double> out = {-1.0};
    double start_time = 0.0;
    value.GetNewValues(out, start_time);
    return out;
}

/// Sets 0, 1, 2, ... `count` of them, the new values emptied after each.
void SetCounting(GraphValue& value, int count) {
    for (int i = 0; i < count; ++i) {
        value.SetValue(i);
        value.EmptyNewValues();
    }
}

TEST(GraphValueTest, StartsEmptyAndEnabled) {
    const GraphValue value("X", 0.004, 2.0, 0);
    EXPECT_EQ(value.StoredCount(), 0U);
    EXPECT_EQ(value.Capacity(), 500U);
    EXPECT_EQ(value.DroppedCount(), 0.0);
    EXPECT_EQ(value.PushedCount(), 0.0);
    EXPECT_EQ(value.TotalCount(), 0.0);
    EXPECT_EQ(value.FirstNewIndex(), 0.0);
    EXPECT_EQ(value.NewCount(), 0U);
    EXPECT_EQ(value.LatestTime(), 0.0);
    EXPECT_TRUE(value.Enabled());
    EXPECT_EQ(value.Values().Size(), 0U);
    EXPECT_TRUE(std::has_virtual_destructor_v<GraphValue>);
}

TEST(GraphValueTest, CapacityIsTheTruncatedQuotient) {
    struct Row {
        double time_range, cycle_time;
        std::uint64_t capacity;
    };
    const Row rows[] = {
        {2.0, 0.004, 500},
        {0.7, 0.1, 6},  // the quotient of these doubles lies just below 7
        {0.0001, 0.001, 0},
        {0.0019, 0.001, 1},
        {0.0, 0.001, 0},
        {1e8, 0.001, 100000000000},
        {-1.0, 0.001, 0},
        {-0.0001, 0.001, 0},
        {kNaN, 0.001, 0},
        {kLargest, 0.001, UINT64_MAX},
        {kInf, 0.001, UINT64_MAX},
        {-kInf, 0.001, 0},
        {18446744073709551616.0, 1.0, UINT64_MAX},
        {18446744073709549568.0, 1.0, 18446744073709549568U},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.time_range << " / " << row.cycle_time);
        const GraphValue value("X", row.cycle_time, row.time_range, 0);
        EXPECT_EQ(value.Capacity(), row.capacity);
    }
}

TEST(GraphValueTest, TheSampleAfterTheLastOneThatFitsDropsTheOldest) {
    GraphValue value("X", 0.004, 2.0, 0);
    SetCounting(value, 500);
    EXPECT_EQ(value.StoredCount(), 500U);
    EXPECT_EQ(value.DroppedCount(), 0.0);
    value.SetValue(500.0);
    EXPECT_EQ(value.StoredCount(), 500U);
    EXPECT_EQ(value.Values().Size(), 500U);
    EXPECT_EQ(value.DroppedCount(), 1.0);
    EXPECT_EQ(value.PushedCount(), 501.0);
    EXPECT_EQ(value.TotalCount(), 501.0);
    EXPECT_EQ(value.Values()[0], 1.0);
    EXPECT_EQ(value.Values()[499], 500.0);
    EXPECT_EQ(value.LatestTime(), 501.0 * 0.004);
}

TEST(GraphValueTest, WithoutCapacityNothingIsEverDropped) {
    GraphValue value("X", 0.01, 0.001, 0);
    SetCounting(value, 5000);
    EXPECT_EQ(value.Capacity(), 0U);
    EXPECT_EQ(value.StoredCount(), 0U);
    EXPECT_EQ(value.DroppedCount(), 0.0);
    EXPECT_EQ(value.PushedCount(), 5000.0);
    EXPECT_EQ(value.Values().Size(), 5000U);
    EXPECT_EQ(value.Values()[0], 0.0);
    EXPECT_EQ(value.Values()[4999], 4999.0);
}

TEST(GraphValueTest, AnImmenseTimeRangeTakesNoMemoryInAdvance) {
    GraphValue value("X", 0.001, 1e8, 0);
    value.SetValue(1.0);
    EXPECT_LE(value.Values().Slots().size(), 4096U);
}

TEST(GraphValueTest, DerivedStreamsStartWithAsManyZerosAsTheirOrder) {
    const double t = 0.004;
    const std::vector<double> s = {3.0, 4.5, 4.0, 9.25, 1.0, 1.0};
    struct Row {
        std::int32_t order;
        std::vector<double> values;
    };
    const Row rows[] = {
        {-1, s},
        {0, s},
        {1, {0.0, (s[1] - s[0]) / t, (s[2] - s[1]) / t, (s[3] - s[2]) / t, (s[4] - s[3]) / t, 0.0}},
        {2,
         {0.0, 0.0, (s[2] - 2 * s[1] + s[0]) / (t * t), (s[3] - 2 * s[2] + s[1]) / (t * t),
          (s[4] - 2 * s[3] + s[2]) / (t * t), (s[5] - 2 * s[4] + s[3]) / (t * t)}},
        // Not the third difference: all differences but the newest are subtracted from it.
        {3,
         {0.0, 0.0, 0.0, (s[3] - 2 * s[2] + s[0]) / std::pow(t, 3),
          (s[4] - 2 * s[3] + s[1]) / std::pow(t, 3), (s[5] - 2 * s[4] + s[2]) / std::pow(t, 3)}},
        {4,
         {0.0, 0.0, 0.0, 0.0, (s[4] - 2 * s[3] + s[0]) / std::pow(t, 4),
          (s[5] - 2 * s[4] + s[1]) / std::pow(t, 4)}},
        {100, {0.0, 0.0, 0.0, 0.0, 0.0, 0.0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.order);
        GraphValue value("X", t, 2.0, row.order);
        for (const double sample : s) {
            value.SetValue(sample);
        }
        // The power of a compiler and that of a library may differ in the last bit.
        EXPECT_THAT(Held(value), Pointwise(DoubleEq(), row.values));
        GraphValue column("X", t, 2.0, row.order);
        column.SetValues(s.data(), s.size(), 1);
        EXPECT_EQ(Held(column), Held(value));
    }
}

TEST(GraphValueTest, AStandingStreamHasTheDerivativeMinusZero) {
    for (const std::int32_t order : {1, 2, 3}) {
        GraphValue value("X", 0.004, 2.0, order);
        for (int i = 0; i < 6; ++i) {
            value.SetValue(1.5);
        }
        EXPECT_FALSE(std::signbit(value.Values()[static_cast<std::size_t>(order) - 1]));
        EXPECT_EQ(value.Values()[5], 0.0);
        EXPECT_TRUE(std::signbit(value.Values()[5]));
    }
}

TEST(GraphValueTest, WhileDisabledSamplesChangeNothing) {
    GraphValue value("X", 0.004, 2.0, 1);
    value.SetValue(1.0);
    value.SetValue(2.0);
    value.SetEnabled(false);
    EXPECT_FALSE(value.Enabled());
    const double samples[] = {50.0, 60.0};
    value.SetValue(40.0);
    value.SetValues(samples, 2, 1);
    EXPECT_EQ(value.StoredCount(), 2U);
    EXPECT_EQ(value.PushedCount(), 2.0);
    EXPECT_EQ(value.TotalCount(), 2.0);
    EXPECT_EQ(value.NewCount(), 2U);
    value.EmptyNewValues();
    value.SetValue(41.0);
    EXPECT_EQ(value.NewCount(), 0U);
    value.SetEnabled(true);
    value.SetValue(3.0);
    // The history did not see the samples in between.
    EXPECT_EQ(value.Values()[2], (3.0 - 2.0) / 0.004);
}

TEST(GraphValueTest, AForgottenHistoryMakesNoDerivativeAcrossTheGap) {
    for (const std::int32_t order : {0, 1, 2, 3}) {
        SCOPED_TRACE(order);
        GraphValue value("X", 1.0, 100.0, order);
        const double before[] = {5.0, 5.0, 5.0, 5.0, 5.0, 5.0};
        value.SetValues(before, 6, 1);
        value.ForgetHistory();
        const double after[] = {900.0, 900.0, 900.0, 900.0, 900.0, 903.0};
        value.SetValues(after, 6, 1);
        ASSERT_EQ(value.Values().Size(), 12U);  // what was stored stays
        for (std::size_t i = 6; i < 11; ++i) {
            EXPECT_EQ(value.Values()[i], order == 0 ? 900.0 : 0.0);
        }
        EXPECT_EQ(value.Values()[11], order == 0 ? 903.0 : 3.0);
        EXPECT_EQ(value.NewCount(), 12U);
    }
}

TEST(GraphValueTest, NewValuesAreThoseSinceTheyWereEmptied) {
    GraphValue value("X", 0.5, 100.0, 0);
    std::vector<double> out = {9.0};
    double start = -1.0;
    value.GetNewValues(out, start);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(start, 0.0);
    value.SetValue(10.0);
    value.SetValue(11.0);
    value.SetValue(12.0);
    for (int again = 0; again < 2; ++again) {
        value.GetNewValues(out, start);
        EXPECT_EQ(out, (std::vector<double>{10.0, 11.0, 12.0}));
        EXPECT_EQ(start, 0.0);
    }
    value.EmptyNewValues();
    value.SetValue(13.0);
    value.GetNewValues(out, start);
    EXPECT_EQ(out, std::vector<double>{13.0});
    EXPECT_EQ(start, 1.5);
    value.EmptyNewValues();
    value.GetNewValues(out, start);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(start, 1.5) << "the first new index stays until the next sample";
    value.EmptyNewValues();
    EXPECT_EQ(value.FirstNewIndex(), 3.0);
}

TEST(GraphValueTest, NewValuesHoldOneMoreThanTheCapacityThenOverrun) {
    GraphValue value("X", 0.1, 0.7, 0);
    ASSERT_EQ(value.Capacity(), 6U);
    for (int i = 0; i < 7; ++i) {
        value.SetValue(i);
    }
    EXPECT_EQ(New(value), (std::vector<double>{0, 1, 2, 3, 4, 5, 6}));
    {
        const ExpectErrorLog expected({kOverrun, kOverrun, kOverrun});
        value.SetValue(7.0);
        const double samples[] = {8.0, 9.0};
        value.SetValues(samples, 2, 1);
    }
    EXPECT_EQ(New(value), (std::vector<double>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(value.FirstNewIndex(), 0.0);
    // The value FIFO keeps running.
    EXPECT_EQ(Held(value), (std::vector<double>{4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(value.TotalCount(), 10.0);
    EXPECT_EQ(value.DroppedCount(), 4.0);
    value.EmptyNewValues();
    value.SetValue(10.0);
    EXPECT_EQ(New(value), std::vector<double>{10.0});
    EXPECT_EQ(value.FirstNewIndex(), 10.0);
}

TEST(GraphValueTest, WithoutCapacityTheSecondNewValueOverruns) {
    GraphValue value("X", 0.1, 0.0, 0);
    value.SetValue(1.0);
    {
        const ExpectErrorLog expected({kOverrun});
        value.SetValue(2.0);
    }
    EXPECT_EQ(New(value), std::vector<double>{1.0});
    EXPECT_EQ(Held(value), (std::vector<double>{1.0, 2.0}));
}

TEST(GraphValueTest, ResetStartsFromTheBeginning) {
    GraphValue value("X", 0.1, 0.7, 1);
    SetCounting(value, 20);
    value.SetValue(20.0);
    value.SetEnabled(false);
    value.Reset();
    EXPECT_FALSE(value.Enabled()) << "resetting does not enable";
    EXPECT_EQ(value.Capacity(), 6U);
    EXPECT_EQ(value.StoredCount(), 0U);
    EXPECT_EQ(value.DroppedCount(), 0.0);
    EXPECT_EQ(value.PushedCount(), 0.0);
    EXPECT_EQ(value.TotalCount(), 0.0);
    EXPECT_EQ(value.FirstNewIndex(), 0.0);
    EXPECT_EQ(value.NewCount(), 0U);
    EXPECT_EQ(value.Values().Size(), 0U);
    value.SetEnabled(true);
    value.SetValue(100.0);
    EXPECT_EQ(Held(value), std::vector<double>{0.0}) << "the derivation history is empty";
}

TEST(GraphValueTest, SetValuesTakesOneColumnOfTheLines) {
    GraphValue value("X", 0.1, 10.0, 0);
    const double lines[] = {1, -1, -1, 2, -1, -1, 3, -1, -1};
    value.SetValues(lines, 3, 3);
    EXPECT_EQ(Held(value), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(New(value), (std::vector<double>{1, 2, 3}));
    value.SetValues(lines, 0, 3);
    value.SetValues(nullptr, 0, 3);
    EXPECT_EQ(value.PushedCount(), 3.0);
}

TEST(GraphValueTest, TimeRangeGivesTheNewestSamples) {
    GraphValue value("X", 0.5, 5.0, 0);
    SetCounting(value, 14);  // holds 4 to 13: oldest at 2 s, newest at 7 s
    struct Row {
        double span;
        std::vector<double> samples;
        double start_time;
    };
    const std::vector<double> all = {4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    const Row rows[] = {
        {2.0, {10, 11, 12, 13}, 5.0},
        {0.5, {13}, 6.5},
        {0.75, {13}, 6.25},  // truncated
        {0.25, {}, 6.75},
        {0.0, {}, 7.0},
        {5.0, all, 2.0},
        {5.1, all, 2.0},
        {kLargest, all, 2.0},
        {kInf, all, 2.0},
        {-1.0, {}, 8.0},
        {-1e300, {}, 1e300},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.span);
        std::vector<double> out = {-5.0};
        double start = -1.0;
        value.GetTimeRangeValues(out, row.span, start);
        EXPECT_EQ(out, row.samples);
        EXPECT_EQ(start, row.start_time);
    }
    std::vector<double> out = {1.0};
    double start = 0.0;
    value.GetTimeRangeValues(out, kNaN, start);
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(std::isnan(start));
}

TEST(GraphValueTest, TimeRangeOfAnEmptyBufferIsEmpty) {
    const GraphValue value("X", 0.5, 5.0, 0);
    std::vector<double> out = {1.0};
    double start = -1.0;
    value.GetTimeRangeValues(out, 3.0, start);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(start, 0.0);
}

TEST(GraphValueTest, TimeRangeIsCountedWithTheRoundingOfItsSteps) {
    // Whatever the rounding, never more than is held, and off by one at most.
    for (const double cycle_time : {0.1, 0.3, 0.7, 1.0 / 3.0, 0.0001, 0.004}) {
        GraphValue value("X", cycle_time, 50.5 * cycle_time, 0);
        for (int i = 0; i < 200; ++i) {
            value.SetValue(i);
            value.EmptyNewValues();
            std::vector<double> out;
            double start = 0.0;
            value.GetTimeRangeValues(out, 1e9, start);
            const auto newest = cycle_time * value.PushedCount();
            const auto oldest = cycle_time * value.DroppedCount();
            ASSERT_EQ(start, oldest);
            const auto expected = static_cast<std::size_t>((newest - oldest) / cycle_time);
            ASSERT_EQ(out.size(), std::min(expected, value.Values().Size()));
            ASSERT_GE(out.size() + 1, value.Values().Size());
            if (!out.empty()) {
                ASSERT_EQ(out.back(), i);
            }
        }
    }
}

TEST(GraphValueTest, DefinedRangeCountsFromTheOldestSampleHeld) {
    struct Row {
        double from, to;
        std::vector<double> samples;
    };
    const std::vector<double> all = {4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    const Row rows[] = {
        {0.0, 1.0, {4, 5}},
        {1.0, 3.0, {6, 7, 8, 9}},
        {0.0, 5.0, all},
        {3.0, 5.0, {10, 11, 12, 13}},
        {1.25, 3.0, {7, 8, 9}},       // 3.5 samples, truncated
        {1.0, 3.25, {6, 7, 8, 9}},    // up to place 6.5
        {4.0, 6.0, {9, 10, 11, 12}},  // beyond the newest: up to the one before the newest
        {0.0, 100.0, {4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {2.0, 2.0, {}},
        {0.0, 0.0, {}},
        {0.0, kLargest, {4, 5, 6, 7, 8, 9, 10, 11, 12}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.from << " to " << row.to);
        GraphValue value("X", 0.5, 5.0, 0);
        SetCounting(value, 14);
        std::vector<double> out = {-5.0};
        value.GetDefineTimeRangeValue(out, row.from, row.to, 0.0);
        EXPECT_EQ(out, row.samples);
    }
}

TEST(GraphValueTest, ARequestThatCannotBeServedGivesTheLastResult) {
    GraphValue value("X", 0.5, 5.0, 0);
    SetCounting(value, 14);
    std::vector<double> out;
    value.GetDefineTimeRangeValue(out, 0.0, 1.0, 7.0);
    const std::vector<double> served = {4, 5};
    ASSERT_EQ(out, served);
    const double rows[][2] = {{3.0, 1.0}, {-1.0, 1.0}, {0.0, -1.0}, {-2.0, -1.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row[0] << " to " << row[1]);
        const ExpectErrorLog expected({kInvalidRange});
        out = {77.0};
        value.GetDefineTimeRangeValue(out, row[0], row[1], 7.0);
        EXPECT_EQ(out, served);
    }
    // The first request of another zoom forgets the result before it looks at the range.
    value.MarkFirstRangeRequest();
    const ExpectErrorLog expected({kInvalidRange});
    value.GetDefineTimeRangeValue(out, 3.0, 1.0, 7.0);
    EXPECT_TRUE(out.empty());
}

TEST(GraphValueTest, TheReferenceTimeIsLatchedByTheFirstRequest) {
    // A reference time so large that the way there and back rounds `to` away.
    const double far = 1e17;
    GraphValue value("X", 0.5, 5.0, 0);
    SetCounting(value, 14);
    std::vector<double> out;
    value.GetDefineTimeRangeValue(out, 0.0, 3.0, far);
    EXPECT_TRUE(out.empty()) << "far - (far - 3) is 0";
    value.GetDefineTimeRangeValue(out, 0.0, 3.0, 7.0);
    EXPECT_TRUE(out.empty()) << "still measured from the first reference";
    value.MarkFirstRangeRequest();
    value.GetDefineTimeRangeValue(out, 0.0, 3.0, 7.0);
    EXPECT_EQ(out, (std::vector<double>{4, 5, 6, 7, 8, 9}));
}

TEST(GraphValueTest, TheEndIsComputedBackFromTheReference) {
    // 7.3 - (7.3 - 0.3) is less than 0.3, which costs the third sample.
    GraphValue value("X", 0.1, 10.0, 0);
    SetCounting(value, 50);
    const double reference = 7.3;
    const double end = reference - (reference - 0.3);
    ASSERT_NE(end, 0.3);
    std::vector<double> out;
    value.GetDefineTimeRangeValue(out, 0.0, 0.3, reference);
    EXPECT_EQ(out.size(), static_cast<std::size_t>(end / 0.1));
}

TEST(GraphValueTest, DefinedRangesOfOddNumbersStayInside) {
    GraphValue value("X", 0.5, 5.0, 0);
    SetCounting(value, 14);
    const double numbers[] = {0.0, 1.0, 4.9, 5.0, 5.1, 1e18, kLargest, kInf, kNaN};
    for (const double from : numbers) {
        for (const double to : numbers) {
            for (const double now : {0.0, 7.0, -7.0, kLargest, kInf, -kInf, kNaN}) {
                if (to - from < 0.0) {
                    continue;
                }
                std::vector<double> out;
                value.MarkFirstRangeRequest();
                value.GetDefineTimeRangeValue(out, from, to, now);
                EXPECT_LE(out.size(), 10U);
            }
        }
    }
}

TEST(GraphValueTest, DefinedRangeOfAnEmptyBufferIsEmpty) {
    GraphValue value("X", 0.5, 5.0, 0);
    std::vector<double> out = {1.0};
    value.GetDefineTimeRangeValue(out, 0.0, 3.0, 0.0);
    EXPECT_TRUE(out.empty());
}

TEST(GraphValueTest, ACopyCarriesEverythingOnByItself) {
    GraphValue value("X", 0.5, 5.0, 1);
    SetCounting(value, 14);
    value.SetValue(20.0);
    std::vector<double> served;
    value.GetDefineTimeRangeValue(served, 0.0, 1.0, 7.0);
    value.SetEnabled(false);
    GraphValue copy = value;
    EXPECT_FALSE(copy.Enabled());
    EXPECT_EQ(copy.Name(), "X");
    EXPECT_EQ(Held(copy), Held(value));
    EXPECT_EQ(New(copy), New(value));
    EXPECT_EQ(copy.FirstNewIndex(), value.FirstNewIndex());
    EXPECT_EQ(copy.StoredCount(), value.StoredCount());
    {
        const ExpectErrorLog expected({kInvalidRange});
        std::vector<double> out;
        copy.GetDefineTimeRangeValue(out, 3.0, 1.0, 7.0);
        EXPECT_EQ(out, served);
    }
    copy.SetEnabled(true);
    copy.SetValue(21.0);
    EXPECT_EQ(copy.Values()[9], 1.0 / 0.5);
    EXPECT_EQ(copy.PushedCount(), 16.0);
    EXPECT_EQ(value.PushedCount(), 15.0);
    EXPECT_EQ(value.Values()[9], (20.0 - 13.0) / 0.5);
}

}  // namespace
}  // namespace wavo

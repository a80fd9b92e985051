#include "measure/cursors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavo::measure {
namespace {

constexpr double kMissingValue = std::numeric_limits<double>::quiet_NaN();

TEST(Cursors, TheTimeBetweenThemAndItsInverse) {
    const auto times = TimesOf(1.5, 1.25);
    EXPECT_DOUBLE_EQ(times.difference, -0.25);
    EXPECT_DOUBLE_EQ(*times.frequency, 4.0);
    EXPECT_EQ(TimesOf(2.0, 2.0).frequency.reason, "both cursors stand at one time");
}

TEST(Cursors, ASampleIsTheNearestOne) {
    const std::vector<double> values{10.0, 20.0, kMissingValue, 40.0};
    const Series series{values, 0.1, 5, {}};
    EXPECT_EQ(*SampleAt(series, 0.5), 10.0);
    EXPECT_EQ(*SampleAt(series, 0.549), 10.0);
    EXPECT_EQ(*SampleAt(series, 0.55), 10.0);
    EXPECT_EQ(*SampleAt(series, 0.551), 20.0);
    EXPECT_EQ(SampleAt(series, 0.7).reason, "no value there");
    EXPECT_EQ(*SampleAt(series, 0.8), 40.0);
    EXPECT_EQ(*SampleAt(series, 0.8 + 5e-7), 40.0);
    EXPECT_EQ(SampleAt(series, 0.81).reason, "beyond the data");
    EXPECT_EQ(SampleAt(series, 0.49).reason, "beyond the data");
    EXPECT_FALSE(SampleAt(Series{}, 0.0));
}

TEST(Cursors, BetweenSamplesTheLineIsRead) {
    const std::vector<double> values{10.0, 20.0, kMissingValue, 40.0};
    const Series series{values, 0.1, 0, {}};
    EXPECT_NEAR(*InterpolatedAt(series, 0.025), 12.5, 1e-12);
    EXPECT_EQ(*InterpolatedAt(series, 0.1), 20.0);
    EXPECT_EQ(*InterpolatedAt(series, 0.3), 40.0);
    EXPECT_FALSE(InterpolatedAt(series, 0.12));
    const std::vector<Cycle> cycles{0, 1, 5, 6};
    const Series with_gap{values, 0.1, 0, cycles};
    EXPECT_FALSE(InterpolatedAt(with_gap, 0.3));
    EXPECT_EQ(*InterpolatedAt(with_gap, 0.6), 40.0);
    EXPECT_FALSE(SampleAt(with_gap, 0.3));
}

TEST(Cursors, ACurveIsReadAtBothAndBetween) {
    const std::vector<double> values{0.0, 1.0, 4.0, 9.0, 16.0};
    const auto reading = ReadCurve({values, 0.5, 0, {}}, 0.5, 2.0);
    EXPECT_EQ(*reading.a, 1.0);
    EXPECT_EQ(*reading.b, 16.0);
    EXPECT_EQ(*reading.difference, 15.0);
    EXPECT_DOUBLE_EQ(*reading.per_second, 10.0);
    EXPECT_EQ(reading.between.count, 4);
    const auto same = ReadCurve({values, 0.5, 0, {}}, 1.0, 1.0);
    EXPECT_EQ(*same.difference, 0.0);
    EXPECT_FALSE(same.per_second);
    const auto beyond = ReadCurve({values, 0.5, 0, {}}, 1.0, 7.0);
    EXPECT_EQ(beyond.difference.reason, "beyond the data");
}

TEST(Cursors, TheNextPeakAndValley) {
    const std::vector<double> values{0, 3, 1, 2, 2, 2, 0, -1, 5};
    EXPECT_EQ(NextPeak(values, 0, Search::kForward), 1U);
    EXPECT_EQ(NextPeak(values, 1, Search::kForward), 4U);
    EXPECT_EQ(NextPeak(values, 4, Search::kForward), std::nullopt);
    EXPECT_EQ(NextValley(values, 0, Search::kForward), 2U);
    EXPECT_EQ(NextValley(values, 2, Search::kForward), 7U);
    EXPECT_EQ(NextPeak(values, 8, Search::kBackward), 4U);
    EXPECT_EQ(NextPeak(values, 4, Search::kBackward), 1U);
    EXPECT_EQ(NextValley(values, 8, Search::kBackward), 7U);
    EXPECT_EQ(NextPeak(values, 0, Search::kForward, 1.5), 1U);
    EXPECT_EQ(NextPeak(values, 2, Search::kForward, 1.5), std::nullopt);
    EXPECT_EQ(NextPeak(values, 20, Search::kForward), std::nullopt);
    EXPECT_EQ(NextPeak({}, 0, Search::kForward), std::nullopt);
}

TEST(Cursors, SmallPeaksBelowTheProminenceAreNone) {
    std::vector<double> values;
    for (int i = 0; i < 1000; ++i) {
        values.push_back(std::sin(i * 0.02) + 0.05 * (i % 2));
    }
    const auto peak = NextPeak(values, 0, Search::kForward, 0.1);
    ASSERT_TRUE(peak);
    EXPECT_NEAR(static_cast<double>(*peak), std::acos(0.0) / 0.02, 3.0);
    EXPECT_LT(*NextPeak(values, 0, Search::kForward), 5U);
}

TEST(Cursors, AMissingValueEndsARise) {
    const std::vector<double> values{0, 1, kMissingValue, 0.5, 0.2, 0.8, 0.1};
    EXPECT_EQ(NextPeak(values, 0, Search::kForward), 5U);
}

TEST(Cursors, TheNextZeroCrossing) {
    const std::vector<double> values{-1, 1, 3, 0, 0, 0, -3, -1, 0, -2, 2};
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 0.0, Search::kForward), 0.5);
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 0.5, Search::kForward), 4.0);
    // It touches zero at 8 and does not cross.
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 6.0, Search::kForward), 9.5);
    EXPECT_FALSE(NextZeroCrossing(values, 9.5, Search::kForward));
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 10.0, Search::kBackward), 9.5);
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 9.5, Search::kBackward), 4.0);
    EXPECT_DOUBLE_EQ(*NextZeroCrossing(values, 3.0, Search::kBackward), 0.5);
    EXPECT_FALSE(NextZeroCrossing({}, 0.0, Search::kForward));
    const std::vector<double> gap{-1, kMissingValue, 1};
    EXPECT_FALSE(NextZeroCrossing(gap, 0.0, Search::kForward));
}

TEST(Cursors, EachZeroCrossingOfASineIsMetOnce) {
    std::vector<double> values;
    for (int i = 0; i < 10000; ++i) {
        values.push_back(std::sin(i * 0.0123 + 0.1));
    }
    int crossings = 0;
    double at = 0.0;
    while (const auto next = NextZeroCrossing(values, at, Search::kForward)) {
        at = *next;
        ++crossings;
        EXPECT_NEAR(std::sin(at * 0.0123 + 0.1), 0.0, 1e-6);
    }
    EXPECT_EQ(crossings, static_cast<int>((9999 * 0.0123 + 0.1) / std::acos(-1.0)));
    while (const auto next = NextZeroCrossing(values, at, Search::kBackward)) {
        EXPECT_LT(*next, at);
        at = *next;
        --crossings;
    }
    EXPECT_EQ(crossings, 1);
}

TEST(Cursors, DecimalsThatTheDataCarries) {
    EXPECT_EQ(DecimalsOf(std::vector<double>{}), 0);
    EXPECT_EQ(DecimalsOf(std::vector<double>{1.0, -3.0, kMissingValue}), 0);
    EXPECT_EQ(DecimalsOf(std::vector<double>{1.5, 0.25}), 2);
    EXPECT_EQ(DecimalsOf(std::vector<double>{123456.123456, 0.1}), 6);
    EXPECT_EQ(DecimalsOf(std::vector<double>{1.0 / 3.0}), 9);
    EXPECT_EQ(DecimalsOf(std::vector<double>{1.0 / 3.0}, 4), 4);
    EXPECT_EQ(DecimalsOf(std::vector<double>{1e300, 0.5}), 1);
}

}  // namespace
}  // namespace wavo::measure

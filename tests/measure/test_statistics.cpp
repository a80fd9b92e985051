#include "measure/statistics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "measure/moment_blocks.h"

namespace wavo::measure {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The same figures by two plain loops in higher precision.
struct Plain {
    long double mean = 0.0L;
    long double m2 = 0.0L;
    long double slope = 0.0L;
    long double squares = 0.0L;
    std::int64_t count = 0;
};

Plain PlainOf(std::span<const double> values, double cycle_time) {
    Plain plain;
    long double place_mean = 0.0L;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i])) {
            plain.mean += static_cast<long double>(values[i]);
            place_mean += static_cast<long double>(i);
            ++plain.count;
        }
    }
    plain.mean /= static_cast<long double>(plain.count);
    place_mean /= static_cast<long double>(plain.count);
    long double ctx = 0.0L;
    long double ctt = 0.0L;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i])) {
            const long double value = values[i];
            const long double apart = static_cast<long double>(i) - place_mean;
            plain.m2 += (value - plain.mean) * (value - plain.mean);
            plain.squares += value * value;
            ctx += apart * (value - plain.mean);
            ctt += apart * apart;
        }
    }
    plain.slope = ctx / ctt / static_cast<long double>(cycle_time);
    return plain;
}

void ExpectSame(const Statistics& figures, const Plain& plain, double digits) {
    const auto count = static_cast<long double>(plain.count);
    const auto deviation = static_cast<double>(std::sqrt(plain.m2 / (count - 1.0L)));
    EXPECT_EQ(figures.count, plain.count);
    EXPECT_NEAR(*figures.mean, static_cast<double>(plain.mean),
                std::abs(static_cast<double>(plain.mean)) * 1e-15 + deviation * digits);
    EXPECT_NEAR(*figures.deviation, deviation, deviation * digits);
    EXPECT_NEAR(*figures.rms, static_cast<double>(std::sqrt(plain.squares / count)),
                static_cast<double>(std::sqrt(plain.squares / count)) * 1e-14);
    EXPECT_NEAR(*figures.slope, static_cast<double>(plain.slope),
                std::abs(static_cast<double>(plain.slope)) * digits + deviation * 1e-12);
}

Series SeriesOf(const std::vector<double>& values) {
    return {values, 0.001, 0, {}};
}

Statistics Whole(const std::vector<double>& values) {
    return StatisticsBetween(SeriesOf(values), 0.0, 1e6);
}

TEST(Statistics, RandomBandsEqualAPlainLoopInHigherPrecision) {
    std::mt19937_64 random(11);
    std::normal_distribution<double> noise;
    std::vector<double> values(20000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = 3.0 + 0.002 * static_cast<double>(i) + noise(random);
    }
    for (const std::size_t place : {5U, 777U, 4096U, 12345U}) {
        values[place] = kNaN;
    }
    values[9000] = kInfinity;
    std::uniform_int_distribution<std::size_t> place(0, values.size() - 1);
    for (int i = 0; i < 60; ++i) {
        const std::size_t a = place(random);
        const std::size_t b = place(random);
        const std::size_t first = std::min(a, b);
        const std::size_t last = std::max(a, b);
        if (last - first < 20) {
            continue;
        }
        SCOPED_TRACE(std::to_string(first) + " to " + std::to_string(last));
        const auto figures = StatisticsBetween(SeriesOf(values), static_cast<double>(a) * 0.001,
                                               static_cast<double>(b) * 0.001);
        ExpectSame(figures, PlainOf(std::span(values).subspan(first, last - first + 1), 0.001),
                   1e-12);
    }
}

TEST(Statistics, AnOffsetOf1e8LeavesASignalOf1e6th) {
    std::vector<double> values(100000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = 1e8 + 1e-6 * std::sin(static_cast<double>(i) * 0.01);
    }
    ExpectSame(Whole(values), PlainOf(values, 0.001), 1e-7);
}

TEST(Statistics, AFirstValueFarOffLeavesTheRestExact) {
    std::vector<double> values(5000);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = 1e-6 * std::cos(static_cast<double>(i));
    }
    values[0] = 1e8;
    ExpectSame(Whole(values), PlainOf(values, 0.001), 1e-12);
}

TEST(Statistics, OfNoneOneAndTwoValues) {
    const auto none = Whole({});
    EXPECT_EQ(none.count, 0);
    EXPECT_FALSE(none.mean);
    EXPECT_EQ(none.minimum.reason, "no values");
    const auto one = Whole({4.5});
    EXPECT_EQ(*one.mean, 4.5);
    EXPECT_EQ(*one.rms, 4.5);
    EXPECT_EQ(*one.peak_to_peak, 0.0);
    EXPECT_EQ(one.deviation.reason, "one value only");
    EXPECT_FALSE(one.slope);
    const auto two = Whole({1.0, 2.0});
    EXPECT_DOUBLE_EQ(*two.deviation, std::sqrt(0.5));
    EXPECT_DOUBLE_EQ(*two.slope, 1000.0);
    EXPECT_DOUBLE_EQ(
        *StatisticsBetween(SeriesOf({1.0, 2.0}), 0.0, 1.0, Divisor::kPopulation).deviation, 0.5);
}

TEST(Statistics, NaNAndInfinitiesAreLeftOutAndCounted) {
    const auto figures = Whole({kNaN, 2.0, kInfinity, 4.0, -kInfinity});
    EXPECT_EQ(figures.count, 2);
    EXPECT_EQ(figures.not_finite, 3);
    EXPECT_DOUBLE_EQ(*figures.mean, 3.0);
    EXPECT_EQ(*figures.maximum, 4.0);
    EXPECT_EQ(figures.maximum_cycle, 3);
    const auto nothing = Whole({kNaN, kNaN});
    EXPECT_EQ(nothing.not_finite, 2);
    EXPECT_FALSE(nothing.mean);
}

TEST(Statistics, ABandHoldsBothItsEndsAndOnlyTheData) {
    const std::vector<double> values{0.0, 1.0, 2.0, 3.0, 4.0};
    const Series series{values, 0.1, 10, {}};
    EXPECT_EQ(StatisticsBetween(series, 1.1, 1.3).count, 3);
    EXPECT_EQ(StatisticsBetween(series, 1.3, 1.1).count, 3);
    EXPECT_EQ(StatisticsBetween(series, 1.1 + 5e-7, 1.3 - 5e-7).count, 3);
    EXPECT_EQ(StatisticsBetween(series, 1.1 + 5e-6, 1.3 - 5e-6).count, 1);
    EXPECT_EQ(StatisticsBetween(series, 1.11, 1.19).count, 0);
    EXPECT_EQ(StatisticsBetween(series, 0.0, 0.9).count, 0);
    EXPECT_EQ(StatisticsBetween(series, 2.0, 9.0).count, 0);
    EXPECT_EQ(StatisticsBetween(series, -1e300, 1e300).count, 5);
    EXPECT_EQ(StatisticsBetween(series, kNaN, 1.0).count, 0);
}

TEST(Statistics, MissingCyclesAreCountedAndWeighNothing) {
    const std::vector<double> values{0.0, 1.0, 4.0, 5.0};
    const std::vector<Cycle> cycles{0, 1, 4, 5};
    const Series series{values, 0.5, 0, cycles};
    const auto all = StatisticsBetween(series, 0.0, 10.0);
    EXPECT_EQ(all.missing, 2);
    EXPECT_DOUBLE_EQ(*all.mean, 2.5);
    EXPECT_DOUBLE_EQ(*all.slope, 2.0);
    // From within the gap on.
    EXPECT_EQ(StatisticsBetween(series, 1.0, 2.5).missing, 2);
    EXPECT_EQ(StatisticsBetween(series, 2.0, 2.5).missing, 0);
}

TEST(Statistics, ExtremesAreThoseOfTheFirstOfEqualSamples) {
    std::vector<double> values(3000, 1.0);
    values[10] = values[2500] = -2.0;
    values[1100] = values[1200] = 7.0;
    const auto figures = Whole(values);
    EXPECT_EQ(figures.minimum_cycle, 10);
    EXPECT_EQ(figures.maximum_cycle, 1100);
    EXPECT_EQ(*figures.peak_to_peak, 9.0);
}

TEST(Statistics, SumsOfHoursStayExact) {
    Moments moments;
    Moments block;
    std::vector<double> values(1000);
    for (int i = 0; i < 3000; ++i) {
        for (std::size_t k = 0; k < values.size(); ++k) {
            values[k] = 1e6 + ((i + static_cast<int>(k)) % 2 == 0 ? 1e-3 : -1e-3);
        }
        moments.Merge(MomentsOf(values, static_cast<Cycle>(i) * 1000));
    }
    const auto figures = StatisticsOf(moments, 0.001);
    EXPECT_EQ(figures.count, 3000000);
    EXPECT_NEAR(*figures.mean, 1e6, 2e-10);
    EXPECT_NEAR(*StatisticsOf(moments, 0.001, Divisor::kPopulation).deviation, 1e-3, 1e-10);
}

TEST(MomentBlocks, GiveWhatTheSamplesGiveWithoutReadingThemTwice) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<double> values(100000);
    for (double& value : values) {
        value = 1e7 + uniform(random);
    }
    values[300] = kNaN;
    constexpr Cycle kFirst = -5000;
    MomentBlocks blocks;
    std::size_t read = 0;
    const auto reader = [&](Cycle cycle, std::span<double> room) -> MomentBlocks::Part {
        read += room.size();
        const auto lying =
            std::span(values).subspan(static_cast<std::size_t>(cycle - kFirst), room.size());
        if (cycle % 2 == 0) {
            return {lying};
        }
        std::copy(lying.begin(), lying.end(), room.begin());
        return {room};
    };
    for (int round = 0; round < 50; ++round) {
        const auto place = [&] { return static_cast<Cycle>(random() % values.size()); };
        const auto [first, last] = std::minmax({place(), place()});
        SCOPED_TRACE(testing::Message() << first << " to " << last);
        const auto got =
            StatisticsOf(blocks.Of(first + kFirst, last + 1 + kFirst, reader).moments, 0.001);
        const auto expected =
            StatisticsBetween(SeriesOf(values), static_cast<double>(first) * 0.001,
                              static_cast<double>(last) * 0.001);
        ASSERT_EQ(got.count, expected.count);
        EXPECT_EQ(got.not_finite, expected.not_finite);
        if (got.count > 1) {
            EXPECT_NEAR(*got.mean, *expected.mean, 2e-9);
            EXPECT_NEAR(*got.deviation, *expected.deviation, 1e-9);
            EXPECT_NEAR(*got.slope, *expected.slope, 1e-9);
            EXPECT_EQ(*got.minimum, *expected.minimum);
            EXPECT_EQ(*got.maximum, *expected.maximum);
            EXPECT_EQ(got.minimum_cycle, expected.minimum_cycle + kFirst);
            EXPECT_EQ(got.maximum_cycle, expected.maximum_cycle + kFirst);
        }
    }
    (void)blocks.Of(kFirst, kFirst + 100000, reader);
    read = 0;
    EXPECT_EQ(blocks.Of(kFirst + 1, kFirst + 99999, reader).moments.count, 99997);
    EXPECT_LE(read, 8192U) << "the ends alone";
    blocks.Forget(kFirst + 80000);
    read = 0;
    EXPECT_EQ(blocks.Of(kFirst + 80000, kFirst + 100000, reader).moments.count, 20000);
    EXPECT_LE(read, 8192U);
    read = 0;
    EXPECT_EQ(blocks.Of(kFirst, kFirst + 100000, reader).moments.count, 99999);
    EXPECT_GT(read, 60000U) << "forgotten";
    EXPECT_EQ(blocks.Of(7, 7, reader).moments.count, 0);
}

TEST(MomentBlocks, GoOnWhereReadingHasStopped) {
    constexpr Cycle kEnd = 3'000'000;
    MomentBlocks blocks;
    std::size_t may_read = 0;
    std::size_t read = 0;
    const auto reader = [&](Cycle first, std::span<double> room) -> MomentBlocks::Part {
        if (may_read == 0) {
            return {{}, false};
        }
        --may_read;
        read += room.size();
        for (std::size_t i = 0; i < room.size(); ++i) {
            room[i] = static_cast<double>((first + static_cast<Cycle>(i)) % 1000);
        }
        return {room};
    };
    int rounds = 0;
    for (bool is_whole = false; !is_whole; ++rounds) {
        ASSERT_LT(rounds, 2000);
        may_read = 3;
        const MomentBlocks::Result result = blocks.Of(5, kEnd - 5, reader);
        is_whole = result.is_whole;
        if (is_whole) {
            EXPECT_EQ(result.moments.count, kEnd - 10);
            EXPECT_EQ(result.moments.maximum_cycle, 999);
        }
    }
    EXPECT_EQ(read, static_cast<std::size_t>(kEnd - 10)) << "no sample twice";
    EXPECT_GT(rounds, 200);
}

TEST(MomentBlocks, OfALongStreamTakeLittleRoom) {
    MomentBlocks blocks;
    const auto reader = [](Cycle, std::span<double> room) -> MomentBlocks::Part {
        room.front() = 1.0;
        return {room.first(1)};
    };
    constexpr Cycle kMillion = 1'000'000;
    (void)blocks.Of(0, 100 * kMillion, reader);
    EXPECT_LT(blocks.Size(), 4000U) << "of 24 414 blocks";
    for (Cycle begin = 0; begin < 50 * kMillion; begin += kMillion / 20) {
        (void)blocks.Of(begin, 100 * kMillion, reader);
    }
    EXPECT_LT(blocks.Size(), 6000U) << "wherever the ends were";
}

TEST(MomentBlocks, AskAgainForWhatWasNotThereYet) {
    MomentBlocks blocks;
    bool is_there = false;
    const auto reader = [&](Cycle, std::span<double> room) -> MomentBlocks::Part {
        std::fill(room.begin(), room.end(), is_there ? 1.0 : kNaN);
        return {room, is_there};
    };
    EXPECT_EQ(blocks.Of(0, 40000, reader).moments.count, 0);
    is_there = true;
    EXPECT_EQ(blocks.Of(0, 40000, reader).moments.count, 40000);
}

}  // namespace
}  // namespace wavo::measure

// Runs compared with good ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "measure/reference_test.h"

namespace wavo::measure {
namespace {

using ::testing::HasSubstr;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

std::vector<double> Motion(std::size_t count, std::size_t delay, double scale = 1.0) {
    std::vector<double> values(count, 0.0);
    for (std::size_t i = delay; i < count; ++i) {
        const auto at = static_cast<double>(i - delay);
        values[i] = scale * std::sin(at * 0.004) * (1.0 - std::exp(-at * 0.01));
    }
    return values;
}

/// What two runs have in common at a shift.
struct Common {
    double own = 0.0;
    double shared = 0.0;
    std::size_t overlap = 0;
    [[nodiscard]] double Likeness() const { return shared / own; }
};

/// The same by what it means, value by value; each axis in parts of all that moves in it.
Common CommonAt(const RunColumns& reference, const RunColumns& values, std::int64_t shift) {
    const auto variance = [](std::span<const double> column) {
        double mean = 0.0;
        double sum = 0.0;
        for (const double value : column) {
            mean += value / static_cast<double>(column.size());
        }
        for (const double value : column) {
            sum += (value - mean) * (value - mean);
        }
        return sum;
    };
    Common common;
    for (std::size_t axis = 0; axis < reference.size(); ++axis) {
        std::vector<double> a;
        std::vector<double> b;
        std::vector<double> sum;
        for (std::size_t i = 0; i < reference[axis].size(); ++i) {
            const std::int64_t at = static_cast<std::int64_t>(i) + shift;
            if (at >= 0 && at < static_cast<std::int64_t>(values[axis].size())) {
                a.push_back(reference[axis][i]);
                b.push_back(values[axis][static_cast<std::size_t>(at)]);
                sum.push_back(a.back() + b.back());
            }
        }
        const double whole = variance(reference[axis]) + variance(values[axis]);
        const double own = variance(a) + variance(b);
        common.own += own / whole;
        common.shared += (variance(sum) - own) / whole;  // twice the covariance
        common.overlap = a.size();
    }
    return common;
}

std::vector<double> Walk(std::size_t count, std::mt19937_64& random) {
    std::normal_distribution<double> noise;
    std::vector<double> values(count);
    double walk = 0.0;
    for (double& value : values) {
        value = walk += noise(random);
    }
    return values;
}

TEST(BestMatchInSteps, IsTheOneByDefinitionWhateverTheLengths) {
    std::mt19937_64 random(5);
    for (const auto& [ours, theirs] : std::vector<std::pair<std::size_t, std::size_t>>{
             {8, 8}, {8, 9}, {17, 40}, {40, 17}, {100, 101}, {333, 200}}) {
        for (const std::size_t axes : {1U, 3U}) {
            std::vector<std::vector<double>> columns;
            RunColumns reference;
            RunColumns values;
            columns.reserve(2 * axes);
            for (std::size_t axis = 0; axis < axes; ++axis) {
                reference.emplace_back(columns.emplace_back(Walk(ours, random)));
                values.emplace_back(columns.emplace_back(Walk(theirs, random)));
            }
            const auto found = BestMatchInSteps(reference, values).Compute();
            ASSERT_TRUE(found);
            const Common common = CommonAt(reference, values, found->shift);
            EXPECT_NEAR(found->likeness, common.Likeness(), 1e-9);
            EXPECT_EQ(found->overlap, common.overlap);
            const std::size_t least = std::max<std::size_t>(8, std::min(ours, theirs) / 2);
            for (auto shift = 1 - static_cast<std::int64_t>(ours);
                 shift < static_cast<std::int64_t>(theirs); ++shift) {
                const Common other = CommonAt(reference, values, shift);
                if (other.overlap >= least) {
                    EXPECT_LE(other.Likeness(), found->likeness + 1.1e-3) << ours << ", " << theirs;
                }
            }
        }
    }
}

/// A run against itself, and against itself begun earlier.
void ExpectFoundAgain(const std::vector<std::vector<double>>& run) {
    RunColumns whole(run.begin(), run.end());
    RunColumns late;
    for (const std::span<const double> column : whole) {
        late.push_back(column.subspan(100));
    }
    const auto same = BestMatchInSteps(whole, whole).Compute();
    EXPECT_EQ(same->shift, 0);
    EXPECT_NEAR(same->likeness, 1.0, 1e-9);
    EXPECT_EQ(BestMatchInSteps(late, whole).Compute()->shift, 100);
    EXPECT_EQ(BestMatchInSteps(whole, late).Compute()->shift, -100);
}

std::vector<double> Made(std::size_t count, double (*make)(double)) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = make(static_cast<double>(i));
    }
    return values;
}
double Ramp(double line) {
    return 0.02 * line;
}
double Turn(double line) {
    return std::sin(line * 0.0314159265358979);
}
double Bump(double line) {
    return 20.0 * std::exp(-std::pow((line - 1500.0) / 120.0, 2.0));
}

TEST(BestMatchInSteps, WhatIsAlikeEverywhereIsAlignedByWhereItLies) {
    ExpectFoundAgain({Made(3000, Ramp)});
    std::mt19937_64 random(7);
    std::normal_distribution<double> noise(0.0, 0.0005);
    auto reference = Made(3000, Ramp);
    auto values = reference;
    for (std::size_t i = 0; i < values.size(); ++i) {
        reference[i] += noise(random);
        values[i] += noise(random);
    }
    EXPECT_EQ(BestMatch(reference, values)->shift, 0);
}

TEST(BestMatchInSteps, OtherAxesTellWhatOneLeavesOpen) {
    ExpectFoundAgain({Made(3000, Ramp), Made(3000, Bump)});
    ExpectFoundAgain({Made(3000, Turn), Made(3000, Bump)});
    ExpectFoundAgain({Made(3000, Bump), Made(3000, Ramp), std::vector<double>(3000, 1.0)});
}

TEST(BestMatchInSteps, OfTurnsThatRepeatTheMostAreTaken) {
    const auto turns = Made(3000, Turn);
    EXPECT_EQ(BestMatch(turns, turns)->shift, 0);
}

TEST(BestMatchInSteps, PausesWithLongColumns) {
    const auto reference = Motion(50'000, 1'000);
    const auto values = Motion(50'000, 4'321);
    auto steps = BestMatchInSteps(reference, values);
    int pauses = 0;
    while (steps.Step()) {
        ++pauses;
    }
    EXPECT_EQ(steps.Result()->shift, 3'321);
    EXPECT_GT(pauses, 500);
}

RunColumns ColumnsOf(const std::vector<std::vector<double>>& values) {
    return {values.begin(), values.end()};
}

class Runs : public ::testing::Test {
 protected:
    Told<RunComparison> Compare(Tolerance tolerance, std::optional<std::int64_t> shift) {
        std::vector<RunColumns> good;
        for (const auto& columns : m_good) {
            good.push_back(ColumnsOf(columns));
        }
        return CompareRunsInSteps({"X", "Y"}, good, ColumnsOf(m_run), tolerance, shift).Compute();
    }

    std::vector<std::vector<std::vector<double>>> m_good{{Motion(3000, 100), Motion(3000, 100, 5)}};
    std::vector<std::vector<double>> m_run{Motion(3600, 400), Motion(3600, 400, 5)};
};

TEST_F(Runs, AreAlignedTogetherAndJudgedApart) {
    m_run[1][1500] += 0.02;
    const auto compared = Compare({.absolute = 0.01}, std::nullopt);
    ASSERT_TRUE(compared) << compared.reason;
    EXPECT_EQ(compared->shift, 300);
    EXPECT_NEAR(*compared->likeness, 1.0, 1e-6);
    EXPECT_FALSE(HasPassed(*compared));
    EXPECT_TRUE(IsAllTold(*compared));
    EXPECT_TRUE(compared->axes[0].compared->passed);
    const Compared& y = *compared->axes[1].compared;
    EXPECT_EQ(y.worst_at, 1200U);
    EXPECT_NEAR(y.worst, 0.02, 1e-9);
    EXPECT_EQ(TextOf(compared->axes[1], 0.001),
              "Y: FAIL; worst 0.020000 (tolerance 0.010000) at 1.200 s of the reference; 1 of 3000 "
              "lines outside");
}

TEST_F(Runs, LieWhereTheyAreToldTo) {
    const auto compared = Compare({.absolute = 0.01}, 310);
    ASSERT_TRUE(compared);
    EXPECT_EQ(compared->shift, 310);
    EXPECT_FALSE(compared->likeness);
    EXPECT_FALSE(HasPassed(*compared));
}

TEST_F(Runs, ThatAreNothingAlikeAreNotCompared) {
    std::mt19937_64 random(3);
    std::normal_distribution<double> noise;
    for (auto& column : m_run) {
        for (double& value : column) {
            value = noise(random);
        }
    }
    EXPECT_EQ(Compare({.absolute = 1.0}, std::nullopt).reason,
              "nothing in it is like the reference");
    m_run = {std::vector<double>(100, 1.0), std::vector<double>(100, 2.0)};
    EXPECT_EQ(Compare({.absolute = 1.0}, std::nullopt).reason, "nothing moves: no best match");
}

TEST_F(Runs, WithoutCommonLinesAreNotTold) {
    m_run[1].assign(m_run[1].size(), kMissing);
    const auto compared = Compare({.absolute = 0.01}, std::nullopt);
    ASSERT_TRUE(compared);
    EXPECT_FALSE(IsAllTold(*compared));
    EXPECT_FALSE(HasPassed(*compared));
    EXPECT_EQ(TextOf(compared->axes[1], 0.001),
              "Y: not compared: the runs have no values in common");
}

TEST_F(Runs, MayLieWithinTheSpreadOfGoodOnes) {
    // The other good runs began at other times and are a little higher and lower.
    for (const double beside : {0.004, -0.004}) {
        std::vector<std::vector<double>> good{Motion(2900, 50), Motion(2900, 50, 5)};
        for (auto& column : good) {
            for (double& value : column) {
                value += beside;
            }
        }
        m_good.push_back(good);
    }
    const auto compared = Compare({.absolute = 0.0001, .spread = 3.0}, std::nullopt);
    ASSERT_TRUE(compared) << compared.reason;
    EXPECT_TRUE(HasPassed(*compared));
    EXPECT_NEAR(compared->axes[0].band.width[1500], 3.0 * 0.004, 1e-6);
    for (double& value : m_run[0]) {
        value += 0.013;
    }
    EXPECT_FALSE(HasPassed(*Compare({.absolute = 0.0001, .spread = 3.0}, std::nullopt)));
    EXPECT_TRUE(HasPassed(*Compare({.absolute = 0.02, .spread = 3.0}, std::nullopt)));
}

TEST_F(Runs, AGoodOneThatIsNotLikeTheFirstIsNamed) {
    m_good.push_back({std::vector<double>(50, 1.0), std::vector<double>(50, 1.0)});
    EXPECT_EQ(Compare({.absolute = 0.01, .spread = 3.0}, std::nullopt).reason,
              "good run 2: nothing moves: no best match");
    EXPECT_EQ(Compare({.absolute = 0.01}, std::nullopt).reason,
              "good run 2: nothing moves: no best match");
}

TEST_F(Runs, WithoutASpreadTheMeanOfTheGoodOnesCounts) {
    std::vector<std::vector<double>> higher{Motion(2900, 50), Motion(2900, 50, 5)};
    for (auto& column : higher) {
        for (double& value : column) {
            value += 0.02;
        }
    }
    m_good.push_back(higher);
    for (auto& column : m_run) {
        for (double& value : column) {
            value += 0.01;
        }
    }
    const auto compared = Compare({.absolute = 0.001}, std::nullopt);
    ASSERT_TRUE(compared) << compared.reason;
    const AxisComparison& axis = compared->axes[0];
    EXPECT_EQ(axis.band.width[2000], 0.001);
    EXPECT_NEAR(axis.band.middle[2000], m_good[0][0][2000] + 0.01, 1e-9);
    // Where one alone has values it is that one, as before the other begins and after it ends.
    EXPECT_DOUBLE_EQ(axis.band.middle[20], 0.0);
    EXPECT_EQ(axis.compared->outside, 100U);
}

}  // namespace
}  // namespace wavo::measure

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

/// The best match by what it means, value by value.
Match MatchByDefinition(const std::vector<double>& reference, const std::vector<double>& values,
                        double least) {
    Match best;
    best.likeness = -2.0;
    const auto shorter = static_cast<double>(std::min(reference.size(), values.size()));
    const auto least_overlap = std::max<std::size_t>(8, static_cast<std::size_t>(least * shorter));
    const auto first = 1 - static_cast<std::int64_t>(reference.size());
    for (std::int64_t shift = first; shift < static_cast<std::int64_t>(values.size()); ++shift) {
        std::vector<double> a;
        std::vector<double> b;
        for (std::size_t i = 0; i < reference.size(); ++i) {
            const std::int64_t at = static_cast<std::int64_t>(i) + shift;
            if (at >= 0 && at < static_cast<std::int64_t>(values.size())) {
                a.push_back(reference[i]);
                b.push_back(values[static_cast<std::size_t>(at)]);
            }
        }
        if (a.size() < least_overlap) {
            continue;
        }
        double mean_a = 0.0;
        double mean_b = 0.0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            mean_a += a[i] / static_cast<double>(a.size());
            mean_b += b[i] / static_cast<double>(a.size());
        }
        double product = 0.0;
        double energy_a = 0.0;
        double energy_b = 0.0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            product += (a[i] - mean_a) * (b[i] - mean_b);
            energy_a += (a[i] - mean_a) * (a[i] - mean_a);
            energy_b += (b[i] - mean_b) * (b[i] - mean_b);
        }
        const double likeness = product / std::sqrt(energy_a * energy_b);
        if (likeness > best.likeness) {
            best = {shift, likeness, a.size()};
        }
    }
    return best;
}

TEST(BestMatchInSteps, IsTheOneByDefinitionWhateverTheLengths) {
    std::mt19937_64 random(5);
    std::normal_distribution<double> noise;
    for (const auto& [ours, theirs] : std::vector<std::pair<std::size_t, std::size_t>>{
             {8, 8}, {8, 9}, {17, 40}, {40, 17}, {100, 101}, {333, 200}}) {
        std::vector<double> reference(ours);
        std::vector<double> values(theirs);
        for (auto* const column : {&reference, &values}) {
            double walk = 0.0;
            for (double& value : *column) {
                value = walk += noise(random);
            }
        }
        const Match expected = MatchByDefinition(reference, values, 0.5);
        const auto found = BestMatchInSteps(reference, values).Compute();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->shift, expected.shift) << ours << ", " << theirs;
        EXPECT_NEAR(found->likeness, expected.likeness, 1e-9);
        EXPECT_EQ(found->overlap, expected.overlap);
    }
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
    // It is of no account without a spread.
    EXPECT_TRUE(Compare({.absolute = 0.01}, std::nullopt));
}

}  // namespace
}  // namespace wavo::measure

#include "measure/verdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "measure/comparison.h"
#include "measure/polar_scale.h"
#include "measure/words.h"
#include "synthetic_machine.h"
#include "test_tables.h"

namespace wavo::measure {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<NamedFigure> SomeFigures() {
    return {{"G_ccw", "", "", "um", 1, Figure(12.0), 0.0},
            {"F_min", "", "", "um", 1, Figure(-7.0), 0.0},
            {"D", "", "", "um", 1, Figure::Not("one sense only"), 0.0}};
}

Verdict VerdictWith(const std::string& limits) {
    const auto parsed = ParseLimits("[Limits]\n" + limits);
    EXPECT_TRUE(parsed) << parsed.reason;
    return Judge(SomeFigures(), *parsed).verdict;
}

TEST(Limits, JudgeFigures) {
    EXPECT_EQ(VerdictWith(""), Verdict::kPass);
    EXPECT_EQ(VerdictWith("G_ccw = 12"), Verdict::kPass);
    EXPECT_EQ(VerdictWith("G_ccw = 11.9"), Verdict::kFail);
    EXPECT_EQ(VerdictWith("F_min = 6.5"), Verdict::kFail);
    EXPECT_EQ(VerdictWith("F_min = -7.5..0"), Verdict::kPass);
    EXPECT_EQ(VerdictWith("F_min = -6.5.."), Verdict::kFail);
    EXPECT_EQ(VerdictWith("F_min = ..0"), Verdict::kPass);
    EXPECT_EQ(VerdictWith("G_ccw = 1\nF_min = 100"), Verdict::kFail);
}

TEST(Limits, AFigureThatCannotBeToldIsNoPass) {
    EXPECT_EQ(VerdictWith("D = 5"), Verdict::kNotTold);
    EXPECT_EQ(VerdictWith("D = 5\nG_ccw = 1"), Verdict::kNotTold);
    const auto judgement = Judge(SomeFigures(), *ParseLimits("[limits]\nGG = 1\n"));
    EXPECT_THAT(judgement.unknown, ElementsAre("GG"));
    EXPECT_EQ(judgement.verdict, Verdict::kNotTold);
}

TEST(Limits, AreReadFromTheirSectionAlone) {
    const auto limits = ParseLimits(
        "; machine 4\r\n[Other]\r\nG_ccw = x\r\n[LIMITS]\r\n G_ccw = 15 \r\n# no\r\n\r\nKv = "
        "16..\r\n"
        "[More]\r\nD=1");
    ASSERT_TRUE(limits) << limits.reason;
    EXPECT_EQ(limits->size(), 2U);
    EXPECT_EQ(*limits->at("G_ccw").most, 15.0);
    EXPECT_EQ(*limits->at("G_ccw").least, -15.0);
    EXPECT_FALSE(limits->at("Kv").most);
}

TEST(Limits, SayWhichLineIsWrong) {
    const auto reason = [](const std::string& line) {
        return ParseLimits("[Limits]\n" + line).reason;
    };
    EXPECT_EQ(reason("G"), "line 2: no name of a figure and limit");
    EXPECT_EQ(reason("= 5"), "line 2: no name of a figure and limit");
    EXPECT_THAT(reason("G = twelve"), HasSubstr("line 2: a limit is a number"));
    EXPECT_THAT(reason("G = -3"), HasSubstr("line 2: a limit is a number"));
    EXPECT_EQ(reason("G = 1..x"), "line 2: \"x\" is not a number");
    EXPECT_EQ(reason("G = .."), "line 2: a range without ends");
    EXPECT_EQ(reason("G = 3..2"), "line 2: a range that ends before it begins");
}

TEST(Limits, InWords) {
    EXPECT_EQ(TextOf(Limit{-5.0, 5.0}, 1), "+-5.0");
    EXPECT_EQ(TextOf(Limit{-5.0, 20.0}, 1), "-5.0..20.0");
    EXPECT_EQ(TextOf(Limit{{}, 3.0}, 0), "<= 3");
    EXPECT_EQ(TextOf(Limit{3.0, {}}, 2), ">= 3.00");
}

TEST(NamedFigures, HaveKeysOfTheirOwn) {
    MachineErrors errors;
    errors.play_x = 0.005;
    errors.spike_y = 0.01;
    const RunData data = RunCircles({}, errors);
    CircleSetup setup;
    setup.minimum_zone = true;
    const auto result = TestCircle(data.Path(), setup);
    const auto figures = FiguresOf(result, result.evaluations.at(0), {"X", "Y"});
    std::set<std::string> keys;
    for (const NamedFigure& figure : figures) {
        EXPECT_TRUE(keys.insert(figure.key).second) << figure.key;
    }
    for (const char* key : {"G_ccw", "G_cw", "G_zone_ccw", "F_max_ccw", "F_min_cw", "G_b", "D",
                            "dR", "dS", "eps", "dtau", "Bx", "By", "residual", "spike_0_ccw",
                            "spike_270_cw", "spike_ms_90_ccw", "v_cw"}) {
        EXPECT_TRUE(keys.contains(key)) << key;
    }
    EXPECT_FALSE(keys.contains("oval"));
    EXPECT_EQ(figures[0].symbol, "G_XY ccw");
}

TEST(NamedFigures, OfAnAxis) {
    const ColumnTable table = LoadTable("axis_move");
    const auto figures = FiguresOf(TestAxis(table.Find("cmd"), table.Find("act"), 0.001));
    const auto has = [&](const std::string& key) {
        return std::ranges::any_of(figures, [&](const NamedFigure& f) { return f.key == key; });
    };
    EXPECT_TRUE(has("lag"));
    EXPECT_TRUE(has("settling"));
    EXPECT_FALSE(has("step1_rise"));
    const ColumnTable steps = LoadTable("axis_step");
    const auto of_steps = FiguresOf(TestAxis(steps.Find("cmd"), steps.Find("act"), 0.001));
    EXPECT_TRUE(std::ranges::any_of(
        of_steps, [](const NamedFigure& f) { return f.key == "step2_overshoot"; }));
}

TEST(PolarScale, TakesTheSmallestStepThatShowsAll) {
    const struct {
        double largest, step;
    } rows[] = {{0.0006, 0.0002}, {4.0, 1},     {4.01, 2},   {6.945, 2},  {12, 5},
                {20, 5},          {20.001, 10}, {23.69, 10}, {1000, 500}, {0, 0.001}};
    for (const auto& row : rows) {
        const double smallest = row.largest == 0.0006 ? 1e-4 : 0.001;
        EXPECT_DOUBLE_EQ(PolarScaleFor(row.largest, smallest).step, row.step) << row.largest;
    }
    const PolarScale scale = PolarScaleFor(6.945);
    EXPECT_DOUBLE_EQ(scale.Radius(0.0, 100.0), 65.0);
    EXPECT_DOUBLE_EQ(scale.Radius(8.0, 100.0), 95.0);
    EXPECT_DOUBLE_EQ(scale.Radius(-8.0, 100.0), 35.0);
    EXPECT_DOUBLE_EQ(scale.Magnification(80000.0), 3000.0);
}

TEST(PolarScale, StepsGoUpAndDown) {
    double step = 0.001;
    for (const double next : {0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0}) {
        EXPECT_DOUBLE_EQ(NextPolarStep(step, true), next);
        EXPECT_DOUBLE_EQ(NextPolarStep(next, false), step);
        step = next;
    }
}

TEST(Words, NumbersHaveNoNegativeZero) {
    EXPECT_EQ(Decimals(-0.004, 2), "0.00");
    EXPECT_EQ(Decimals(-0.006, 2), "-0.01");
    EXPECT_EQ(Decimals(1234.5, 0), "1234");
}

std::vector<double> Wave(std::size_t count, std::size_t shift) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double at = static_cast<double>(i + shift);
        values[i] = 5.0 + std::sin(at * 0.01) + std::sin(at * 0.0037) + 0.3 * std::sin(at * 0.11);
    }
    return values;
}

TEST(BestMatch, FindsTheShift) {
    const auto reference = Wave(3000, 500);
    for (const std::size_t shift : {0U, 1U, 250U, 499U, 900U}) {
        const auto match = BestMatch(reference, Wave(4000, shift));
        ASSERT_TRUE(match) << match.reason;
        EXPECT_EQ(match->shift, 500 - static_cast<std::int64_t>(shift)) << shift;
        EXPECT_NEAR(match->likeness, 1.0, 1e-9);
    }
}

TEST(BestMatch, ThroughNoiseGapsAndAnOffset) {
    const auto reference = Wave(3000, 500);
    auto values = Wave(3500, 320);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] += 1e6 + 0.1 * std::sin(static_cast<double>(i * i % 977));
    }
    values[700] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(BestMatch(reference, values)->shift, 180);
}

TEST(BestMatch, IsNotToldWithoutMotion) {
    const std::vector<double> still(100, 3.0);
    EXPECT_EQ(BestMatch(still, Wave(100, 0)).reason, "nothing moves: no best match");
    EXPECT_EQ(BestMatch(Wave(100, 0), still).reason, "nothing moves: no best match");
    EXPECT_EQ(BestMatch(Wave(5, 0), Wave(100, 0)).reason, "too few values to align");
    EXPECT_FALSE(BestMatch({}, {}));
}

TEST(Comparison, TellsThePlaceOfTheWorstDeviation) {
    const auto reference = Wave(1000, 0);
    auto values = Wave(1000, 0);
    values[700] += 0.03;
    values[800] -= 0.05;
    values[10] = std::numeric_limits<double>::quiet_NaN();
    const auto band = AbsoluteBand(reference, 0.02);
    const auto compared = CompareWith(band, values, 0);
    EXPECT_FALSE(compared->passed);
    EXPECT_EQ(compared->compared, 999U);
    EXPECT_EQ(compared->outside, 2U);
    EXPECT_EQ(compared->worst_at, 800U);
    EXPECT_NEAR(compared->worst, -0.05, 1e-12);
    EXPECT_TRUE(CompareWith(AbsoluteBand(reference, 0.06), values, 0)->passed);
    EXPECT_EQ(CompareWith(band, values, 5000).reason, "the runs have no values in common");
    const auto difference = DifferenceFrom(reference, values, 0);
    EXPECT_NEAR(difference[700], 0.03, 1e-12);
    EXPECT_TRUE(std::isnan(difference[10]));
    EXPECT_TRUE(std::isnan(DifferenceFrom(reference, values, 1).back()));
}

TEST(Comparison, ABandOfTheSpreadOfGoodRuns) {
    std::vector<std::vector<double>> runs(3, Wave(500, 0));
    for (std::size_t i = 0; i < 500; ++i) {
        runs[0][i] += 1e6 + 0.01;
        runs[1][i] += 1e6;
        runs[2][i] += 1e6 - 0.01;
    }
    runs[2].resize(400);
    runs[1].resize(450);
    const std::vector<std::span<const double>> spans(runs.begin(), runs.end());
    const auto band = SpreadBand(spans, 3.0, 0.001);
    EXPECT_NEAR(band.width[100], 0.03, 1e-8);
    EXPECT_NEAR(band.middle[100], runs[1][100], 1e-8);
    EXPECT_NEAR(band.width[420], 3.0 * 0.01 / std::sqrt(2.0), 1e-8);
    EXPECT_TRUE(std::isnan(band.width[460]));
    EXPECT_NEAR(SpreadBand(spans, 0.0, 0.005).width[0], 0.005, 1e-15);
}

}  // namespace
}  // namespace wavo::measure

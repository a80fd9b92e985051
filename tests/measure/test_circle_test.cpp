#include "measure/circle_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "synthetic_machine.h"
#include "test_tables.h"

namespace wavo::measure {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr double kGone = std::numeric_limits<double>::quiet_NaN();

CircleSetup WithRadius(double radius) {
    CircleSetup setup;
    setup.radius = radius;
    return setup;
}

MachineErrors SomeErrors() {
    MachineErrors errors;
    errors.lag_x = 0.0040;
    errors.lag_y = 0.0043;
    errors.scale_x = 50e-6;
    errors.scale_y = -30e-6;
    errors.squareness = 80e-6;
    errors.play_x = 0.004;
    errors.play_y = 0.007;
    return errors;
}

TEST(CircleTest, TellsTheErrorsOfAMachineApart) {
    const struct {
        double radius, feed, x, y, cycle;
    } programs[] = {{20.0, 100.0, 0.0, 0.0, 0.001},
                    {50.0, 50.0, -300.0, 120.0, 0.002},
                    {10.0, 20.0, 5.0, 5.0, 0.004}};
    for (const auto& p : programs) {
        SCOPED_TRACE(p.radius);
        CircleProgram program;
        program.radius = p.radius;
        program.feed = p.feed;
        program.centre_x = p.x;
        program.centre_y = p.y;
        program.cycle_time = p.cycle;
        const RunData data = RunCircles(program, SomeErrors());
        const auto result = TestCircle(data.Path());
        ASSERT_EQ(result.turns.size(), 2U);
        ASSERT_EQ(result.evaluations.size(), 1U);
        const auto& shape = result.evaluations[0].shape;
        ASSERT_TRUE(shape) << shape.reason;
        EXPECT_NEAR(*shape->scale_difference.value, 80.0, 0.6);  // good to 6 nm
        EXPECT_NEAR(*shape->squareness.value, 80.0, 0.5);
        EXPECT_NEAR(*shape->servo_mismatch.value, 0.3, 0.0005);
        EXPECT_NEAR(*shape->backlash_x.value, 4.0, 0.02);
        EXPECT_NEAR(*shape->backlash_y.value, 7.0, 0.02);
        EXPECT_NEAR(*shape->radius_change.value, p.radius * 20e-6 / 2.0 * 1000.0, 0.05);
        EXPECT_LT(shape->residual, 0.05);
        EXPECT_NEAR(result.turns[0].feed, p.feed, 0.02);
        EXPECT_LT(result.turns[0].feed_deviation, 0.1);
        EXPECT_NEAR(result.turns[0].circle.x, p.x, 1e-3);
        EXPECT_NEAR(result.turns[0].circle.y, p.y, 1e-3);
        EXPECT_THAT(result.notes, IsEmpty());
    }
}

TEST(CircleTest, WorksAMillionMillimetresFromTheOrigin) {
    CircleProgram program;
    const RunData near = RunCircles(program, SomeErrors());
    program.centre_x = 1e6;
    program.centre_y = -1e6;
    const RunData far = RunCircles(program, SomeErrors());
    const auto expected = TestCircle(near.Path()).evaluations.at(0);
    const auto got = TestCircle(far.Path()).evaluations.at(0);
    // The values themselves are rounded to 1e-10 mm there.
    EXPECT_NEAR(*got.bidirectional_error, *expected.bidirectional_error, 1e-5);
    EXPECT_NEAR(*got.shape->squareness.value, *expected.shape->squareness.value, 1e-4);
    EXPECT_NEAR(*got.shape->servo_mismatch.value, *expected.shape->servo_mismatch.value, 1e-6);
    EXPECT_NEAR(*got.shape->backlash_x.value, *expected.shape->backlash_x.value, 1e-4);
}

TEST(CircleTest, RecoversThroughNoiseAndResolution) {
    MachineErrors errors = SomeErrors();
    errors.noise = 0.0005;
    errors.resolution = 0.0001;
    const RunData data = RunCircles({}, errors);
    const auto result = TestCircle(data.ActualOnly(), WithRadius(20.0));
    EXPECT_FALSE(result.from_commanded);
    ASSERT_EQ(result.evaluations.size(), 1U);
    const CircleShape& shape = *result.evaluations[0].shape;
    const auto within = [](const FittedFigure& fitted, double truth) {
        EXPECT_GT(fitted.error, 0.0);
        EXPECT_NEAR(*fitted.value, truth, 4.0 * fitted.error);
    };
    within(shape.scale_difference, 80.0);
    within(shape.squareness, 80.0);
    within(shape.servo_mismatch, 0.3);
    within(shape.backlash_x, 4.0);
    within(shape.backlash_y, 7.0);
    EXPECT_NEAR(shape.residual, 0.5, 0.05);
    for (const ReversalSpike& spike : shape.spikes) {
        EXPECT_EQ(spike.height.reason, "none") << spike.degrees;
    }
}

TEST(CircleTest, StandardErrorsAreThoseOfTheirTable) {
    MachineErrors errors;
    errors.noise = 0.001;
    const RunData data = RunCircles({}, errors);
    const auto result = TestCircle(data.ActualOnly(), WithRadius(20.0));
    const CircleShape& shape = *result.evaluations.at(0).shape;
    double rows = 0.0;
    for (const CircleTurn& turn : result.turns) {
        rows += static_cast<double>(turn.stretch.Size()) * 8.0 / 9.0;
    }
    // sigma / sqrt(N) times so much.
    const double unit = shape.residual / std::sqrt(rows);
    EXPECT_NEAR(shape.radius_change.error / unit, 1.0, 0.1);
    EXPECT_NEAR(shape.scale_difference.error * 20.0 / 1000.0 / unit, 3.0, 0.1);
    EXPECT_NEAR(shape.squareness.error * 20.0 / 1000.0 / unit, 2.7, 0.1);
    EXPECT_NEAR(shape.servo_mismatch.error * 100.0 / unit, 10.0, 0.3);
    EXPECT_NEAR(shape.backlash_x.error / unit, 6.9, 0.2);
    EXPECT_NEAR(shape.backlash_y.error / unit, 6.9, 0.2);
}

TEST(CircleTest, TheConditionGrowsWithTheZones) {
    const RunData data = RunCircles({}, SomeErrors());
    const struct {
        double zone, condition;
    } rows[] = {{0.0, 5.8},   {2.0, 6.5},   {5.0, 7.7},  {10.0, 10.6},
                {15.0, 15.0}, {20.0, 23.0}, {30.0, 67.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.zone);
        CircleSetup setup;
        setup.shape.zone = row.zone;
        setup.shape.widest_zone = row.zone;
        const auto result = TestCircle(data.Path(), setup);
        EXPECT_NEAR(result.evaluations.at(0).shape->condition, row.condition, row.condition * 0.03);
    }
}

TEST(CircleTest, InStepsItGivesTheSame) {
    const RunData data = RunCircles({}, SomeErrors());
    auto steps = TestCircleInSteps(data.Path(), {});
    std::size_t count = 0;
    while (steps.Step()) {
        ++count;
    }
    // The path is gone through several times, not more than some lines at a time.
    EXPECT_GT(count, 4 * data.Path().x.size() / kRowsPerStep);
    EXPECT_FALSE(steps.Step());
    const auto whole = TestCircle(data.Path());
    ASSERT_EQ(steps.Result().evaluations.size(), 1U);
    EXPECT_EQ(*steps.Result().evaluations[0].shape->squareness.value,
              *whole.evaluations[0].shape->squareness.value);
    EXPECT_EQ(steps.Result().turns[1].feed, whole.turns[1].feed);
    auto nothing = TestCircleInSteps({}, {});
    while (nothing.Step()) {
    }
    EXPECT_FALSE(nothing.Result().notes.empty());
}

TEST(CircleTest, CanBeGivenUpBetweenTwoSteps) {
    const RunData data = RunCircles({}, SomeErrors());
    std::size_t all = 0;
    for (auto steps = TestCircleInSteps(data.Path(), {}); steps.Step();) {
        ++all;
    }
    for (std::size_t count = 0; count <= all; ++count) {
        auto steps = TestCircleInSteps(data.Path(), {});
        for (std::size_t i = 0; i < count; ++i) {
            steps.Step();
        }
    }
}

TEST(CircleTest, PlayIsNotTakenForServoMismatch) {
    MachineErrors errors;
    errors.play_x = 0.010;
    const RunData data = RunCircles({}, errors);
    const auto result = TestCircle(data.Path());
    const CircleShape& shape = *result.evaluations.at(0).shape;
    EXPECT_NEAR(*shape.servo_mismatch.value, 0.0, 0.0005);
    EXPECT_NEAR(*shape.backlash_x.value, 10.0, 0.02);
    EXPECT_NEAR(*shape.backlash_y.value, 0.0, 0.02);
    EXPECT_THAT(result.notes, IsEmpty());
}

TEST(CircleTest, OneSenseTellsTheOvalOnly) {
    CircleProgram program;
    program.turns = {-2.0};
    const RunData data = RunCircles(program, SomeErrors());
    const auto result = TestCircle(data.Path());
    ASSERT_EQ(result.turns.size(), 1U);
    EXPECT_EQ(result.turns[0].sense, Sense::kClockwise);
    EXPECT_TRUE(result.turns[0].circular_error);
    const CircleEvaluation& evaluation = result.evaluations.at(0);
    EXPECT_EQ(evaluation.bidirectional_error.reason, "one sense only");
    EXPECT_EQ(evaluation.mean_radial_error.reason, "one sense only");
    const CircleShape& shape = *evaluation.shape;
    EXPECT_THAT(shape.squareness.value.reason, HasSubstr("not separable with one sense"));
    EXPECT_THAT(shape.servo_mismatch.value.reason, HasSubstr("not separable with one sense"));
    // R eps/2 - s v dtau/2 with s = -1.
    EXPECT_NEAR(*shape.oval.value, 20.0 * 80e-6 / 2.0 * 1e3 + 100.0 * 0.0003 / 2.0 * 1e3, 0.05);
    EXPECT_NEAR(*shape.backlash_x.value, 4.0, 0.02);
    EXPECT_NEAR(*shape.scale_difference.value, 80.0, 0.5);
    EXPECT_EQ(shape.spikes.size(), 4U);
}

TEST(CircleTest, WithoutARadiusSomeFiguresAreNotTold) {
    const RunData data = RunCircles({}, SomeErrors());
    const auto result = TestCircle(data.ActualOnly());
    ASSERT_EQ(result.turns.size(), 2U);
    EXPECT_TRUE(result.turns[0].circular_error);
    EXPECT_THAT(result.turns[0].radial_error_max.reason, HasSubstr("no nominal radius"));
    EXPECT_THAT(result.evaluations[0].mean_radial_error.reason, HasSubstr("no nominal radius"));
    EXPECT_TRUE(result.evaluations[0].bidirectional_error);
    EXPECT_THAT(result.evaluations[0].shape->radius_change.value.reason,
                HasSubstr("no nominal radius"));
    EXPECT_NEAR(*result.evaluations[0].shape->backlash_y.value, 7.0, 0.02);
}

TEST(CircleTest, MeasuresSpikesOfHeightAndWidth) {
    for (const double sign : {1.0, -1.0}) {
        MachineErrors errors = SomeErrors();
        errors.spike_x = sign * 0.008;
        errors.spike_y = sign * 0.005;
        errors.spike_time = 0.012;
        const RunData data = RunCircles({}, errors);
        const auto result = TestCircle(data.Path());
        const CircleShape& shape = *result.evaluations.at(0).shape;
        ASSERT_EQ(shape.spikes.size(), 8U);
        for (const ReversalSpike& spike : shape.spikes) {
            SCOPED_TRACE(spike.degrees);
            const double height = spike.degrees % 180 == 0 ? 8.0 : 5.0;
            ASSERT_TRUE(spike.height) << spike.height.reason;
            EXPECT_NEAR(*spike.height, sign * height, 0.2);
            EXPECT_NEAR(*spike.duration, 8.0, 0.4);  // half of a half sine's height
            EXPECT_NEAR(*spike.width, 8.0 * 100.0 / 1000.0 / 20.0 * 57.29578, 0.12);
        }
    }
}

TEST(CircleTest, PlayAloneMakesNoSpike) {
    MachineErrors errors;
    errors.play_x = 0.030;
    errors.play_y = 0.020;
    const RunData data = RunCircles({}, errors);
    const auto result = TestCircle(data.Path());
    for (const ReversalSpike& spike : result.evaluations.at(0).shape->spikes) {
        EXPECT_LT(std::abs(spike.height.value.value_or(0.0)), 0.15) << spike.degrees;
    }
}

TEST(CircleTest, ZonesGrowWithThePlayThatIsTakenUp) {
    MachineErrors errors;
    errors.play_x = 0.120;  // taken up over 6.3 degrees of R 20
    const RunData data = RunCircles({}, errors);
    const auto result = TestCircle(data.Path());
    const CircleShape& shape = *result.evaluations.at(0).shape;
    EXPECT_GT(shape.zone_behind, 6.0);
    EXPECT_EQ(shape.zone_before, 5.0);
    EXPECT_NEAR(*shape.backlash_x.value, 120.0, 0.5);
    EXPECT_THAT(result.notes, Contains("zones behind the reversals widened for spikes and play"));
}

TEST(CircleTest, SaysWhenTheModelDoesNotExplainTheShape) {
    RunData data = RunCircles({});
    for (std::size_t i = 0; i < data.x.size(); ++i) {
        const double angle = std::atan2(data.y[i], data.x[i]);
        data.x[i] += 0.005 * std::cos(5.0 * angle) * std::cos(angle);
        data.y[i] += 0.005 * std::cos(5.0 * angle) * std::sin(angle);
    }
    CircleSetup setup;
    setup.shape.noise = 0.1;
    EXPECT_THAT(TestCircle(data.Path(), setup).notes, Contains("model does not explain the shape"));
    setup.shape.noise.reset();
    EXPECT_THAT(TestCircle(data.Path(), setup).notes,
                Not(Contains("model does not explain the shape")));
}

TEST(CircleTest, AMachineWithoutErrorsHasNone) {
    const RunData data = RunCircles({});
    CircleSetup setup;
    setup.minimum_zone = true;
    const auto result = TestCircle(data.Path(), setup);
    ASSERT_EQ(result.evaluations.size(), 1U);
    EXPECT_LT(*result.evaluations[0].bidirectional_error, 1e-3);
    EXPECT_LT(*result.evaluations[0].bidirectional_error_zone, 1e-3);
    EXPECT_NEAR(*result.evaluations[0].mean_radial_error, 0.0, 1e-6);
    EXPECT_NEAR(*result.evaluations[0].shape->backlash_x.value, 0.0, 1e-6);
}

TEST(CircleTest, AHelixARoseAndADrillPatternHaveNoTurns) {
    for (const char* name : {"helix_4axis", "rose_small_segments", "drill_g81_g83_g82"}) {
        SCOPED_TRACE(name);
        const ColumnTable table = LoadTable(std::string("recordings/") + name);
        const auto result = TestCircle(
            {0.001, table.Find("X"), table.Find("Y"), table.Find("X_cmd"), table.Find("Y_cmd")});
        EXPECT_TRUE(result.turns.empty());
        EXPECT_FALSE(result.notes.empty());
    }
}

TEST(CircleTest, TheHelixHasThreeRunsOfLessThanATurn) {
    const ColumnTable table = LoadTable("recordings/helix_4axis");
    const auto result = TestCircle(
        {0.001, table.Find("X"), table.Find("Y"), table.Find("X_cmd"), table.Find("Y_cmd")});
    std::vector<CircleRun> large;
    std::ranges::copy_if(result.runs, std::back_inserter(large),
                         [](const CircleRun& run) { return run.angle > 300.0; });
    ASSERT_EQ(large.size(), 3U);
    const struct {
        double angle, radius;
        Sense sense;
    } rows[] = {{343.0, 20.0, Sense::kClockwise},
                {343.0, 20.0, Sense::kClockwise},
                {325.0, 10.0, Sense::kCounterClockwise}};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(large[i].angle, rows[i].angle, 1.0);
        EXPECT_NEAR(large[i].circle.radius, rows[i].radius, 0.01);
        EXPECT_EQ(large[i].sense, rows[i].sense);
        EXPECT_THAT(large[i].reason, HasSubstr("less than one turn"));
    }
}

TEST(CircleTest, ARecordingHoldsAPairAndASingleTurn) {
    const ColumnTable table = LoadTable("recordings/circle_xy_r50");
    const auto result = TestCircle(
        {0.001, table.Find("X"), table.Find("Y"), table.Find("X_cmd"), table.Find("Y_cmd")});
    ASSERT_EQ(result.turns.size(), 3U);
    ASSERT_EQ(result.evaluations.size(), 2U);
    EXPECT_EQ(result.evaluations[0].turns, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(result.evaluations[1].turns, (std::vector<std::size_t>{2}));
    EXPECT_NEAR(result.turns[2].feed, 100.0, 0.01);
}

std::vector<std::string> NotesOf(const CircleProgram& program, const MachineErrors& errors = {},
                                 const CircleSetup& setup = {}) {
    const RunData data = RunCircles(program, errors);
    return TestCircle(data.Path(), setup).notes;
}

CircleProgram TurnsOf(std::vector<double> turns) {
    CircleProgram program;
    program.turns = std::move(turns);
    return program;
}

TEST(CircleTestNotes, HalfATurnAndAnArc) {
    EXPECT_THAT(NotesOf(TurnsOf({0.5})), Contains(HasSubstr("less than one turn: 1")));
    EXPECT_THAT(NotesOf(TurnsOf({0.2})),
                Contains("no full turn at constant feed and curvature was found"));
}

TEST(CircleTestNotes, OneTurnWithoutOverlap) {
    EXPECT_THAT(NotesOf(TurnsOf({1.0, -1.0})), Contains(HasSubstr("less than one turn")));
    // With some overlap the margins are cut short, and it says so.
    const auto notes = NotesOf(TurnsOf({1.25}));
    EXPECT_THAT(notes, Contains(HasSubstr("only 0.05 s left out at both ends")));
}

TEST(CircleTestNotes, StandstillAndOneAxisStill) {
    const std::vector<double> still(5000, 3.0);
    EXPECT_THAT(TestCircle({0.001, still, still, {}, {}}).notes,
                Contains("standstill: neither axis moves"));
    std::vector<double> moving(5000);
    for (std::size_t i = 0; i < moving.size(); ++i) {
        moving[i] = 20.0 * std::sin(static_cast<double>(i) * 0.005);
    }
    EXPECT_THAT(TestCircle({0.001, moving, still, {}, {}}).notes,
                Contains("no circle: the second axis stands still"));
    EXPECT_THAT(TestCircle({0.001, still, moving, {}, {}}).notes,
                Contains("no circle: the first axis stands still"));
}

TEST(CircleTestNotes, TenLinesAndNone) {
    const std::vector<double> few{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_THAT(TestCircle({0.001, few, few, {}, {}}).notes,
                Contains("only 10 lines: too few for a turn"));
    EXPECT_THAT(TestCircle({}).notes, Contains("only 0 lines: too few for a turn"));
}

TEST(CircleTestNotes, CirclesOfNoSize) {
    CircleProgram program;
    program.radius = 1e-9;
    program.feed = 1e-9;
    program.acceleration = 1e-8;
    const RunData data = RunCircles(program);
    EXPECT_TRUE(TestCircle(data.Path()).turns.empty());
}

TEST(CircleTestNotes, GapsCutTheRun) {
    RunData data = RunCircles(TurnsOf({3.0}), SomeErrors());
    // One turn takes 1257 lines: a gap in the middle leaves one on either side.
    data.x[1900] = kGone;
    data.y[1901] = std::numeric_limits<double>::infinity();
    const auto result = TestCircle(data.Path());
    EXPECT_THAT(result.notes, Contains(HasSubstr("gaps: 2 of ")));
    for (const CircleRun& run : result.runs) {
        EXPECT_TRUE(run.stretch.end <= 1900 || run.stretch.first > 1901);
    }
    for (std::size_t i = 500; i < data.x.size(); i += 500) {
        data.x[i] = kGone;
    }
    EXPECT_TRUE(TestCircle(data.Path()).turns.empty());
    const std::vector<double> nothing(1000, kGone);
    EXPECT_TRUE(TestCircle({0.001, nothing, nothing, {}, {}}).turns.empty());
}

TEST(CircleTestNotes, AFeedFarOffAndARadiusFarOff) {
    CircleSetup setup;
    setup.feed = 150.0;
    EXPECT_THAT(NotesOf({}, {}, setup), Contains(HasSubstr("-33.3 % off the 150.00 mm/s given")));
    setup.feed = 100.0;
    EXPECT_THAT(NotesOf({}, {}, setup), IsEmpty());
    setup.radius = 25.0;
    EXPECT_THAT(NotesOf({}, {}, setup), Contains(HasSubstr("far off the nominal 25.000 mm")));
}

TEST(CircleTestNotes, ARadiusThatChanges) {
    MachineErrors errors;
    errors.growth = 0.05;
    const RunData data = RunCircles({}, errors);
    EXPECT_THAT(TestCircle(data.ActualOnly(), WithRadius(20.0)).notes,
                Contains(HasSubstr("it does not close")));
    errors.growth = 3.0;
    const RunData spiral = RunCircles({}, errors);
    EXPECT_THAT(TestCircle(spiral.ActualOnly()).notes, Contains(HasSubstr("less than one turn")));
    errors = {};
    errors.scale_x = 0.016;
    errors.scale_y = -0.016;
    const RunData oval = RunCircles({}, errors);
    EXPECT_THAT(TestCircle(oval.ActualOnly()).notes, Contains(HasSubstr("not round")));
}

TEST(CircleTestNotes, AThirdAxisThatMoves) {
    const RunData data = RunCircles({});
    std::vector<double> z(data.x.size());
    for (std::size_t i = 0; i < z.size(); ++i) {
        z[i] = static_cast<double>(i) * 1e-3;
    }
    CircleSetup setup;
    setup.others = {{"Z", z}};
    EXPECT_THAT(TestCircle(data.Path(), setup).notes,
                Contains(HasSubstr("not a circle in one plane")));
}

TEST(CircleTestNotes, ClippedValuesButNoPlayAndNoResolution) {
    RunData data = RunCircles({});
    for (double& x : data.x) {
        x = std::min(x, 19.9);
    }
    EXPECT_THAT(TestCircle(data.Path()).notes, Contains(HasSubstr("clipped values?")));
    MachineErrors errors;
    errors.play_x = errors.play_y = 0.030;
    EXPECT_THAT(NotesOf({}, errors), Not(Contains(HasSubstr("clipped values?"))));
    errors = {};
    errors.resolution = 0.005;
    EXPECT_THAT(NotesOf({}, errors), Not(Contains(HasSubstr("clipped values?"))));
}

TEST(CircleTestNotes, ManyTurnsPairInTheOrderOfTime) {
    const RunData data = RunCircles(TurnsOf({2.0, 2.0, -2.0, -2.0, 2.0}), SomeErrors());
    const auto result = TestCircle(data.Path());
    ASSERT_EQ(result.turns.size(), 5U);
    ASSERT_EQ(result.evaluations.size(), 3U);
    EXPECT_EQ(result.evaluations[0].turns, (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(result.evaluations[1].turns, (std::vector<std::size_t>{1, 3}));
    EXPECT_EQ(result.evaluations[2].turns, (std::vector<std::size_t>{4}));
}

TEST(CircleTestNotes, TheClockwiseTurnMayComeFirst) {
    const RunData data = RunCircles(TurnsOf({-2.0, 2.0}), SomeErrors());
    const auto result = TestCircle(data.Path());
    ASSERT_EQ(result.evaluations.size(), 1U);
    EXPECT_EQ(result.evaluations[0].turns, (std::vector<std::size_t>{1, 0}));
    EXPECT_NEAR(*result.evaluations[0].shape->servo_mismatch.value, 0.3, 0.0005);
}

}  // namespace
}  // namespace wavo::measure

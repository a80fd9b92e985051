#include "measure/axis_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "measure/contour_error.h"
#include "measure/units.h"
#include "test_tables.h"

namespace wavo::measure {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
using Values = std::vector<double>;

/// A commanded step of `size` at line 100 and the exact answer of a lag of second order to it.
struct SecondOrder {
    double damping = 0.4;
    double frequency = 20.0;  // Hz
    double size = 1.0;
    double gain = 1.0;
    double offset = 0.0;
    double cycle_time = 0.0001;

    Values commanded, actual;

    void Run(std::size_t lines = 20000, std::size_t step = 2000) {
        const double w = kFullTurn * frequency;
        const double wd = w * std::sqrt(1.0 - damping * damping);
        for (std::size_t i = 0; i < lines; ++i) {
            const double t = (static_cast<double>(i) - static_cast<double>(step)) * cycle_time;
            commanded.push_back(offset + (i >= step ? size : 0.0));
            const double share =
                t <= 0.0 ? 0.0
                         : 1.0 - std::exp(-damping * w * t) *
                                     (std::cos(wd * t) + damping * w / wd * std::sin(wd * t));
            actual.push_back(offset + gain * size * share);
        }
    }
};

TEST(StepResponse, OfALagOfSecondOrderIsExact) {
    for (const double offset : {0.0, -700.0, 1e6}) {
        for (const double size : {1.0, -0.25}) {
            SecondOrder loop;
            loop.size = size;
            loop.offset = offset;
            loop.Run();
            const auto found = FindStepsAndMoves(loop.commanded, loop.actual, 0.0001);
            ASSERT_EQ(found.steps.size(), 1U);
            const StepResponse& step = found.steps[0];
            EXPECT_EQ(step.place, 2000U);
            EXPECT_DOUBLE_EQ(step.to - step.from, size);
            const double overshoot = std::exp(-std::numbers::pi * 0.4 / std::sqrt(1.0 - 0.16));
            EXPECT_NEAR(*step.overshoot, overshoot * 100.0, 0.01);
            EXPECT_NEAR(*step.rise, 11.646, 0.01);
            EXPECT_NEAR(*step.settling, 66.92, 0.05);
            EXPECT_NEAR(*step.steady_error, 0.0, 1e-3);
        }
    }
}

TEST(StepResponse, ItsDefinitionsCanBeChosen) {
    SecondOrder loop;
    loop.gain = 0.9;
    loop.Run();
    StepSetup setup;
    setup.target = StepTarget::kCommanded;
    const auto against = [&] {
        return FindStepsAndMoves(loop.commanded, loop.actual, 0.0001, setup).steps.at(0);
    };
    EXPECT_EQ(against().settling.reason, "not reached");
    EXPECT_NEAR(*against().steady_error, 100.0, 0.001);
    setup.settled = 12.0;
    EXPECT_TRUE(against().settling);
    setup.rise_from = 0.0;
    setup.rise_to = 100.0;
    const double wide = *against().rise;
    setup.rise_from = 20.0;
    setup.rise_to = 80.0;
    EXPECT_LT(*against().rise, wide);
    setup.rise_to = 130.0;
    EXPECT_EQ(against().rise.reason, "not reached");
    setup.target = StepTarget::kReached;
    setup.step_window = 0.045;  // 5 % of what is reached
    EXPECT_NEAR(*against().settling, 60.54, 0.1);
    EXPECT_THAT(DefinitionsOf(setup), HasSubstr("rise 20 to 130 %"));
    EXPECT_THAT(DefinitionsOf(setup), HasSubstr("+-45.0 um"));
}

TEST(StepResponse, AnAxisThatDoesNotFollow) {
    Values commanded(1000, 0.0);
    std::fill(commanded.begin() + 500, commanded.end(), 1.0);
    const Values actual(1000, 0.0);
    const auto found = FindStepsAndMoves(commanded, actual, 0.001);
    ASSERT_EQ(found.steps.size(), 1U);
    EXPECT_EQ(found.steps[0].rise.reason, "the axis does not follow the step");
    EXPECT_DOUBLE_EQ(*found.steps[0].steady_error, 1000.0);
}

TEST(StepResponse, ChangesWithoutStandstillAreNotCounted) {
    Values commanded(2000, 0.0);
    for (std::size_t i = 500; i < commanded.size(); ++i) {
        commanded[i] = i < 530 ? 1.0 : 2.0;  // 30 ms apart
    }
    const auto found = FindStepsAndMoves(commanded, commanded, 0.001);
    EXPECT_TRUE(found.steps.empty());
    EXPECT_EQ(found.not_counted, 2U);
    EXPECT_EQ(found.mean_settling.reason, "no moves");
    EXPECT_TRUE(FindStepsAndMoves({}, {}, 0.001).steps.empty());
}

/// A ramp from 0 at line 200 over 100 lines, then standstill.
Values Ramp(std::size_t lines = 1000) {
    Values values(lines);
    for (std::size_t i = 0; i < lines; ++i) {
        values[i] = std::clamp((static_cast<double>(i) - 200.0) * 0.1, 0.0, 10.0);
    }
    return values;
}

TEST(Moves, AreFoundWithTheirFigures) {
    const Values commanded = Ramp();
    Values actual = commanded;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const double since = static_cast<double>(i) - 300.0;
        actual[i] += since < 0.0 ? 0.0 : 0.05 * std::exp(-since / 50.0);
    }
    const auto found = FindStepsAndMoves(commanded, actual, 0.001);
    ASSERT_EQ(found.moves.size(), 1U);
    const Move& move = found.moves[0];
    EXPECT_EQ(move.first, 201U);
    EXPECT_EQ(move.last, 300U);
    EXPECT_EQ(move.end, 1000U);
    EXPECT_DOUBLE_EQ(move.to - move.from, 10.0);
    EXPECT_NEAR(move.speed, 100.0, 1e-6);
    EXPECT_NEAR(*move.settling, 50.0 * std::log(5.0), 0.01);
    EXPECT_NEAR(*move.overshoot, 50.0, 1e-6);
    EXPECT_NEAR(*move.following, 50.0, 1e-6);
    EXPECT_NEAR(*found.mean_settling, *move.settling, 1e-12);
}

TEST(Moves, ThatDoNotSettleOrWereInsideFromTheStart) {
    const Values commanded = Ramp();
    Values actual = commanded;
    EXPECT_EQ(*FindStepsAndMoves(commanded, actual, 0.001).moves.at(0).settling, 0.0);
    for (double& value : actual) {
        value += 0.02;
    }
    const auto found = FindStepsAndMoves(commanded, actual, 0.001);
    EXPECT_EQ(found.moves.at(0).settling.reason, "not reached");
    EXPECT_EQ(found.mean_settling.reason, "not every move settled");
    EXPECT_NEAR(*found.moves.at(0).steady_error, -20.0, 1e-6);
}

TEST(Moves, AGapEndsThem) {
    Values commanded = Ramp();
    Values actual = commanded;
    actual[350] = kNothing;
    EXPECT_TRUE(FindStepsAndMoves(commanded, actual, 0.001).moves.empty());
    actual = commanded;
    commanded[500] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(FindStepsAndMoves(commanded, actual, 0.001).moves.at(0).end, 500U);
}

/// Back and forth at 100 mm/s with an actual value that is late.
struct Shuttle {
    Values commanded, actual;

    explicit Shuttle(double lag, double offset = 0.0) {
        for (int i = 0; i < 8000; ++i) {
            commanded.push_back(At(i * 0.001));
            actual.push_back(At(i * 0.001 - lag) - offset);
        }
    }
    static double At(double t) {
        const double phase = std::fmod(std::max(t, 0.0), 2.0);
        return phase < 1.0 ? 100.0 * phase : 200.0 - 100.0 * phase;
    }
};

TEST(FollowingError, TellsLagOffsetAndGain) {
    const Shuttle run(0.004, 0.015);
    const auto error =
        FollowingErrorOf(run.commanded, run.actual, 0.001, {0, run.commanded.size()});
    EXPECT_EQ(error.samples, LagSamples::kConstantSpeed);
    EXPECT_NEAR(*error.lag, 4.0, 1e-6);
    EXPECT_NEAR(*error.offset, 15.0, 1e-6);
    EXPECT_NEAR(*error.gain, 250.0, 1e-3);
    EXPECT_NEAR(*error.linear_gain, 15.0, 1e-4);
    EXPECT_NEAR(*error.largest, 415.0, 1e-6);
}

TEST(FollowingError, InOneDirectionThereIsNoOffset) {
    Values commanded(3000);
    Values actual(3000);
    for (std::size_t i = 0; i < commanded.size(); ++i) {
        commanded[i] = 0.1 * static_cast<double>(i);
        actual[i] = commanded[i] - 0.3;
    }
    const auto error = FollowingErrorOf(commanded, actual, 0.001, {0, 3000});
    EXPECT_NEAR(*error.lag, 3.0, 1e-9);
    EXPECT_EQ(error.offset.reason, "the axis moves in one direction only");
    // Ahead of the command: no lag.
    for (double& value : actual) {
        value += 0.5;
    }
    EXPECT_EQ(FollowingErrorOf(commanded, actual, 0.001, {0, 3000}).gain.reason, "no lag");
}

TEST(FollowingError, WithoutConstantSpeedTheMovingOnesAreTaken) {
    Values commanded(5000);
    Values actual(5000);
    for (std::size_t i = 0; i < commanded.size(); ++i) {
        commanded[i] = 10.0 * std::sin(static_cast<double>(i) * 0.01);
        actual[i] = 10.0 * std::sin((static_cast<double>(i) - 2.0) * 0.01);
    }
    const auto error = FollowingErrorOf(commanded, actual, 0.001, {0, 5000});
    EXPECT_EQ(error.samples, LagSamples::kMoving);
    EXPECT_NEAR(*error.lag, 2.0, 0.01);
    const Values still(500, 1.0);
    EXPECT_EQ(FollowingErrorOf(still, still, 0.001, {0, 500}).lag.reason,
              "standstill: the axis does not move");
    EXPECT_FALSE(FollowingErrorOf({}, {}, 0.001, {0, 0}).lag);
    const Values gone(500, kNothing);
    EXPECT_FALSE(FollowingErrorOf(gone, gone, 0.001, {0, 500}).lag);
}

TEST(ContourError, IsTheDistanceFromThePathNotFromTheCycle) {
    Values x_cmd, y_cmd, x, y;
    for (int i = 0; i < 2000; ++i) {
        x_cmd.push_back(0.1 * i);
        y_cmd.push_back(0.05 * i);
        x.push_back(0.1 * (i - 8) - 0.003);  // late along the path, and off it
        y.push_back(0.05 * (i - 8) + 0.006);
    }
    const std::vector<ContourAxis> axes{{x_cmd, x}, {y_cmd, y}};
    const auto figures = ContourFiguresOf(axes, {100, 1900});
    const double off = (0.003 * 0.05 + 0.006 * 0.1) / std::hypot(0.1, 0.05) * 1000.0;
    EXPECT_NEAR(*figures.largest, off, 1e-9);
    EXPECT_NEAR(*figures.rms, off, 1e-9);
    EXPECT_GT(*figures.largest_following, 890.0);
    const auto left = SignedContourErrors(axes, {100, 101});
    EXPECT_NEAR(left[0], off / 1000.0, 1e-12);
    for (std::size_t i = 0; i < y.size(); ++i) {
        y[i] = 2.0 * 0.05 * (static_cast<double>(i) - 8.0) - y[i];
        x[i] = 2.0 * 0.1 * (static_cast<double>(i) - 8.0) - x[i];
    }
    EXPECT_NEAR(SignedContourErrors({axes}, {100, 101})[0], -off / 1000.0, 1e-12);
}

/// Nearest distance over all segments of the path, in the plainest way.
double AllSegments(const std::vector<ContourAxis>& axes, std::size_t i) {
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t j = 0; j + 1 < axes[0].commanded.size(); ++j) {
        double length = 0.0;
        double along = 0.0;
        for (const auto& axis : axes) {
            const double step = axis.commanded[j + 1] - axis.commanded[j];
            length += step * step;
            along += step * (axis.actual[i] - axis.commanded[j]);
        }
        const double foot = length > 0.0 ? std::clamp(along / length, 0.0, 1.0) : 0.0;
        double square = 0.0;
        for (const auto& axis : axes) {
            const double on =
                axis.commanded[j] + foot * (axis.commanded[j + 1] - axis.commanded[j]);
            square += (axis.actual[i] - on) * (axis.actual[i] - on);
        }
        nearest = std::min(nearest, std::sqrt(square));
    }
    return nearest;
}

TEST(ContourError, LooksFurtherWhereTheAxesAreFarBehind) {
    Values x_cmd, y_cmd, x, y, z_cmd, z;
    for (int i = 0; i < 600; ++i) {
        const double now = i * 0.02;
        const double before = (i - 150) * 0.02;  // far more than the reach
        x_cmd.push_back(50.0 * std::cos(now));
        y_cmd.push_back(50.0 * std::sin(now));
        z_cmd.push_back(now);
        x.push_back(50.004 * std::cos(before));
        y.push_back(50.0 * std::sin(before));
        z.push_back(before);
    }
    const std::vector<ContourAxis> axes{{x_cmd, x}, {y_cmd, y}, {z_cmd, z}};
    const auto errors = ContourErrors(axes, {160, 600}, {.reach = 5});
    for (std::size_t i = 160; i < 600; i += 7) {
        EXPECT_NEAR(errors[i - 160], AllSegments(axes, i), 1e-12) << i;
    }
}

TEST(ContourError, AtADwellAndWithMissingValues) {
    Values x_cmd(100, 5.0), y_cmd(100, 5.0);
    Values x(100, 5.003), y(100, 5.004);
    x[40] = kNothing;
    x_cmd[60] = kNothing;
    const std::vector<ContourAxis> axes{{x_cmd, x}, {y_cmd, y}};
    const auto errors = ContourErrors(axes, {0, 100});
    EXPECT_NEAR(errors[0], 0.005, 1e-12);
    EXPECT_TRUE(std::isnan(errors[40]));
    EXPECT_NEAR(errors[60], 0.005, 1e-12);  // other segments are there
    const Values none;
    EXPECT_FALSE(
        ContourFiguresOf(std::vector<ContourAxis>{{none, none}, {none, none}}, {0, 0}).largest);
    EXPECT_EQ(ContourReach(0.00378, 0.001), 15U);
    EXPECT_EQ(ContourReach(0.0, 0.001), 5U);
    EXPECT_EQ(ContourReach(-1.0, 0.001), 5U);
}

TEST(ReversalDwell, IsTheRestBeyondThatOfTheCommand) {
    // The actual value sticks for 12 ms at the upper reversals.
    Values commanded, actual;
    for (int i = 0; i < 4000; ++i) {
        const double phase = std::fmod(i * 0.001, 1.0);
        commanded.push_back(phase < 0.5 ? 10.0 * phase : 10.0 - 10.0 * phase);
        const double late = phase >= 0.5 && phase < 0.512 ? 0.5 : phase;
        actual.push_back(late < 0.5 ? 10.0 * late : 10.0 - 10.0 * late);
    }
    const auto dwells = FindReversalDwells(commanded, actual, 0.001, 0.001);
    ASSERT_GE(dwells.size(), 7U);
    for (const ReversalDwell& dwell : dwells) {
        EXPECT_NEAR(*dwell.dwell, dwell.upper ? 11.0 : 0.0, 1.01) << dwell.place;
        EXPECT_NEAR(dwell.at, dwell.upper ? 5.0 : 0.0, 0.02);
    }
    EXPECT_TRUE(FindReversalDwells(Values(100, 1.0), Values(100, 1.0), 0.001, 0.001).empty());
}

TEST(AxisTest, PairsAreFoundByName) {
    const std::vector<std::string> names{"X_cmd", "X",     "Y_cmd", "Y_fb", "Y",   "Z_cmd",
                                         "A_cmd", "A_act", "A_fb",  "F",    "_cmd"};
    const auto pairs = FindAxisPairs(names);
    ASSERT_EQ(pairs.size(), 3U);
    EXPECT_EQ(pairs[0].actual, "X");
    EXPECT_EQ(pairs[1].actual, "Y_fb");
    EXPECT_EQ(pairs[2].actual, "A_act");
    EXPECT_EQ(pairs[2].axis, "A");
}

TEST(AxisTest, TellsAllOfARecording) {
    const ColumnTable table = LoadTable("recordings/drill_g81_g83_g82");
    AxisSetup setup;
    setup.step.dwell = 0.15;
    const auto result = TestAxis(table.Find("X_cmd"), table.Find("X"), 0.001, setup);
    EXPECT_EQ(result.motion.moves.size(), 15U);
    EXPECT_TRUE(result.following.lag);
    EXPECT_EQ(result.response.reason, "not asked for");
    setup.rotary = true;
    EXPECT_EQ(
        TestAxis(table.Find("X_cmd"), table.Find("X"), 0.001, setup).following.linear_gain.reason,
        "a rotary axis");
}

TEST(AxisTest, SaysWhatCannotBeTold) {
    const Values still(1000, 2.0);
    EXPECT_THAT(TestAxis(still, still, 0.001).notes, Contains(HasSubstr("standstill")));
    EXPECT_EQ(TestAxis(still, still, 0.001).longest_dwell.reason, "no reversals");
    Values gaps = Ramp();
    gaps[900] = kNothing;
    EXPECT_THAT(TestAxis(gaps, Ramp(), 0.001).notes, Contains(HasSubstr("gaps: 1 of 1000")));
    EXPECT_THAT(TestAxis({}, {}, 0.001).notes, Contains(HasSubstr("standstill")));
    const ColumnTable table = LoadTable("axis_move");
    EXPECT_THAT(TestAxis(table.Find("cmd"), table.Find("act"), 0.001).notes, IsEmpty());
}

}  // namespace
}  // namespace wavo::measure

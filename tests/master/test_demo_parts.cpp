// The parts of demo_master that need no viewer: motions, limits and the command line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "master/demo_options.h"
#include "master/demo_run.h"
#include "master/motions.h"
#include "master/recording.h"
#include "master/source_limits.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::vector<double> LineOf(const LineSource& source, std::uint64_t number) {
    std::vector<double> line(source.AxisNames().size());
    source.Line(number, line);
    return line;
}

std::unique_ptr<LineSource> Motion(MotionKind kind, std::uint64_t seed = 1,
                                   const std::vector<std::string>& axes = {}) {
    std::string error;
    auto motion = MakeMotion(kind, axes, 0.001, seed, &error);
    EXPECT_TRUE(motion) << error;
    return motion;
}

// ---- Motions ----

TEST(Motions, CircleStaysNearItsRadiusAndSpikesAtTheReversals) {
    const auto circle = Motion(MotionKind::kCircle);
    EXPECT_THAT(circle->AxisNames(), ElementsAre("X", "Y"));
    EXPECT_EQ(circle->LinesPerRound(), 6283U);
    double largest = 0.0;
    double steepest = 0.0;
    std::vector<double> last = LineOf(*circle, 0);
    for (std::uint64_t n = 1; n < circle->LinesPerRound(); ++n) {
        const std::vector<double> line = LineOf(*circle, n);
        largest = std::max(largest, std::abs(std::hypot(line[0], line[1]) - 50.0));
        steepest = std::max(steepest, std::abs(line[0] - last[0]));
        last = line;
    }
    EXPECT_LT(largest, 0.03);
    EXPECT_GT(largest, 0.005) << "no spike";
    EXPECT_LT(steepest, 0.1);
}

TEST(Motions, RoundsOfTheCircleAreEqual) {
    const auto circle = Motion(MotionKind::kCircle);
    const std::uint64_t round = circle->LinesPerRound();
    EXPECT_EQ(LineOf(*circle, 123), LineOf(*circle, 123 + 1'000'000 * round));
}

TEST(Motions, JogComesBackAndKeepsItsVelocities) {
    const auto jog = Motion(MotionKind::kJog);
    EXPECT_THAT(jog->AxisNames(), ElementsAre("X", "Y", "Z", "C"));
    const double fastest[] = {150.0, 100.0, 60.0, 180.0};
    std::vector<double> reached(4);
    std::vector<double> last = LineOf(*jog, 0);
    EXPECT_THAT(last, ElementsAre(0.0, 0.0, 0.0, 0.0));
    for (std::uint64_t n = 1; n < jog->LinesPerRound(); ++n) {
        const std::vector<double> line = LineOf(*jog, n);
        for (std::size_t i = 0; i < 4; ++i) {
            reached[i] = std::max(reached[i], std::abs(line[i] - last[i]) / 0.001);
        }
        last = line;
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(reached[i], fastest[i], 1e-6);
        EXPECT_NEAR(last[i], 0.0, 1e-9);
    }
}

TEST(Motions, NoiseHasItsSpreadAndDependsOnTheSeedAlone) {
    const auto noise = Motion(MotionKind::kNoise);
    const auto same = Motion(MotionKind::kNoise);
    const auto other = Motion(MotionKind::kNoise, 2);
    double sum = 0.0;
    double squares = 0.0;
    int differing = 0;
    constexpr int kLines = 20000;
    for (std::uint64_t n = 0; n < kLines; ++n) {
        const std::vector<double> line = LineOf(*noise, n);
        EXPECT_EQ(line, LineOf(*same, n));
        differing += line != LineOf(*other, n) ? 1 : 0;
        const double deviation =
            line[0] - 5.0 * std::sin(2.0 * std::numbers::pi * static_cast<double>(n) * 0.001 / 4.0);
        sum += deviation;
        squares += deviation * deviation;
    }
    EXPECT_EQ(differing, kLines);
    EXPECT_NEAR(sum / kLines, 0.0, 0.002);
    EXPECT_NEAR(std::sqrt(squares / kLines), 0.05, 0.002);
}

TEST(Motions, AxesCanBeChosen) {
    const auto jog = Motion(MotionKind::kJog, 1, {"C", "X"});
    EXPECT_THAT(jog->AxisNames(), ElementsAre("C", "X"));
    EXPECT_GT(LineOf(*jog, 500)[1], 0.0);
    EXPECT_EQ(LineOf(*jog, 500)[0], 0.0);
    std::string error;
    EXPECT_EQ(MakeMotion(MotionKind::kCircle, {"Z"}, 0.001, 1, &error), nullptr);
    EXPECT_EQ(error, "the motion has no axis \"Z\"; it has X Y");
}

// ---- Limits ----

TEST(SourceLimits, RoundedUpGivesPlainNumbers) {
    EXPECT_EQ(RoundedUp(0.0), 0.0);
    EXPECT_DOUBLE_EQ(RoundedUp(1.0), 1.0);
    EXPECT_DOUBLE_EQ(RoundedUp(1.1), 2.0);
    EXPECT_DOUBLE_EQ(RoundedUp(2.1), 5.0);
    EXPECT_DOUBLE_EQ(RoundedUp(5.1), 10.0);
    EXPECT_DOUBLE_EQ(RoundedUp(0.03), 0.05);
    EXPECT_DOUBLE_EQ(RoundedUp(120.0), 200.0);
}

TEST(SourceLimits, HoldEveryLineOfTheSource) {
    for (const MotionKind kind : {MotionKind::kCircle, MotionKind::kJog, MotionKind::kNoise}) {
        const auto source = Motion(kind);
        const auto limits = LimitsOf(*source, 0.001);
        ASSERT_EQ(limits.size(), source->AxisNames().size());
        for (std::size_t axis = 0; axis < limits.size(); ++axis) {
            EXPECT_EQ(limits[axis].axis, source->AxisNames()[axis]);
            double velocity = 0.0;
            double last = LineOf(*source, 0)[axis];
            for (std::uint64_t n = 0; n < source->LinesPerRound(); ++n) {
                const double value = LineOf(*source, n)[axis];
                ASSERT_LE(limits[axis].values.lower_limit, value);
                ASSERT_GE(limits[axis].values.upper_limit, value);
                velocity = std::max(velocity, std::abs(value - last) / 0.001);
                last = value;
            }
            EXPECT_GE(limits[axis].values.velocity_limit, velocity);
        }
    }
}

TEST(SourceLimits, KnownAxesHaveTheirMachinesLimits) {
    std::string error;
    const auto recording =
        Recording::Parse("X,A,Q\n0,5,1\n0.1,5,1\n0.2,5,1\n-70,5,1\n", {}, &error);
    const auto still = Recording::Parse("Z,Q\n5,1\n5,1.0625\n", {"Z", "Q"}, &error);
    ASSERT_TRUE(still) << error;
    const auto limits = LimitsOf(*still, 0.001);
    EXPECT_EQ(limits[0].values, (AxisCapabilities{6.0, 4.0, 250.0, 3000.0, 0.001}));
    EXPECT_EQ(limits[1].values.velocity_limit, 100.0) << "62.5 rounded up";
    const auto fast = LimitsOf(*recording, 0.001);
    EXPECT_EQ(fast[0].axis, "X");
    EXPECT_EQ(fast[0].values.velocity_limit, 100000.0) << "beyond the usual 400";
    EXPECT_EQ(fast[0].values.lower_limit, -75.0);
    EXPECT_EQ(fast[0].values.upper_limit, 25.0);
}

// ---- Command line ----

OptionsOutcome Parse(const std::vector<std::string>& arguments, DemoOptions* options,
                     std::string* error) {
    return ParseDemoOptions(arguments, options, error);
}

DemoOptions Accepted(const std::vector<std::string>& arguments) {
    DemoOptions options;
    std::string error;
    EXPECT_EQ(Parse(arguments, &options, &error), OptionsOutcome::kRun) << error;
    return options;
}

std::string Refused(const std::vector<std::string>& arguments) {
    DemoOptions options;
    std::string error;
    EXPECT_EQ(Parse(arguments, &options, &error), OptionsOutcome::kError);
    return error;
}

TEST(DemoOptions, DefaultsPlayTheCircleForEver) {
    const DemoOptions options = Accepted({});
    EXPECT_EQ(options.recording, "");
    EXPECT_EQ(options.motion, MotionKind::kCircle);
    EXPECT_EQ(options.cycle_time, 0.0);
    EXPECT_EQ(options.speed, 1.0);
    EXPECT_FALSE(options.skip_gaps);
    EXPECT_EQ(options.rounds, 0U);
    EXPECT_EQ(options.lines, 0U);
    EXPECT_EQ(options.fifo_lines, 10000U);
    EXPECT_EQ(options.announce_interval, 0.01);
    EXPECT_TRUE(options.publish_limits);
    EXPECT_EQ(options.fault, Fault::kNone);
}

TEST(DemoOptions, EveryOptionIsTaken) {
    const DemoOptions options = Accepted({"--recording",
                                          "a=b.csv",
                                          "--axes=X,Y_cmd",
                                          "--cycle",
                                          "0.0005",
                                          "--loop",
                                          "3",
                                          "--lines",
                                          "600000",
                                          "--fifo-lines",
                                          "2",
                                          "--announce",
                                          "0.25",
                                          "--speed",
                                          "full",
                                          "--wait-viewer",
                                          "--stay",
                                          "--seed",
                                          "9",
                                          "--limits",
                                          "X=-1:2.5,Y_cmd=0:1:20:300",
                                          "--fault",
                                          "never-ready",
                                          "--fault-after",
                                          "0"});
    EXPECT_EQ(options.recording, "a=b.csv");
    EXPECT_THAT(options.axes, ElementsAre("X", "Y_cmd"));
    EXPECT_EQ(options.cycle_time, 0.0005);
    EXPECT_EQ(options.rounds, 3U);
    EXPECT_EQ(options.lines, 600000U);
    EXPECT_EQ(options.fifo_lines, 2U);
    EXPECT_EQ(options.announce_interval, 0.25);
    EXPECT_TRUE(options.full_speed);
    EXPECT_TRUE(options.wait_viewer);
    EXPECT_TRUE(options.stay);
    EXPECT_EQ(options.seed, 9U);
    EXPECT_EQ(options.fault, Fault::kNeverReady);
    EXPECT_EQ(options.fault_after, 0U);
    EXPECT_THAT(options.limits, ElementsAre(AxisLimits{"X", {2.5, -1.0, 0.0, 0.0, 0.001}},
                                            AxisLimits{"Y_cmd", {1.0, 0.0, 20.0, 300.0, 0.001}}));
    EXPECT_EQ(Accepted({"--motion", "jog"}).motion, MotionKind::kJog);
    EXPECT_EQ(Accepted({"--motion", "noise"}).motion, MotionKind::kNoise);
    EXPECT_FALSE(Accepted({"--speed", "cycle"}).full_speed);
    EXPECT_EQ(Accepted({"--speed", "4"}).speed, 4.0);
    EXPECT_FALSE(Accepted({"--speed", "0.25"}).full_speed);
    EXPECT_TRUE(Accepted({"--recording", "a.mcap", "--skip-gaps"}).skip_gaps);
    EXPECT_FALSE(Accepted({"--limits", "none"}).publish_limits);
}

TEST(DemoOptions, TheSpeedIsHowManyLinesComePerCycleTime) {
    DemoOptions options;
    options.cycle_time = 0.002;
    EXPECT_DOUBLE_EQ(TimeOfLines(1000, options).count(), 2.0);
    options.speed = 4.0;
    EXPECT_DOUBLE_EQ(TimeOfLines(1000, options).count(), 0.5);
}

TEST(DemoOptions, WrongArgumentsAreNamed) {
    EXPECT_EQ(Refused({"--bogus"}), "unknown argument \"--bogus\"");
    EXPECT_EQ(Refused({"file.csv"}), "unknown argument \"file.csv\"");
    EXPECT_EQ(Refused({"--stay=1"}), "unknown argument \"--stay=1\"");
    EXPECT_EQ(Refused({"--cycle"}), "--cycle needs a value");
    EXPECT_EQ(Refused({"--recording", ""}), "--recording \"\": no file name");
    for (const char* value : {"0", "-1", "x", "", "nan", "inf", "11", "0.001s"}) {
        EXPECT_EQ(
            Refused({"--cycle", value}),
            std::string("--cycle \"") + value + "\": not a number of seconds from 0.00001 to 10");
    }
    for (const char* value : {"-0.1", "x", "nan", "11"}) {
        EXPECT_EQ(Refused({"--announce", value}), std::string("--announce \"") + value +
                                                      "\": not a number of seconds from 0 to 10");
    }
    EXPECT_THAT(Refused({"--loop", "-1"}), HasSubstr("not a whole number from 0"));
    EXPECT_THAT(Refused({"--lines", "0"}), HasSubstr("not a whole number from 1"));
    EXPECT_EQ(Refused({"--fifo-lines", "1"}),
              "--fifo-lines \"1\": not a whole number from 2 to 100000000");
    EXPECT_EQ(Refused({"--axes", "X,,Y"}), "--axes \"X,,Y\": an axis name is empty");
    EXPECT_EQ(Refused({"--axes", "X,Y,X"}), "--axes \"X,Y,X\": axis X is there twice");
    EXPECT_EQ(Refused({"--motion", "spiral"}),
              "--motion \"spiral\": not one of circle, jog, noise");
    for (const char* value : {"fast", "0", "-1", "1001", "nan", "4x", ""}) {
        EXPECT_EQ(Refused({"--speed", value}),
                  std::string("--speed \"") + value +
                      "\": not one of cycle, full, and no number from 0.001 to 1000");
    }
    EXPECT_EQ(Refused({"--skip-gaps"}), "--skip-gaps needs --recording");
    EXPECT_THAT(Refused({"--fault", "fire"}), HasSubstr("not one of overrun, never-ready, hang"));
    EXPECT_EQ(Refused({"--fault-after", "5"}), "--fault-after needs --fault");
    EXPECT_EQ(Refused({"--motion", "jog", "--recording", "a.csv"}),
              "--recording and --motion exclude each other");
    for (const char* value : {"", "X", "X=1", "=1:2", "X=2:1", "X=1:2:3:4:5", "X=1:b", "X=1:inf"}) {
        EXPECT_EQ(Refused({"--limits", value}),
                  std::string("--limits \"") + value + "\": \"" + value +
                      "\" is not NAME=LOWER:UPPER[:VELOCITY[:ACCELERATION]]");
    }
}

TEST(DemoOptions, HelpNamesEveryOptionAndFault) {
    DemoOptions options;
    std::string error;
    EXPECT_EQ(Parse({"--help"}, &options, &error), OptionsOutcome::kHelp);
    EXPECT_EQ(Parse({"-h"}, &options, &error), OptionsOutcome::kHelp);
    EXPECT_EQ(Parse({"--version"}, &options, &error), OptionsOutcome::kVersion);
    const std::string help = DemoHelp();
    for (const char* word :
         {"--announce",    "--recording",   "--motion",        "--seed",       "--axes",
          "--cycle",       "--loop",        "--lines",         "--fifo-lines", "--speed",
          "--skip-gaps",   "--wait-viewer", "--stay",          "--limits",     "--fault",
          "--fault-after", "--help",        "--version",       "overrun",      "never-ready",
          "hang",          "die",           "garbage-headers", "quit",         "capabilities"}) {
        EXPECT_THAT(help, HasSubstr(word));
    }
}

}  // namespace
}  // namespace wavo::master

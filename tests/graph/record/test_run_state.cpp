#include "graph/record/run_state.h"

#include <gtest/gtest.h>

#include <limits>

namespace wavo {
namespace {

constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

TEST(RunStates, EachHasItsStatusText) {
    EXPECT_STREQ(StatusText(RunState::kRunning), "");
    EXPECT_STREQ(StatusText(RunState::kWaitingForStart), "waiting for start-trigger  ");
    EXPECT_STREQ(StatusText(RunState::kRunningAfterStart), "running after start-trigger  ");
    EXPECT_STREQ(StatusText(RunState::kStoppedAfterStart), "stopped after start-trigger  ");
    EXPECT_STREQ(StatusText(RunState::kWaitingForStop), "running, waiting for stop-trigger  ");
    EXPECT_STREQ(StatusText(RunState::kStoppedAfterStop), "stopped after stop-trigger  ");
}

TEST(RunStates, TriggerTypesDecideTheFirstState) {
    EXPECT_EQ(InitialRunState(TriggerTypeCode::kNone), std::nullopt);
    EXPECT_EQ(InitialRunState(TriggerTypeCode::kStartAbove), RunState::kWaitingForStart);
    EXPECT_EQ(InitialRunState(TriggerTypeCode::kStartBelow), RunState::kWaitingForStart);
    EXPECT_EQ(InitialRunState(TriggerTypeCode::kStopAbove), RunState::kWaitingForStop);
    EXPECT_EQ(InitialRunState(TriggerTypeCode::kStopBelow), RunState::kWaitingForStop);
    EXPECT_EQ(InitialRunState(static_cast<TriggerTypeCode>(9)), std::nullopt);
}

TEST(RunStates, TriggerTypesDecideTheTest) {
    EXPECT_EQ(TestOfTrigger(TriggerTypeCode::kStartAbove), &TestTriggerGreater);
    EXPECT_EQ(TestOfTrigger(TriggerTypeCode::kStartBelow), &TestTriggerLess);
    EXPECT_EQ(TestOfTrigger(TriggerTypeCode::kStopAbove), &TestTriggerGreater);
    EXPECT_EQ(TestOfTrigger(TriggerTypeCode::kStopBelow), &TestTriggerLess);
    EXPECT_EQ(TestOfTrigger(TriggerTypeCode::kNone), nullptr);
    EXPECT_EQ(TestOfTrigger(static_cast<TriggerTypeCode>(0)), nullptr);
}

TEST(TriggerTests, LevelsCountNotCrossings) {
    std::uint64_t index = 0;
    EXPECT_TRUE(TestTriggerGreater({1, 3, 7, 9}, index, 5.0));
    EXPECT_EQ(index, 2U);
    EXPECT_TRUE(TestTriggerGreater({6, 1}, index, 5.0));
    EXPECT_EQ(index, 0U);
    EXPECT_TRUE(TestTriggerLess({9, 7, 3, 1}, index, 5.0));
    EXPECT_EQ(index, 2U);
}

TEST(TriggerTests, TheLimitItselfDoesNotFire) {
    std::uint64_t index = 0;
    EXPECT_FALSE(TestTriggerGreater({5.0}, index, 5.0));
    EXPECT_EQ(index, kNone);
    EXPECT_FALSE(TestTriggerLess({5.0}, index, 5.0));
    EXPECT_EQ(index, kNone);
}

TEST(TriggerTests, NothingAndNaNNeverFire) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::uint64_t index = 0;
    EXPECT_FALSE(TestTriggerGreater({}, index, -1e300));
    EXPECT_FALSE(TestTriggerGreater({nan}, index, 0.0));
    EXPECT_FALSE(TestTriggerLess({nan}, index, 0.0));
    EXPECT_FALSE(TestTriggerLess({1.0}, index, nan));
    EXPECT_EQ(index, kNone);
}

}  // namespace
}  // namespace wavo

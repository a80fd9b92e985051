// Computations in parts: where they pause, what they give and what they throw.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "measure/steps.h"

namespace wavo::measure {
namespace {

Steps<int> Double(int value) {
    co_await Pause{};
    co_return 2 * value;
}

Steps<std::string> Sum(int first, int second, std::vector<std::string>* log) {
    log->push_back("begin");
    const int a = co_await Double(first);
    log->push_back("first");
    const int b = co_await Double(second);
    co_await Pause{};
    co_return std::to_string(a + b);
}

Steps<int> Failing() {
    co_await Pause{};
    throw std::runtime_error("no more memory");
    co_return 0;
}

Steps<int> OfFailing(bool* went_on) {
    const int value = co_await Failing();
    *went_on = true;
    co_return value;
}

Steps<int> InALoop(int rounds) {
    int sum = 0;
    for (int i = 0; i < rounds; ++i) {
        sum += co_await Double(i);
    }
    co_return sum;
}

Steps<int> WithoutPause() {
    co_return 7;
}

TEST(Steps, PauseWhereInnerOnesDo) {
    std::vector<std::string> log;
    auto steps = Sum(1, 2, &log);
    EXPECT_TRUE(log.empty());  // nothing is done before the first step
    EXPECT_TRUE(steps.Step());
    EXPECT_EQ(log, std::vector<std::string>{"begin"});
    EXPECT_TRUE(steps.Step());
    EXPECT_EQ(log.back(), "first");
    EXPECT_TRUE(steps.Step());
    EXPECT_FALSE(steps.Step());
    EXPECT_EQ(steps.Result(), "6");
    EXPECT_FALSE(steps.Step());
    EXPECT_EQ(steps.Result(), "6");
}

TEST(Steps, ComputeInOneGo) {
    std::vector<std::string> log;
    EXPECT_EQ(Sum(3, 4, &log).Compute(), "14");
    EXPECT_EQ(WithoutPause().Compute(), 7);
    EXPECT_EQ(InALoop(30000).Compute(), 29999 * 30000);
}

TEST(Steps, AFaultGoesOutToWhoeverSteps) {
    bool went_on = false;
    auto steps = OfFailing(&went_on);
    EXPECT_TRUE(steps.Step());
    EXPECT_THROW(steps.Step(), std::runtime_error);
    EXPECT_FALSE(went_on);
}

TEST(Steps, CanBeMovedBeforeTheFirstAndDroppedBehindAny) {
    std::vector<std::string> log;
    auto first = Sum(1, 1, &log);
    auto second = std::move(first);
    EXPECT_TRUE(second.Step());
    second = Sum(2, 2, &log);  // what was begun is given up
    EXPECT_EQ(second.Compute(), "8");
}

}  // namespace
}  // namespace wavo::measure

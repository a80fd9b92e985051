// What a value buffer does when there is no memory for one sample more.
#include <gtest/gtest.h>

#include <vector>

#include "expect_errors.h"
#include "failing_memory.h"
#include "graph/values/graph_value.h"

namespace wavo {
namespace {

using testing::ExpectErrorLog;
using testing::FailingMemory;

TEST(SampleRingMemoryTest, PushBackFailsAndChangesNothing) {
    SampleRing ring;
    ring.SetExpectedSize(2);
    ASSERT_TRUE(ring.PushBack(1.0));
    ASSERT_TRUE(ring.PushBack(2.0));
    const FailingMemory failing;
    EXPECT_FALSE(ring.PushBack(3.0));
    EXPECT_EQ(ring.Size(), 2U);
    EXPECT_EQ(ring.Appended(), 2U);
    EXPECT_EQ(ring[0], 1.0);
    EXPECT_EQ(ring[1], 2.0);
}

TEST(GraphValueMemoryTest, GoesOnWithTheCapacityItHas) {
    GraphValue value("X", 0.001, 100.0, 0);
    int set = 0;
    const auto slots = [&value] { return value.Values().Slots().size(); };
    value.SetValue(set++);
    while (value.Values().Size() < slots()) {
        value.SetValue(set++);
    }
    const std::size_t held = slots();
    ASSERT_LT(held, value.Capacity());
    {
        const ExpectErrorLog expected(
            {"GraphValue::SetValue(): out of memory, holding 1024 values"});
        const FailingMemory failing;
        value.EmptyNewValues();
        value.SetValue(set++);
        value.SetValue(set++);
        value.SetValue(set++);
    }
    ASSERT_EQ(held, 1024U);
    EXPECT_EQ(value.Capacity(), held);
    EXPECT_EQ(value.StoredCount(), held);
    EXPECT_EQ(value.Values().Size(), held);
    EXPECT_EQ(value.DroppedCount(), 3.0);
    EXPECT_EQ(value.PushedCount(), static_cast<double>(set));
    EXPECT_EQ(value.Values()[0], 3.0);
    EXPECT_EQ(value.Values()[held - 1], static_cast<double>(set - 1));
}

TEST(GraphValueMemoryTest, NewValuesAreCompleteWhenMemoryEnds) {
    GraphValue value("X", 0.001, 100.0, 0);
    int set = 0;
    do {
        value.SetValue(set++);
    } while (value.Values().Size() < value.Values().Slots().size());
    {
        const ExpectErrorLog expected(
            {"GraphValue::SetValue(): out of memory, holding 1024 values"});
        const FailingMemory failing;
        value.SetValue(set++);
    }
    std::vector<double> out;
    double start = -1.0;
    value.GetNewValues(out, start);
    ASSERT_EQ(out.size(), static_cast<std::size_t>(set));
    EXPECT_EQ(out.front(), 0.0);
    EXPECT_EQ(out.back(), static_cast<double>(set - 1));
    EXPECT_EQ(start, 0.0);
}

TEST(GraphValueMemoryTest, ResetTriesTheWholeCapacityAgain) {
    GraphValue value("X", 0.001, 100.0, 0);
    {
        const ExpectErrorLog expected({"GraphValue::SetValue(): out of memory, holding 0 values"});
        const FailingMemory failing;
        value.SetValue(1.0);
    }
    EXPECT_EQ(value.PushedCount(), 0.0);
    value.Reset();
    EXPECT_EQ(value.Capacity(), 100000U);
    value.SetValue(1.0);
    EXPECT_EQ(value.StoredCount(), 1U);
}

}  // namespace
}  // namespace wavo

#include "graph/values/graph_value_registry.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace wavo {
namespace {

TEST(GraphValueRegistryTest, MakesABufferForAnUnknownStream) {
    GraphValueRegistry registry;
    const auto result = registry.GetGraphValueFifo("X", 0.004, 2.0, 1);
    ASSERT_NE(result.value, nullptr);
    EXPECT_EQ(result.reason, nullptr);
    EXPECT_EQ(result.value->Name(), "X");
    EXPECT_EQ(result.value->CycleTime(), 0.004);
    EXPECT_EQ(result.value->TimeRange(), 2.0);
    EXPECT_EQ(result.value->DerivationOrder(), 1);
    EXPECT_EQ(result.value->Capacity(), 500U);
    EXPECT_TRUE(result.value->Enabled());
}

TEST(GraphValueRegistryTest, SharesByExactNameAndOrder) {
    GraphValueRegistry registry;
    GraphValue* x = registry.GetGraphValueFifo("X", 0.004, 2.0, 0).value;
    EXPECT_EQ(registry.GetGraphValueFifo("X", 0.004, 2.0, 0).value, x);
    EXPECT_NE(registry.GetGraphValueFifo("X", 0.004, 2.0, 1).value, x);
    EXPECT_NE(registry.GetGraphValueFifo("x", 0.004, 2.0, 0).value, x);
    EXPECT_NE(registry.GetGraphValueFifo("X ", 0.004, 2.0, 0).value, x);
    EXPECT_NE(registry.GetGraphValueFifo(std::string("X\0", 2), 0.004, 2.0, 0).value, x);
    EXPECT_EQ(registry.Values().size(), 5U);
}

TEST(GraphValueRegistryTest, BuffersKeepTheirAddresses) {
    GraphValueRegistry registry;
    GraphValue* first = registry.GetGraphValueFifo("0", 0.004, 2.0, 0).value;
    for (int i = 1; i < 1000; ++i) {
        ASSERT_NE(registry.GetGraphValueFifo(std::to_string(i), 0.004, 2.0, 0).value, nullptr);
    }
    EXPECT_EQ(registry.GetGraphValueFifo("0", 0.004, 2.0, 0).value, first);
    registry.Clear();
    EXPECT_TRUE(registry.Values().empty());
}

TEST(GraphValueRegistryTest, OtherCycleTimesAreRefusedWithAReason) {
    struct Row {
        double cycle_time;
        bool served;
    };
    const Row rows[] = {
        {0.004, true},     {0.0040009, true}, {0.0039991, true},
        {0.004002, false}, {0.008, false},    {0.003998, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.cycle_time);
        GraphValueRegistry registry;
        GraphValue* held = registry.GetGraphValueFifo("X", 0.004, 2.0, 0).value;
        held->SetValue(1.0);
        const auto result = registry.GetGraphValueFifo("X", row.cycle_time, 5.0, 0);
        if (row.served) {
            EXPECT_EQ(result.value, held);
            EXPECT_EQ(result.reason, nullptr);
        } else {
            EXPECT_EQ(result.value, nullptr);
            EXPECT_STREQ(result.reason, "prg. eror can not work with different cycl. times");
            EXPECT_EQ(held->TimeRange(), 2.0);
        }
        EXPECT_EQ(held->CycleTime(), 0.004);
        EXPECT_EQ(registry.Values().size(), 1U);
    }
}

TEST(GraphValueRegistryTest, ADifferenceOfExactlyTheToleranceIsRefused) {
    GraphValueRegistry registry;
    ASSERT_NE(registry.GetGraphValueFifo("X", 1e-6, 1.0, 0).value, nullptr);
    EXPECT_EQ(registry.GetGraphValueFifo("X", 2e-6, 1.0, 0).value, nullptr);
}

TEST(GraphValueRegistryTest, AShorterOrEqualRangeReturnsTheBufferUnchanged) {
    for (const double range : {2.0, 1.0, 0.0}) {
        GraphValueRegistry registry;
        GraphValue* held = registry.GetGraphValueFifo("X", 0.004, 2.0, 0).value;
        held->SetValue(3.0);
        EXPECT_EQ(registry.GetGraphValueFifo("X", 0.004, range, 0).value, held);
        EXPECT_EQ(held->TimeRange(), 2.0);
        EXPECT_EQ(held->Capacity(), 500U);
        EXPECT_EQ(held->NewCount(), 1U);
    }
}

TEST(GraphValueRegistryTest, ALongerRangeKeepsSamplesAndCounters) {
    GraphValueRegistry registry;
    GraphValue* held = registry.GetGraphValueFifo("X", 0.004, 2.0, 1).value;
    for (int i = 0; i < 700; ++i) {
        held->SetValue(i * i);
        if (i % 50 == 0) {
            held->EmptyNewValues();
        }
    }
    const std::uint64_t stored = held->StoredCount();
    const double dropped = held->DroppedCount();
    const double pushed = held->PushedCount();
    const double total = held->TotalCount();
    std::vector<double> before;
    CopyOut(held->Values(), before, 0, held->Values().Size());
    ASSERT_EQ(stored, 500U);
    ASSERT_EQ(dropped, 200.0);

    EXPECT_EQ(registry.GetGraphValueFifo("X", 0.004, 5.0, 1).value, held);
    EXPECT_EQ(held->TimeRange(), 5.0);
    EXPECT_EQ(held->Capacity(), 1250U);
    EXPECT_EQ(held->StoredCount(), stored);
    EXPECT_EQ(held->DroppedCount(), dropped);
    EXPECT_EQ(held->PushedCount(), pushed);
    EXPECT_EQ(held->TotalCount(), total);
    std::vector<double> after;
    CopyOut(held->Values(), after, 0, held->Values().Size());
    EXPECT_EQ(after, before);
    EXPECT_EQ(held->NewCount(), 0U);
    EXPECT_EQ(held->FirstNewIndex(), 0.0);

    // The derivation starts again: its history went with the growing.
    held->SetValue(5.0);
    EXPECT_EQ(held->Values()[500], 0.0);
    EXPECT_EQ(held->FirstNewIndex(), 700.0);
    held->SetValue(6.0);
    EXPECT_EQ(held->Values()[501], 1.0 / 0.004);
    EXPECT_EQ(held->StoredCount(), 502U);
    EXPECT_EQ(held->DroppedCount(), 200.0);
}

}  // namespace
}  // namespace wavo

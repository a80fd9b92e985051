// The search of a trigger in the past of a stream, against looking at each value.
#include "graph/values/trigger_test.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "graph/values/ring_history.h"

namespace wavo {
namespace {

constexpr std::int64_t kFirstSearched = 1000;

GraphValue Held(const std::vector<double>& samples) {
    GraphValue value("X", 0.001, static_cast<double>(samples.size() + 1) * 0.001, 0);
    value.ExpectLine(kFirstSearched);
    for (const double sample : samples) {
        value.SetValue(sample);
    }
    return value;
}

std::optional<std::int64_t> Looked(const std::vector<double>& samples, const LineRange& lines,
                                   TriggerSide side, double limit) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::int64_t line = kFirstSearched + static_cast<std::int64_t>(i);
        if (line >= lines.begin && line < lines.end && IsBeyond(samples[i], side, limit)) {
            return line;
        }
    }
    return std::nullopt;
}

TEST(TriggerSearch, FindsTheLineThatLookingAtEachFinds) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (const std::size_t count : {1U, 255U, 256U, 257U, 70000U}) {
        std::vector<double> samples(count);
        for (double& sample : samples) {
            sample = random() % 50 == 0 ? std::numeric_limits<double>::quiet_NaN() : value(random);
        }
        const GraphValue held = Held(samples);
        RingHistory history(held);
        const auto end = kFirstSearched + static_cast<std::int64_t>(count);
        for (const double limit : {-2.0, -1.0, 0.0, 0.99, 0.9999, 0.99999, 2.0}) {
            for (const TriggerSide side : {TriggerSide::kAbove, TriggerSide::kBelow}) {
                for (const LineRange lines : {LineRange{0, end + 10}, LineRange{end / 2, end - 1},
                                              LineRange{end, end + 5}, LineRange{end, 0}}) {
                    const LineSearch found = FirstLineBeyond(history, lines, side, limit);
                    EXPECT_EQ(found.answer, HistoryAnswer::kAll);
                    EXPECT_EQ(found.line, Looked(samples, lines, side, limit))
                        << count << " values, limit " << limit;
                }
            }
        }
    }
}

TEST(TriggerSearch, InfiniteValuesFireAndLevelsCount) {
    std::vector<double> samples(5000, 3.0);
    samples[4000] = std::numeric_limits<double>::infinity();
    const GraphValue held = Held(samples);
    RingHistory history(held);
    const LineRange all = history.Lines();
    EXPECT_EQ(FirstLineBeyond(history, all, TriggerSide::kAbove, 3.0).line, kFirstSearched + 4000);
    EXPECT_EQ(FirstLineBeyond(history, all, TriggerSide::kAbove, 2.0).line, kFirstSearched);
}

/// Has its values, but not yet.
class SlowHistory final : public History {
 public:
    explicit SlowHistory(History& behind) : m_behind(behind) {}

    [[nodiscard]] LineRange Lines() const override { return m_behind.Lines(); }
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override {
        row.Reset(bounds.size() - 1);
        return columns_loaded ? m_behind.Columns(bounds, row) : HistoryAnswer::kNotLoaded;
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override {
        return values_loaded ? m_behind.Values(first, values) : HistoryAnswer::kNotLoaded;
    }
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override {
        return m_behind.Sums(lines, sums);
    }

    bool columns_loaded = false;
    bool values_loaded = false;

 private:
    History& m_behind;
};

TEST(TriggerSearch, SaysWhenNotAllIsThereYet) {
    std::vector<double> samples(5000, 0.0);
    samples[4321] = 1.0;
    const GraphValue held = Held(samples);
    RingHistory ring(held);
    SlowHistory history(ring);
    const auto search = [&] {
        return FirstLineBeyond(history, history.Lines(), TriggerSide::kAbove, 0.5);
    };
    EXPECT_EQ(search().answer, HistoryAnswer::kNotLoaded);
    history.columns_loaded = true;
    EXPECT_EQ(search().answer, HistoryAnswer::kNotLoaded);
    EXPECT_EQ(search().line, std::nullopt);
    history.values_loaded = true;
    EXPECT_EQ(search().answer, HistoryAnswer::kAll);
    EXPECT_EQ(search().line, kFirstSearched + 4321);
}

}  // namespace
}  // namespace wavo

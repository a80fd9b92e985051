// The finite extremes of values with infinite ones among them, however many these are.
#include "graph/draw/curve/finite_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "graph/values/graph_value.h"
#include "graph/values/ring_history.h"
#include "special_values.h"

namespace wavo {
namespace {

constexpr std::int64_t kBlock = 64;

/// Values of which blocks are known from far, and which may be looked at so many times.
class BlockHistory : public History {
 public:
    explicit BlockHistory(std::vector<double> values) : m_values(std::move(values)) {}

    LineRange Lines() const override { return {0, static_cast<std::int64_t>(m_values.size())}; }
    HistoryAnswer Columns(std::span<const std::int64_t>, ColumnRow&) override {
        ADD_FAILURE() << "reads more than it may";
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override {
        std::copy_n(m_values.begin() + first, values.size(), values.begin());
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }
    bool Outline(std::span<const std::int64_t> bounds, std::span<ColumnOutline> columns) override {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            columns[i] = {};
            const std::int64_t begin = bounds[i] / kBlock * kBlock;
            const std::int64_t end = (bounds[i + 1] + kBlock - 1) / kBlock * kBlock;
            if (bounds[i] < bounds[i + 1]) {
                Take({begin, end}, columns[i].possible_minimum, columns[i].possible_maximum);
                Take({begin + kBlock, end - kBlock}, columns[i].certain_minimum,
                     columns[i].certain_maximum);
            }
        }
        return true;
    }
    HistoryAnswer LookCloser(const LineRange& lines, ColumnOutline& column) override {
        if (looks == 0) {
            return HistoryAnswer::kNotLoaded;
        }
        --looks;
        Take(lines, column.possible_minimum, column.possible_maximum);
        Take(lines, column.certain_minimum, column.certain_maximum);
        column.closeness = Closeness::kExact;
        return HistoryAnswer::kAll;
    }

    [[nodiscard]] std::uint64_t Version() const override { return version; }
    [[nodiscard]] std::uint64_t Losses() const override { return losses; }

    int looks = 0;
    std::uint64_t version = 1;
    std::uint64_t losses = 0;

 private:
    void Take(const LineRange& lines, double& minimum, double& maximum) const {
        minimum = ColumnOutline::kNone;
        maximum = -ColumnOutline::kNone;
        const auto size = static_cast<std::int64_t>(m_values.size());
        for (std::int64_t i = lines.begin; i < std::min(lines.end, size); ++i) {
            minimum = std::min(minimum, m_values[static_cast<std::size_t>(i)]);
            maximum = std::max(maximum, m_values[static_cast<std::size_t>(i)]);
        }
    }

    std::vector<double> m_values;
};

/// Rising values, one in `distance` of them infinite; the finite extremes stand near the begin.
std::vector<double> Values(std::size_t count, std::size_t distance) {
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double infinite = i / distance % 2 == 0 ? kInf : -kInf;
        values[i] = i % distance == 7 ? infinite : static_cast<double>(i % 100);
    }
    values[3] = -50.0;
    values[5] = 1000.0;
    return values;
}

TEST(FiniteSearch, FindsTheExtremesOfABufferAmongAnyNumberOfInfiniteValues) {
    for (const std::size_t distance : {8U, 50U, 5000U}) {
        const std::vector<double> values = Values(600000, distance);
        GraphValue value("X", 0.001, 600.0, 0);
        value.ExpectLine(0);
        value.SetValues(values.data(), values.size(), 1);
        RingHistory history(value);
        FiniteSearch search(history);
        ASSERT_TRUE(search.GoOn(history.Lines()));
        EXPECT_EQ(search.Found().minimum, -50.0) << distance;
        EXPECT_EQ(search.Found().maximum, 1000.0) << distance;
    }
}

TEST(FiniteSearch, GoesOnWhereItWasUntilAllIsFound) {
    BlockHistory history(Values(100000, 50));
    FiniteSearch search(history);
    int rounds = 0;
    for (bool is_done = false; !is_done; ++rounds) {
        ASSERT_LT(rounds, 2000);
        history.looks = 20;
        is_done = search.GoOn(history.Lines());
    }
    EXPECT_GT(rounds, 50);
    EXPECT_EQ(search.Found().minimum, -50.0);
    EXPECT_EQ(search.Found().maximum, 1000.0);
    // What is known is not looked at again.
    history.looks = 0;
    EXPECT_TRUE(search.GoOn(history.Lines()));
    // Of other lines nothing is known.
    EXPECT_FALSE(search.GoOn({10, 90000}));
    history.looks = 1000000;
    EXPECT_TRUE(search.GoOn({10, 90000}));
    EXPECT_EQ(search.Found().minimum, 0.0);
    EXPECT_EQ(search.Found().maximum, 99.0);
}

TEST(FiniteSearch, KeepsWhatItFoundWhereLinesComeAlone) {
    BlockHistory history(Values(100000, 50));
    FiniteSearch search(history);
    const LineRange lines{0, 90000};
    history.looks = 1000000;
    ASSERT_TRUE(search.GoOn(lines));
    history.looks = 0;
    ++history.version;
    EXPECT_TRUE(search.GoOn(lines)) << "lines have come";
    ++history.version;
    ++history.losses;
    EXPECT_FALSE(search.GoOn(lines)) << "lines are gone";
}

TEST(FiniteSearch, FindsNothingWhereNothingIsFinite) {
    BlockHistory history(std::vector<double>(1000, kInf));
    history.looks = 1000;
    FiniteSearch search(history);
    EXPECT_TRUE(search.GoOn(history.Lines()));
    EXPECT_TRUE(search.Found().IsEmpty());
}

}  // namespace
}  // namespace wavo

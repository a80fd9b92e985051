// The past of computed axes against plain loops over all lines.
#include "computed/computed_streams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "graph/values/missing_value.h"
#include "source/derivation.h"
#include "special_values.h"

namespace wavo::computed {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNan;
using ::testing::Le;

constexpr double kPastCycle = 0.002;

/// The past of an axis: values of lines from a number on, NoSample() for those that are not there.
class Recorded : public History {
 public:
    [[nodiscard]] LineRange Lines() const override {
        return {first, first + static_cast<std::int64_t>(values.size())};
    }
    HistoryAnswer Values(std::int64_t from, std::span<double> out) override {
        lines_read += static_cast<std::int64_t>(out.size());
        for (std::size_t i = 0; i < out.size(); ++i) {
            const std::int64_t at = from + static_cast<std::int64_t>(i) - first;
            const bool is_held = at >= 0 && at < static_cast<std::int64_t>(values.size());
            out[i] = is_held ? values[static_cast<std::size_t>(at)] : NoSample();
        }
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Columns(std::span<const std::int64_t>, ColumnRow&) override {
        ADD_FAILURE() << "not to be asked";
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }
    [[nodiscard]] std::uint64_t Version() const override { return version; }

    std::int64_t first = 0;
    std::vector<double> values;
    std::uint64_t version = 1;
    std::int64_t lines_read = 0;
};

/// A machine of axes X and Y with gaps, and what is computed of them.
class PastOfComputed : public ::testing::Test {
 protected:
    void Fill(std::size_t lines, std::int64_t first = 100, std::uint64_t seed = 1) {
        std::mt19937_64 random(seed);
        for (Recorded& axis : m_axes) {
            axis.first = first;
            axis.values.clear();
        }
        for (std::size_t i = 0; i < lines; ++i) {
            const bool is_gap = i % 5000 >= 3000 && i % 5000 < 3010;
            for (Recorded& axis : m_axes) {
                const auto value = static_cast<double>(random() % 2001) / 100.0 - 10.0;
                const bool is_odd = random() % 997 == 0;
                axis.values.push_back(is_gap ? NoSample() : is_odd ? kNaN : value);
            }
        }
    }
    void Define(const std::vector<ComputedAxis>& axes) {
        ComputedStreams::Origin origin;
        origin.axis = [this](std::size_t axis) { return &m_axes[axis]; };
        origin.cycle_time = kPastCycle;
        origin.losses = [this] { return m_losses; };
        origin.has_lines = [this](const LineRange& lines) {
            const std::int64_t begin = std::max<std::int64_t>(lines.begin - m_axes[0].first, 0);
            const std::int64_t end = std::min(lines.end, m_axes[0].Lines().end) - m_axes[0].first;
            const auto first = m_axes[0].values.begin();
            return begin < end && !std::all_of(first + begin, first + end, IsNoSample);
        };
        origin.may_compute = [this] { return m_budget > 0 && m_budget-- > 0; };
        m_streams = std::make_unique<ComputedStreams>(
            ComputedProgram(axes, std::vector<std::string>{"X", "Y"}), origin);
    }
    History& Stream(const std::string& name, std::int32_t order = 0) {
        return m_streams->StreamOf(*m_streams->Program().Find(name), order);
    }
    [[nodiscard]] double X(std::int64_t line) { return At(0, line); }
    [[nodiscard]] double Y(std::int64_t line) { return At(1, line); }
    double At(std::size_t axis, std::int64_t line) {
        double value = 0.0;
        m_axes[axis].Values(line, {&value, 1});
        return value;
    }

    Recorded m_axes[2];
    std::uint64_t m_losses = 0;
    int m_budget = 1 << 30;
    std::unique_ptr<ComputedStreams> m_streams;
};

TEST_F(PastOfComputed, AGapIsNotComputed) {
    Fill(12000);
    for (Recorded& axis : m_axes) {
        std::fill(axis.values.begin() + 2000, axis.values.begin() + 10000, NoSample());
    }
    Define({{"e", "X - Y", ""}});
    // Of three blocks of 4096 lines the second one lies in the gap.
    m_budget = 2;
    History& stream = Stream("e");
    const std::int64_t bounds[] = {100, 12100};
    ColumnOutline all;
    ASSERT_TRUE(stream.Outline(bounds, {&all, 1}));
    EXPECT_FALSE(all.IsExact());
    EXPECT_EQ(stream.LookCloser({100, 12100}, all), HistoryAnswer::kAll);
    EXPECT_TRUE(all.IsExact());
    EXPECT_TRUE(all.missing);
    EXPECT_EQ(m_budget, 0);
    const std::int64_t in_gap[] = {4096, 5000, 8192};
    ColumnOutline parts[2];
    ASSERT_TRUE(stream.Outline(in_gap, parts));
    for (const ColumnOutline& part : parts) {
        EXPECT_TRUE(part.IsExact()) << "there is nothing";
        EXPECT_FALSE(part.HasExtremes());
    }
    std::vector<double> values(904);
    EXPECT_EQ(stream.ValuesToDraw(4096, values), HistoryAnswer::kAll);
    EXPECT_TRUE(std::ranges::all_of(values, IsNoSample));
}

TEST_F(PastOfComputed, HasTheValuesOfALoop) {
    Fill(12000);
    Define({{"e", "X - Y", ""}, {"v", "hypot(d(X), d(Y))", ""}, {"a", "d(v) + prev(e)", ""}});
    EXPECT_EQ(Stream("e").Lines(), (LineRange{100, 12100}));
    std::vector<double> e(12000);
    std::vector<double> v(12000);
    std::vector<double> a(12000);
    Stream("e").Values(100, e);
    Stream("v").Values(100, v);
    Stream("a").Values(100, a);
    const auto rate = [](double now, double before) { return (now - before) / kPastCycle; };
    const auto speed = [&](std::int64_t line) {
        return std::hypot(rate(X(line), X(line - 1)), rate(Y(line), Y(line - 1)));
    };
    const auto expect = [](double value, double wanted, std::int64_t line) {
        ASSERT_EQ(std::isnan(value), std::isnan(wanted)) << line;
        ASSERT_TRUE(std::isnan(wanted) || value == wanted) << line << " " << value << " " << wanted;
    };
    for (std::int64_t line = 100; line < 12100; ++line) {
        const auto at = static_cast<std::size_t>(line - 100);
        expect(e[at], X(line) - Y(line), line);
        expect(v[at], speed(line), line);
        expect(a[at], rate(speed(line), speed(line - 1)) + (X(line - 1) - Y(line - 1)), line);
        ASSERT_EQ(IsNoSample(e[at]), IsNoSample(X(line))) << "a line that is not there";
    }
}

TEST_F(PastOfComputed, IsDerivedLikeRecordedAxes) {
    Fill(9000);
    Define({{"x", "X", ""}, {"five", "5", ""}});
    for (const std::int32_t order : {1, 2, 3}) {
        std::vector<double> values(9000);
        Stream("x", order).Values(100, values);
        for (std::int64_t line = 100; line < 9100; ++line) {
            std::vector<double> raw;
            for (std::int64_t i = line - order; i <= line; ++i) {
                raw.push_back(X(i));
            }
            const bool is_there = std::ranges::none_of(raw, IsNoSample);
            const double wanted =
                is_there ? Derive(raw, DerivationDivisor(kPastCycle, order)) : NoSample();
            const double value = values[static_cast<std::size_t>(line - 100)];
            ASSERT_EQ(IsNoSample(value), !is_there) << line;
            ASSERT_TRUE(std::isnan(wanted) ? std::isnan(value) : value == wanted) << line;
        }
    }
    std::vector<double> five(9002);
    Stream("five").Values(99, five);
    EXPECT_TRUE(IsNoSample(five.front()));
    EXPECT_TRUE(IsNoSample(five.back()));
    EXPECT_EQ(five[1], 5.0);
    EXPECT_TRUE(IsNoSample(five[3001])) << "nor has a number a value where there is no line";
}

TEST_F(PastOfComputed, AnswersForColumnsWhatItsValuesAre) {
    Fill(30000);
    Define({{"v", "d(X) * Y", ""}});
    History& stream = Stream("v", 1);
    std::mt19937_64 random(3);
    std::vector<double> all(30200);
    stream.Values(0, all);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::int64_t> bounds;
        for (int i = 0; i < 6; ++i) {
            bounds.push_back(static_cast<std::int64_t>(random() % 30200));
        }
        std::ranges::sort(bounds);
        ColumnRow row;
        stream.Columns(bounds, row);
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
            double least = kInf;
            double most = -kInf;
            double first = kNaN;
            double last = kNaN;
            bool missing = false;
            for (std::int64_t line = bounds[i]; line < bounds[i + 1]; ++line) {
                const double value = all[static_cast<std::size_t>(line)];
                if (std::isnan(value)) {
                    missing = true;
                    continue;
                }
                least = std::min(least, value);
                most = std::max(most, value);
                first = std::isnan(first) ? value : first;
                last = value;
            }
            ASSERT_EQ(row.minimum[i], least);
            ASSERT_EQ(row.maximum[i], most);
            ASSERT_EQ(row.missing[i] != 0, missing);
            ASSERT_TRUE(std::isnan(first) ? std::isnan(row.first[i]) : row.first[i] == first);
            ASSERT_TRUE(std::isnan(last) ? std::isnan(row.last[i]) : row.last[i] == last);
        }
    }
    HistorySums sums;
    stream.Sums({5000, 25000}, sums);
    const HistorySums wanted = HistorySums::Of(std::span(all).subspan(5000, 20000));
    EXPECT_EQ(sums.count, wanted.count);
    EXPECT_NEAR(sums.sum, wanted.sum, 1e-9 * wanted.sum_of_squares);
    EXPECT_NEAR(sums.sum_of_squares, wanted.sum_of_squares, 1e-9 * wanted.sum_of_squares);
}

TEST_F(PastOfComputed, IsLookedAtAsFarAsADrawingMay) {
    Fill(40000);
    Define({{"e", "X - Y", ""}});
    History& stream = Stream("e");
    const std::vector<std::int64_t> bounds{100, 20000, 40100};
    std::vector<ColumnOutline> columns(2);
    ASSERT_TRUE(stream.Outline(bounds, columns));
    EXPECT_TRUE(columns[0].missing);
    EXPECT_GT(columns[0].possible_minimum, columns[0].possible_maximum) << "nothing is known";
    EXPECT_EQ(m_axes[0].lines_read, 0) << "nor was anything read";

    m_budget = 2;
    int drawings = 1;
    while (stream.LookCloser({100, 20000}, columns[0]) == HistoryAnswer::kNotLoaded) {
        EXPECT_EQ(m_budget, 0);
        EXPECT_FALSE(columns[0].IsExact());
        m_budget = 2;
        ++drawings;
    }
    EXPECT_EQ(drawings, 3) << "five blocks";
    EXPECT_TRUE(columns[0].IsExact());
    ColumnRow row;
    stream.Columns(std::vector<std::int64_t>{100, 20000}, row);
    EXPECT_EQ(columns[0].certain_minimum, row.minimum[0]);
    EXPECT_EQ(columns[0].possible_maximum, row.maximum[0]);
    EXPECT_EQ(columns[0].first, row.first[0]);
    EXPECT_EQ(columns[0].last, row.last[0]);

    const std::int64_t read = m_axes[0].lines_read;
    ASSERT_TRUE(stream.Outline(bounds, columns));
    EXPECT_LE(columns[0].possible_minimum, row.minimum[0]) << "now it is known";
    EXPECT_GE(columns[0].certain_minimum, row.minimum[0]);
    EXPECT_EQ(m_axes[0].lines_read, read);
}

TEST_F(PastOfComputed, ComputesNothingTwiceThatItHasRoomFor) {
    Fill(40000);
    Define({{"e", "X - Y", ""}});
    History& stream = Stream("e");
    ColumnRow row;
    stream.Columns(std::vector<std::int64_t>{0, 10000, 30000, 40100}, row);
    const std::int64_t read = m_axes[0].lines_read;
    EXPECT_THAT(read, Le(40000 + 2 * ComputedStreams::kBlockLines));
    std::vector<double> values(40000);
    stream.Values(100, values);
    stream.Columns(std::vector<std::int64_t>{0, 20000, 40100}, row);
    EXPECT_EQ(m_axes[0].lines_read, read);
    m_streams->ForgetValues();
    stream.Columns(std::vector<std::int64_t>{4096, 36864}, row);
    EXPECT_EQ(m_axes[0].lines_read, read) << "extremes are known still";
}

TEST_F(PastOfComputed, TakesInLinesThatCome) {
    Fill(10000);
    Define({{"e", "X - prev(Y)", ""}});
    std::vector<double> before(10000);
    Stream("e").Values(100, before);
    const std::int64_t read = m_axes[0].lines_read;
    for (Recorded& axis : m_axes) {
        axis.values.insert(axis.values.end(), {7.0, 9.0});
        ++axis.version;
    }
    std::vector<double> after(3);
    Stream("e").Values(10100, after);
    EXPECT_THAT(after, ElementsAre(7.0 - Y(10099), 2.0, IsNan()));
    EXPECT_EQ(Stream("e").Lines().end, 10102);
    EXPECT_THAT(m_axes[0].lines_read - read, Le(ComputedStreams::kBlockLines + 1))
        << "only the last block anew";
}

TEST_F(PastOfComputed, ForgetsLinesThatAreLost) {
    Fill(10000);
    Define({{"e", "X", ""}});
    ColumnRow row;
    Stream("e").Columns(std::vector<std::int64_t>{200, 300}, row);
    EXPECT_EQ(row.missing[0], 0);
    std::fill_n(m_axes[0].values.begin() + 150, 5, NoSample());
    for (Recorded& axis : m_axes) {
        ++axis.version;
    }
    ++m_losses;
    Stream("e").Columns(std::vector<std::int64_t>{200, 300}, row);
    EXPECT_EQ(row.missing[0], 1);
}

TEST_F(PastOfComputed, OfAxesWithoutValuesIsMissing) {
    Fill(100);
    Define({{"q", "Q + X", ""}, {"bad", "X +", ""}});
    for (const char* name : {"q", "bad"}) {
        std::vector<double> values(3, 0.0);
        Stream(name).Values(100, values);
        EXPECT_THAT(values, ElementsAre(IsNan(), IsNan(), IsNan()));
        ColumnRow row;
        Stream(name, 2).Columns(std::vector<std::int64_t>{100, 200}, row);
        EXPECT_GT(row.minimum[0], row.maximum[0]);
        EXPECT_EQ(row.missing[0], 1);
    }
}

TEST_F(PastOfComputed, IsNothingOfNothing) {
    Fill(0, 50);
    Define({{"e", "X", ""}});
    EXPECT_EQ(Stream("e").Lines().Count(), 0);
    std::vector<double> values(2, 0.0);
    Stream("e").Values(49, values);
    EXPECT_THAT(values, ElementsAre(IsNan(), IsNan()));
    ColumnRow row;
    Stream("e").Columns(std::vector<std::int64_t>{0, 100}, row);
    EXPECT_EQ(row.missing[0], 1);
    std::vector<ColumnOutline> columns(1);
    EXPECT_TRUE(Stream("e").Outline(std::vector<std::int64_t>{0, 100}, columns));
    EXPECT_EQ(Stream("e").LookCloser({0, 100}, columns[0]), HistoryAnswer::kAll);
    EXPECT_TRUE(columns[0].missing);
}

}  // namespace
}  // namespace wavo::computed

// The past of a stream, asked by rows of columns, against looking at each sample.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <random>

#include "graph/values/missing_value.h"
#include "graph/values/ring_history.h"

namespace wavo {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr double kHistoryCycle = 0.001;

/// A stream and what it was given, by lines.
struct HeldStream {
    explicit HeldStream(double time_range = 1.0) : value("X", kHistoryCycle, time_range, 0) {}

    void Take(std::int64_t line, const std::vector<double>& samples) {
        value.ExpectLine(line);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            value.SetValue(samples[i]);
            given[line + static_cast<std::int64_t>(i)] = samples[i];
        }
        value.EmptyNewValues();
        while (given.size() > value.Values().Size()) {
            given.erase(given.begin());
        }
    }

    GraphValue value;
    std::map<std::int64_t, double> given;  ///< what is held
};

/// What the row says of a column, found by looking at each line.
struct Looked {
    std::optional<double> first, last;
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
    bool missing = false;
};

Looked Look(const HeldStream& stream, std::int64_t begin, std::int64_t end) {
    Looked looked;
    looked.missing = begin >= end;  // a column of no lines has no value
    for (std::int64_t line = begin; line < end; ++line) {
        const auto found = stream.given.find(line);
        if (found == stream.given.end() || std::isnan(found->second)) {
            looked.missing = true;
            continue;
        }
        looked.first = looked.first ? looked.first : found->second;
        looked.last = found->second;
        looked.minimum = std::min(looked.minimum, found->second);
        looked.maximum = std::max(looked.maximum, found->second);
    }
    return looked;
}

void ExpectColumns(HeldStream& stream, RingHistory& history,
                   const std::vector<std::int64_t>& bounds) {
    ColumnRow row;
    ASSERT_EQ(history.Columns(bounds, row), HistoryAnswer::kAll);
    ASSERT_EQ(row.first.size(), bounds.size() - 1);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
        SCOPED_TRACE(std::to_string(bounds[i]) + " to " + std::to_string(bounds[i + 1]));
        const Looked looked = Look(stream, bounds[i], bounds[i + 1]);
        EXPECT_EQ(row.minimum[i], looked.minimum);
        EXPECT_EQ(row.maximum[i], looked.maximum);
        if (bounds[i] < bounds[i + 1]) {
            EXPECT_EQ(row.missing[i] != 0, looked.missing);
        }
        ASSERT_EQ(std::isnan(row.first[i]), !looked.first.has_value());
        if (looked.first) {
            EXPECT_EQ(row.first[i], *looked.first);
            EXPECT_EQ(row.last[i], *looked.last);
        }
    }
}

TEST(RingHistory, OfAStreamWithoutSamplesIsEmpty) {
    HeldStream stream;
    RingHistory history(stream.value);
    EXPECT_EQ(history.Lines(), LineRange());
    ColumnRow row;
    history.Columns(std::vector<std::int64_t>{0, 10}, row);
    EXPECT_THAT(row.missing, ElementsAre(1));
    EXPECT_GT(row.minimum[0], row.maximum[0]);
    history.Columns({}, row);
    EXPECT_EQ(row.first.size(), 0U);
    HistorySums sums;
    history.Sums({0, 100}, sums);
    EXPECT_EQ(sums.count, 0U);
    EXPECT_EQ(sums.Mean(), 0.0);
}

TEST(RingHistory, LinesKeepTheirNumbersThroughAReset) {
    HeldStream stream;
    RingHistory history(stream.value);
    stream.Take(100, {1.0, 2.0});
    EXPECT_EQ(history.Lines(), (LineRange{100, 102}));
    stream.value.Reset();
    stream.given.clear();
    stream.Take(700, {3.0});
    EXPECT_EQ(history.Lines(), (LineRange{700, 701}));
    ExpectColumns(stream, history, {100, 102, 700, 701, 705});
}

TEST(RingHistory, LinesThatTheStreamMissedAreMissing) {
    HeldStream stream;
    RingHistory history(stream.value);
    stream.Take(0, {1.0, 5.0, 2.0});
    stream.Take(10, {7.0, -1.0});
    EXPECT_EQ(history.Lines(), (LineRange{0, 12}));
    ExpectColumns(stream, history, {-5, 0, 2, 3, 5, 10, 11, 12, 20});
    ExpectColumns(stream, history, {0, 12});
    ExpectColumns(stream, history, {1, 1, 2});
    std::vector<double> values(14);
    history.Values(-1, values);
    EXPECT_TRUE(IsNoSample(values[0]));
    EXPECT_EQ(values[2], 5.0);
    EXPECT_TRUE(IsNoSample(values[4]));
    EXPECT_EQ(values[11], 7.0);
    EXPECT_TRUE(IsNoSample(values[13]));
}

TEST(RingHistory, AnswersLikeOneWhoLooksAtEachSample) {
    std::mt19937 random(7);
    const auto below = [&](std::uint32_t n) { return static_cast<std::int64_t>(random() % n); };
    for (int round = 0; round < 60; ++round) {
        HeldStream stream(0.2 + 0.1 * static_cast<double>(below(5)));
        RingHistory history(stream.value);
        std::int64_t line = below(1000);
        for (int batch = 0; batch < 12; ++batch) {
            std::vector<double> samples(static_cast<std::size_t>(1 + below(90)));
            for (double& sample : samples) {
                sample = static_cast<double>(below(2001)) - 1000.0;
                if (below(40) == 0) {
                    sample = std::numeric_limits<double>::quiet_NaN();
                } else if (below(200) == 0) {
                    sample = std::numeric_limits<double>::infinity();
                }
            }
            stream.Take(line, samples);
            line += static_cast<std::int64_t>(samples.size()) + (below(3) == 0 ? below(30) : 0);
            std::vector<std::int64_t> bounds(static_cast<std::size_t>(2 + below(40)));
            for (std::int64_t& bound : bounds) {
                bound = line - 700 + below(800);
            }
            std::sort(bounds.begin(), bounds.end());
            ExpectColumns(stream, history, bounds);
        }
        HistorySums sums;
        const LineRange lines{line - 300, line - 100};
        history.Sums(lines, sums);
        std::vector<double> values(static_cast<std::size_t>(lines.Count()));
        history.Values(lines.begin, values);
        std::uint64_t count = 0;
        double sum = 0.0;
        for (const double value : values) {
            count += std::isfinite(value) ? 1 : 0;
            sum += std::isfinite(value) ? value : 0.0;
        }
        EXPECT_EQ(sums.count, count);
        EXPECT_EQ(sums.sum, sum);
    }
}

TEST(RingHistory, FarFromZeroTheDifferencesAreNotLost) {
    HeldStream stream;
    RingHistory history(stream.value);
    stream.Take(0, {1e9 - 1.0, 1e9 + 1.0, 1e9 - 1.0, 1e9 + 1.0});
    HistorySums sums;
    history.Sums({0, 4}, sums);
    EXPECT_EQ(sums.Mean(), 1e9);
    EXPECT_EQ(sums.sum_of_squares, 4.0);
}

}  // namespace
}  // namespace wavo

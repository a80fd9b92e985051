// GraphValue against a literal model with the containers and counters of the standard library:
// random operations, every counter and every output compared bit by bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <deque>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "graph/values/graph_value.h"
#include "graph_value_texts.h"

namespace wavo {
namespace {

class Model {
 public:
    Model(double cycle_time, double time_range, std::int32_t order)
        : m_cycle_time(cycle_time), m_time_range(time_range), m_order(order) {
        m_capacity = static_cast<std::uint64_t>(m_time_range / m_cycle_time);
    }

    void SetValue(double sample) {
        if (!m_enabled) {
            return;
        }
        if (m_order >= 1) {
            sample = Derive(sample);
        }
        if (m_new_values.size() > m_capacity) {
            m_errors.emplace_back(kOverrun);
        } else {
            if (m_new_values.empty()) {
                m_first_new_index = m_total;
            }
            m_new_values.push_back(sample);
        }
        if (m_values.empty()) {
            m_dropped = 0.0;
            m_pushed = 0.0;
        }
        if (m_stored < m_capacity) {
            ++m_stored;
        } else if (m_stored != 0) {
            m_values.pop_front();
            m_dropped += 1.0;
        }
        m_pushed += 1.0;
        m_total += 1.0;
        m_values.push_back(sample);
    }

    void Reset() {
        m_values.clear();
        m_capacity = static_cast<std::uint64_t>(m_time_range / m_cycle_time);
        m_stored = 0;
        m_dropped = m_pushed = m_total = 0.0;
        m_new_values.clear();
        m_first_new_index = 0.0;
        m_history.clear();
    }

    void GrowTimeRange(double time_range) {
        const std::deque<double> aside = m_values;
        const double dropped = m_dropped;
        const double pushed = m_pushed;
        const double total = m_total;
        const std::uint64_t stored = m_stored;
        m_time_range = time_range;
        Reset();
        for (const double value : aside) {
            m_values.push_back(value);
        }
        m_dropped = dropped;
        m_pushed = pushed;
        m_total = total;
        m_stored = stored;
    }

    void GetTimeRangeValues(std::vector<double>& out, double span, double& start_time) const {
        const double newest = m_cycle_time * m_pushed;
        const double oldest = m_cycle_time * m_dropped;
        const double start = span > newest - oldest ? oldest : newest - span;
        const double exact = std::trunc((newest - start) / m_cycle_time);
        std::size_t count = exact > 0.0 ? static_cast<std::uint32_t>(exact) : 0;
        count = std::min(count, m_values.size());
        out.assign(m_values.end() - static_cast<std::ptrdiff_t>(count), m_values.end());
        start_time = start;
    }

    void GetDefineTimeRangeValue(std::vector<double>& out, double from, double to, double now) {
        out.clear();
        if (m_first_request) {
            m_reference = now;
            m_first_request = false;
            m_range_result.clear();
        }
        if (to < 0.0 || from < 0.0 || to - from < 0.0) {
            m_errors.emplace_back(kInvalidRange);
            out = m_range_result;
            return;
        }
        const double count = (to - from) / m_cycle_time;
        const double end_time = m_reference - (m_reference - to);
        if (end_time < 0.0) {
            out = m_range_result;
            return;
        }
        double end = end_time / m_cycle_time;
        if (static_cast<double>(m_values.size()) - end < 0.0) {
            end = static_cast<double>(m_values.size()) - 1.0;
        }
        const std::uint64_t end_index = end < 0.0 ? 0 : static_cast<std::uint64_t>(end);
        const auto number = static_cast<std::uint64_t>(count);
        const std::uint64_t first = end_index >= number ? end_index - number : 0;
        const std::uint64_t n = end_index - first;
        for (std::uint64_t i = 0; i < n && first + i < m_values.size(); ++i) {
            out.push_back(m_values[first + i]);
        }
        m_range_result = out;
    }

    /// The error-log entries since the last call.
    std::vector<std::string> TakeErrors() { return std::exchange(m_errors, {}); }

    double Derive(double raw) {
        const auto k = static_cast<std::size_t>(m_order);
        if (m_history.size() < k + 1) {
            m_history.push_back(raw);
            if (m_history.size() < k + 1) {
                return 0.0;
            }
        } else {
            m_history.pop_front();
            m_history.push_back(raw);
        }
        double sum = 0.0;
        for (std::size_t i = k; i >= 1; --i) {
            sum -= m_history[i] - m_history[i - 1];
            if (i == k) {
                sum = -sum;
            }
        }
        return sum / std::pow(m_cycle_time, m_order);
    }

    double m_cycle_time;
    double m_time_range;
    std::int32_t m_order;
    std::uint64_t m_stored = 0;
    std::uint64_t m_capacity = 0;
    std::deque<double> m_values;
    std::vector<double> m_new_values;
    double m_first_new_index = 0.0;
    double m_dropped = 0.0;
    double m_pushed = 0.0;
    double m_total = 0.0;
    std::deque<double> m_history;
    bool m_first_request = true;
    std::vector<double> m_range_result;
    double m_reference = 0.0;
    bool m_enabled = true;
    std::vector<std::string> m_errors;
};

::testing::AssertionResult SameBits(const std::vector<double>& ours,
                                    const std::vector<double>& expected) {
    if (ours.size() != expected.size()) {
        return ::testing::AssertionFailure() << ours.size() << " values, not " << expected.size();
    }
    for (std::size_t i = 0; i < ours.size(); ++i) {
        if (std::bit_cast<std::uint64_t>(ours[i]) != std::bit_cast<std::uint64_t>(expected[i])) {
            return ::testing::AssertionFailure()
                   << "value " << i << " is " << ours[i] << ", not " << expected[i];
        }
    }
    return ::testing::AssertionSuccess();
}

class Pair {
 public:
    Pair(double cycle_time, double time_range, std::int32_t order, std::uint32_t seed)
        : m_random(seed),
          m_model(cycle_time, time_range, order),
          m_ours(std::in_place, "X", cycle_time, time_range, order) {}

    void Step() {
        const std::uint32_t choice = m_random() % 1000;
        if (choice < 500) {
            SetOne();
        } else if (choice < 700) {
            SetColumn(m_random() % 64, 1 + m_random() % 4);
        } else if (choice < 800) {
            m_model.m_new_values.clear();
            m_ours->EmptyNewValues();
        } else if (choice < 850) {
            CompareTimeRange(Number(1.3) * m_model.m_time_range - 0.1 * m_model.m_time_range);
        } else if (choice < 930) {
            CompareDefinedRange();
        } else if (choice < 960) {
            m_model.m_enabled = m_random() % 4 != 0;
            m_ours->SetEnabled(m_model.m_enabled);
        } else if (choice < 970) {
            m_model.m_first_request = true;
            m_ours->MarkFirstRangeRequest();
        } else if (choice < 972) {
            m_model.Reset();
            m_ours->Reset();
        } else if (choice < 974) {
            const double range = m_model.m_time_range * (0.8 + Number(1.0));
            m_model.GrowTimeRange(range);
            m_ours->GrowTimeRange(range);
        } else if (choice < 980) {
            // Copies carry everything on.
            GraphValue copy = *m_ours;
            m_ours.emplace(copy);
        } else {
            CompareNewValues();
        }
        Compare();
    }

    void CompareAll() {
        std::vector<double> ours;
        CopyOut(m_ours->Values(), ours, 0, m_ours->Values().Size());
        ASSERT_TRUE(SameBits(ours, {m_model.m_values.begin(), m_model.m_values.end()}));
        CompareNewValues();
    }

 private:
    double Number(double below) { return below * (static_cast<double>(m_random()) / 4294967296.0); }
    double Sample() {
        // Standing still, moving on, and far apart.
        const std::uint32_t kind = m_random() % 8;
        if (kind >= 4) {
            m_last += Number(0.01);
        } else if (kind == 0) {
            m_last = Number(2e6) - 1e6;
        }
        return m_last;
    }
    void SetOne() {
        const double sample = Sample();
        m_model.SetValue(sample);
        const testing::ExpectErrorLog expected(m_model.TakeErrors());
        m_ours->SetValue(sample);
    }
    void SetColumn(std::size_t count, std::size_t stride) {
        std::vector<double> lines(count * stride);
        for (double& sample : lines) {
            sample = Sample();
        }
        for (std::size_t i = 0; i < count; ++i) {
            m_model.SetValue(lines[i * stride]);
        }
        const testing::ExpectErrorLog expected(m_model.TakeErrors());
        m_ours->SetValues(lines.data(), count, stride);
    }
    void CompareTimeRange(double span) {
        std::vector<double> ours = {1.0};
        std::vector<double> expected;
        double our_start = -1.0;
        double expected_start = -2.0;
        m_ours->GetTimeRangeValues(ours, span, our_start);
        m_model.GetTimeRangeValues(expected, span, expected_start);
        ASSERT_TRUE(SameBits(ours, expected)) << "span " << span;
        ASSERT_EQ(our_start, expected_start);
    }
    void CompareDefinedRange() {
        const double length = m_model.m_time_range;
        const double from = Number(1.2 * length) - 0.05 * length;
        const double to = from + Number(length) - 0.1 * length;
        const double now = m_model.m_pushed * m_model.m_cycle_time;
        std::vector<double> ours = {1.0};
        std::vector<double> expected;
        m_model.GetDefineTimeRangeValue(expected, from, to, now);
        {
            const testing::ExpectErrorLog errors(m_model.TakeErrors());
            m_ours->GetDefineTimeRangeValue(ours, from, to, now);
        }
        ASSERT_TRUE(SameBits(ours, expected)) << from << " to " << to << " now " << now;
    }
    void CompareNewValues() {
        std::vector<double> ours = {1.0};
        double start = -1.0;
        m_ours->GetNewValues(ours, start);
        ASSERT_TRUE(SameBits(ours, m_model.m_new_values));
        ASSERT_EQ(start, m_model.m_first_new_index * m_model.m_cycle_time);
    }
    void Compare() {
        ASSERT_EQ(m_ours->StoredCount(), m_model.m_stored);
        ASSERT_EQ(m_ours->Capacity(), m_model.m_capacity);
        ASSERT_EQ(m_ours->DroppedCount(), m_model.m_dropped);
        ASSERT_EQ(m_ours->PushedCount(), m_model.m_pushed);
        ASSERT_EQ(m_ours->TotalCount(), m_model.m_total);
        ASSERT_EQ(m_ours->FirstNewIndex(), m_model.m_first_new_index);
        ASSERT_EQ(m_ours->NewCount(), m_model.m_new_values.size());
        ASSERT_EQ(m_ours->Values().Size(), m_model.m_values.size());
        ASSERT_EQ(m_ours->Enabled(), m_model.m_enabled);
        ASSERT_EQ(m_ours->PushedCount() - m_ours->DroppedCount(),
                  static_cast<double>(m_ours->Values().Size()));
        if (!m_model.m_values.empty()) {
            ASSERT_TRUE(SameBits({m_ours->Values()[m_ours->Values().Size() - 1]},
                                 {m_model.m_values.back()}));
            ASSERT_TRUE(SameBits({m_ours->Values()[0]}, {m_model.m_values.front()}));
        }
    }

    std::mt19937 m_random;
    double m_last = 0.0;
    Model m_model;
    std::optional<GraphValue> m_ours;
};

struct Stream {
    double cycle_time;
    double time_range;
};

class GraphValueModelTest : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(GraphValueModelTest, DoesWhatTheLiteralModelDoes) {
    // Capacities 0, 1, 5, 6, 100, 2000 and one that the first allocation does not hold.
    const Stream streams[] = {{0.01, 0.005}, {0.01, 0.01}, {0.02, 0.1},  {0.1, 0.7},
                              {0.004, 0.4},  {0.001, 2.0}, {0.0007, 3.0}};
    std::uint32_t seed = 100U * static_cast<std::uint32_t>(GetParam() + 2);
    for (const Stream& stream : streams) {
        SCOPED_TRACE(::testing::Message() << stream.time_range << " s / " << stream.cycle_time);
        for (int round = 0; round < 4; ++round) {
            Pair pair(stream.cycle_time, stream.time_range, GetParam(), ++seed);
            for (int step = 0; step < 3000; ++step) {
                pair.Step();
                if (step % 100 == 0) {
                    pair.CompareAll();
                }
                ASSERT_FALSE(HasFatalFailure()) << "seed " << seed << ", step " << step;
            }
            pair.CompareAll();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, GraphValueModelTest, ::testing::Values(-1, 0, 1, 2, 3, 4, 7));

}  // namespace
}  // namespace wavo

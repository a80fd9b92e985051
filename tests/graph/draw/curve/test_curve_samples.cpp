#include "graph/draw/curve/curve_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "failing_memory.h"
#include "graph/values/graph_value.h"

namespace wavo {
namespace {

using testing::ExpectErrorLog;
using testing::FailingMemory;

constexpr char kNoMemory[] = "LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve";

/// `count` numbers from `first` on.
std::vector<double> Counting(double first, std::size_t count) {
    std::vector<double> numbers(count);
    std::generate(numbers.begin(), numbers.end(), [&first] { return first++; });
    return numbers;
}

std::vector<double> SamplesOf(const CurveSamples& curve) {
    const SampleRing::Parts parts =
        curve.Buffer().RangeOf(curve.Begin(), static_cast<std::size_t>(curve.Size()));
    std::vector<double> samples(parts.first.begin(), parts.first.end());
    samples.insert(samples.end(), parts.second.begin(), parts.second.end());
    return samples;
}

bool Shares(const CurveSamples& curve, const GraphValue& value) {
    return &curve.Buffer() == &value.Values();
}

void Set(GraphValue& value, const std::vector<double>& samples) {
    value.SetValues(samples.data(), samples.size(), 1);
}

/// Hands the new values of a stream on to a curve, as a step does.
void Take(GraphValue& value, CurveSamples& curve) {
    std::vector<double> samples;
    double start = 0.0;
    value.GetNewValues(samples, start);
    curve.Push(samples, {&value.Values(), value.FirstNewSequence()});
    value.EmptyNewValues();
}

TEST(CurveSamples, OneThatFollowsItsStreamStoresNothing) {
    GraphValue value("X", 1.0, 1000.0, 0);
    CurveSamples curve(1001);
    for (int step = 0; step < 60; ++step) {
        Set(value, Counting(100.0 * step, 100));
        Take(value, curve);
        ASSERT_TRUE(Shares(curve, value)) << step;
    }
    EXPECT_EQ(curve.Appended(), 6000U);
    EXPECT_EQ(SamplesOf(curve), Counting(4999, 1001)) << "one more than the buffer holds";
}

TEST(CurveSamples, WhatIsOverwrittenIsCopiedBeforeAndSharedAgainAfterwards) {
    GraphValue value("X", 1.0, 1000.0, 0);
    CurveSamples curve(1001);
    Set(value, Counting(0, 1000));
    Take(value, curve);
    Set(value, Counting(1000, 500));
    EXPECT_TRUE(Shares(curve, value));
    Set(value, Counting(1500, 500));
    EXPECT_FALSE(Shares(curve, value));
    EXPECT_EQ(SamplesOf(curve), Counting(0, 1000));
    Take(value, curve);
    EXPECT_TRUE(Shares(curve, value));
    EXPECT_EQ(SamplesOf(curve), Counting(999, 1001));
}

TEST(CurveSamples, OneThatTakesAllCopiesNothingHoweverManyComeAtOnce) {
    GraphValue value("X", 1.0, 1000.0, 0);
    CurveSamples curve(1001);
    for (int step = 0; step < 20; ++step) {
        Set(value, Counting(1000.0 * step, 1000));
        EXPECT_TRUE(step == 0 || Shares(curve, value));
        // In between it has what is left.
        const std::uint64_t left = step == 0 ? 0 : 512;
        ASSERT_EQ(curve.Size(), left) << step;
        ASSERT_EQ(SamplesOf(curve), Counting(1000.0 * step - static_cast<double>(left), left));
        curve.Push(Counting(1000.0 * step, 1000),
                   {&value.Values(), value.FirstNewSequence(), true});
        value.EmptyNewValues();
        ASSERT_EQ(SamplesOf(curve),
                  step == 0 ? Counting(0, 1000) : Counting(1000.0 * step - 1, 1001));
    }
}

TEST(CurveSamples, WhatItHoldsStaysHoweverFarTheStreamRunsOn) {
    GraphValue value("X", 1.0, 1000.0, 0);
    CurveSamples curve(101);
    Set(value, Counting(0, 700));
    Take(value, curve);
    for (int step = 7; step < 100; ++step) {
        Set(value, Counting(100.0 * step, 100));
        value.EmptyNewValues();
        ASSERT_EQ(SamplesOf(curve), Counting(599, 101)) << step;
    }
    EXPECT_FALSE(Shares(curve, value));
    // What follows is another stretch of the stream, and not joined to it there.
    for (int step = 100; step < 102; ++step) {
        Set(value, Counting(100.0 * step, 100));
        Take(value, curve);
    }
    EXPECT_TRUE(Shares(curve, value)) << "nothing is left of what differed";
    EXPECT_EQ(SamplesOf(curve), Counting(10099, 101));
    EXPECT_EQ(curve.Appended(), 900U);
}

TEST(CurveSamples, OutlivesTheBufferAndItsReset) {
    for (const bool goes : {true, false}) {
        auto value = std::make_unique<GraphValue>("X", 1.0, 1000.0, 0);
        CurveSamples curve(1001);
        Set(*value, Counting(0, 500));
        Take(*value, curve);
        value->Reset();
        if (goes) {
            value.reset();
        } else {
            // As many samples as there were: others, though they have the same numbers.
            Set(*value, Counting(9000, 500));
            value->EmptyNewValues();
            Set(*value, Counting(5000, 10));
            Take(*value, curve);
        }
        std::vector<double> expected = Counting(0, 500);
        if (!goes) {
            const std::vector<double> more = Counting(5000, 10);
            expected.insert(expected.end(), more.begin(), more.end());
        }
        EXPECT_EQ(SamplesOf(curve), expected);
    }
}

TEST(CurveSamples, FollowsABufferThatIsMovedOrGrows) {
    GraphValue value("X", 1.0, 100.0, 0);
    CurveSamples curve(51);
    Set(value, Counting(0, 60));
    Take(value, curve);
    value.GrowTimeRange(5000.0);
    for (int step = 0; step < 60; ++step) {
        Set(value, Counting(60 + 100 * step, 100));
        Take(value, curve);
        ASSERT_TRUE(Shares(curve, value));
        ASSERT_EQ(SamplesOf(curve), Counting(109 + 100 * step, 51));
    }
    const GraphValue moved(std::move(value));
    EXPECT_EQ(SamplesOf(curve), Counting(6009, 51));
    EXPECT_FALSE(Shares(curve, moved));
}

TEST(CurveSamples, WithoutMemoryForACopyNothingIsShown) {
    GraphValue value("X", 1.0, 1000.0, 0);
    CurveSamples curve(1001);
    Set(value, Counting(0, 1000));
    Take(value, curve);
    {
        const FailingMemory failing;
        const ExpectErrorLog expected({kNoMemory});
        Set(value, Counting(1000, 1000));
    }
    EXPECT_EQ(curve.Size(), 0U);
    Take(value, curve);
    EXPECT_EQ(SamplesOf(curve), Counting(1000, 1000));
}

/// A stream, a curve that follows it more or less, and the samples that this has to hold.
class Life {
 public:
    explicit Life(unsigned seed)
        : m_random(seed),
          m_takes_all(seed % 3 == 0),
          m_capacity(600 + m_random() % 900),
          m_curve(MaxPoints()) {
        MakeStream();
    }

    void Happen() {
        switch (m_random() % 40) {
            case 0:
                m_value->Reset();
                break;
            case 1:
                MakeStream();
                break;
            case 2:
                m_curve.Clear();
                m_expected.clear();
                break;
            case 3:
                m_capacity += m_random() % 100;
                m_value->GrowTimeRange(static_cast<double>(m_capacity));
                break;
            case 4:  // The curve misses what comes.
                if (m_takes_all) {
                    break;
                }
                Feed(m_random() % m_capacity);
                ExpectRight();
                m_value->EmptyNewValues();
                break;
            case 5:  // The curve shows something else than the stream has.
                Push(Counting(-5.0, 3), {});
                break;
            default:
                Step();
        }
        ExpectRight();
    }

    void ExpectRight() const {
        ASSERT_EQ(SamplesOf(m_curve), std::vector<double>(m_expected.begin(), m_expected.end()));
    }
    [[nodiscard]] bool IsShared() const { return Shares(m_curve, *m_value); }

 private:
    [[nodiscard]] std::uint64_t MaxPoints() { return m_capacity / (1 + m_random() % 3) + 2; }

    void MakeStream() {
        m_value.reset();
        m_value = std::make_unique<GraphValue>("X", 1.0, static_cast<double>(m_capacity), 0);
    }

    void Feed(std::size_t count) {
        Set(*m_value, Counting(m_next, count));
        m_next += static_cast<double>(count);
    }

    void Step() {
        Feed(1 + m_random() % (m_random() % 8 == 0 ? m_capacity : 100));
        if (!m_takes_all) {
            ExpectRight();
        }
        std::vector<double> samples;
        double start = 0.0;
        m_value->GetNewValues(samples, start);
        std::uint64_t first = m_value->FirstNewSequence();
        if (!m_takes_all && m_random() % 10 == 0) {  // a trigger leaves some out
            const std::size_t dropped = m_random() % samples.size();
            samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(dropped));
            first += dropped;
            samples.resize(samples.size() - m_random() % samples.size());
        }
        Push(samples, {&m_value->Values(), first, m_takes_all});
        m_value->EmptyNewValues();
    }

    void Push(const std::vector<double>& samples, const SampleOrigin& origin) {
        m_curve.Push(samples, origin);
        m_expected.insert(m_expected.end(), samples.begin(), samples.end());
        while (m_expected.size() > m_curve.MaxPoints()) {
            m_expected.pop_front();
        }
    }

    std::mt19937 m_random;
    bool m_takes_all;
    std::uint64_t m_capacity;
    std::unique_ptr<GraphValue> m_value;
    CurveSamples m_curve;
    std::deque<double> m_expected;
    double m_next = 0.0;
};

TEST(CurveSamples, HoldsWhatItWasGivenWhateverBecomesOfTheStream) {
    int shared = 0;
    int own = 0;
    for (unsigned seed = 0; seed < 60; ++seed) {
        Life life(seed);
        for (int i = 0; i < 300; ++i) {
            life.Happen();
            if (::testing::Test::HasFatalFailure()) {
                FAIL() << "seed " << seed << ", event " << i;
            }
            ++(life.IsShared() ? shared : own);
        }
    }
    EXPECT_GT(shared, 5000);
    EXPECT_GT(own, 2000);
}

}  // namespace
}  // namespace wavo

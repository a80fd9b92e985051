#include "graph/draw/curve/time_curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <vector>

#include "expect_errors.h"
#include "failing_memory.h"
#include "graph/draw/curve/scroll_curve.h"
#include "graph/draw/curve/sweep_curve.h"
#include "graph/model/wavo_graph.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::ExpectErrorLog;
using testing::FailingMemory;

/// A curve as a queue of samples, each with its time.
class Model {
 public:
    struct Entry {
        double sample;
        std::uint64_t step;
    };

    Model(GraphMode mode, double step, std::uint64_t most)
        : m_mode(mode), m_step(step), m_most(most) {}

    void Add(const std::vector<double>& samples, bool at_start, double range) {
        if (m_mode == GraphMode::kContinuity) {
            for (const double sample : samples) {
                Keep({sample, 0});
            }
            return;
        }
        std::uint64_t step = m_next;
        if (at_start || static_cast<double>(step) * m_step > range + 1e-6) {
            step = 0;
        }
        for (const double sample : samples) {
            Keep({sample, step});
            ++step;
            m_next = step;
            if (static_cast<double>(step) * m_step > range + 1e-6) {
                step = 1;
                m_next = 1;
            }
        }
    }

    /// Oldest first.
    [[nodiscard]] const std::deque<Entry>& Held() const { return m_held; }
    [[nodiscard]] double TimeOf(std::size_t position) const {
        if (m_mode != GraphMode::kContinuity) {
            return static_cast<double>(m_held[position].step) * m_step;
        }
        if (m_scrolled) {
            return static_cast<double>(position) * m_step;
        }
        double time = 0.0;
        for (std::size_t i = 0; i < position; ++i) {
            time += m_step;
        }
        return time;
    }
    /// Where the oldest sample stands in the FIFO.
    [[nodiscard]] std::size_t OldestPlace() const {
        return m_mode == GraphMode::kContinuity ? 0 : static_cast<std::size_t>(m_added % m_most);
    }
    [[nodiscard]] bool Full() const { return m_held.size() == m_most; }

 private:
    void Keep(const Entry& entry) {
        m_held.push_back(entry);
        ++m_added;
        if (m_held.size() > m_most) {
            m_held.pop_front();
            m_scrolled = true;
        }
    }

    GraphMode m_mode;
    double m_step;
    std::uint64_t m_most;
    std::deque<Entry> m_held;
    std::uint64_t m_next = 0;
    std::uint64_t m_added = 0;
    bool m_scrolled = false;
};

/// A curve of either kind.
struct AnyTimeCurve {
    AnyTimeCurve(GraphMode mode, double step, std::uint64_t most) {
        if (mode == GraphMode::kContinuity) {
            made = std::make_unique<ScrollCurve>(step, most);
        } else {
            made = std::make_unique<SweepCurve>(step, most);
        }
    }
    [[nodiscard]] double SweepPosition() const {
        return dynamic_cast<const SweepCurve&>(*made).SweepPosition();
    }

    std::unique_ptr<TimeCurve> made;
};

void Add(TimeCurve& curve, const std::vector<double>& samples, bool at_start, double range) {
    EXPECT_TRUE(curve.Add(samples, at_start, range, {}));
}

void ExpectRunsAsModel(const TimeCurve& curve, const Model& model) {
    std::uint64_t position = 0;
    for (const CurveRun& run : curve.Runs()) {
        ASSERT_EQ(run.position, position);
        ASSERT_GT(run.count, 0U);
        for (std::uint64_t i = 0; i < run.count; ++i) {
            ASSERT_EQ(run.step + i, model.Held()[position + i].step);
        }
        if (position > 0) {
            ASSERT_EQ(run.joined, model.Held()[position - 1].step <= run.step);
        }
        position += run.count;
    }
    ASSERT_EQ(position, model.Held().size());
}

void ExpectAsModel(const TimeCurve& curve, const Model& model, GraphMode mode) {
    ASSERT_EQ(curve.Size(), model.Held().size());
    const std::size_t oldest = model.Full() ? model.OldestPlace() : 0;
    for (std::size_t position = 0; position < model.Held().size(); ++position) {
        const std::size_t place = (oldest + position) % model.Held().size();
        ASSERT_EQ(curve.Sample(place), model.Held()[position].sample) << place;
        ASSERT_EQ(curve.Time(place), model.TimeOf(position)) << place;
    }
    if (mode != GraphMode::kContinuity) {
        ExpectRunsAsModel(curve, model);
    }
}

TEST(TimeCurve, IsWhatAQueueOfSamplesWithTheirTimesIs) {
    std::mt19937 random(20);
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        for (const std::uint64_t most : {1U, 2U, 3U, 5U, 41U}) {
            // The sweep may be longer and shorter than what is held, and than one step.
            for (const double range : {0.0, 0.1, 0.25, 1.0, 2.5, 10.0, 30.0, -1.0}) {
                const AnyTimeCurve any(mode, 0.25, most);
                TimeCurve& curve = *any.made;
                Model model(mode, 0.25, most);
                double sample = 0.0;
                for (int batch = 0; batch < 60; ++batch) {
                    const std::size_t room = mode == GraphMode::kContinuity ? most : 3 * most;
                    std::vector<double> samples(1 + random() % room);
                    for (double& value : samples) {
                        value = ++sample;
                    }
                    const bool at_start = random() % 7 == 0;
                    Add(curve, samples, at_start, range);
                    model.Add(samples, at_start, range);
                    ExpectAsModel(curve, model, mode);
                    if (HasFatalFailure()) {
                        FAIL() << most << " points, " << range << " s, batch " << batch;
                    }
                }
            }
        }
    }
}

TEST(TimeCurve, SweepsAsFarAsTheRangeAndGoesOnOneStepFromTheLeft) {
    const AnyTimeCurve any(GraphMode::kClassic, 0.25, 20);
    TimeCurve& curve = *any.made;
    Add(curve, {1, 2, 3, 4, 5, 6, 7}, true, 1.0);
    const std::vector<double> times{0.0, 0.25, 0.5, 0.75, 1.0, 0.25, 0.5};
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_EQ(curve.Time(i), times[i]) << i;
    }
    EXPECT_EQ(any.SweepPosition(), 0.5);
}

TEST(TimeCurve, TimesAreSumsOfTheStepUntilTheCurveScrolls) {
    const AnyTimeCurve any(GraphMode::kContinuity, 0.1, 10000);
    TimeCurve& curve = *any.made;
    Add(curve, std::vector<double>(9000, 1.0), false, 1000.0);
    double sum = 0.0;
    for (int i = 0; i < 8999; ++i) {
        sum += 0.1;
    }
    ASSERT_NE(sum, 8999 * 0.1);
    EXPECT_EQ(curve.Time(8999), sum);
    EXPECT_TRUE(curve.TimesAreSums());
    Add(curve, std::vector<double>(1001, 1.0), false, 1000.0);
    EXPECT_FALSE(curve.TimesAreSums());
    EXPECT_EQ(curve.Time(8999), 8999 * 0.1);
}

TEST(TimeCurve, EveryChangeHasAVersion) {
    const AnyTimeCurve any(GraphMode::kContinuity, 0.25, 4);
    TimeCurve& curve = *any.made;
    SampleBuffer ring;
    ASSERT_TRUE(ring.Push(std::vector<double>{1, 2, 3, 4, 5}, 5));
    std::uint64_t before = curve.Version();
    const auto changed = [&] {
        const bool is_new = curve.Version() != before;
        before = curve.Version();
        return is_new;
    };
    Add(curve, {1, 2, 3}, false, 1.0);
    EXPECT_TRUE(changed());
    curve.ShowOwnWindow({0, 2});
    EXPECT_TRUE(changed());
    curve.ShowOwnWindow({0, 2});
    EXPECT_FALSE(changed());
    curve.ShowOwnWindow({1, 2});
    EXPECT_TRUE(changed());
    curve.ShowWindow(ring, {{0, {1, 3}}});
    EXPECT_TRUE(changed());
    curve.ShowWindow(ring, {{0, {1, 3}}});
    EXPECT_FALSE(changed());
    ASSERT_TRUE(ring.Push(std::vector<double>{6}, 5));
    curve.ShowWindow(ring, {{0, {1, 3}}});
    EXPECT_TRUE(changed());
    curve.Clear();
    EXPECT_TRUE(changed());
}

TEST(TimeCurve, AWindowOnARingThatBeganAnewIsAnotherOne) {
    const AnyTimeCurve any(GraphMode::kContinuity, 0.25, 4);
    TimeCurve& curve = *any.made;
    SampleBuffer ring;
    ASSERT_TRUE(ring.Push(std::vector<double>{1, 2, 3}, 5));
    curve.ShowWindow(ring, {{0, {0, 3}}});
    const std::uint64_t version = curve.Version();
    ring.Clear();
    ASSERT_TRUE(ring.Push(std::vector<double>{7, 8, 9}, 5));
    curve.ShowWindow(ring, {{0, {0, 3}}});
    EXPECT_NE(curve.Version(), version);
    EXPECT_EQ(curve.FiniteExtremes().maximum, 9.0);
}

TEST(TimeCurve, AWindowShowsItsStretchInOrderOfTimeFromZero) {
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        const AnyTimeCurve any(mode, 0.25, 4);
        TimeCurve& curve = *any.made;
        Add(curve, {9, 9, 9, 9}, true, 1.0);
        SampleBuffer ring;
        for (int i = 0; i < 23; ++i) {
            ASSERT_TRUE(ring.Push(std::vector<double>{static_cast<double>(i)}, 10));
        }
        curve.ShowWindow(ring, {{0, {2, 5}}});
        ASSERT_EQ(curve.Size(), 5U);
        EXPECT_EQ(curve.HeldSamples(), 0U);
        EXPECT_EQ(curve.WriteIndex(), 0U);
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_EQ(curve.Sample(i), 15.0 + static_cast<double>(i));
            EXPECT_EQ(curve.Time(i), static_cast<double>(i) * 0.25);
        }
        EXPECT_EQ(curve.FiniteExtremes().minimum, 15.0);
        EXPECT_EQ(curve.FiniteExtremes().maximum, 19.0);
    }
}

TEST(TimeCurve, AKeptWindowHoldsAllOfItHoweverLong) {
    const AnyTimeCurve any(GraphMode::kContinuity, 0.25, 4);
    TimeCurve& curve = *any.made;
    SampleBuffer ring;
    ASSERT_TRUE(ring.Push(std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8}, 8));
    curve.ShowWindow(ring, {{0, {1, 6}}});
    curve.KeepWindow();
    ring.Clear();
    std::vector<double> samples;
    curve.CopySamples(samples);
    EXPECT_EQ(samples, (std::vector<double>{2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(curve.Time(5), 1.25);
    EXPECT_EQ(curve.FiniteExtremes().maximum, 7.0);
}

TEST(TimeCurve, GoesOnAfterAKeptWindow) {
    const AnyTimeCurve any(GraphMode::kClassic, 0.25, 20);
    TimeCurve& curve = *any.made;
    SampleBuffer ring;
    ASSERT_TRUE(ring.Push(std::vector<double>(3000, 1.0), 3000));
    curve.ShowWindow(ring, {{0, {0, 3000}}});
    curve.KeepWindow();
    curve.Clear();
    // More slots than the curve may hold: what it holds wanders through them.
    for (int i = 0; i < 4000; ++i) {
        Add(curve, {static_cast<double>(i), kInf, kNaN}, false, 2.0);
        if (i % 37 == 0 && i > 20) {
            ASSERT_EQ(curve.Size(), 20U);
            ASSERT_EQ(curve.FiniteExtremes().maximum, i);
            ASSERT_EQ(curve.FiniteExtremes().minimum, i - 5);
        }
    }
}

TEST(TimeCurve, WithoutMemoryItGoesOnWithWhatItHas) {
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        const AnyTimeCurve any(mode, 0.25, 5000);
        TimeCurve& curve = *any.made;
        std::vector<double> samples(1000);
        auto next = [&, sample = 0.0](std::size_t count) mutable {
            samples.resize(count);
            for (double& value : samples) {
                value = ++sample;
            }
            return samples;
        };
        Add(curve, next(1000), true, 50.0);
        {
            const FailingMemory failing;
            const ExpectErrorLog expected(
                {"LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve"});
            Add(curve, next(500), false, 50.0);
        }
        ASSERT_EQ(curve.Size(), 1024U);
        EXPECT_EQ(curve.MaxPoints(), 1024U);
        Add(curve, next(100), false, 50.0);
        std::vector<double> held;
        curve.CopySamples(held);
        ASSERT_EQ(held.size(), 1024U);
        EXPECT_EQ(held.front(), 577.0);
        EXPECT_EQ(held.back(), 1600.0) << "the newest samples are held";
        std::uint64_t count = 0;
        for (const CurveRun& run : curve.Runs()) {
            EXPECT_EQ(run.position, count);
            count += run.count;
        }
        EXPECT_EQ(count, 1024U);
        if (mode == GraphMode::kClassic) {
            // Of 201 steps; the first sample of all stood at 0.
            EXPECT_EQ(any.SweepPosition(), 0.25 * (1599 % 200));
        }
    }
}

TEST(TimeCurve, WithoutAnyMemoryItStaysEmpty) {
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        const AnyTimeCurve any(mode, 0.25, 5000);
        TimeCurve& curve = *any.made;
        {
            const FailingMemory failing;
            const ExpectErrorLog expected(
                {"LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve"});
            Add(curve, {1, 2, 3}, true, 0.25);
        }
        EXPECT_EQ(curve.Size(), 0U);
        EXPECT_TRUE(curve.Runs().empty());
        EXPECT_TRUE(curve.FiniteExtremes().IsEmpty());
        Add(curve, {4}, false, 0.5);
        ASSERT_EQ(curve.Size(), 1U);
        EXPECT_EQ(curve.Sample(0), 4.0);
        ASSERT_EQ(curve.Runs().size(), 1U);
        EXPECT_EQ(curve.Runs()[0].count, 1U);
    }
}

TEST(TimeCurve, TellsTheSampleThatIsSeenAtATime) {
    SweepCurve sweep(0.25, 5);
    EXPECT_EQ(sweep.PositionAt(0.0), std::nullopt);
    Add(sweep, {0, 1, 2, 3}, true, 1.0);
    EXPECT_EQ(sweep.PositionAt(0.0), 0U);
    EXPECT_EQ(sweep.PositionAt(0.37), 1U);
    EXPECT_EQ(sweep.PositionAt(0.38), 2U) << "the nearest";
    EXPECT_EQ(sweep.PositionAt(0.9), std::nullopt) << "nothing came yet";
    EXPECT_EQ(sweep.PositionAt(-0.01), std::nullopt);
    EXPECT_EQ(sweep.PositionAt(kNaN), std::nullopt);
    EXPECT_EQ(sweep.PositionAt(1e300), std::nullopt);
    // 4 stands at 1.0, 5 at 0.25 and 6 at 0.5; 0 and 1 are gone.
    Add(sweep, {4, 5, 6}, false, 1.0);
    EXPECT_EQ(sweep.PositionAt(0.0), std::nullopt);
    EXPECT_EQ(sweep.PositionAt(0.25), 3U);
    EXPECT_EQ(sweep.PositionAt(0.5), 4U) << "6, not 2";
    EXPECT_EQ(sweep.PositionAt(0.75), 1U);

    ScrollCurve scroll(0.25, 4);
    Add(scroll, {0, 1, 2}, true, 1.0);
    Add(scroll, {3, 4, 5}, false, 1.0);
    EXPECT_EQ(scroll.PositionAt(0.5), 2U);
    EXPECT_EQ(scroll.PositionAt(1.0), std::nullopt);
    SampleBuffer ring;
    ASSERT_TRUE(ring.Push(std::vector<double>{1, 2, 3, 4, 5}, 5));
    scroll.ShowWindow(ring, {{1, {0, 1}}, {3, {2, 2}}});
    EXPECT_EQ(scroll.PositionAt(0.0), std::nullopt);
    EXPECT_EQ(scroll.PositionAt(0.25), 0U);
    EXPECT_EQ(scroll.PositionAt(0.5), std::nullopt) << "a gap";
    EXPECT_EQ(scroll.PositionAt(1.0), 3U);
}

TEST(TimeCurve, MoreAtOnceThanItHoldsIsRefusedByOneThatScrolls) {
    ScrollCurve scroll(0.25, 3);
    Add(scroll, {1, 2}, true, 1.0);
    const ExpectErrorLog expected(
        {"LinesDrawAxis::DrawLinesXIsTime(): number of new values > number of max. values in "
         "line-fifo"});
    EXPECT_FALSE(scroll.Add(std::vector<double>{1, 2, 3, 4}, false, 1.0));
    EXPECT_EQ(scroll.Size(), 2U);
}

}  // namespace
}  // namespace wavo

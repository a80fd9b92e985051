// Recorded movements of a machine played into a graph, and what the graph has to be like after each
// paint: worked out from the columns of the recordings alone.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "drawing_fixture.h"
#include "graph/draw/graph_draw.h"
#include "master/recording.h"

namespace wavo::testing {

using Column = std::vector<double>;

inline constexpr double kCycleTime = 0.001;
inline constexpr std::int64_t kCycleMicroseconds = 1000;

/// An axis whose values are the numbers of the samples.
inline const std::string kSampleNumber = "number";

/// The columns of a recording by name, read once per test program.
inline const std::map<std::string, Column>& ReadMotion(const std::string& file) {
    static std::map<std::string, std::map<std::string, Column>> motions;
    std::map<std::string, Column>& columns = motions[file];
    if (!columns.empty()) {
        return columns;
    }
    const std::vector<std::string> names{"X", "Y", "Z", "A", "X_cmd", "Y_cmd", "Z_cmd", "A_cmd"};
    std::string error;
    const auto recording =
        master::Recording::Read(std::string(WAVO_RECORDINGS) + "/" + file, names, &error);
    EXPECT_NE(recording, nullptr) << error;
    if (recording == nullptr) {
        return columns;
    }
    std::vector<double> line(names.size());
    for (std::uint64_t i = 0; i < recording->LinesPerRound(); ++i) {
        recording->Line(i, line);
        for (std::size_t k = 0; k < names.size(); ++k) {
            columns[names[k]].push_back(line[k]);
        }
        columns[kSampleNumber].push_back(static_cast<double>(i));
    }
    return columns;
}

/// A column as a stream of a derivation order: the first samples, which have no predecessors,
/// are 0.
inline Column Derived(const Column& column, int order) {
    Column derived(column.size(), 0.0);
    for (auto i = static_cast<std::size_t>(order); i < column.size(); ++i) {
        if (order == 0) {
            derived[i] = column[i];
        } else if (order == 1) {
            derived[i] = (column[i] - column[i - 1]) / kCycleTime;
        } else {
            derived[i] =
                (column[i] - 2.0 * column[i - 1] + column[i - 2]) / (kCycleTime * kCycleTime);
        }
    }
    return derived;
}

/// A y axis of a graph. The recordings have six decimals, so positions are multiples of 1e-6,
/// velocities of 1e-3 and accelerations of 1: a limit that lies between two of them is met by
/// no sample, however the arithmetic rounds.
struct Axis {
    std::string name;
    int derivation = 0;
    TriggerTypeCode trigger = TriggerTypeCode::kNone;
    double limit = 0.0;
};

/// A graph on a recording. With `over_axis` it has one y axis and x is the sample number.
struct Trial {
    std::string file;
    std::vector<Axis> axes;
    std::int64_t range_microseconds = 0;  ///< time range, or fade-out time over an axis
    GraphMode mode = GraphMode::kContinuity;
    bool over_axis = false;
};

inline bool IsStart(TriggerTypeCode type) {
    return type == TriggerTypeCode::kStartAbove || type == TriggerTypeCode::kStartBelow;
}

inline bool IsStop(TriggerTypeCode type) {
    return type == TriggerTypeCode::kStopAbove || type == TriggerTypeCode::kStopBelow;
}

inline bool Fires(const Axis& axis, double value) {
    switch (axis.trigger) {
        case TriggerTypeCode::kStartAbove:
        case TriggerTypeCode::kStopAbove:
            return value > axis.limit;
        case TriggerTypeCode::kStartBelow:
        case TriggerTypeCode::kStopBelow:
            return value < axis.limit;
        case TriggerTypeCode::kNone:
            return false;
    }
    return false;
}

/// What a graph has to be like after each paint.
class Expectation {
 public:
    explicit Expectation(const Trial& trial)
        : m_trial(trial),
          m_room((trial.range_microseconds + kCycleMicroseconds / 2) / kCycleMicroseconds + 1) {
        for (const Axis& axis : trial.axes) {
            m_streams.push_back(Derived(ReadMotion(trial.file).at(axis.name), axis.derivation));
            if (IsStart(axis.trigger)) {
                m_first_state = RunState::kWaitingForStart;
            } else if (IsStop(axis.trigger)) {
                m_first_state = RunState::kWaitingForStop;
            }
        }
        state = m_first_state;
    }

    /// A paint after samples `begin` to `end` (not included) have arrived.
    void Paint(std::int64_t begin, std::int64_t end) {
        if (!enabled) {
            begin = end;
        }
        pushed += end - begin;
        switch (state) {
            case RunState::kRunning:
                Show(begin, end);
                break;
            case RunState::kWaitingForStart:
                WaitForStart(begin, end);
                break;
            case RunState::kRunningAfterStart:
                Record(begin, end);
                break;
            case RunState::kWaitingForStop:
                WaitForStop(begin, end);
                break;
            case RunState::kStoppedAfterStart:
            case RunState::kStoppedAfterStop:
                enabled = false;
                break;
        }
    }

    /// The command that lets a finished recording begin anew.
    void StartAgain() {
        state = m_first_state;
        enabled = true;
    }

    RunState state = RunState::kRunning;
    std::int64_t fired_at = -1;  ///< sample
    /// Samples that belong to the curve; it shows the newest of them as far as it has room.
    std::int64_t curve_begin = 0;
    std::int64_t curve_end = 0;
    int ended = 0;
    bool enabled = true;
    std::int64_t pushed = 0;

    [[nodiscard]] std::int64_t FirstShown() const {
        return std::max(curve_begin, curve_end - m_room);
    }
    [[nodiscard]] const std::vector<Column>& Streams() const { return m_streams; }

 private:
    /// The sample at which the first entry that fires in the batch does so; -1 when none does.
    [[nodiscard]] std::int64_t FiringSample(std::int64_t begin, std::int64_t end) const {
        for (std::size_t k = 0; k < m_trial.axes.size(); ++k) {
            for (std::int64_t i = begin; i < end; ++i) {
                if (Fires(m_trial.axes[k], m_streams[k][static_cast<std::size_t>(i)])) {
                    return i;
                }
            }
        }
        return -1;
    }

    void Show(std::int64_t begin, std::int64_t end) {
        if (end > begin) {
            curve_end = end;
        }
    }

    void WaitForStart(std::int64_t begin, std::int64_t end) {
        const std::int64_t sample = FiringSample(begin, end);
        if (sample >= 0) {
            state = RunState::kRunningAfterStart;
            fired_at = sample;
            curve_begin = sample;
            curve_end = end;
            m_recorded = 0;
        }
    }

    void Record(std::int64_t begin, std::int64_t end) {
        m_recorded += end - begin;
        const std::int64_t beyond = m_recorded * kCycleMicroseconds - m_trial.range_microseconds;
        if (beyond < 0) {
            Show(begin, end);
            return;
        }
        // To the nearest number of samples, half of one upwards.
        const std::int64_t cut =
            m_trial.over_axis ? 0 : (2 * beyond + kCycleMicroseconds) / (2 * kCycleMicroseconds);
        Show(begin, end - cut);
        state = RunState::kStoppedAfterStart;
        ++ended;
    }

    void WaitForStop(std::int64_t begin, std::int64_t end) {
        const std::int64_t sample = FiringSample(begin, end);
        if (sample < 0) {
            Show(begin, end);
            return;
        }
        state = RunState::kStoppedAfterStop;
        fired_at = sample;
        curve_end = sample + 1;
        enabled = false;
    }

    const Trial m_trial;
    const std::int64_t m_room;  ///< samples that the curve can hold
    std::vector<Column> m_streams;
    RunState m_first_state = RunState::kRunning;
    std::int64_t m_recorded = 0;  ///< samples counted since the paint that fired
};

inline WavoGraph GraphOf(const Trial& trial) {
    const double range = static_cast<double>(trial.range_microseconds) * 1e-6;
    WavoGraph graph = TimeGraph(range, trial.mode);
    for (const Axis& axis : trial.axes) {
        AddAxis(graph, axis.name, ManualScale(-100.0, 100.0), axis.trigger, axis.limit,
                axis.derivation);
    }
    if (trial.over_axis) {
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = kSampleNumber;
        graph.XScale = ManualScale(0.0, 30000.0);
        graph.FadeOutTime = range;
    } else {
        AddAxis(graph, kSampleNumber, ManualScale(0.0, 30000.0));
    }
    return graph;
}

/// Without a rectangle nothing is painted, all the rest is done: thousands of paints take no time.
inline const QRect kNoRectangle(0, 0, 0, 0);

/// A graph that a recording runs through, beside what is expected of it.
class Player {
 public:
    explicit Player(const Trial& trial, const QRect& rectangle = kNoRectangle)
        : expected(trial), scope(GraphOf(trial), kCycleTime, rectangle), m_trial(trial) {
        for (const GraphValue& value : scope.values) {
            m_columns.push_back(&ReadMotion(trial.file).at(value.Name()));
        }
    }

    [[nodiscard]] std::int64_t Left() const {
        return static_cast<std::int64_t>(m_columns.front()->size()) - m_next;
    }
    [[nodiscard]] std::int64_t Next() const { return m_next; }

    /// Lets samples arrive and paints; the graph has to be as expected.
    void Paint(std::int64_t batch) {
        const std::int64_t end = m_next + std::min(batch, Left());
        std::vector<std::vector<double>> samples;
        for (const Column* column : m_columns) {
            samples.emplace_back(column->begin() + m_next, column->begin() + end);
        }
        const RunState before = expected.state;
        scope.Feed(samples);
        expected.Paint(m_next, end);
        m_next = end;
        Compare(before != expected.state);
    }

    /// As the command "start after trigger" does.
    void StartAgain() {
        scope.draw->RestartAfterTrigger();
        for (GraphValue& value : scope.values) {
            value.SetEnabled(true);
        }
        expected.StartAgain();
    }

    Expectation expected;
    Scope scope;

 private:
    void Compare(bool all_values) const {
        SCOPED_TRACE("after sample " + std::to_string(m_next));
        ASSERT_EQ(scope.draw->State(), expected.state);
        ASSERT_EQ(scope.host.ended, expected.ended);
        for (const GraphValue& value : scope.values) {
            ASSERT_EQ(value.Enabled(), expected.enabled);
            ASSERT_EQ(value.PushedCount(), static_cast<double>(expected.pushed));
        }
        const auto size = static_cast<std::size_t>(expected.curve_end - expected.FirstShown());
        for (const auto& line : scope.draw->Lines()) {
            ASSERT_EQ(line->Size(), size);
        }
        if (all_values) {
            CompareAllValues();
        }
    }

    void CompareAllValues() const {
        const std::int64_t first = expected.FirstShown();
        std::vector<double> numbers;
        if (m_trial.over_axis) {
            scope.Line().GetXValues(numbers);
        } else {
            scope.Line(m_trial.axes.size()).GetYValues(numbers);
        }
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(numbers[i], static_cast<double>(first) + static_cast<double>(i));
        }
        for (std::size_t k = 0; k < m_trial.axes.size(); ++k) {
            const Column& stream = expected.Streams()[k];
            const std::vector<double> shown = scope.Shown(k);
            for (std::size_t i = 0; i < shown.size(); ++i) {
                ASSERT_NEAR(shown[i], stream[static_cast<std::size_t>(first) + i], 1e-6);
            }
        }
    }

    const Trial m_trial;
    std::vector<const Column*> m_columns;
    std::int64_t m_next = 0;
};

/// Gives the size of the next batch.
using Batches = std::function<std::int64_t()>;

struct BatchKind {
    std::string name;
    std::function<Batches()> make;
};

inline Batches Always(std::int64_t size) {
    return [size] { return size; };
}

/// From 0 samples (a paint for another reason) to 149.
inline Batches AnySize() {
    return [engine = std::make_shared<std::mt19937>(20261121U)] {
        return static_cast<std::int64_t>((*engine)() % 150U);
    };
}

inline const std::vector<BatchKind>& BatchKinds() {
    static const std::vector<BatchKind> kinds{{"1", [] { return Always(1); }},
                                              {"7", [] { return Always(7); }},
                                              {"100", [] { return Always(100); }},
                                              {"any size", AnySize}};
    return kinds;
}

/// Plays until the trigger has fired and a recording has ended, and two batches more.
inline void PlayToTheEnd(Player& player, const Batches& next) {
    const auto stopped = [&player] {
        return player.expected.state == RunState::kStoppedAfterStart ||
               player.expected.state == RunState::kStoppedAfterStop;
    };
    while (!stopped() && player.Left() > 0) {
        player.Paint(next());
        ASSERT_FALSE(::testing::Test::HasFatalFailure());
    }
    ASSERT_TRUE(stopped()) << "the recording does not bring the trigger to its end";
    for (int i = 0; i < 2; ++i) {
        player.Paint(std::max<std::int64_t>(1, next()));
        ASSERT_FALSE(::testing::Test::HasFatalFailure());
    }
    EXPECT_FALSE(player.scope.values[0].Enabled());
}

}  // namespace wavo::testing

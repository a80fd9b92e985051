#include "measure/step_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "measure/units.h"
#include "measure/words.h"

namespace wavo::measure {

namespace {

constexpr double kRestOfStandstill = 0.05;  // s
constexpr const char* kNotReached = "not reached";

/// Cycles in a row in which the commanded value changes.
struct Cluster {
    std::size_t first = 0;  ///< first cycle with a new value
    std::size_t last = 0;   ///< first cycle with the last one
};

std::vector<Cluster> ClustersOf(std::span<const double> commanded, const Stretch& stretch,
                                double resolution) {
    std::vector<Cluster> clusters;
    for (std::size_t i = stretch.first + 1; i < stretch.end; ++i) {
        if (std::abs(commanded[i] - commanded[i - 1]) <= resolution) {
            continue;
        }
        if (clusters.empty() || clusters.back().last + 1 != i) {
            clusters.push_back({i, i});
        }
        clusters.back().last = i;
    }
    return clusters;
}

double LevelOf(std::span<const double> values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value - values.front();
    }
    return values.front() + sum / static_cast<double>(values.size());
}

/// Where values cross a level first, as a place between cycles; counted from the first value.
std::optional<double> FirstCrossing(std::span<const double> values, double level) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] >= level) {
            return i == 0
                       ? 0.0
                       : static_cast<double>(i) - (values[i] - level) / (values[i] - values[i - 1]);
        }
    }
    return std::nullopt;
}

/// Where values come for the last time within `window` of zero; 0 when they never leave it, nothing
/// when they end outside.
std::optional<double> LastEntry(std::span<const double> values, double window) {
    std::size_t i = values.size();
    while (i > 0 && std::abs(values[i - 1]) <= window) {
        --i;
    }
    if (i == values.size()) {
        return std::nullopt;
    }
    if (i == 0) {
        return 0.0;
    }
    const double outside = values[i - 1];
    const double level = outside > 0.0 ? window : -window;
    return static_cast<double>(i - 1) + (outside - level) / (outside - values[i]);
}

/// One whole stretch of an axis, cut into steps and moves.
class StepFinder {
 public:
    StepFinder(std::span<const double> commanded, std::span<const double> actual, double cycle_time,
               const StepSetup& setup, const Stretch& stretch)
        : m_commanded(commanded),
          m_actual(actual),
          m_cycle_time(cycle_time),
          m_setup(setup),
          m_stretch(stretch) {}

    void Find(StepsAndMoves* found) const {
        const auto clusters = ClustersOf(m_commanded, m_stretch, m_setup.resolution);
        for (std::size_t i = 0; i < clusters.size(); ++i) {
            const Cluster& cluster = clusters[i];
            const std::size_t before = i == 0 ? m_stretch.first : clusters[i - 1].last;
            const std::size_t end = i + 1 < clusters.size() ? clusters[i + 1].first : m_stretch.end;
            const bool is_step = cluster.last - cluster.first < 2;
            if (is_step && cluster.first - before >= Cycles(m_setup.standstill_before) &&
                end - cluster.last >= Cycles(m_setup.standstill_behind)) {
                found->steps.push_back(StepAt(cluster, end));
            } else if (!is_step && end - cluster.last >= Cycles(m_setup.dwell)) {
                found->moves.push_back(MoveAt(cluster, end));
            } else {
                ++found->not_counted;
            }
        }
    }

 private:
    [[nodiscard]] std::size_t Cycles(double seconds) const {
        return CyclesIn(seconds, m_cycle_time, 1);
    }
    [[nodiscard]] double Milliseconds(double cycles) const {
        return cycles * m_cycle_time * kMilliseconds;
    }
    [[nodiscard]] Figure Settling(std::span<const double> values, double window) const {
        const auto entry = LastEntry(values, window);
        return entry ? Figure(Milliseconds(*entry)) : Figure::Not(kNotReached);
    }
    /// Mean of the actual values before `end`.
    [[nodiscard]] double EndMean(std::size_t first, std::size_t end) const {
        const std::size_t count = std::min(Cycles(m_setup.end_mean), end - first);
        return LevelOf(m_actual.subspan(end - count, count));
    }

    [[nodiscard]] StepResponse StepAt(const Cluster& cluster, std::size_t end) const {
        StepResponse step;
        step.place = cluster.first;
        step.from = m_commanded[cluster.first - 1];
        step.to = m_commanded[cluster.last];
        const std::size_t count =
            std::min(Cycles(m_setup.start_mean), cluster.first - m_stretch.first);
        const double start = LevelOf(m_actual.subspan(cluster.first - count, count));
        const double reached = EndMean(cluster.last, end);
        const double target = m_setup.target == StepTarget::kReached ? reached : step.to;
        step.steady_error = (step.to - reached) * kMicrometres;
        if (std::abs(target - start) <= m_setup.resolution) {
            step.rise = step.overshoot = step.settling =
                Figure::Not("the axis does not follow the step");
            return step;
        }
        std::vector<double> share;  // of the step
        std::vector<double> off;    // from the target
        double highest = 0.0;
        for (std::size_t i = cluster.first; i < end; ++i) {
            share.push_back((m_actual[i] - start) / (target - start));
            off.push_back(m_setup.step_window > 0.0 ? m_actual[i] - target : share.back() - 1.0);
            highest = std::max(highest, share.back());
        }
        const auto low = FirstCrossing(share, m_setup.rise_from / 100.0);
        const auto high = FirstCrossing(share, m_setup.rise_to / 100.0);
        step.rise = low && high ? Figure(Milliseconds(*high - *low)) : Figure::Not(kNotReached);
        step.overshoot = std::max(0.0, highest - 1.0) * 100.0;
        step.settling = Settling(
            off, m_setup.step_window > 0.0 ? m_setup.step_window : m_setup.settled / 100.0);
        return step;
    }

    [[nodiscard]] Move MoveAt(const Cluster& cluster, std::size_t end) const {
        Move move;
        move.first = cluster.first;
        move.last = cluster.last;
        move.end = end;
        move.from = m_commanded[cluster.first - 1];
        move.to = m_commanded[cluster.last];
        double following = 0.0;
        for (std::size_t i = cluster.first; i <= cluster.last; ++i) {
            move.speed =
                std::max(move.speed, std::abs(m_commanded[i] - m_commanded[i - 1]) / m_cycle_time);
            following = std::max(following, std::abs(m_commanded[i] - m_actual[i]));
        }
        const double direction = move.to < move.from ? -1.0 : 1.0;
        double beyond = 0.0;
        std::vector<double> off;
        for (std::size_t i = cluster.last; i < end; ++i) {
            off.push_back(m_actual[i] - m_commanded[i]);
            following = std::max(following, std::abs(off.back()));
            beyond = std::max(beyond, off.back() * direction);
        }
        move.following = following * kMicrometres;
        move.overshoot = beyond * kMicrometres;
        move.settling = Settling(off, m_setup.move_window);
        move.steady_error = (move.to - EndMean(cluster.last, end)) * kMicrometres;
        return move;
    }

    std::span<const double> m_commanded;
    std::span<const double> m_actual;
    double m_cycle_time;
    const StepSetup& m_setup;
    Stretch m_stretch;
};

Figure MeanSettling(const std::vector<Move>& moves) {
    double sum = 0.0;
    for (const Move& move : moves) {
        if (!move.settling) {
            return Figure::Not("not every move settled");
        }
        sum += *move.settling;
    }
    return moves.empty() ? Figure::Not("no moves")
                         : Figure(sum / static_cast<double>(moves.size()));
}

/// Cycles on either side of an extreme that stay within `window` of it.
std::size_t RestAround(std::span<const double> values, std::size_t place, double window) {
    std::size_t first = place;
    std::size_t last = place;
    while (first > 0 && std::abs(values[first - 1] - values[place]) <= window) {
        --first;
    }
    while (last + 1 < values.size() && std::abs(values[last + 1] - values[place]) <= window) {
        ++last;
    }
    return last - first + 1;
}

/// Where the values turn round by more than `window`, in turn maxima and minima.
struct Turning {
    std::size_t place = 0;
    bool upper = false;
};

std::vector<Turning> TurningsOf(std::span<const double> values, const Stretch& stretch,
                                double window) {
    std::vector<Turning> turnings;
    std::size_t lowest = stretch.first;
    std::size_t highest = stretch.first;
    int direction = 0;  // of the motion since the last turning
    for (std::size_t i = stretch.first; i < stretch.end; ++i) {
        lowest = values[i] < values[lowest] ? i : lowest;
        highest = values[i] > values[highest] ? i : highest;
        if (direction >= 0 && values[highest] - values[i] > window) {
            if (direction > 0) {
                turnings.push_back({highest, true});
            }
            direction = -1;
            lowest = i;
        } else if (direction <= 0 && values[i] - values[lowest] > window) {
            if (direction < 0) {
                turnings.push_back({lowest, false});
            }
            direction = 1;
            highest = i;
        }
    }
    return turnings;
}

}  // namespace

StepsAndMoves FindStepsAndMoves(std::span<const double> commanded, std::span<const double> actual,
                                double cycle_time, const StepSetup& setup) {
    StepsAndMoves found;
    const std::array<std::span<const double>, 2> columns{commanded, actual};
    for (const Stretch& stretch : WholeStretches(columns)) {
        StepFinder(commanded, actual, cycle_time, setup, stretch).Find(&found);
    }
    found.mean_settling = MeanSettling(found.moves);
    return found;
}

std::vector<ReversalDwell> FindReversalDwells(std::span<const double> commanded,
                                              std::span<const double> actual, double cycle_time,
                                              double window) {
    std::vector<ReversalDwell> dwells;
    const std::array<std::span<const double>, 2> columns{commanded, actual};
    for (const Stretch& stretch : WholeStretches(columns)) {
        const auto turnings = TurningsOf(commanded, stretch, window);
        for (std::size_t i = 0; i < turnings.size(); ++i) {
            const Turning& turning = turnings[i];
            // The actual value turns later, before the commanded one turns again.
            const std::size_t end = i + 1 < turnings.size() ? turnings[i + 1].place : stretch.end;
            const auto part = actual.subspan(turning.place, end - turning.place);
            const auto extreme =
                turning.upper ? std::ranges::max_element(part) : std::ranges::min_element(part);
            const std::size_t place =
                turning.place + static_cast<std::size_t>(extreme - part.begin());
            const std::size_t commanded_rest = RestAround(commanded, turning.place, window);
            if (commanded_rest >= CyclesIn(kRestOfStandstill, cycle_time, 2)) {
                continue;
            }
            const auto rest = static_cast<double>(RestAround(actual, place, window)) -
                              static_cast<double>(commanded_rest);
            dwells.push_back({turning.place, commanded[turning.place], turning.upper,
                              rest * cycle_time * kMilliseconds});
        }
    }
    return dwells;
}

std::string DefinitionsOf(const StepSetup& setup) {
    const std::string window = setup.step_window > 0.0
                                   ? "+-" + Decimals(setup.step_window * kMicrometres, 1) + " um"
                                   : "+-" + Decimals(setup.settled, 1) + " %";
    return Words(
        "rise %s to %s %%; target: %s; settled within %s of it, from the step on; "
        "positioned within %s um of the commanded value; dwell at least %s s",
        Decimals(setup.rise_from, 0).c_str(), Decimals(setup.rise_to, 0).c_str(),
        setup.target == StepTarget::kReached ? "value reached" : "commanded value", window.c_str(),
        Decimals(setup.move_window * kMicrometres, 1).c_str(), Decimals(setup.dwell, 2).c_str());
}

}  // namespace wavo::measure

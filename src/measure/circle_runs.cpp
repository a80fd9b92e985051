#include "measure/circle_runs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kLeastShareOfFastest = 0.01;
constexpr double kLeastCurvature = 1e-6;   // per mm
constexpr double kSmallestRadius = 1e-3;   // mm
constexpr double kLargestResidual = 0.01;  // share of the radius

/// Speed and curvature of one whole stretch of a path, where both are defined.
class Motion {
 public:
    Motion(std::span<const double> x, std::span<const double> y, const Stretch& stretch,
           const RunSetup& setup, double cycle_time)
        : m_x(x),
          m_y(y),
          m_setup(setup),
          m_cycle_time(cycle_time),
          m_step(CyclesIn(setup.speed_width, cycle_time, 1)),
          m_reach(CyclesIn(setup.curvature_width, cycle_time, 2)) {
        const std::size_t edge = std::max(m_step, m_reach);
        m_window = CyclesIn(setup.window, cycle_time, 8);
        if (stretch.Size() < 2 * edge + m_window) {
            return;
        }
        m_first = stretch.first + edge;
        m_end = stretch.end - edge;
        m_speed.reserve(m_end - m_first);
        m_curvature.reserve(m_end - m_first);
    }

    /// Derives some lines. True: there are more.
    bool DeriveSome() {
        const std::size_t first = m_first + m_speed.size();
        const std::size_t end = std::min(first + kRowsPerStep, m_end);
        for (std::size_t i = first; i < end; ++i) {
            m_speed.push_back(PathSpeed(m_x, m_y, i, m_step, m_cycle_time));
            m_curvature.push_back(PathCurvature(m_x, m_y, i, m_reach));
            m_fastest = std::max(m_fastest, m_speed.back());
        }
        return end < m_end;
    }

    [[nodiscard]] double Fastest() const { return m_fastest; }

    /// The next run behind place `from`, where a seed of it is found.
    Steps<std::optional<Stretch>> NextRun(std::size_t from, double fastest) {
        const std::size_t stride = std::max<std::size_t>(m_window / 4, 1);
        const std::size_t low = std::max(from, m_first);
        for (std::size_t at = low; at + m_window <= m_end; at += stride) {
            Stretch run{at, at + m_window};
            if (!IsSeed(run, fastest)) {
                continue;
            }
            Grow(low, &run);
            co_await Pause{};
            m_run_speed = Median(m_speed, run);
            co_await Pause{};
            m_run_curvature = Median(m_curvature, run);
            co_await Pause{};
            Grow(low, &run);
            while (run.first < run.end && !Holds(run.first)) {
                ++run.first;
            }
            while (run.end > run.first && !Holds(run.end - 1)) {
                --run.end;
            }
            if (run.end > at + m_window / 2) {
                co_return run;
            }
        }
        co_return std::nullopt;
    }

    /// Sign of the last run's curvature.
    [[nodiscard]] Sense RunSense() const {
        return m_run_curvature > 0.0 ? Sense::kCounterClockwise : Sense::kClockwise;
    }

 private:
    [[nodiscard]] bool Holds(std::size_t place) const {
        return std::abs(m_speed[place - m_first] - m_run_speed) <=
                   m_setup.speed_tolerance * m_run_speed &&
               std::abs(m_curvature[place - m_first] - m_run_curvature) <=
                   m_setup.curvature_tolerance * std::abs(m_run_curvature);
    }

    double Median(const std::vector<double>& values, const Stretch& run) {
        m_sorted.assign(values.begin() + static_cast<std::ptrdiff_t>(run.first - m_first),
                        values.begin() + static_cast<std::ptrdiff_t>(run.end - m_first));
        return MedianOf(m_sorted);
    }

    bool IsSeed(const Stretch& window, double fastest) {
        const auto begin = m_speed.begin() + static_cast<std::ptrdiff_t>(window.first - m_first);
        const auto [least, most] =
            std::minmax_element(begin, begin + static_cast<std::ptrdiff_t>(window.Size()));
        // Told without a median: nothing between these two lies near enough to both.
        if (*most > *least * (1.0 + m_setup.speed_tolerance) / (1.0 - m_setup.speed_tolerance) ||
            *least <= 0.0) {
            return false;
        }
        m_run_speed = Median(m_speed, window);
        m_run_curvature = Median(m_curvature, window);
        if (m_run_speed <= kLeastShareOfFastest * fastest ||
            std::abs(m_run_curvature) <= kLeastCurvature) {
            return false;
        }
        for (std::size_t i = window.first; i < window.end; ++i) {
            if (!Holds(i)) {
                return false;
            }
        }
        return true;
    }

    void Grow(std::size_t low, Stretch* run) const {
        while (run->first > low && Holds(run->first - 1)) {
            --run->first;
        }
        while (run->end < m_end && Holds(run->end)) {
            ++run->end;
        }
    }

    std::span<const double> m_x;
    std::span<const double> m_y;
    RunSetup m_setup;
    double m_cycle_time;
    std::size_t m_step;   ///< lines to either side, for the speed
    std::size_t m_reach;  ///< the same for the curvature
    std::size_t m_window = 0;
    std::size_t m_first = 0;  ///< place of the first speed
    std::size_t m_end = 0;
    std::vector<double> m_speed;
    std::vector<double> m_curvature;
    double m_fastest = 0.0;
    double m_run_speed = 0.0;
    double m_run_curvature = 0.0;
    std::vector<double> m_sorted;
};

/// Angle of the points about a centre, counted on from the first and positive in the sense,
/// radians.
Steps<std::vector<double>> UnwrappedAngles(Arc arc, Circle circle, Sense sense) {
    std::vector<double> angles;
    angles.reserve(arc.x.size());
    double u = arc.x[0] - circle.x;
    double w = arc.y[0] - circle.y;
    double angle = SignOf(sense) * std::atan2(w, u);
    for (std::size_t i = 0; i < arc.x.size(); ++i) {
        const double next_u = arc.x[i] - circle.x;
        const double next_w = arc.y[i] - circle.y;
        angle += SignOf(sense) * std::atan2(u * next_w - w * next_u, u * next_u + w * next_w);
        angles.push_back(angle);
        u = next_u;
        w = next_w;
        if (angles.size() % kRowsPerStep == 0) {
            co_await Pause{};
        }
    }
    co_return angles;
}

Arc ArcOf(std::span<const double> x, std::span<const double> y, const Stretch& stretch) {
    return {x.subspan(stretch.first, stretch.Size()), y.subspan(stretch.first, stretch.Size())};
}

std::string LessThanOneTurn(double degrees) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "less than one turn: %.0f degrees", degrees);
    return text.data();
}

/// The turn in the middle of what the margins leave; nothing when that is less than one.
Steps<std::optional<Stretch>> TurnWithin(const PlanePath& path, const CircleRun& run,
                                         double margin) {
    const std::size_t cut = CyclesIn(margin, path.cycle_time, 1);
    if (run.stretch.Size() < 2 * cut + 8) {
        co_return std::nullopt;
    }
    const Stretch inner{run.stretch.first + cut, run.stretch.end - cut};
    const Arc arc = ArcOf(path.x, path.y, inner);
    const auto circle = co_await FitCircleQuicklyInSteps({&arc, 1});
    if (!circle) {
        co_return std::nullopt;
    }
    const auto angles = co_await UnwrappedAngles(arc, *circle, run.sense);
    if (angles.back() - angles.front() < kFullTurn) {
        co_return std::nullopt;
    }
    const double middle = (angles.front() + angles.back()) / 2.0;
    const auto place = [&](double angle) {
        const auto found = std::ranges::find_if(angles, [=](double a) { return a >= angle; });
        return inner.first + static_cast<std::size_t>(found - angles.begin());
    };
    co_return Stretch{place(middle - kFullTurn / 2.0), place(middle + kFullTurn / 2.0)};
}

/// Gives the run its turn, or the reason why it has none; that is whether it has.
Steps<bool> ChooseTurn(const PlanePath& path, const RunSetup& setup, const Arc& arc,
                       CircleRun* run) {
    const double residual = RadialResidual({&arc, 1}, run->circle);
    if (run->angle < 360.0) {
        run->reason = LessThanOneTurn(run->angle);
        co_return false;
    }
    if (residual > kLargestResidual * run->circle.radius) {
        run->reason = "not round: the radius changes by more than 1 %";
        co_return false;
    }
    run->margin = setup.loop_time ? 5.0 * *setup.loop_time : setup.margin;
    run->turn = co_await TurnWithin(path, *run, run->margin);
    if (!run->turn && run->margin > setup.short_margin) {
        run->margin = setup.short_margin;
        run->shortened = true;
        run->turn = co_await TurnWithin(path, *run, run->margin);
    }
    if (!run->turn) {
        run->reason =
            "less than one turn without approach and run-out: program 1.25 turns or more per sense";
    }
    co_return run->turn.has_value();
}

Steps<std::vector<CircleRun>> RunsOf(PlanePath path, RunSetup setup) {
    const bool commanded = path.HasCommanded();
    const auto x = commanded ? path.x_cmd : path.x;
    const auto y = commanded ? path.y_cmd : path.y;
    const std::array<std::span<const double>, 4> columns{path.x, path.y, x, y};
    std::vector<Motion> motions;
    double fastest = 0.0;
    for (const Stretch& stretch : WholeStretches(columns)) {
        motions.emplace_back(x, y, stretch, setup, path.cycle_time);
        while (motions.back().DeriveSome()) {
            co_await Pause{};
        }
        fastest = std::max(fastest, motions.back().Fastest());
    }
    std::vector<CircleRun> runs;
    for (Motion& motion : motions) {
        std::size_t from = 0;
        while (const auto found = co_await motion.NextRun(from, fastest)) {
            from = found->end;
            const Arc arc = ArcOf(x, y, *found);
            const auto circle = co_await FitCircleQuicklyInSteps({&arc, 1});
            if (!circle || circle->radius < kSmallestRadius) {
                continue;
            }
            CircleRun run;
            run.stretch = *found;
            run.sense = motion.RunSense();
            run.circle = *circle;
            const auto angles = co_await UnwrappedAngles(arc, *circle, run.sense);
            run.angle = (angles.back() - angles.front()) * kDegrees;
            co_await ChooseTurn(path, setup, arc, &run);
            runs.push_back(std::move(run));
        }
    }
    co_return runs;
}

}  // namespace

double PathSpeed(std::span<const double> x, std::span<const double> y, std::size_t i, std::size_t k,
                 double cycle_time) {
    const double dx = x[i + k] - x[i - k];
    const double dy = y[i + k] - y[i - k];
    return std::sqrt(dx * dx + dy * dy) / (2.0 * static_cast<double>(k) * cycle_time);
}

double PathCurvature(std::span<const double> x, std::span<const double> y, std::size_t i,
                     std::size_t k) {
    const double ux = x[i] - x[i - k];
    const double uy = y[i] - y[i - k];
    const double wx = x[i + k] - x[i];
    const double wy = y[i + k] - y[i];
    const double tx = ux + wx;
    const double ty = uy + wy;
    const double squares = (ux * ux + uy * uy) * (wx * wx + wy * wy) * (tx * tx + ty * ty);
    return squares > 0.0 ? 2.0 * (ux * wy - uy * wx) / std::sqrt(squares) : 0.0;
}

Steps<std::vector<CircleRun>> FindCircleRuns(PlanePath path, RunSetup setup) {
    return RunsOf(path, setup);
}

}  // namespace wavo::measure

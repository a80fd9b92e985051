#include "measure/circle_shape.h"

#include <algorithm>
#include <cmath>

#include "measure/circle_model.h"
#include "measure/least_squares.h"
#include "measure/reversal_spikes.h"
#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kLastShift = 1e-7;  // mm
constexpr int kMostShapeRounds = 10;
constexpr double kZoneStep = 2.5;  // degrees by which a zone is widened
constexpr const char* kNotSeparable =
    "oval at 45 deg: squareness and servo mismatch not separable with one sense";

/// The fit itself: which columns it has, its rounds, its numbers.
class ShapeFit {
 public:
    ShapeFit(std::span<const ShapeTurn> turns, double radius, double before, double behind)
        : m_turns(turns),
          m_radius(radius),
          m_sine_before(std::sin(before / kDegrees)),
          m_sine_behind(std::sin(behind / kDegrees)) {
        for (const ShapeTurn& turn : turns) {
            m_centres.push_back(turn.circle);
            m_both_senses = m_both_senses || turn.sense != turns.front().sense;
        }
        m_shared = 2 * turns.size();
    }

    /// Empty when it went well, else why not.
    Steps<std::string> Run() {
        for (m_rounds = 1; m_rounds <= kMostShapeRounds; ++m_rounds) {
            m_solution = co_await SolveRound();
            if (m_solution.rank < Unknowns()) {
                co_return "the points leave the shape undetermined: is it a full turn?";
            }
            double shift = 0.0;
            for (std::size_t k = 0; k < m_turns.size(); ++k) {
                m_centres[k].x += m_solution.unknowns[2 * k];
                m_centres[k].y += m_solution.unknowns[2 * k + 1];
                shift = std::max({shift, std::abs(m_solution.unknowns[2 * k]),
                                  std::abs(m_solution.unknowns[2 * k + 1])});
            }
            if (shift < kLastShift) {
                co_return std::string();
            }
        }
        co_return "no convergence";
    }

    [[nodiscard]] bool BothSenses() const { return m_both_senses; }
    [[nodiscard]] int Rounds() const { return m_rounds; }
    [[nodiscard]] const std::vector<Circle>& Centres() const { return m_centres; }
    [[nodiscard]] const LeastSquares::Solution& Solution() const { return m_solution; }

    /// Places of the unknowns that the turns share.
    [[nodiscard]] std::size_t RadiusChange() const { return m_shared; }
    [[nodiscard]] std::size_t ScaleDifference() const { return m_shared + 1; }
    [[nodiscard]] std::size_t Squareness() const { return m_shared + 2; }  // or the oval
    [[nodiscard]] std::size_t ServoMismatch() const { return m_shared + 3; }
    [[nodiscard]] std::size_t BacklashX() const { return m_shared + (m_both_senses ? 4 : 3); }
    [[nodiscard]] std::size_t BacklashY() const { return BacklashX() + 1; }
    [[nodiscard]] std::size_t Unknowns() const { return BacklashY() + 1; }

    /// About the centres that the rounds ended with.
    [[nodiscard]] RadialModel Model(std::size_t turn) const {
        const auto& unknowns = m_solution.unknowns;
        RadialModel model;
        model.radius = m_radius;
        model.sense = SignOf(m_turns[turn].sense);
        model.radius_change = unknowns[RadiusChange()];
        model.scale_difference = unknowns[ScaleDifference()];
        model.oval = m_both_senses
                         ? m_radius / 2.0 * unknowns[Squareness()] -
                               model.sense * m_turns[turn].feed / 2.0 * unknowns[ServoMismatch()]
                         : unknowns[Squareness()];
        model.backlash_x = unknowns[BacklashX()];
        model.backlash_y = unknowns[BacklashY()];
        const double late =
            m_both_senses ? m_turns[turn].feed / m_radius * unknowns[ServoMismatch()] : 0.0;
        model.turns_x = -model.backlash_y / (2.0 * m_radius) - late;
        model.turns_y = -model.backlash_x / (2.0 * m_radius) + late;
        return model;
    }

    /// Standard deviation of the residual of a turn outside the zones, mm.
    [[nodiscard]] double Deviation(std::size_t turn) const {
        const RadialModel model = Model(turn);
        double sum = 0.0;
        std::size_t count = 0;
        ForRows(turn, {0, PointsOf(turn)}, [&](const PolarPoint& p) {
            const double residual = p.distance - m_radius - model.Value(p);
            sum += residual * residual;
            ++count;
        });
        return count > 0 ? std::sqrt(sum / static_cast<double>(count)) : 0.0;
    }

    /// Standard error of an unknown, for noise of the radius as large as the residual.
    [[nodiscard]] double Error(std::size_t unknown) const {
        double turns_per_row = 0.0;
        for (const std::size_t rows : m_rows) {
            turns_per_row += 1.0 / static_cast<double>(rows) / static_cast<double>(m_rows.size());
        }
        const double noise = std::sqrt(m_solution.residual / static_cast<double>(m_turns.size()));
        return noise * std::sqrt(m_solution.variance[unknown] * turns_per_row);
    }

 private:
    /// Those among the points of `stretch`.
    template <typename Take>
    void ForRows(std::size_t turn, const Stretch& stretch, const Take& take) const {
        const Arc& points = m_turns[turn].points;
        const Circle& centre = m_centres[turn];
        const double sense = SignOf(m_turns[turn].sense);
        for (std::size_t i = stretch.first; i < stretch.end; ++i) {
            const PolarPoint p(points.x[i] - centre.x, points.y[i] - centre.y);
            const double since = p.SinceReversal(sense);
            if (since < -m_sine_before || since > m_sine_behind) {
                take(p);
            }
        }
    }

    [[nodiscard]] std::size_t PointsOf(std::size_t turn) const {
        return m_turns[turn].points.x.size();
    }

    Steps<LeastSquares::Solution> SolveRound() {
        LeastSquares fit(Unknowns());
        m_rows.clear();
        for (std::size_t turn = 0; turn < m_turns.size(); ++turn) {
            std::size_t count = 0;
            ForRows(turn, {0, PointsOf(turn)}, [&](const PolarPoint&) { ++count; });
            m_rows.push_back(std::max<std::size_t>(count, 1));
            const double weight = 1.0 / std::sqrt(static_cast<double>(m_rows.back()));
            for (std::size_t first = 0; first < PointsOf(turn); first += kRowsPerStep) {
                co_await Pause{};
                AddRows(turn, {first, std::min(first + kRowsPerStep, PointsOf(turn))}, weight,
                        &fit);
            }
        }
        co_return fit.Solve();
    }

    void AddRows(std::size_t turn, const Stretch& stretch, double weight, LeastSquares* fit) const {
        const double sense = SignOf(m_turns[turn].sense);
        const double feed = m_turns[turn].feed;
        const std::size_t stride = fit->Stride();
        ForRows(turn, stretch, [&](const PolarPoint& p) {
            double* row = fit->NextRow();
            for (std::size_t i = 0; i < m_shared; ++i) {
                row[i * stride] = 0.0;
            }
            const double sine_of_double = 2.0 * p.sine * p.cosine;
            row[2 * turn * stride] = weight * p.cosine;
            row[(2 * turn + 1) * stride] = weight * p.sine;
            row[RadiusChange() * stride] = weight;
            row[ScaleDifference() * stride] =
                weight * m_radius / 2.0 * (p.cosine * p.cosine - p.sine * p.sine);
            if (m_both_senses) {
                row[Squareness() * stride] = weight * m_radius / 2.0 * sine_of_double;
                row[ServoMismatch() * stride] = -weight * sense * feed / 2.0 * sine_of_double;
            } else {
                row[Squareness() * stride] = weight * sine_of_double;
            }
            row[BacklashX() * stride] = weight * p.PlayX(sense);
            row[BacklashY() * stride] = weight * p.PlayY(sense);
            row[Unknowns() * stride] = weight * (p.distance - m_radius);
        });
    }

    std::span<const ShapeTurn> m_turns;
    double m_radius;
    double m_sine_before;
    double m_sine_behind;
    std::size_t m_shared = 0;
    bool m_both_senses = false;
    std::vector<Circle> m_centres;
    std::vector<std::size_t> m_rows;  ///< per turn
    LeastSquares::Solution m_solution;
    int m_rounds = 0;
};

void TakeFigures(const ShapeFit& fit, CircleShape* shape) {
    const auto figure = [&](std::size_t unknown, double unit) {
        return FittedFigure{fit.Solution().unknowns[unknown] * unit, fit.Error(unknown) * unit};
    };
    shape->radius_change = figure(fit.RadiusChange(), kMicrometres);
    shape->scale_difference = figure(fit.ScaleDifference(), kPerMillion);
    if (fit.BothSenses()) {
        shape->squareness = figure(fit.Squareness(), kPerMillion);
        shape->servo_mismatch = figure(fit.ServoMismatch(), kMilliseconds);
        shape->oval.value = Figure::Not("both senses tell squareness and servo mismatch apart");
    } else {
        shape->squareness.value = shape->servo_mismatch.value = Figure::Not(kNotSeparable);
        shape->oval = figure(fit.Squareness(), kMicrometres);
    }
    shape->backlash_x = figure(fit.BacklashX(), kMicrometres);
    shape->backlash_y = figure(fit.BacklashY(), kMicrometres);
    shape->centres = fit.Centres();
    shape->residual =
        std::sqrt(fit.Solution().residual / static_cast<double>(fit.Centres().size())) *
        kMicrometres;
    shape->condition = fit.Solution().condition;
    shape->rounds = fit.Rounds();
}

/// Spikes and deviations; returns how wide the zones behind the reversals ought to be, degrees.
Steps<double> TakeSpikes(std::span<const ShapeTurn> turns, const ShapeFit& fit,
                         const ShapeSetup& setup, CircleShape* shape) {
    double needed = 0.0;
    for (std::size_t turn = 0; turn < turns.size(); ++turn) {
        co_await Pause{};
        const RadialModel model = fit.Model(turn);
        const double deviation = fit.Deviation(turn);
        shape->deviations.push_back(deviation * kMicrometres);
        for (const FoundSpike& found :
             FindSpikes(turns[turn], fit.Centres()[turn], model, deviation, setup)) {
            shape->spikes.push_back(found.spike);
            needed = std::max(needed, found.end);
        }
        for (const double play : {model.backlash_x, model.backlash_y}) {
            needed = std::max(needed, std::sqrt(2.0 * std::abs(play) / model.radius) * kDegrees);
        }
    }
    co_return needed;
}

Steps<Told<CircleShape>> ShapeOf(std::span<const ShapeTurn> turns, double radius,
                                 ShapeSetup setup) {
    const double before = setup.zone;
    double behind = setup.zone;
    while (true) {
        ShapeFit fit(turns, radius, before, behind);
        const std::string failure = co_await fit.Run();
        if (!failure.empty()) {
            co_return Told<CircleShape>::Not(failure);
        }
        CircleShape shape;
        shape.radius = radius;
        shape.zone_before = before;
        shape.zone_behind = behind;
        TakeFigures(fit, &shape);
        const double needed = co_await TakeSpikes(turns, fit, setup, &shape);
        const double widest = std::max(setup.zone, setup.widest_zone);
        if (needed > behind && behind < widest) {
            behind = std::min(std::max(behind + kZoneStep, needed), widest);
            continue;
        }
        if (behind > setup.zone) {
            shape.notes.emplace_back("zones behind the reversals widened for spikes and play");
        }
        if (needed > behind) {
            shape.notes.emplace_back("spikes or play reach beyond the zones left out");
        }
        if (setup.noise && shape.residual > 3.0 * *setup.noise) {
            shape.notes.emplace_back("model does not explain the shape");
        }
        co_return shape;
    }
}

}  // namespace

Steps<Told<CircleShape>> FitShape(std::span<const ShapeTurn> turns, double radius,
                                  ShapeSetup setup) {
    return ShapeOf(turns, radius, setup);
}

}  // namespace wavo::measure

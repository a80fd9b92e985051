#include "measure/circle_test.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "measure/circle_model.h"
#include "measure/circle_notes.h"
#include "measure/least_squares.h"
#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kFeedsAgree = 0.02;
constexpr double kSizesAgree = 0.01;
constexpr double kFeedIsMeant = 0.05;

Arc PointsOf(const PlanePath& path, const Stretch& stretch) {
    return {path.x.subspan(stretch.first, stretch.Size()),
            path.y.subspan(stretch.first, stretch.Size())};
}

/// Angle from the first to the last point, in the sense, radians.
double TurnedAngle(const Arc& arc, const Circle& circle, Sense sense) {
    const std::size_t last = arc.x.size() - 1;
    const double first_angle = std::atan2(arc.y[0] - circle.y, arc.x[0] - circle.x);
    const double last_angle = std::atan2(arc.y[last] - circle.y, arc.x[last] - circle.x);
    double angle = SignOf(sense) * (last_angle - first_angle);
    // One turn less the step from its last sample to the next one.
    while (angle <= std::numbers::pi) {
        angle += kFullTurn;
    }
    return angle;
}

/// Mean path feed and its largest deviation from the mean speed, %.
void TakeFeed(const PlanePath& path, double speed_width, CircleTurn* turn) {
    const Arc arc = PointsOf(path, turn->stretch);
    turn->feed = turn->circle.radius * TurnedAngle(arc, turn->circle, turn->sense) /
                 (static_cast<double>(arc.x.size() - 1) * path.cycle_time);
    const std::size_t step = CyclesIn(speed_width, path.cycle_time, 1);
    const std::size_t first = std::max(turn->stretch.first, step);
    const std::size_t end = std::min(turn->stretch.end, path.x.size() - step);
    std::vector<double> speeds;
    double sum = 0.0;
    for (std::size_t i = first; i < end; ++i) {
        const double speed = PathSpeed(path.x, path.y, i, step, path.cycle_time);
        if (std::isfinite(speed)) {
            speeds.push_back(speed);
            sum += speed;
        }
    }
    const double mean = sum / static_cast<double>(speeds.size());
    for (const double speed : speeds) {
        turn->feed_deviation = std::max(turn->feed_deviation, std::abs(speed / mean - 1.0) * 100.0);
    }
}

/// How the radius changed over the turn: a share in proportion to the angle, beside the errors that
/// a machine has anyway.
double ClosureOf(const Arc& arc, const Circle& circle, Sense sense) {
    constexpr std::size_t kPoints = 2000;
    constexpr double kZone = 0.09;  // sine of 5 degrees
    const double sign = SignOf(sense);
    const std::size_t step = std::max<std::size_t>(arc.x.size() / kPoints, 1);
    LeastSquares fit(8);
    for (std::size_t i = 0; i < arc.x.size(); i += step) {
        const PolarPoint p(arc.x[i] - circle.x, arc.y[i] - circle.y);
        if (std::abs(p.SinceReversal(sign)) > kZone) {
            const double share = static_cast<double>(i) / static_cast<double>(arc.x.size());
            fit.Add(std::array{1.0, p.cosine, p.sine, p.cosine * p.cosine - p.sine * p.sine,
                               2.0 * p.sine * p.cosine, p.PlayX(sign), p.PlayY(sign), share,
                               p.distance - circle.radius});
        }
    }
    return fit.Solve().unknowns[7] * kMicrometres;
}

Steps<Figure> NominalRadius(const PlanePath& path, const Stretch& stretch,
                            const CircleSetup& setup) {
    if (setup.radius) {
        co_return *setup.radius;
    }
    if (!path.HasCommanded()) {
        co_return Figure::Not(
            "no nominal radius: none was given and there are no commanded values");
    }
    const Arc arc{path.x_cmd.subspan(stretch.first, stretch.Size()),
                  path.y_cmd.subspan(stretch.first, stretch.Size())};
    const auto circle = co_await FitCircleInSteps({&arc, 1});
    co_return circle ? Figure(circle->radius) : Figure::Not("commanded values: " + circle.reason);
}

Figure ZoneWidth(std::span<const Arc> arcs, const Circle& start, bool wanted) {
    if (!wanted) {
        return Figure::Not("not asked for");
    }
    const auto centre = FitMinimumZone(arcs, start);
    return centre ? Figure(RadialRangeAbout(arcs, centre->x, centre->y).Width() * kMicrometres)
                  : Figure::Not(centre.reason);
}

bool BelongTogether(const CircleTurn& a, const CircleTurn& b) {
    const double radius = a.circle.radius;
    return a.sense != b.sense && std::abs(b.feed / a.feed - 1.0) <= kFeedsAgree &&
           std::abs(b.circle.radius / radius - 1.0) <= kSizesAgree &&
           std::hypot(b.circle.x - a.circle.x, b.circle.y - a.circle.y) <= kSizesAgree * radius;
}

/// Pairs in the order of time; turns without a partner stand alone.
std::vector<std::vector<std::size_t>> Grouped(const std::vector<CircleTurn>& turns) {
    std::vector<std::vector<std::size_t>> groups;
    std::vector<bool> taken(turns.size(), false);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        if (taken[i]) {
            continue;
        }
        std::vector<std::size_t> group{i};
        for (std::size_t k = i + 1; k < turns.size() && group.size() == 1; ++k) {
            if (!taken[k] && BelongTogether(turns[i], turns[k])) {
                taken[k] = true;
                group.push_back(k);
            }
        }
        std::ranges::stable_sort(group, [&](std::size_t a, std::size_t b) {
            return SignOf(turns[a].sense) > SignOf(turns[b].sense);
        });
        groups.push_back(std::move(group));
    }
    return groups;
}

void TakePairFigures(std::span<const Arc> arcs, const Told<Circle>& common, const Figure& nominal,
                     bool zone, CircleEvaluation* evaluation) {
    if (!common) {
        evaluation->bidirectional_error = evaluation->mean_radial_error =
            evaluation->bidirectional_error_zone = Figure::Not(common.reason);
        return;
    }
    evaluation->common = *common;
    evaluation->bidirectional_error =
        RadialRangeAbout(arcs, common->x, common->y).Width() * kMicrometres;
    evaluation->bidirectional_error_zone = ZoneWidth(arcs, *common, zone);
    evaluation->mean_radial_error =
        nominal ? Figure((common->radius - *nominal) * kMicrometres) : nominal;
}

Steps<Told<CircleTurn>> TurnInSteps(const PlanePath& path, Stretch stretch, Sense sense,
                                    const CircleSetup& setup) {
    const Arc arc = PointsOf(path, stretch);
    const auto circle = co_await FitCircleInSteps({&arc, 1});
    if (!circle) {
        co_return Told<CircleTurn>::Not(circle.reason);
    }
    CircleTurn turn;
    turn.sense = sense;
    turn.stretch = stretch;
    turn.circle = *circle;
    TakeFeed(path, setup.run.speed_width, &turn);
    co_await Pause{};
    turn.nominal_radius = co_await NominalRadius(path, stretch, setup);
    turn.circular_error = RadialRangeAbout({&arc, 1}, circle->x, circle->y).Width() * kMicrometres;
    turn.circular_error_zone = ZoneWidth({&arc, 1}, *circle, setup.minimum_zone);
    turn.radial_error_max = turn.radial_error_min = turn.nominal_radius;
    if (turn.nominal_radius) {
        const Circle& centre = setup.centre ? *setup.centre : *circle;
        const RadialRange range = RadialRangeAbout({&arc, 1}, centre.x, centre.y);
        turn.radial_error_max = (range.largest - *turn.nominal_radius) * kMicrometres;
        turn.radial_error_min = (range.smallest - *turn.nominal_radius) * kMicrometres;
    }
    co_await Pause{};
    turn.closure = ClosureOf(arc, *circle, sense);
    co_return turn;
}

Steps<CircleEvaluation> EvaluationInSteps(const PlanePath& path, std::span<const CircleTurn> turns,
                                          const CircleSetup& setup) {
    CircleEvaluation evaluation;
    std::vector<Arc> arcs;
    std::vector<ShapeTurn> shape_turns;
    for (const CircleTurn& turn : turns) {
        arcs.push_back(PointsOf(path, turn.stretch));
        shape_turns.push_back({arcs.back(), turn.sense, turn.feed, turn.circle});
    }
    const Figure& nominal = turns.front().nominal_radius;
    if (turns.size() > 1) {
        const auto common = co_await FitCircleInSteps(arcs);
        TakePairFigures(arcs, common, nominal, setup.minimum_zone, &evaluation);
    } else {
        evaluation.bidirectional_error = evaluation.bidirectional_error_zone =
            evaluation.mean_radial_error = Figure::Not("one sense only");
    }
    const double radius = nominal ? *nominal : turns.front().circle.radius;
    evaluation.shape = co_await FitShape(shape_turns, radius, setup.shape);
    if (evaluation.shape && !nominal) {
        evaluation.shape.value->radius_change.value = nominal;
    }
    co_return evaluation;
}

}  // namespace

std::optional<std::size_t> ChosenEvaluation(const CircleResult& result,
                                            const std::optional<double>& feed) {
    std::optional<std::size_t> chosen;
    for (std::size_t i = 0; i < result.evaluations.size(); ++i) {
        const CircleEvaluation& evaluation = result.evaluations[i];
        const double reached = result.turns[evaluation.turns.front()].feed;
        if (feed && std::abs(reached / *feed - 1.0) > kFeedIsMeant) {
            continue;
        }
        if (!chosen || evaluation.turns.size() > result.evaluations[*chosen].turns.size()) {
            chosen = i;
        }
    }
    return chosen;
}

Told<CircleTurn> EvaluateTurn(const PlanePath& path, const Stretch& stretch, Sense sense,
                              const CircleSetup& setup) {
    return TurnInSteps(path, stretch, sense, setup).Compute();
}

CircleEvaluation EvaluateTurns(const PlanePath& path, std::span<const CircleTurn> turns,
                               const CircleSetup& setup) {
    return EvaluationInSteps(path, turns, setup).Compute();
}

Steps<CircleResult> TestCircleInSteps(PlanePath path, CircleSetup setup) {
    CircleResult result;
    result.cycle_time = path.cycle_time;
    result.lines = path.x.size();
    result.from_commanded = path.HasCommanded();
    result.runs = co_await FindCircleRuns(path, setup.run);
    for (std::size_t i = 0; i < result.runs.size(); ++i) {
        CircleRun& run = result.runs[i];
        if (!run.turn) {
            continue;
        }
        auto turn = co_await TurnInSteps(path, *run.turn, run.sense, setup);
        if (turn) {
            turn.value->run = i;
            result.turns.push_back(std::move(*turn.value));
        } else {
            run.turn.reset();
            run.reason = turn.reason;
        }
    }
    for (const std::vector<std::size_t>& group : Grouped(result.turns)) {
        std::vector<CircleTurn> turns;
        turns.reserve(group.size());
        for (const std::size_t place : group) {
            turns.push_back(result.turns[place]);
        }
        auto evaluation = co_await EvaluationInSteps(path, turns, setup);
        evaluation.turns = group;
        result.evaluations.push_back(std::move(evaluation));
    }
    co_await Pause{};
    result.notes = CircleNotes(path, setup, result);
    co_return result;
}

CircleResult TestCircle(const PlanePath& path, const CircleSetup& setup) {
    return TestCircleInSteps(path, setup).Compute();
}

}  // namespace wavo::measure

#include "measure/reversal_spikes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "measure/units.h"

namespace wavo::measure {

namespace {

/// Below so many standard deviations of the residual there is no spike.
constexpr double kLeastDeviations = 4.0;
constexpr double kBase = 0.1;
/// What is smaller disturbs no fit, mm.
constexpr double kSmallest = 1e-4;
/// Degrees before a reversal that are looked at too: the rising side may begin there.
constexpr double kBefore = 10.0;

struct SpikePoint {
    double phi = 0.0;       ///< degrees behind the reversal
    double residual = 0.0;  ///< mm
};

/// The residual about each reversal, in the order of time.
std::vector<SpikePoint> PointsAbout(int degrees, const ShapeTurn& turn, const Circle& centre,
                                    const RadialModel& model, const ShapeSetup& setup) {
    const double angle = degrees / kDegrees;
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double sense = SignOf(turn.sense);
    std::vector<SpikePoint> points;
    for (std::size_t i = 0; i < turn.points.x.size(); ++i) {
        const double u = turn.points.x[i] - centre.x;
        const double w = turn.points.y[i] - centre.y;
        if (u * cosine + w * sine < 0.85 * model.radius) {
            continue;
        }
        const PolarPoint p(u, w);
        const double along = p.cosine * cosine + p.sine * sine;
        const double phi = sense * std::atan2(cosine * p.sine - sine * p.cosine, along) * kDegrees;
        // As far as a falling side may reach.
        if (phi < -kBefore || phi > setup.spike_window + kBefore) {
            continue;
        }
        const double turns = (degrees % 180 == 0 ? model.turns_x : model.turns_y) * kDegrees;
        const double expected =
            phi >= std::min(turns, 0.0) ? model.Behind(p, phi / kDegrees) : model.Value(p);
        points.push_back({phi, p.distance - model.radius - expected});
    }
    // A turn that begins here holds the part before the reversal at its end.
    std::ranges::stable_sort(points, {}, &SpikePoint::phi);
    return points;
}

/// Where the residual falls to `level` going from the peak in steps of `direction`.
std::optional<double> FallsTo(const std::vector<SpikePoint>& points, std::size_t peak, double level,
                              int direction) {
    const double sign = SignOfNumber(points[peak].residual);
    std::size_t at = peak;
    while (direction < 0 ? at > 0 : at + 1 < points.size()) {
        const std::size_t next = direction < 0 ? at - 1 : at + 1;
        const double here = points[at].residual * sign;
        const double there = points[next].residual * sign;
        if (there <= level) {
            return points[at].phi +
                   (here - level) / (here - there) * (points[next].phi - points[at].phi);
        }
        at = next;
    }
    return std::nullopt;
}

FoundSpike SpikeAt(int degrees, const ShapeTurn& turn, const Circle& centre,
                   const RadialModel& model, double deviation, const ShapeSetup& setup) {
    FoundSpike found;
    found.spike.sense = turn.sense;
    found.spike.degrees = degrees;
    const auto none = Figure::Not("none");
    found.spike.height = found.spike.width = found.spike.duration = none;
    const auto points = PointsAbout(degrees, turn, centre, model, setup);
    std::optional<std::size_t> peak;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (points[i].phi >= 0.0 && points[i].phi <= setup.spike_window &&
            (!peak || std::abs(points[i].residual) > std::abs(points[*peak].residual))) {
            peak = i;
        }
    }
    if (!peak) {
        found.spike.height = found.spike.width = found.spike.duration =
            Figure::Not("no values at the reversal");
        return found;
    }
    const double height = std::abs(points[*peak].residual);
    if (height < kLeastDeviations * deviation || height == 0.0) {
        return found;
    }
    found.spike.height = points[*peak].residual * kMicrometres;
    const double level = height * setup.spike_share;
    const auto left = FallsTo(points, *peak, level, -1);
    const auto right = FallsTo(points, *peak, level, 1);
    const double base = std::max(height * kBase, kSmallest);
    if (height > base) {
        found.end = FallsTo(points, *peak, base, 1).value_or(setup.spike_window + kBefore);
    }
    if (!left || !right) {
        found.spike.width = found.spike.duration =
            Figure::Not("it does not fall to the level of the width");
        return found;
    }
    found.spike.width = *right - *left;
    found.spike.duration = (*right - *left) / kDegrees * model.radius / turn.feed * kMilliseconds;
    return found;
}

}  // namespace

std::vector<FoundSpike> FindSpikes(const ShapeTurn& turn, const Circle& centre,
                                   const RadialModel& model, double deviation,
                                   const ShapeSetup& setup) {
    std::vector<FoundSpike> spikes;
    for (const int degrees : {0, 90, 180, 270}) {
        spikes.push_back(SpikeAt(degrees, turn, centre, model, deviation, setup));
    }
    return spikes;
}

}  // namespace wavo::measure

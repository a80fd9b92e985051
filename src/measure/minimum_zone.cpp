// The centre of the minimum zone: a linear programme over the samples that bound the zone.
//
// Linear about a centre, a sample at angle th with deviation e stands e - p cos th - q sin th out
// of the circle after a shift of the centre by (p, q). Least t_hi - t_lo with t_lo <= that <= t_hi
// is solved in its dual form, columns of which are samples on either side of the zone, by the
// simplex method; samples that leave the zone so found become columns, until none does.
#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>

#include "measure/circle_fit.h"
#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kZoneTolerance = 1e-7;   // mm: 0.1 nm
constexpr double kShiftTolerance = 1e-6;  // mm: 1 nm
constexpr int kMostPivots = 200;
constexpr int kMostSolves = 50;
constexpr int kMostZoneRounds = 10;
/// Cost of the columns that only stand for "not yet feasible", in units of the largest deviation.
constexpr double kBarred = 1e6;

/// A sample that bounds the zone from outside (side +1) or inside (-1).
struct ZoneColumn {
    Eigen::Vector4d entries;  ///< of the constraints: sums of both sides, cos and sin balance
    double gain = 0.0;
};

ZoneColumn ColumnOf(double deviation, double cosine, double sine, double side) {
    return {{side > 0.0 ? 1.0 : 0.0, side > 0.0 ? 0.0 : 1.0, side * cosine, side * sine},
            side * deviation};
}

/// The zone that the columns allow: t_hi, -t_lo, p, q.
class ZoneProgramme {
 public:
    explicit ZoneProgramme(double barred) {
        for (int i = 0; i < 4; ++i) {
            m_basis[static_cast<std::size_t>(i)] = static_cast<std::size_t>(i);
            m_columns.push_back({Eigen::Vector4d::Unit(i), -barred});
        }
    }

    void Add(const ZoneColumn& column) { m_columns.push_back(column); }

    /// False where the pivots do not end.
    bool Solve(Eigen::Vector4d* zone) {
        const Eigen::Vector4d right(1.0, 1.0, 0.0, 0.0);
        for (int pivot = 0; pivot < kMostPivots; ++pivot) {
            Eigen::Matrix4d basis;
            Eigen::Vector4d gains;
            for (int i = 0; i < 4; ++i) {
                const ZoneColumn& column = m_columns[m_basis[static_cast<std::size_t>(i)]];
                basis.col(i) = column.entries;
                gains[i] = column.gain;
            }
            const Eigen::FullPivLU<Eigen::Matrix4d> solver(basis);
            *zone = solver.inverse().transpose() * gains;
            const std::size_t entering = Entering(*zone, pivot > kMostPivots / 2);
            if (entering == m_columns.size()) {
                return true;
            }
            const Eigen::Vector4d shares = solver.solve(right);
            const Eigen::Vector4d change = solver.solve(m_columns[entering].entries);
            int leaving = -1;
            for (int i = 0; i < 4; ++i) {
                if (change[i] > 1e-12 &&
                    (leaving < 0 || shares[i] * change[leaving] < shares[leaving] * change[i])) {
                    leaving = i;
                }
            }
            if (leaving < 0) {
                return false;
            }
            m_basis[static_cast<std::size_t>(leaving)] = entering;
        }
        return false;
    }

 private:
    /// The column that gains most, or (so that pivots do not run in circles) the first that gains.
    [[nodiscard]] std::size_t Entering(const Eigen::Vector4d& zone, bool first) const {
        std::size_t best = m_columns.size();
        double best_gain = kZoneTolerance * 1e-3;
        for (std::size_t i = 4; i < m_columns.size(); ++i) {
            const double gain = m_columns[i].gain - zone.dot(m_columns[i].entries);
            if (gain > best_gain) {
                best = i;
                best_gain = gain;
                if (first) {
                    break;
                }
            }
        }
        return best;
    }

    std::vector<ZoneColumn> m_columns;
    std::array<std::size_t, 4> m_basis{};
};

/// Points about a centre, and what a shift of it makes of them.
class ZonePoints {
 public:
    ZonePoints(std::span<const Arc> arcs, const Circle& circle) : m_arcs(arcs), m_circle(circle) {}

    [[nodiscard]] ZoneColumn Column(std::size_t arc, std::size_t place, double side) const {
        const double u = m_arcs[arc].x[place] - m_circle.x;
        const double w = m_arcs[arc].y[place] - m_circle.y;
        const double distance = std::hypot(u, w);
        return ColumnOf(distance - m_circle.radius, u / distance, w / distance, side);
    }

    /// The samples that stand out furthest on both sides after a shift, as columns.
    struct Extremes {
        double highest = -std::numeric_limits<double>::infinity();
        double lowest = std::numeric_limits<double>::infinity();
        ZoneColumn high;
        ZoneColumn low;
    };
    [[nodiscard]] Extremes After(double p, double q) const {
        Extremes found;
        std::array<std::size_t, 4> at{};
        for (std::size_t arc = 0; arc < m_arcs.size(); ++arc) {
            const Arc& points = m_arcs[arc];
            for (std::size_t i = 0; i < points.x.size(); ++i) {
                const double u = points.x[i] - m_circle.x;
                const double w = points.y[i] - m_circle.y;
                const double distance = std::sqrt(u * u + w * w);
                const double out = distance - m_circle.radius - (p * u + q * w) / distance;
                if (out > found.highest) {
                    found.highest = out;
                    at[0] = arc;
                    at[1] = i;
                }
                if (out < found.lowest) {
                    found.lowest = out;
                    at[2] = arc;
                    at[3] = i;
                }
            }
        }
        found.high = Column(at[0], at[1], 1.0);
        found.low = Column(at[2], at[3], -1.0);
        return found;
    }

 private:
    std::span<const Arc> m_arcs;
    Circle m_circle;
};

/// The shift to the centre of the zone, linear about the circle's.
bool ShiftToZone(std::span<const Arc> arcs, const Circle& circle, Eigen::Vector4d* zone) {
    const ZonePoints points(arcs, circle);
    auto extremes = points.After(0.0, 0.0);
    const double size = std::max(extremes.highest - extremes.lowest, kZoneTolerance);
    ZoneProgramme programme(kBarred * size);
    for (std::size_t arc = 0; arc < arcs.size(); ++arc) {
        for (std::size_t k = 0; k < 8; ++k) {
            const std::size_t place = k * arcs[arc].x.size() / 8;
            programme.Add(points.Column(arc, place, 1.0));
            programme.Add(points.Column(arc, place, -1.0));
        }
    }
    for (int solve = 0; solve < kMostSolves; ++solve) {
        programme.Add(extremes.high);
        programme.Add(extremes.low);
        if (!programme.Solve(zone)) {
            return false;
        }
        extremes = points.After((*zone)[2], (*zone)[3]);
        if (extremes.highest - extremes.lowest < (*zone)[0] + (*zone)[1] + kZoneTolerance) {
            return true;
        }
    }
    return false;
}

}  // namespace

Told<Circle> FitMinimumZone(std::span<const Arc> arcs, const Circle& start) {
    Circle circle = start;
    for (int round = 0; round < kMostZoneRounds; ++round) {
        Eigen::Vector4d zone;
        if (!ShiftToZone(arcs, circle, &zone)) {
            break;
        }
        circle.x += zone[2];
        circle.y += zone[3];
        if (std::hypot(zone[2], zone[3]) < kShiftTolerance) {
            const RadialRange range = RadialRangeAbout(arcs, circle.x, circle.y);
            circle.radius = (range.smallest + range.largest) / 2.0;
            return circle;
        }
    }
    return Told<Circle>::Not("no convergence");
}

}  // namespace wavo::measure

// The radial model of circle_shape.h: its terms at one point, and its numbers.
#pragma once

#include <algorithm>
#include <cmath>

namespace wavo::measure {

inline double SignOfNumber(double value) {
    return value < 0.0 ? -1.0 : 1.0;
}

/// A point in polar form about a centre.
struct PolarPoint {
    double cosine = 1.0;
    double sine = 0.0;
    double distance = 0.0;  ///< mm

    PolarPoint(double u, double w) : distance(std::sqrt(u * u + w * w)) {
        cosine = distance > 0.0 ? u / distance : 1.0;
        sine = distance > 0.0 ? w / distance : 0.0;
    }

    /// Sine of the angle in the direction of motion since the nearest reversal, negative before it.
    [[nodiscard]] double SinceReversal(double sense) const {
        return std::abs(cosine) > std::abs(sine) ? sense * sine * SignOfNumber(cosine)
                                                 : -sense * cosine * SignOfNumber(sine);
    }
    /// Share of the play of x and of y in the radius.
    [[nodiscard]] double PlayX(double sense) const {
        return sense * SignOfNumber(sine) / 2.0 * cosine;
    }
    [[nodiscard]] double PlayY(double sense) const {
        return -sense * SignOfNumber(cosine) / 2.0 * sine;
    }
};

/// The unknowns of one turn, lengths in mm, time in s.
struct RadialModel {
    double radius = 0.0;
    double sense = 1.0;
    double a = 0.0;
    double b = 0.0;
    double radius_change = 0.0;
    double scale_difference = 0.0;
    double oval = 0.0;  ///< R eps/2 - s v dtau/2
    double backlash_x = 0.0;
    double backlash_y = 0.0;
    /// Angle in the direction of motion at which the axis turns, away from that of its reversal on
    /// the ideal circle: the other axis is late, by its play and by another lag.
    double turns_x = 0.0;
    double turns_y = 0.0;

    /// Deviation from the radius without play.
    [[nodiscard]] double Smooth(const PolarPoint& p) const {
        return a * p.cosine + b * p.sine + radius_change +
               radius / 2.0 * scale_difference * (p.cosine * p.cosine - p.sine * p.sine) +
               oval * 2.0 * p.sine * p.cosine;
    }
    /// With play as it stands away from the reversals.
    [[nodiscard]] double Value(const PolarPoint& p) const {
        return Smooth(p) + backlash_x * p.PlayX(sense) + backlash_y * p.PlayY(sense);
    }
    /// With the play of the axis that turned being taken up, `phi` radians behind the reversal.
    [[nodiscard]] double Behind(const PolarPoint& p, double phi) const {
        const bool x_turned = std::abs(p.cosine) > std::abs(p.sine);
        const double play = x_turned ? backlash_x : backlash_y;
        const double since = std::max(0.0, phi - (x_turned ? turns_x : turns_y));
        const double taken_up = SignOfNumber(play) *
                                std::min(std::abs(play) / 2.0,
                                         radius * (1.0 - std::cos(since)) - std::abs(play) / 2.0) *
                                std::cos(phi);
        return Smooth(p) + taken_up +
               (x_turned ? backlash_y * p.PlayY(sense) : backlash_x * p.PlayX(sense));
    }
};

}  // namespace wavo::measure

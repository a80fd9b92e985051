#include "synthetic_machine.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "measure/units.h"

namespace wavo::measure {

namespace {

/// Commanded angle over time: arcs one after another, each with a trapezoid of speed.
class AngleProfile {
 public:
    explicit AngleProfile(const CircleProgram& program) : m_program(program) {
        double time = program.pause;
        double angle = 0.0;
        for (const double turns : program.turns) {
            const double length = std::abs(turns) * kFullTurn * program.radius;
            const double ramp = program.feed / program.acceleration;
            const double duration = length / program.feed + ramp;
            m_arcs.push_back({time, duration, angle, turns * kFullTurn});
            time += duration + program.pause;
            angle += turns * kFullTurn;
        }
        m_end = time;
    }

    [[nodiscard]] double End() const { return m_end; }

    [[nodiscard]] double At(double time) const {
        double angle = 0.0;
        for (const auto& arc : m_arcs) {
            if (time < arc.start) {
                break;
            }
            angle = arc.from + arc.sweep * Share(arc, time - arc.start);
        }
        return angle;
    }

    /// Sum of the magnitudes of all angles turned so far.
    [[nodiscard]] double TurnedAt(double time) const {
        double turned = 0.0;
        for (const auto& arc : m_arcs) {
            turned += time < arc.start ? 0.0 : std::abs(arc.sweep) * Share(arc, time - arc.start);
        }
        return turned;
    }

 private:
    struct ProfileArc {
        double start, duration, from, sweep;
    };

    [[nodiscard]] double Share(const ProfileArc& arc, double time) const {
        const double ramp = m_program.feed / m_program.acceleration;
        const double length = std::abs(arc.sweep) * m_program.radius;
        double distance = 0.0;
        if (time >= arc.duration) {
            distance = length;
        } else if (time < ramp) {
            distance = m_program.acceleration * time * time / 2.0;
        } else if (time < arc.duration - ramp) {
            distance = m_program.feed * (time - ramp / 2.0);
        } else {
            const double left = arc.duration - time;
            distance = length - m_program.acceleration * left * left / 2.0;
        }
        return distance / length;
    }

    const CircleProgram& m_program;
    std::vector<ProfileArc> m_arcs;
    double m_end = 0.0;
};

/// An axis behind its play, with a spike of half a sine after each reversal.
class PlayAxis {
 public:
    PlayAxis(double play, double spike, double spike_time)
        : m_play(play), m_spike(spike), m_spike_time(spike_time) {}

    double Next(double wanted, double speed, double time) {
        if (!m_started) {
            m_place = wanted;
            m_started = true;
        }
        const int direction = (speed > 1e-3) - (speed < -1e-3);
        if (direction != 0 && m_direction != 0 && direction != m_direction) {
            m_reversed =
                time - (time - m_time) * std::abs(speed) / (std::abs(speed) + std::abs(m_speed));
        }
        m_direction = direction;
        m_speed = speed;
        m_time = time;
        m_place = std::clamp(m_place, wanted - m_play / 2.0, wanted + m_play / 2.0);
        const double since = (time - m_reversed) / m_spike_time;
        const bool spiking = direction != 0 && since >= 0.0 && since <= 1.0;
        return m_place - (spiking ? direction * m_spike * std::sin(since * kFullTurn / 2.0) : 0.0);
    }

 private:
    double m_play;
    double m_spike;
    double m_spike_time;
    bool m_started = false;
    double m_place = 0.0;
    double m_speed = 0.0;
    double m_time = 0.0;
    double m_reversed = -1e9;
    int m_direction = 0;
};

}  // namespace

RunData RunCircles(const CircleProgram& program, const MachineErrors& errors) {
    const AngleProfile profile(program);
    std::mt19937_64 random(program.seed);
    std::normal_distribution<double> noise;
    const auto place = [&](double time) {
        const double radius = program.radius + errors.growth * profile.TurnedAt(time) / kFullTurn;
        const double angle = profile.At(time);
        return std::array{radius * std::cos(angle), radius * std::sin(angle)};
    };
    PlayAxis x(errors.play_x, errors.spike_x, errors.spike_time);
    PlayAxis y(errors.play_y, errors.spike_y, errors.spike_time);
    const auto written = [&](double value) {
        value += errors.noise * noise(random);
        return errors.resolution > 0.0 ? errors.resolution * std::round(value / errors.resolution)
                                       : value;
    };
    RunData data;
    data.cycle_time = program.cycle_time;
    const auto lines = static_cast<std::size_t>(profile.End() / program.cycle_time);
    for (std::size_t i = 0; i < lines; ++i) {
        const double time = static_cast<double>(i) * program.cycle_time;
        const auto speed = [&](std::size_t axis, double lag) {
            return (place(time - lag + 1e-6)[axis] - place(time - lag - 1e-6)[axis]) / 2e-6;
        };
        const double lagged_x = place(time - errors.lag_x)[0];
        const double lagged_y = place(time - errors.lag_y)[1];
        const double wanted_x = lagged_x * (1.0 + errors.scale_x) + errors.squareness * lagged_y;
        const double wanted_y = lagged_y * (1.0 + errors.scale_y);
        data.x.push_back(program.centre_x +
                         written(x.Next(wanted_x, speed(0, errors.lag_x), time)));
        data.y.push_back(program.centre_y +
                         written(y.Next(wanted_y, speed(1, errors.lag_y), time)));
        data.x_cmd.push_back(program.centre_x + place(time)[0]);
        data.y_cmd.push_back(program.centre_y + place(time)[1]);
    }
    return data;
}

}  // namespace wavo::measure

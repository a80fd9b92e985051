#include "master/motions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace wavo::master {

namespace {

constexpr std::size_t kMostAxes = 4;
using Positions = std::array<double, kMostAxes>;

/// Lines that fill `seconds`, at least one.
std::uint64_t LinesOf(double seconds, double cycle_time) {
    return static_cast<std::uint64_t>(std::max(1.0, std::round(seconds / cycle_time)));
}

/// A motion in all its axes, before a choice among them.
class Motion {
 public:
    Motion(std::vector<std::string> axes, std::uint64_t lines_per_round)
        : m_axes(std::move(axes)), m_lines_per_round(lines_per_round) {}
    virtual ~Motion() = default;
    Motion(const Motion&) = delete;
    Motion& operator=(const Motion&) = delete;

    [[nodiscard]] virtual Positions At(std::uint64_t number) const = 0;
    [[nodiscard]] const std::vector<std::string>& axes() const { return m_axes; }
    [[nodiscard]] std::uint64_t lines_per_round() const { return m_lines_per_round; }

 private:
    const std::vector<std::string> m_axes;
    const std::uint64_t m_lines_per_round;
};

class Circle : public Motion {
 public:
    explicit Circle(double cycle_time)
        : Motion({"X", "Y"},
                 LinesOf(2.0 * std::numbers::pi * kRadius / kPathVelocity, cycle_time)) {}

    [[nodiscard]] Positions At(std::uint64_t number) const override {
        // The angle of the line in its round, so that every round has the same values.
        const double turn = static_cast<double>(number % lines_per_round()) /
                            static_cast<double>(lines_per_round());
        return {kRadius * Cosine(turn), kRadius * Cosine(turn - 0.25)};
    }

 private:
    static constexpr double kRadius = 50.0;         // mm
    static constexpr double kPathVelocity = 50.0;   // mm/s, 3000 mm/min
    static constexpr double kHeldAngle = 0.004;     // of a turn after the reversal: 25 ms
    static constexpr double kOvershoot = 0.012;     // mm
    static constexpr double kSettleAngle = 0.0015;  // of a turn: 9 ms

    /// cos of a turn, held at its extremes by friction and let go with an overshoot.
    static double Cosine(double turn) {
        const double since_reversal = std::fmod(turn + 1.0, 0.5);
        const double direction = std::fmod(turn + 1.0, 1.0) < 0.5 ? -1.0 : 1.0;
        if (since_reversal < kHeldAngle) {
            return -direction;
        }
        const double spike =
            kOvershoot / kRadius * std::exp(-(since_reversal - kHeldAngle) / kSettleAngle);
        return std::cos(2.0 * std::numbers::pi * turn) + direction * spike;
    }
};

class Jog : public Motion {
 public:
    explicit Jog(double cycle_time)
        : Motion({"X", "Y", "Z", "C"}, LinesOf(RoundTime(), cycle_time)), m_cycle(cycle_time) {}

    [[nodiscard]] Positions At(std::uint64_t number) const override {
        double time = static_cast<double>(number % lines_per_round()) * m_cycle;
        Positions positions{};
        for (const Move& move : kMoves) {
            positions[move.axis] += Travelled(move, time);
            time -= Duration(move) + kPause;
            if (time <= 0.0) {
                break;
            }
        }
        return positions;
    }

 private:
    struct Move {
        std::size_t axis;
        double distance;      // mm or degrees, signed
        double velocity;      // per second
        double acceleration;  // per second squared
    };
    static constexpr double kPause = 0.3;  // s
    static constexpr std::array<Move, 8> kMoves{{{0, 120.0, 150.0, 1500.0},
                                                 {1, 80.0, 100.0, 1500.0},
                                                 {2, -40.0, 60.0, 800.0},
                                                 {3, 270.0, 180.0, 720.0},
                                                 {2, 40.0, 60.0, 800.0},
                                                 {1, -80.0, 100.0, 1500.0},
                                                 {0, -120.0, 150.0, 1500.0},
                                                 {3, -270.0, 180.0, 720.0}}};

    /// Every move is long enough to reach its velocity: it speeds up, keeps it, and slows down.
    static double Duration(const Move& move) {
        return std::abs(move.distance) / move.velocity + move.velocity / move.acceleration;
    }

    static double RoundTime() {
        double time = 0.0;
        for (const Move& move : kMoves) {
            time += Duration(move) + kPause;
        }
        return time;
    }

    /// Signed way after `time` seconds of a move.
    static double Travelled(const Move& move, double time) {
        const double duration = Duration(move);
        const double ramp = move.velocity / move.acceleration;
        double way = 0.0;
        if (time <= 0.0) {
            return 0.0;
        }
        if (time >= duration) {
            return move.distance;
        }
        if (time < ramp) {
            way = 0.5 * move.acceleration * time * time;
        } else if (time < duration - ramp) {
            way = move.velocity * (time - 0.5 * ramp);
        } else {
            const double left = duration - time;
            way = std::abs(move.distance) - 0.5 * move.acceleration * left * left;
        }
        return std::copysign(way, move.distance);
    }

    const double m_cycle;
};

class Noise : public Motion {
 public:
    Noise(double cycle_time, std::uint64_t seed)
        : Motion({"X", "Y", "Z"}, LinesOf(kRoundTime, cycle_time)),
          m_cycle(cycle_time),
          m_seed(seed) {}

    [[nodiscard]] Positions At(std::uint64_t number) const override {
        constexpr double kSwing = 5.0;                  // mm
        constexpr double kSpread = 0.05;                // mm, standard deviation of the noise
        constexpr std::array kPeriods{4.0, 2.5, 10.0};  // s
        const double time = static_cast<double>(number) * m_cycle;
        Positions positions{};
        for (std::size_t axis = 0; axis < kPeriods.size(); ++axis) {
            positions[axis] = kSwing * std::sin(2.0 * std::numbers::pi * time / kPeriods[axis]) +
                              kSpread * Normal(number * kMostAxes + axis);
        }
        return positions;
    }

 private:
    static constexpr double kRoundTime = 20.0;  // s: whole periods of all axes

    /// A number that depends on place and seed alone and looks random (the mixing step of the
    /// splitmix64 generator).
    [[nodiscard]] std::uint64_t Random(std::uint64_t place) const {
        std::uint64_t z = (place + 1) * 0x9E3779B97F4A7C15U + m_seed * 0xD1B54A32D192ED03U;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    /// Normally distributed with spread 1, by the method of Box and Muller.
    [[nodiscard]] double Normal(std::uint64_t place) const {
        constexpr double kUnit = 0x1.0p-53;
        const double first = (static_cast<double>(Random(2 * place) >> 11U) + 1.0) * kUnit;
        const double second = static_cast<double>(Random(2 * place + 1) >> 11U) * kUnit;
        return std::sqrt(-2.0 * std::log(first)) * std::cos(2.0 * std::numbers::pi * second);
    }

    const double m_cycle;
    const std::uint64_t m_seed;
};

/// Some axes of a motion.
class ChosenAxes : public LineSource {
 public:
    ChosenAxes(std::unique_ptr<Motion> motion, std::vector<std::string> names,
               std::vector<std::size_t> places)
        : m_motion(std::move(motion)), m_names(std::move(names)), m_places(std::move(places)) {}

    [[nodiscard]] const std::vector<std::string>& AxisNames() const override { return m_names; }
    [[nodiscard]] std::uint64_t LinesPerRound() const override {
        return m_motion->lines_per_round();
    }
    void Line(std::uint64_t number, std::span<double> values) const override {
        const Positions positions = m_motion->At(number);
        for (std::size_t i = 0; i < m_places.size(); ++i) {
            values[i] = positions[m_places[i]];
        }
    }

 private:
    const std::unique_ptr<Motion> m_motion;
    const std::vector<std::string> m_names;
    const std::vector<std::size_t> m_places;
};

std::unique_ptr<Motion> MakeWholeMotion(MotionKind kind, double cycle_time, std::uint64_t seed) {
    switch (kind) {
        case MotionKind::kCircle:
            return std::make_unique<Circle>(cycle_time);
        case MotionKind::kJog:
            return std::make_unique<Jog>(cycle_time);
        case MotionKind::kNoise:
            return std::make_unique<Noise>(cycle_time, seed);
    }
    return nullptr;
}

}  // namespace

std::optional<MotionKind> MotionKindOf(std::string_view name) {
    if (name == "circle") {
        return MotionKind::kCircle;
    }
    if (name == "jog") {
        return MotionKind::kJog;
    }
    if (name == "noise") {
        return MotionKind::kNoise;
    }
    return std::nullopt;
}

std::unique_ptr<LineSource> MakeMotion(MotionKind kind, const std::vector<std::string>& axes,
                                       double cycle_time, std::uint64_t seed, std::string* error) {
    auto motion = MakeWholeMotion(kind, cycle_time, seed);
    std::vector<std::string> names = axes.empty() ? motion->axes() : axes;
    std::vector<std::size_t> places;
    for (const std::string& name : names) {
        const auto found = std::ranges::find(motion->axes(), name);
        if (found == motion->axes().end()) {
            *error = "the motion has no axis \"" + name + "\"; it has";
            for (const std::string& axis : motion->axes()) {
                *error += " " + axis;
            }
            return nullptr;
        }
        places.push_back(static_cast<std::size_t>(found - motion->axes().begin()));
    }
    return std::make_unique<ChosenAxes>(std::move(motion), std::move(names), std::move(places));
}

}  // namespace wavo::master

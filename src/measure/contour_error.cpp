#include "measure/contour_error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Nearest {
    double square = std::numeric_limits<double>::infinity();  ///< of the distance
    std::size_t segment = 0;
};

template <std::size_t kAxes>
class CommandedPath {
 public:
    explicit CommandedPath(std::span<const ContourAxis> axes)
        : m_size(axes.front().commanded.size()) {
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            m_commanded[axis] = axes[axis].commanded.data();
            m_actual[axis] = axes[axis].actual.data();
        }
    }

    /// Squared distance of the actual place of cycle `i` from the nearest segment. `guess` is one
    /// that may be near: segments that are not nearer then cost no division.
    [[nodiscard]] Nearest To(std::size_t i, std::size_t guess, const ContourSetup& setup) const {
        std::size_t reach = setup.reach;
        while (true) {
            const std::size_t first = i - std::min(i, reach);
            const std::size_t end = std::min(i + reach, m_size - 1);
            const Nearest nearest = Within(i, first, end, std::clamp(guess, first, end - 1));
            // The path may come nearer still beyond the segments looked at.
            const bool beyond = (nearest.segment == first && first > 0 && Moves(first)) ||
                                (nearest.segment + 1 == end && end < m_size - 1 && Moves(end - 1));
            if (!beyond || reach >= setup.widest_reach) {
                return nearest;
            }
            reach = std::min(2 * reach, setup.widest_reach);
        }
    }

    /// +1 where the place lies left of the segment.
    [[nodiscard]] double SideOf(std::size_t i, std::size_t segment) const {
        const double dx = m_commanded[0][segment + 1] - m_commanded[0][segment];
        const double dy = m_commanded[1][segment + 1] - m_commanded[1][segment];
        const double px = m_actual[0][i] - m_commanded[0][segment];
        const double py = m_actual[1][i] - m_commanded[1][segment];
        return dx * py - dy * px < 0.0 ? -1.0 : 1.0;
    }

 private:
    [[nodiscard]] Nearest Within(std::size_t i, std::size_t first, std::size_t end,
                                 std::size_t guess) const {
        Nearest nearest;
        nearest.segment = first;
        TakeIfNearer(i, guess, &nearest);
        for (std::size_t segment = first; segment < end; ++segment) {
            TakeIfNearer(i, segment, &nearest);
        }
        nearest.square =
            std::isfinite(nearest.square) ? SquareTo(i, nearest.segment) : nearest.square;
        return nearest;
    }

    /// Comparisons with NaN fail: a segment with a missing value is never the nearest.
    void TakeIfNearer(std::size_t i, std::size_t segment, Nearest* nearest) const {
        double length = 0.0;
        double along = 0.0;
        double square = 0.0;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            const double from = m_commanded[axis][segment];
            const double step = m_commanded[axis][segment + 1] - from;
            const double offset = m_actual[axis][i] - from;
            length += step * step;
            along += step * offset;
            square += offset * offset;
        }
        if (along > 0.0 && along < length) {
            // The distance across is what is left of the offset: times the length of the segment.
            const double across = square * length - along * along;
            if (across < nearest->square * length) {
                *nearest = {across / length, segment};
            }
        } else {
            const double beyond = along > 0.0 ? square - 2.0 * along + length : square;
            if (beyond < nearest->square) {
                *nearest = {beyond, segment};
            }
        }
    }

    /// The same to the last digit, for the segment that was chosen.
    [[nodiscard]] double SquareTo(std::size_t i, std::size_t segment) const {
        double length = 0.0;
        double along = 0.0;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            const double from = m_commanded[axis][segment];
            const double step = m_commanded[axis][segment + 1] - from;
            length += step * step;
            along += step * (m_actual[axis][i] - from);
        }
        const double foot = length > 0.0 ? std::clamp(along / length, 0.0, 1.0) : 0.0;
        double distance = 0.0;
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            const double from = m_commanded[axis][segment];
            const double step = m_commanded[axis][segment + 1] - from;
            const double off = (m_actual[axis][i] - from) - foot * step;
            distance += off * off;
        }
        return distance;
    }

    [[nodiscard]] bool Moves(std::size_t segment) const {
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            if (m_commanded[axis][segment + 1] != m_commanded[axis][segment]) {
                return true;
            }
        }
        return false;
    }

    std::size_t m_size;
    std::array<const double*, kAxes> m_commanded{};
    std::array<const double*, kAxes> m_actual{};
};

template <std::size_t kAxes>
std::vector<double> ErrorsOf(std::span<const ContourAxis> axes, const Stretch& stretch,
                             const ContourSetup& setup, bool with_sign) {
    std::vector<double> errors(stretch.Size(), kNaN);
    if (axes.front().commanded.size() < 2) {
        return errors;
    }
    const CommandedPath<kAxes> path(axes);
    std::size_t guess = stretch.first;
    for (std::size_t i = stretch.first; i < stretch.end; ++i) {
        const Nearest nearest = path.To(i, guess, setup);
        guess = nearest.segment + 1;  // the path goes on
        if (std::isfinite(nearest.square)) {
            const double side = with_sign ? path.SideOf(i, nearest.segment) : 1.0;
            errors[i - stretch.first] = side * std::sqrt(nearest.square);
        }
    }
    return errors;
}

}  // namespace

std::size_t ContourReach(double largest_lag, double cycle_time) {
    const double cycles = std::ceil(3.0 * std::max(largest_lag, 0.0) / cycle_time) + 3.0;
    return static_cast<std::size_t>(std::max(5.0, cycles));
}

std::vector<double> ContourErrors(std::span<const ContourAxis> axes, const Stretch& stretch,
                                  const ContourSetup& setup) {
    return axes.size() == 2 ? ErrorsOf<2>(axes, stretch, setup, false)
                            : ErrorsOf<3>(axes, stretch, setup, false);
}

std::vector<double> SignedContourErrors(std::span<const ContourAxis> axes, const Stretch& stretch,
                                        const ContourSetup& setup) {
    return ErrorsOf<2>(axes, stretch, setup, true);
}

namespace {

/// `first`: the cycle of the first error.
ContourFigures FiguresFrom(std::span<const ContourAxis> axes, std::span<const double> errors,
                           std::size_t first) {
    double largest = -1.0;
    double squares = 0.0;
    double largest_following = 0.0;
    std::size_t count = 0;
    ContourFigures figures;
    for (std::size_t i = 0; i < errors.size(); ++i) {
        if (!std::isfinite(errors[i])) {
            continue;
        }
        ++count;
        squares += errors[i] * errors[i];
        if (errors[i] > largest) {
            largest = errors[i];
            figures.largest_at = first + i;
        }
        double following = 0.0;
        for (const ContourAxis& axis : axes) {
            const double error = axis.commanded[first + i] - axis.actual[first + i];
            following += error * error;
        }
        largest_following = following > largest_following ? following : largest_following;
    }
    if (count == 0) {
        figures.largest = figures.rms = figures.largest_following = Figure::Not("no values");
        return figures;
    }
    figures.largest = largest * kMicrometres;
    figures.rms = std::sqrt(squares / static_cast<double>(count)) * kMicrometres;
    figures.largest_following = std::sqrt(largest_following) * kMicrometres;
    return figures;
}

}  // namespace

ContourFigures ContourFiguresOf(std::span<const ContourAxis> axes, const Stretch& stretch,
                                const ContourSetup& setup) {
    return FiguresFrom(axes, ContourErrors(axes, stretch, setup), stretch.first);
}

ContourFigures ContourFiguresOf(std::span<const ContourAxis> axes, std::span<const double> errors) {
    return FiguresFrom(axes, errors, 0);
}

}  // namespace wavo::measure

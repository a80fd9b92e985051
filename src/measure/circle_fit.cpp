#include "measure/circle_fit.h"

#include <algorithm>
#include <cmath>

#include "measure/least_squares.h"

namespace wavo::measure {

namespace {

constexpr int kMostSteps = 20;
constexpr double kStepOfRadius = 1e-9;
constexpr const char* kNoCircle = "the points lie on a line or in one place";

struct Place {
    double x = 0.0;
    double y = 0.0;
};

/// Mean of the points, each arc with the same weight.
Place MeanOf(std::span<const Arc> arcs) {
    Place mean;
    for (const Arc& arc : arcs) {
        Place sum;
        for (std::size_t i = 0; i < arc.x.size(); ++i) {
            sum.x += arc.x[i] - arc.x[0];
            sum.y += arc.y[i] - arc.y[0];
        }
        const auto count = static_cast<double>(arc.x.size());
        mean.x += (arc.x[0] + sum.x / count) / static_cast<double>(arcs.size());
        mean.y += (arc.y[0] + sum.y / count) / static_cast<double>(arcs.size());
    }
    return mean;
}

/// A row of a fit for each point, all rows of an arc with the same weight. `fill` writes a row of
/// the point (x, y).
template <typename Fill>
Steps<LeastSquares::Solution> SolveOfPoints(std::span<const Arc> arcs, Fill fill) {
    LeastSquares fit(3);
    for (const Arc& arc : arcs) {
        const double weight = 1.0 / std::sqrt(static_cast<double>(arc.x.size()));
        for (std::size_t first = 0; first < arc.x.size(); first += kRowsPerStep) {
            const std::size_t end = std::min(first + kRowsPerStep, arc.x.size());
            for (std::size_t i = first; i < end; ++i) {
                fill(fit.NextRow(), fit.Stride(), weight, arc.x[i], arc.y[i]);
            }
            co_await Pause{};
        }
    }
    co_return fit.Solve();
}

/// The algebraic fit of points relative to `mean`.
Steps<Told<Circle>> FitAlgebraic(std::span<const Arc> arcs, Place mean) {
    const auto solution = co_await SolveOfPoints(
        arcs, [mean](double* row, std::size_t stride, double weight, double x, double y) {
            const double u = x - mean.x;
            const double w = y - mean.y;
            row[0] = weight * u;
            row[stride] = weight * w;
            row[2 * stride] = weight;
            row[3 * stride] = weight * (u * u + w * w);
        });
    if (solution.rank < 3) {
        co_return Told<Circle>::Not(kNoCircle);
    }
    const double a = solution.unknowns[0] / 2.0;
    const double b = solution.unknowns[1] / 2.0;
    const double square = solution.unknowns[2] + a * a + b * b;
    if (!(square > 0.0) || !std::isfinite(square)) {
        co_return Told<Circle>::Not(kNoCircle);
    }
    co_return Circle{a, b, std::sqrt(square)};
}

/// One step of Gauss and Newton, of which the largest part is returned; not told where there is
/// none.
Steps<Figure> Improve(std::span<const Arc> arcs, Place mean, Circle* circle) {
    const auto solution = co_await SolveOfPoints(
        arcs,
        [mean, from = *circle](double* row, std::size_t stride, double weight, double x, double y) {
            const double u = (x - mean.x) - from.x;
            const double w = (y - mean.y) - from.y;
            const double distance = std::sqrt(u * u + w * w);
            const double scale = distance > 0.0 ? weight / distance : 0.0;
            row[0] = u * scale;
            row[stride] = w * scale;
            row[2 * stride] = weight;
            row[3 * stride] = weight * (distance - from.radius);
        });
    if (solution.rank < 3) {
        co_return Figure::Not(kNoCircle);
    }
    circle->x += solution.unknowns[0];
    circle->y += solution.unknowns[1];
    circle->radius += solution.unknowns[2];
    double step = 0.0;
    for (const double unknown : solution.unknowns) {
        step = std::max(step, std::abs(unknown));
    }
    co_return circle->radius > 0.0 ? Figure(step) : Figure::Not(kNoCircle);
}

std::size_t CountOf(std::span<const Arc> arcs) {
    std::size_t count = 0;
    for (const Arc& arc : arcs) {
        count += arc.x.size();
    }
    return count;
}

Steps<Told<Circle>> Fit(std::span<const Arc> arcs, bool quickly) {
    if (CountOf(arcs) < 3 || std::ranges::any_of(arcs, [](const Arc& a) { return a.x.empty(); })) {
        co_return Told<Circle>::Not("too few points for a circle");
    }
    const Place mean = MeanOf(arcs);
    auto circle = co_await FitAlgebraic(arcs, mean);
    bool ended = quickly;
    for (int i = 0; circle && !ended && i < kMostSteps; ++i) {
        const Figure step = co_await Improve(arcs, mean, &*circle.value);
        if (!step) {
            co_return Told<Circle>::Not(step.reason);
        }
        ended = *step < kStepOfRadius * circle->radius;
    }
    if (circle && !ended) {
        co_return Told<Circle>::Not("no convergence");
    }
    if (circle) {
        circle.value->x += mean.x;
        circle.value->y += mean.y;
    }
    co_return circle;
}

}  // namespace

Told<Circle> FitCircle(std::span<const Arc> arcs) {
    return Fit(arcs, false).Compute();
}

Steps<Told<Circle>> FitCircleInSteps(std::span<const Arc> arcs) {
    return Fit(arcs, false);
}

Told<Circle> FitCircleQuickly(std::span<const Arc> arcs) {
    return Fit(arcs, true).Compute();
}

Steps<Told<Circle>> FitCircleQuicklyInSteps(std::span<const Arc> arcs) {
    return Fit(arcs, true);
}

RadialRange RadialRangeAbout(std::span<const Arc> arcs, double x, double y) {
    double smallest = std::numeric_limits<double>::infinity();
    double largest = 0.0;
    for (const Arc& arc : arcs) {
        for (std::size_t i = 0; i < arc.x.size(); ++i) {
            const double u = arc.x[i] - x;
            const double w = arc.y[i] - y;
            const double square = u * u + w * w;
            smallest = square < smallest ? square : smallest;
            largest = square > largest ? square : largest;
        }
    }
    return {std::sqrt(std::min(smallest, largest)), std::sqrt(largest)};
}

double RadialResidual(std::span<const Arc> arcs, const Circle& circle) {
    double sum = 0.0;
    for (const Arc& arc : arcs) {
        for (std::size_t i = 0; i < arc.x.size(); ++i) {
            const double u = arc.x[i] - circle.x;
            const double w = arc.y[i] - circle.y;
            const double residual = std::sqrt(u * u + w * w) - circle.radius;
            sum += residual * residual;
        }
    }
    const auto count = static_cast<double>(CountOf(arcs));
    return count > 0.0 ? std::sqrt(sum / count) : 0.0;
}

}  // namespace wavo::measure

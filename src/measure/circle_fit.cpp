#include "measure/circle_fit.h"

#include <algorithm>
#include <cmath>

#include "measure/least_squares.h"

namespace wavo::measure {

namespace {

constexpr int kMostSteps = 20;
constexpr double kStepOfRadius = 1e-9;

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

double WeightOf(const Arc& arc) {
    return 1.0 / std::sqrt(static_cast<double>(arc.x.size()));
}

/// The algebraic fit of points relative to `mean`.
Told<Circle> FitAlgebraic(std::span<const Arc> arcs, const Place& mean) {
    LeastSquares fit(3);
    const std::size_t stride = fit.Stride();
    for (const Arc& arc : arcs) {
        const double weight = WeightOf(arc);
        for (std::size_t i = 0; i < arc.x.size(); ++i) {
            const double u = arc.x[i] - mean.x;
            const double w = arc.y[i] - mean.y;
            double* row = fit.NextRow();
            row[0] = weight * u;
            row[stride] = weight * w;
            row[2 * stride] = weight;
            row[3 * stride] = weight * (u * u + w * w);
        }
    }
    const auto solution = fit.Solve();
    if (solution.rank < 3) {
        return Told<Circle>::Not("the points lie on a line or in one place");
    }
    const double a = solution.unknowns[0] / 2.0;
    const double b = solution.unknowns[1] / 2.0;
    const double square = solution.unknowns[2] + a * a + b * b;
    if (!(square > 0.0) || !std::isfinite(square)) {
        return Told<Circle>::Not("the points lie on a line or in one place");
    }
    return Circle{a, b, std::sqrt(square)};
}

/// One step of Gauss and Newton; false where there is none.
bool Improve(std::span<const Arc> arcs, const Place& mean, Circle* circle, double* step) {
    LeastSquares fit(3);
    const std::size_t stride = fit.Stride();
    for (const Arc& arc : arcs) {
        const double weight = WeightOf(arc);
        for (std::size_t i = 0; i < arc.x.size(); ++i) {
            const double u = (arc.x[i] - mean.x) - circle->x;
            const double w = (arc.y[i] - mean.y) - circle->y;
            const double distance = std::sqrt(u * u + w * w);
            const double scale = distance > 0.0 ? weight / distance : 0.0;
            double* row = fit.NextRow();
            row[0] = u * scale;
            row[stride] = w * scale;
            row[2 * stride] = weight;
            row[3 * stride] = weight * (distance - circle->radius);
        }
    }
    const auto solution = fit.Solve();
    if (solution.rank < 3) {
        return false;
    }
    circle->x += solution.unknowns[0];
    circle->y += solution.unknowns[1];
    circle->radius += solution.unknowns[2];
    *step = 0.0;
    for (const double unknown : solution.unknowns) {
        *step = std::max(*step, std::abs(unknown));
    }
    return circle->radius > 0.0;
}

std::size_t CountOf(std::span<const Arc> arcs) {
    std::size_t count = 0;
    for (const Arc& arc : arcs) {
        count += arc.x.size();
    }
    return count;
}

Told<Circle> Fit(std::span<const Arc> arcs, bool quickly) {
    if (CountOf(arcs) < 3 || std::ranges::any_of(arcs, [](const Arc& a) { return a.x.empty(); })) {
        return Told<Circle>::Not("too few points for a circle");
    }
    const Place mean = MeanOf(arcs);
    auto circle = FitAlgebraic(arcs, mean);
    double step = 0.0;
    bool ended = quickly;
    for (int i = 0; circle && !ended && i < kMostSteps; ++i) {
        if (!Improve(arcs, mean, &*circle.value, &step)) {
            return Told<Circle>::Not("the points lie on a line or in one place");
        }
        ended = step < kStepOfRadius * circle->radius;
    }
    if (circle && !ended) {
        return Told<Circle>::Not("no convergence");
    }
    if (circle) {
        circle.value->x += mean.x;
        circle.value->y += mean.y;
    }
    return circle;
}

}  // namespace

Told<Circle> FitCircle(std::span<const Arc> arcs) {
    return Fit(arcs, false);
}

Told<Circle> FitCircleQuickly(std::span<const Arc> arcs) {
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

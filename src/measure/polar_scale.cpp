#include "measure/polar_scale.h"

#include <cmath>

namespace wavo::measure {

namespace {

/// Errors that are a whole number of steps but for their last digits fit.
constexpr double kTolerance = 1e-12;

/// 1, 2 and 5 per decade, counted through.
double StepOfNumber(int number) {
    constexpr double kSteps[] = {1.0, 2.0, 5.0};
    const int decade = static_cast<int>(std::floor(number / 3.0));
    // Powers below one as divisions, so that 0.2 is the nearest double to it.
    const double step = kSteps[number - 3 * decade];
    return decade >= 0 ? step * std::pow(10.0, decade) : step / std::pow(10.0, -decade);
}

int NumberOfStep(double step) {
    int number = static_cast<int>(std::floor(std::log10(step))) * 3 - 3;
    while (StepOfNumber(number) < step * (1.0 - kTolerance)) {
        ++number;
    }
    return number;
}

}  // namespace

PolarScale PolarScaleFor(double largest, double smallest) {
    const double needed = largest * (1.0 - kTolerance) / PolarScale::kCircles;
    return {StepOfNumber(NumberOfStep(std::fmax(needed, smallest)))};
}

double NextPolarStep(double step, bool coarser) {
    return StepOfNumber(NumberOfStep(step) + (coarser ? 1 : -1));
}

}  // namespace wavo::measure

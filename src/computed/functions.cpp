#include "computed/functions.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wavo::computed {

namespace {

double Sign(double value) {
    return value > 0.0 ? 1.0 : value < 0.0 ? -1.0 : 0.0;
}

/// The remainder that has the sign of the divisor: an angle modulo 360 lies in 0 ... 360.
double Modulo(double value, double divisor) {
    return value - divisor * std::floor(value / divisor);
}

double Least(const double* values, int count) {
    return *std::min_element(values, values + count);
}

double Greatest(const double* values, int count) {
    return *std::max_element(values, values + count);
}

constexpr Function Of1(std::string_view name, double (*function)(double), std::string_view help) {
    return {name, 1, 1, function, nullptr, nullptr, help};
}
constexpr Function Of2(std::string_view name, double (*function)(double, double),
                       std::string_view help) {
    return {name, 2, 2, nullptr, function, nullptr, help};
}
constexpr Function OfMany(std::string_view name, double (*function)(const double*, int),
                          std::string_view help) {
    return {name, 1, kManyArguments, nullptr, nullptr, function, help};
}

// The functions of the standard library have several forms; their names alone do not choose.
constexpr std::array kFunctions{
    Of1(
        "abs", [](double x) { return std::abs(x); }, "without its sign"),
    Of1(
        "acos", [](double x) { return std::acos(x); }, "arc cosine"),
    Of1(
        "asin", [](double x) { return std::asin(x); }, "arc sine"),
    Of1(
        "atan", [](double x) { return std::atan(x); }, "arc tangent"),
    Of2(
        "atan2", [](double y, double x) { return std::atan2(y, x); },
        "angle of the point with height and width"),
    Of1(
        "ceil", [](double x) { return std::ceil(x); }, "rounded up"),
    Of1(
        "cos", [](double x) { return std::cos(x); }, "cosine"),
    Of1(
        "exp", [](double x) { return std::exp(x); }, "e to the power of"),
    Of1(
        "floor", [](double x) { return std::floor(x); }, "rounded down"),
    Of2(
        "hypot", [](double x, double y) { return std::hypot(x, y); }, "length of a vector"),
    Of1(
        "ln", [](double x) { return std::log(x); }, "natural logarithm"),
    Of1(
        "log10", [](double x) { return std::log10(x); }, "logarithm to the base 10"),
    Of1(
        "log2", [](double x) { return std::log2(x); }, "logarithm to the base 2"),
    OfMany("max", Greatest, "the greatest"),
    OfMany("min", Least, "the least"),
    Of2("mod", Modulo, "remainder of a division"),
    Of1(
        "round", [](double x) { return std::round(x); }, "rounded to the nearest whole number"),
    Of1("sign", Sign, "-1, 0 or 1"),
    Of1(
        "sin", [](double x) { return std::sin(x); }, "sine"),
    Of1(
        "sqrt", [](double x) { return std::sqrt(x); }, "square root"),
    Of1(
        "tan", [](double x) { return std::tan(x); }, "tangent"),
    Of1(
        "tanh", [](double x) { return std::tanh(x); }, "hyperbolic tangent"),
    Of1(
        "trunc", [](double x) { return std::trunc(x); }, "without its decimals"),
};

}  // namespace

std::span<const Function> Functions() {
    return kFunctions;
}

const Function* FindFunction(std::string_view name) {
    const auto* const found = std::ranges::find(kFunctions, name, &Function::name);
    return found == kFunctions.end() ? nullptr : found;
}

}  // namespace wavo::computed

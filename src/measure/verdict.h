// Figures with names, limits on them, and what becomes of both: pass, fail, or neither.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "measure/axis_test.h"
#include "measure/circle_test.h"
#include "measure/figure.h"

namespace wavo::measure {

/// One row of a table of figures.
struct NamedFigure {
    std::string key;     ///< stable name in files: "G_ccw"
    std::string symbol;  ///< as the standard writes it, with the plane: "G_XY ccw"
    std::string name;    ///< in words
    std::string unit;    ///< "um", "ms", ...; empty without one
    int decimals = 1;    ///< as on drawings
    Figure figure;
    double error = 0.0;  ///< standard error, 0 where there is none
};

/// The axes of a plane.
struct PlaneNames {
    std::string first;
    std::string second;
};

/// The figures of one evaluation of a circle test.
std::vector<NamedFigure> FiguresOf(const CircleResult& result, const CircleEvaluation& evaluation,
                                   const PlaneNames& plane);

/// The figures of an axis test.
std::vector<NamedFigure> FiguresOf(const AxisResult& result);

struct Limit {
    std::optional<double> least;
    std::optional<double> most;
};

/// Limits by the keys of figures.
using Limits = std::map<std::string, Limit, std::less<>>;

/// Limits of a section [Limits] of an INI text: "G_ccw = 15" is a largest magnitude, "F_max =
/// -5..20" a range, "Kv = 16.." and "..16" open ones. Told which line is wrong, and why. Without
/// that section there are no limits.
Told<Limits> ParseLimits(std::string_view text);

/// A limit in such words; told why they are none.
Told<Limit> ParseLimit(std::string_view text);

/// The words that ParseLimit takes, and the section that ParseLimits takes.
std::string LimitText(const Limit& limit);
std::string LimitsText(const Limits& limits);

enum class Verdict {
    kPass,
    kFail,
    kNotTold,  ///< a figure with a limit could not be told
};

struct Judged {
    std::size_t figure = 0;  ///< place among the figures
    Limit limit;
    Verdict verdict = Verdict::kPass;
};

struct Judgement {
    std::vector<Judged> judged;        ///< figures with limits, in the order of the figures
    std::vector<std::string> unknown;  ///< keys of limits that no figure has
    Verdict verdict = Verdict::kPass;  ///< not told before failed, failed before passed
};

Judgement Judge(std::span<const NamedFigure> figures, const Limits& limits);

/// "-5.0..20.0", "<= 15.0", ">= 16.0".
std::string TextOf(const Limit& limit, int decimals);

/// "pass", "FAIL", "not told".
std::string TextOf(Verdict verdict);

}  // namespace wavo::measure

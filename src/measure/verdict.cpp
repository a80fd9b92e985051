#include "measure/verdict.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "measure/words.h"
#include "support/number_text.h"

namespace wavo::measure {

namespace {

constexpr std::string_view kSection = "[limits]";

std::string_view Stripped(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

/// Figures of a turn, named by plane and sense.
void AddTurn(const CircleTurn& turn, const std::string& plane, std::vector<NamedFigure>* figures) {
    const std::string sense = turn.sense == Sense::kCounterClockwise ? "ccw" : "cw";
    const auto add = [&](const char* key, const char* symbol, const char* name, const char* unit,
                         int decimals, const Figure& figure) {
        figures->push_back({std::string(key) + "_" + sense,
                            std::string(symbol) + "_" + plane + " " + sense,
                            std::string(name) + ", " + sense, unit, decimals, figure, 0.0});
    };
    add("G", "G", "circular error G", "um", 2, turn.circular_error);
    if (turn.circular_error_zone || turn.circular_error_zone.reason != "not asked for") {
        add("G_zone", "G", "G, minimum zone", "um", 2, turn.circular_error_zone);
    }
    add("F_max", "F_max", "radial error F max", "um", 2, turn.radial_error_max);
    add("F_min", "F_min", "radial error F min", "um", 2, turn.radial_error_min);
    add("R", "R", "radius", "mm", 4, turn.circle.radius);
    add("v", "v", "feed", "mm/s", 3, turn.feed);
    add("v_even", "v", "feed unevenness", "%", 2, turn.feed_deviation);
}

/// One spike: its height always, width and duration where there is one.
void AddSpike(const ReversalSpike& spike, std::vector<NamedFigure>* figures) {
    const std::string sense = spike.sense == Sense::kCounterClockwise ? "ccw" : "cw";
    const std::string at = std::to_string(spike.degrees) + "_" + sense;
    const std::string words = std::to_string(spike.degrees) + " deg, " + sense;
    // For limits, none is a spike of no height.
    const bool none = spike.height.reason == "none";
    figures->push_back({"spike_" + at, "spike " + words, "reversal spike at " + words, "um", 2,
                        none ? Figure(0.0) : spike.height, 0.0});
    if (!none) {
        figures->push_back({"spike_deg_" + at, "spike " + words, "width of the spike at " + words,
                            "deg", 2, spike.width, 0.0});
        figures->push_back({"spike_ms_" + at, "spike " + words, "duration of the spike at " + words,
                            "ms", 2, spike.duration, 0.0});
    }
}

void AddShape(const CircleShape& shape, const PlaneNames& plane,
              std::vector<NamedFigure>* figures) {
    const auto add = [&](const char* key, const std::string& name, const char* unit, int decimals,
                         const FittedFigure& fitted) {
        figures->push_back({key, key, name, unit, decimals, fitted.value, fitted.error});
    };
    add("dR", "radius change", "um", 2, shape.radius_change);
    add("dS", "scale difference " + plane.first + " - " + plane.second, "um/m", 1,
        shape.scale_difference);
    add("eps", "squareness", "um/m", 1, shape.squareness);
    add("dtau", "servo mismatch " + plane.second + " - " + plane.first, "ms", 4,
        shape.servo_mismatch);
    if (shape.oval.value) {
        add("oval", "oval at 45 deg", "um", 2, shape.oval);
    }
    add("Bx", "backlash " + plane.first, "um", 2, shape.backlash_x);
    add("By", "backlash " + plane.second, "um", 2, shape.backlash_y);
    figures->push_back({"residual", "residual", "residual, rms", "um", 3, shape.residual, 0.0});
    for (const ReversalSpike& spike : shape.spikes) {
        AddSpike(spike, figures);
    }
}

Figure LargestOf(const std::vector<Move>& moves, Figure Move::*figure) {
    Figure largest = Figure::Not("no moves");
    for (const Move& move : moves) {
        const Figure& of = move.*figure;
        if (!of) {
            return of;
        }
        if (!largest || std::abs(*of) > std::abs(*largest)) {
            largest = of;
        }
    }
    return largest;
}

Verdict VerdictOn(const Figure& figure, const Limit& limit) {
    if (!figure || std::isnan(*figure)) {
        return Verdict::kNotTold;
    }
    const bool within =
        (!limit.least || *figure >= *limit.least) && (!limit.most || *figure <= *limit.most);
    return within ? Verdict::kPass : Verdict::kFail;
}

/// The worse of two.
Verdict Worse(Verdict a, Verdict b) {
    const auto rank = [](Verdict verdict) {
        return verdict == Verdict::kNotTold ? 2 : verdict == Verdict::kFail ? 1 : 0;
    };
    return rank(a) >= rank(b) ? a : b;
}

}  // namespace

std::vector<NamedFigure> FiguresOf(const CircleResult& result, const CircleEvaluation& evaluation,
                                   const PlaneNames& plane) {
    std::vector<NamedFigure> figures;
    for (const std::size_t turn : evaluation.turns) {
        AddTurn(result.turns[turn], plane.first + plane.second, &figures);
    }
    const std::string both = "_" + plane.first + plane.second;
    figures.push_back({"G_b", "G(b)" + both, "bi-directional error G(b)", "um", 2,
                       evaluation.bidirectional_error, 0.0});
    if (evaluation.bidirectional_error_zone) {
        figures.push_back({"G_b_zone", "G(b)" + both, "G(b), minimum zone", "um", 2,
                           evaluation.bidirectional_error_zone, 0.0});
    }
    figures.push_back(
        {"D", "D" + both, "mean radial error D", "um", 2, evaluation.mean_radial_error, 0.0});
    if (evaluation.shape) {
        AddShape(*evaluation.shape, plane, &figures);
    }
    return figures;
}

std::vector<NamedFigure> FiguresOf(const AxisResult& result) {
    const FollowingError& error = result.following;
    std::vector<NamedFigure> figures{
        {"e_max", "e max", "following error, largest", "um", 2, error.largest, 0.0},
        {"e_rms", "e rms", "following error, rms", "um", 2, error.rms, 0.0},
        {"lag", "tau", "velocity lag", "ms", 4, error.lag, 0.0},
        {"Kv", "Kv", "velocity gain", "1/s", 2, error.gain, 0.0},
        {"Kv_linear", "Kv", "velocity gain", "(m/min)/mm", 3, error.linear_gain, 0.0}};
    const auto& moves = result.motion.moves;
    if (!moves.empty()) {
        figures.push_back({"settling", "t set", "settling at the end of positioning, longest", "ms",
                           2, LargestOf(moves, &Move::settling), 0.0});
        figures.push_back({"settling_mean", "t set", "the same, mean", "ms", 2,
                           result.motion.mean_settling, 0.0});
        figures.push_back({"move_overshoot", "overshoot", "beyond the end of a move, largest", "um",
                           2, LargestOf(moves, &Move::overshoot), 0.0});
        figures.push_back({"move_steady", "e end", "steady error behind a move, largest", "um", 2,
                           LargestOf(moves, &Move::steady_error), 0.0});
    }
    for (std::size_t i = 0; i < result.motion.steps.size(); ++i) {
        const StepResponse& step = result.motion.steps[i];
        const std::string number = std::to_string(i + 1);
        const auto add = [&](const char* key, const char* name, const char* unit, int decimals,
                             const Figure& figure) {
            figures.push_back(
                {"step" + number + "_" + key, "step " + number, name, unit, decimals, figure, 0.0});
        };
        add("rise", "rise time", "ms", 2, step.rise);
        add("overshoot", "overshoot", "%", 2, step.overshoot);
        add("settling", "settling time", "ms", 2, step.settling);
        add("steady", "steady-state error", "um", 2, step.steady_error);
    }
    if (!result.reversals.empty()) {
        figures.push_back(
            {"dwell", "dwell", "rest at a reversal, longest", "ms", 2, result.longest_dwell, 0.0});
    }
    return figures;
}

Told<Limit> ParseLimit(std::string_view text) {
    using Result = Told<Limit>;
    const auto dots = text.find("..");
    if (dots == std::string_view::npos) {
        const auto most = FindWholeDouble(text);
        if (!most || *most < 0.0) {
            return Result::Not("a limit is a number from 0 on, or a range like -5..20");
        }
        return Limit{-*most, *most};
    }
    Limit limit;
    for (const bool low : {true, false}) {
        const auto part = Stripped(low ? text.substr(0, dots) : text.substr(dots + 2));
        auto& side = low ? limit.least : limit.most;
        if (!part.empty()) {
            side = FindWholeDouble(part);
            if (!side) {
                return Result::Not("\"" + std::string(part) + "\" is not a number");
            }
        }
    }
    if (!limit.least && !limit.most) {
        return Result::Not("a range without ends");
    }
    if (limit.least && limit.most && *limit.least > *limit.most) {
        return Result::Not("a range that ends before it begins");
    }
    return limit;
}

Told<Limits> ParseLimits(std::string_view text) {
    Limits limits;
    bool in_section = false;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const auto end = text.find('\n');
        const std::string_view line = Stripped(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == ';' || line.front() == '#') {
            continue;
        }
        if (line.front() == '[') {
            in_section = LowerCase(line) == kSection;
            continue;
        }
        if (!in_section) {
            continue;
        }
        const auto equals = line.find('=');
        const std::string where = "line " + std::to_string(number) + ": ";
        if (equals == std::string_view::npos || Stripped(line.substr(0, equals)).empty()) {
            return Told<Limits>::Not(where + "no name of a figure and limit");
        }
        const auto limit = ParseLimit(Stripped(line.substr(equals + 1)));
        if (!limit) {
            return Told<Limits>::Not(where + limit.reason);
        }
        limits[std::string(Stripped(line.substr(0, equals)))] = *limit;
    }
    return limits;
}

std::string LimitText(const Limit& limit) {
    const auto number = [](double value) {
        std::array<char, 32> text{};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
        return std::string(text.data(), end.ptr);
    };
    if (limit.least && limit.most && *limit.least == -*limit.most) {
        return number(*limit.most);
    }
    return (limit.least ? number(*limit.least) : std::string()) + ".." +
           (limit.most ? number(*limit.most) : std::string());
}

std::string LimitsText(const Limits& limits) {
    std::string text = "[Limits]\n";
    for (const auto& [key, limit] : limits) {
        text += key + " = " + LimitText(limit) + "\n";
    }
    return text;
}

Judgement Judge(std::span<const NamedFigure> figures, const Limits& limits) {
    Judgement judgement;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const auto limit = limits.find(figures[i].key);
        if (limit != limits.end()) {
            const Verdict verdict = VerdictOn(figures[i].figure, limit->second);
            judgement.judged.push_back({i, limit->second, verdict});
            judgement.verdict = Worse(judgement.verdict, verdict);
        }
    }
    for (const auto& limit : limits) {
        if (std::ranges::find(figures, limit.first, &NamedFigure::key) == figures.end()) {
            judgement.unknown.push_back(limit.first);
            judgement.verdict = Verdict::kNotTold;
        }
    }
    return judgement;
}

std::string TextOf(const Limit& limit, int decimals) {
    if (!limit.least) {
        return "<= " + Decimals(*limit.most, decimals);
    }
    if (!limit.most) {
        return ">= " + Decimals(*limit.least, decimals);
    }
    if (*limit.least == -*limit.most) {
        return "+-" + Decimals(*limit.most, decimals);
    }
    return Decimals(*limit.least, decimals) + ".." + Decimals(*limit.most, decimals);
}

std::string TextOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::kPass:
            return "pass";
        case Verdict::kFail:
            return "FAIL";
        case Verdict::kNotTold:
            return "not told";
    }
    return {};
}

}  // namespace wavo::measure

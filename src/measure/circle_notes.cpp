#include "measure/circle_notes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "measure/words.h"

namespace wavo::measure {

namespace {

constexpr double kLeastAngleTold = 90.0;  // degrees; shorter arcs are corners
constexpr double kFeedIsFarOff = 0.05;
constexpr double kOtherAxisMoves = 0.005;  // mm
constexpr double kFeedUneven = 2.0;        // %
constexpr std::size_t kFewestLines = 100;

std::string SenseName(Sense sense) {
    return sense == Sense::kCounterClockwise ? "ccw" : "cw";
}

double RangeOf(std::span<const double> values) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const double value : values) {
        if (std::isfinite(value)) {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    return high > low ? high - low : 0.0;
}

/// The longest stretch of lines at one value.
Stretch LongestAt(std::span<const double> values, double value) {
    Stretch longest;
    std::size_t first = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] != value) {
            first = i + 1;
        } else if (i + 1 - first > longest.Size()) {
            longest = {first, i + 1};
        }
    }
    return longest;
}

/// The smallest step between neighbours that differ: the resolution, as far as it shows.
double SmallestStep(std::span<const double> values) {
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 1; i < values.size(); ++i) {
        const double step = std::abs(values[i] - values[i - 1]);
        smallest = step > 0.0 ? std::min(smallest, step) : smallest;
    }
    return smallest;
}

/// Lines at an extreme value that the resolution does not explain, on both sides of the reversal
/// alike (play stands still behind it only): cut by the range of what recorded them.
void NoteClipping(const char* axis, std::span<const double> values, std::span<const double> across,
                  double centre_across, const CircleTurn& turn, std::vector<std::string>* notes) {
    const double step = SmallestStep(values);
    const auto [low, high] = std::ranges::minmax(values);
    for (const double extreme : {low, high}) {
        const Stretch flat = LongestAt(values, extreme);
        if (flat.Size() < 5) {
            continue;
        }
        const double begin = across[flat.first] - centre_across;
        const double end = across[flat.end - 1] - centre_across;
        // What a circle rises over half of the flat piece.
        const double half = std::abs(end - begin) / 2.0;
        const double cap = half * half / 2.0 / turn.circle.radius;
        if (std::abs(begin + end) < half && cap > std::max(5.0 * step, 0.005)) {
            notes->push_back(
                Words("%s stays at %s mm for %zu lines of the %s turn: clipped values?", axis,
                      Decimals(extreme, 3).c_str(), flat.Size(), SenseName(turn.sense).c_str()));
        }
    }
}

void NoteTurn(const PlanePath& path, const CircleSetup& setup, const CircleTurn& turn,
              const CircleRun& run, std::vector<std::string>* notes) {
    const std::string sense =
        Words("%s turn at line %zu", SenseName(turn.sense).c_str(), turn.stretch.first);
    if (run.shortened) {
        notes->push_back(
            Words("%s: only %s s left out at both ends, for lack of angle; program "
                  "1.25 turns or more per sense",
                  sense.c_str(), Decimals(run.margin, 2).c_str()));
    }
    if (setup.feed && std::abs(turn.feed / *setup.feed - 1.0) > kFeedIsFarOff) {
        notes->push_back(Words("%s: the feed is %s mm/s, %s %% off the %s mm/s given",
                               sense.c_str(), Decimals(turn.feed, 2).c_str(),
                               Decimals((turn.feed / *setup.feed - 1.0) * 100.0, 1).c_str(),
                               Decimals(*setup.feed, 2).c_str()));
    }
    if (turn.feed_deviation > kFeedUneven) {
        notes->push_back(Words("%s: the feed is uneven, up to %s %% off its mean", sense.c_str(),
                               Decimals(turn.feed_deviation, 1).c_str()));
    }
    if (turn.nominal_radius && std::abs(turn.circle.radius / *turn.nominal_radius - 1.0) > 0.01) {
        notes->push_back(Words("%s: the radius is %s mm, far off the nominal %s mm", sense.c_str(),
                               Decimals(turn.circle.radius, 3).c_str(),
                               Decimals(*turn.nominal_radius, 3).c_str()));
    }
    if (std::abs(turn.closure) > std::max(2.0, 0.3 * turn.circular_error.value.value_or(0.0))) {
        notes->push_back(Words("%s: the radius changes by %s um over the turn: it does not close",
                               sense.c_str(), Decimals(turn.closure, 1).c_str()));
    }
    const auto x = path.x.subspan(turn.stretch.first, turn.stretch.Size());
    const auto y = path.y.subspan(turn.stretch.first, turn.stretch.Size());
    NoteClipping("the first axis", x, y, turn.circle.y, turn, notes);
    NoteClipping("the second axis", y, x, turn.circle.x, turn, notes);
    for (const OtherAxis& axis : setup.others) {
        const double range = RangeOf(axis.values.subspan(turn.stretch.first, turn.stretch.Size()));
        if (range > kOtherAxisMoves) {
            notes->push_back(Words("%s moves by %s mm during the %s: not a circle in one plane",
                                   axis.name.c_str(), Decimals(range, 3).c_str(), sense.c_str()));
        }
    }
}

/// Why there is nothing to evaluate.
void NoteNoTurn(const PlanePath& path, const CircleResult& result,
                std::vector<std::string>* notes) {
    if (path.x.size() < kFewestLines) {
        notes->push_back(Words("only %zu lines: too few for a turn", path.x.size()));
    } else if (RangeOf(path.x) < kOtherAxisMoves && RangeOf(path.y) < kOtherAxisMoves) {
        notes->emplace_back("standstill: neither axis moves");
    } else if (RangeOf(path.x) < kOtherAxisMoves || RangeOf(path.y) < kOtherAxisMoves) {
        notes->push_back(Words("no circle: the %s axis stands still",
                               RangeOf(path.x) < kOtherAxisMoves ? "first" : "second"));
    } else if (std::ranges::none_of(result.runs, [](const CircleRun& run) {
                   return run.angle >= kLeastAngleTold;
               })) {
        notes->emplace_back("no full turn at constant feed and curvature was found");
    }
}

}  // namespace

std::vector<std::string> CircleNotes(const PlanePath& path, const CircleSetup& setup,
                                     const CircleResult& result) {
    std::vector<std::string> notes;
    const std::array<std::span<const double>, 2> columns{path.x, path.y};
    const auto whole = WholeStretches(columns);
    std::size_t kept = 0;
    for (const Stretch& stretch : whole) {
        kept += stretch.Size();
    }
    if (kept < path.x.size()) {
        notes.push_back(
            Words("gaps: %zu of %zu lines are missing or not numbers, in %zu places",
                  path.x.size() - kept, path.x.size(),
                  whole.empty() ? std::size_t{1} : std::max<std::size_t>(whole.size() - 1, 1)));
    }
    for (const CircleRun& run : result.runs) {
        if (!run.turn && run.angle >= kLeastAngleTold) {
            notes.push_back(Words("lines %zu to %zu, %s, radius %s mm: %s", run.stretch.first,
                                  run.stretch.end - 1, SenseName(run.sense).c_str(),
                                  Decimals(run.circle.radius, 3).c_str(), run.reason.c_str()));
        }
    }
    for (const CircleTurn& turn : result.turns) {
        NoteTurn(path, setup, turn, result.runs[turn.run], &notes);
    }
    if (result.turns.empty()) {
        NoteNoTurn(path, result, &notes);
    }
    for (const CircleEvaluation& evaluation : result.evaluations) {
        if (evaluation.shape) {
            notes.insert(notes.end(), evaluation.shape->notes.begin(),
                         evaluation.shape->notes.end());
        } else {
            notes.push_back("shape: " + evaluation.shape.reason);
        }
    }
    return notes;
}

}  // namespace wavo::measure

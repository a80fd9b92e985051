// Every figure of tests/measure/data/expected*.csv, computed elsewhere in two independent ways.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <sstream>

#include "measure/circle_test.h"
#include "measure/contour_error.h"
#include "measure/following_error.h"
#include "measure/frequency_response.h"
#include "measure/spectrum.h"
#include "measure/statistics.h"
#include "measure/step_response.h"
#include "measure/words.h"
#include "test_tables.h"

namespace wavo::measure {
namespace {

constexpr double kCycle = 0.001;

struct Row {
    std::string data;
    std::string figure;
    std::string setting;
    std::string unit;
    double expected = 0.0;
    double tolerance = 0.0;
};

/// Fields of a line, some of them in quotes.
std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

std::vector<Row> ReadRows(const std::string& file) {
    std::istringstream lines(LoadText(file));
    std::vector<Row> rows;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        const auto f = Fields(line);
        rows.push_back(
            {f.at(0), f.at(1), f.at(2), f.at(3), std::stod(f.at(4)), std::stod(f.at(5))});
    }
    return rows;
}

/// The cycles that a setting "cycles a..b ..." names, before the end.
std::optional<Stretch> CyclesNamed(const std::string& setting) {
    std::size_t first = 0;
    std::size_t last = 0;
    if (std::sscanf(setting.c_str(), "cycles %zu..%zu", &first, &last) != 2) {
        return std::nullopt;
    }
    return Stretch{first, last + 1};
}

double Of(const Figure& figure) {
    EXPECT_TRUE(figure) << figure.reason;
    return figure.value.value_or(std::nan(""));
}

/// Circle figures of one file. The spans of its turns are taken as the rows give them.
class CircleFigures {
 public:
    CircleFigures(const std::string& data, const std::vector<Row>& rows) {
        const bool recording = data.starts_with("circle_xy");
        m_table = LoadTable(recording ? "recordings/" + data : data);
        m_path = {kCycle, m_table.Find("X"), m_table.Find("Y"), m_table.Find("X_cmd"),
                  m_table.Find("Y_cmd")};
        m_setup.minimum_zone = true;
        m_setup.radius = recording ? 50.0 : m_path.HasCommanded() ? 20.0 : 15.0;
        if (!m_path.HasCommanded()) {
            m_nominal = {100.0, -50.0, 15.0};
        }
        m_found = TestCircle(m_path, m_setup);
        for (const Row& row : rows) {
            const auto span = CyclesNamed(row.setting);
            if (row.data == data && row.figure.starts_with("run") && span &&
                row.figure.ends_with("radius")) {
                const Sense sense = row.figure.find("ccw") != std::string::npos
                                        ? Sense::kCounterClockwise
                                        : Sense::kClockwise;
                m_turns.push_back(*EvaluateTurn(m_path, *span, sense, m_setup));
            }
        }
        m_pair = EvaluateTurns(m_path, std::span(m_turns).first(2), m_setup);
        m_single = EvaluateTurns(m_path, std::span(m_turns).first(1), m_setup);
    }

    [[nodiscard]] std::optional<double> Value(const Row& row) const {
        int run = 0;
        if (std::sscanf(row.figure.c_str(), "run%d", &run) == 1) {
            return row.figure.find("spike") != std::string::npos
                       ? SpikeValue(row, static_cast<std::size_t>(run - 1))
                       : RunValue(row, static_cast<std::size_t>(run - 1));
        }
        if (row.figure.starts_with("velocity lag") || row.figure.starts_with("Kv") ||
            row.figure.starts_with("following error") || row.figure.starts_with("contour")) {
            return PathValue(row);
        }
        const CircleShape& shape = *m_pair.shape;
        if (row.figure == "G(b)") {
            return Of(row.setting.ends_with("MZC") ? m_pair.bidirectional_error_zone
                                                   : m_pair.bidirectional_error);
        }
        if (row.figure.starts_with("s2")) {
            return Of(m_single.shape->oval.value);
        }
        const std::map<std::string, double> values{
            {"D", Of(m_pair.mean_radial_error)},         {"dR", Of(shape.radius_change.value)},
            {"Sx-Sy", Of(shape.scale_difference.value)}, {"eps", Of(shape.squareness.value)},
            {"dtau", Of(shape.servo_mismatch.value)},    {"Bx", Of(shape.backlash_x.value)},
            {"By", Of(shape.backlash_y.value)},          {"residual rms", shape.residual},
            {"condition number", shape.condition}};
        const auto found = values.find(row.figure);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    }

 private:
    [[nodiscard]] std::optional<double> RunValue(const Row& row, std::size_t run) const {
        const CircleRun& found = m_found.runs.at(run);
        const CircleTurn& turn = m_turns.at(run);
        const std::string what = row.figure.substr(row.figure.find(' ', 5) + 1);
        const bool ccw = row.figure.find("ccw") != std::string::npos;
        EXPECT_EQ(found.sense == Sense::kCounterClockwise, ccw) << row.figure;
        if (what == "first cycle") {
            return found.stretch.first;
        }
        if (what == "last cycle") {
            return found.stretch.end - 1;
        }
        if (what == "turn first") {
            return found.turn->first;
        }
        if (what == "turn end") {
            return found.turn->end;
        }
        if (what == "G") {
            return Of(row.setting.ends_with("MZC") ? turn.circular_error_zone
                                                   : turn.circular_error);
        }
        if (what == "Fmax" || what == "Fmin") {
            CircleTurn about = turn;
            if (row.setting.ends_with("nominal centre")) {
                CircleSetup setup = m_setup;
                setup.centre = m_nominal;
                about = *EvaluateTurn(m_path, turn.stretch, turn.sense, setup);
            }
            return Of(what == "Fmax" ? about.radial_error_max : about.radial_error_min);
        }
        const std::map<std::string, double> values{{"centre x", turn.circle.x},
                                                   {"centre y", turn.circle.y},
                                                   {"radius", turn.circle.radius},
                                                   {"feed", turn.feed},
                                                   {"feed max dev", turn.feed_deviation}};
        const auto value = values.find(what);
        return value == values.end() ? std::nullopt : std::optional(value->second);
    }

    [[nodiscard]] std::optional<double> SpikeValue(const Row& row, std::size_t run) const {
        int degrees = 0;
        std::sscanf(row.figure.c_str(), "run%*d spike %d", &degrees);
        for (const ReversalSpike& spike : m_pair.shape->spikes) {
            if (spike.degrees != degrees || spike.sense != m_turns.at(run).sense) {
                continue;
            }
            if (row.figure.ends_with("none")) {
                return spike.height.reason == "none" ? 1.0 : 0.0;
            }
            if (row.figure.ends_with("height")) {
                return Of(spike.height);
            }
            return Of(row.unit == "deg" ? spike.width : spike.duration);
        }
        return std::nullopt;
    }

    [[nodiscard]] std::optional<double> PathValue(const Row& row) const {
        const auto span = CyclesNamed(row.setting);
        if (row.figure.starts_with("contour") || row.figure.ends_with("(vector)")) {
            const std::vector<ContourAxis> axes{{m_path.x_cmd, m_path.x}, {m_path.y_cmd, m_path.y}};
            const auto figures = ContourFiguresOf(axes, *span, {.reach = 15});
            return Of(row.figure.ends_with("rms")     ? figures.rms
                      : row.figure.starts_with("con") ? figures.largest
                                                      : figures.largest_following);
        }
        const std::string axis(1, row.figure.back());
        const auto error = FollowingErrorOf(m_table.Find(axis + "_cmd"), m_table.Find(axis), kCycle,
                                            *span, LagSamples::kAll);
        EXPECT_EQ(error.count, 0U + span->Size());
        if (row.figure.starts_with("velocity lag")) {
            return Of(error.lag);
        }
        if (row.figure.starts_with("Kv")) {
            return Of(row.unit == "1/s" ? error.gain : error.linear_gain);
        }
        return Of(row.figure.find("max") != std::string::npos ? error.largest : error.rms);
    }

    ColumnTable m_table;
    PlanePath m_path;
    CircleSetup m_setup;
    Circle m_nominal{0.0, 0.0, 20.0};
    CircleResult m_found;
    std::vector<CircleTurn> m_turns;
    CircleEvaluation m_pair;
    CircleEvaluation m_single;
};

double FollowingValue(const Row& row, const FollowingError& error) {
    if (row.figure.starts_with("velocity lag")) {
        return Of(error.lag);
    }
    if (row.figure.starts_with("Kv")) {
        return Of(row.unit == "1/s" ? error.gain : error.linear_gain);
    }
    return Of(row.figure.find("max") != std::string::npos ? error.largest : error.rms);
}

std::optional<double> MoveValue(const Row& row, const StepsAndMoves& found) {
    if (row.figure == "moves found") {
        return static_cast<double>(found.moves.size());
    }
    if (row.figure == "settling mean of all") {
        return Of(found.mean_settling);
    }
    std::size_t cycle = 0;
    if (std::sscanf(row.figure.c_str(), "settling, end at cycle %zu", &cycle) == 1) {
        for (const Move& move : found.moves) {
            if (move.last == cycle) {
                return Of(move.settling);
            }
        }
    }
    return std::nullopt;
}

std::optional<double> AxisMoveValue(const Row& row) {
    static const ColumnTable table = LoadTable("axis_move");
    const auto cmd = table.Find("cmd");
    const auto act = table.Find("act");
    if (row.figure.starts_with("settling") || row.figure.starts_with("moves")) {
        return MoveValue(row, FindStepsAndMoves(cmd, act, kCycle, {.move_window = 0.005}));
    }
    const auto samples = row.setting == "moving" ? LagSamples::kMoving : LagSamples::kConstantSpeed;
    return FollowingValue(row, FollowingErrorOf(cmd, act, kCycle, {0, cmd.size()}, samples));
}

std::optional<double> AxisStepValue(const Row& row) {
    static const ColumnTable table = LoadTable("axis_step");
    StepSetup setup;
    if (row.setting == "0-90 %") {
        setup.rise_from = 0.0;
    }
    if (row.setting.starts_with("5 %")) {
        setup.settled = 5.0;
    }
    if (row.setting == "commanded target") {
        setup.target = StepTarget::kCommanded;
    }
    const auto found = FindStepsAndMoves(table.Find("cmd"), table.Find("act"), kCycle, setup);
    const StepResponse& step = found.steps.at(row.figure.starts_with("step1") ? 0 : 1);
    const std::string what = row.figure.substr(6);
    if (what == "overshoot") {
        return Of(step.overshoot);
    }
    if (what == "rise") {
        return Of(step.rise);
    }
    if (what == "settling") {
        return Of(step.settling);
    }
    if (what == "cycle") {
        return static_cast<double>(step.place);
    }
    if (what == "size") {
        return step.to - step.from;
    }
    return what == "steady-state error" ? std::optional(Of(step.steady_error)) : std::nullopt;
}

std::optional<double> TonesValue(const Row& row) {
    static const ColumnTable table = LoadTable("tones");
    SpectrumSetup setup;
    if (row.setting.starts_with("Welch")) {
        setup.segment = 512;
        setup.scale = SpectrumScale::kDensity;
    }
    setup.window = row.setting.starts_with("flat")   ? Window::kFlatTop
                   : row.setting.starts_with("rect") ? Window::kRectangular
                                                     : Window::kHann;
    if (row.setting.ends_with("rms scale")) {
        setup.scale = SpectrumScale::kRms;
    }
    const auto spectrum = SpectrumOf(table.Find("x"), kCycle, setup);
    if (row.figure == "averages") {
        return static_cast<double>(spectrum->averages);
    }
    if (row.figure.starts_with("noise density")) {
        double sum = 0.0;
        double count = 0.0;
        for (std::size_t k = 0; k < spectrum->values.size(); ++k) {
            if (spectrum->FrequencyOf(k) >= 380.0 && spectrum->FrequencyOf(k) <= 480.0) {
                sum += spectrum->values[k];
                ++count;
            }
        }
        return std::sqrt(sum / count);
    }
    std::size_t line = 0;
    if (std::sscanf(row.figure.c_str(), "line %zu", &line) == 1) {
        return spectrum->values.at(line);
    }
    for (const SpectrumPeak& peak : PeaksOf(*spectrum, 2)) {
        if (std::abs(peak.frequency - std::stod(row.figure.substr(row.figure.find("near") + 5))) <
            1.0) {
            return row.unit == "Hz" ? peak.frequency : peak.amplitude;
        }
    }
    return std::nullopt;
}

std::optional<double> ResponseValue(const Row& row) {
    static const ColumnTable table = LoadTable("frf");
    static const auto response =
        FrequencyResponseOf(table.Find("u"), table.Find("y"), 1.0, {.segment = 512});
    if (row.figure == "averages") {
        return static_cast<double>(response->averages);
    }
    if (row.figure.starts_with("lines with")) {
        return static_cast<double>(response->trusted);
    }
    const auto line = static_cast<std::size_t>(std::lround(std::stod(row.setting) * 512.0));
    return row.figure == "|H1|"       ? response->Magnitude(line)
           : row.figure == "phase H1" ? response->Phase(line)
                                      : response->coherence.at(line);
}

double StatisticsValue(const Row& row, const Statistics& statistics) {
    if (row.figure == "n") {
        return static_cast<double>(statistics.count);
    }
    if (row.figure == "NaN") {
        return static_cast<double>(statistics.not_finite);
    }
    if (row.figure == "missing cycles") {
        return static_cast<double>(statistics.missing);
    }
    return Of(row.figure == "mean"  ? statistics.mean
              : row.figure == "rms" ? statistics.rms
              : row.figure == "std" ? statistics.deviation
              : row.figure == "pp"  ? statistics.peak_to_peak
                                    : statistics.slope);
}

/// The file as it is: lines with cycle numbers, some of them missing.
std::optional<double> StatsValue(const Row& row) {
    static const ColumnTable table = LoadTable("stats");
    static std::vector<double> values;
    static std::vector<Cycle> cycles;
    if (values.empty()) {
        for (std::size_t i = 0; i < table.Lines(); ++i) {
            // Lines that reading put in for missing cycles are known by their places.
            if (i >= 700 && i < 750) {
                EXPECT_TRUE(std::isnan(table.Find("x")[i]));
                continue;
            }
            values.push_back(table.Find("x")[i]);
            cycles.push_back(static_cast<Cycle>(table.Find("cycle")[i]));
        }
    }
    const Series series{values, kCycle, 0, cycles};
    const Stretch span = CyclesNamed(row.setting).value_or(Stretch{0, 2000});
    return StatisticsValue(row, StatisticsBetween(series, static_cast<double>(span.first) * kCycle,
                                                  static_cast<double>(span.end - 1) * kCycle));
}

std::optional<double> RecordingValue(const Row& row) {
    if (row.data.starts_with("drill")) {
        static const ColumnTable table = LoadTable("recordings/drill_g81_g83_g82");
        const std::string axis(1, row.data.back());
        const StepSetup setup{.dwell = 0.15, .move_window = 0.01};
        return MoveValue(
            row, FindStepsAndMoves(table.Find(axis + "_cmd"), table.Find(axis), kCycle, setup));
    }
    const ColumnTable table = LoadTable("recordings/" + row.data);
    if (row.data.starts_with("helix") && row.setting == "moving") {
        return FollowingValue(row, FollowingErrorOf(table.Find("A_cmd"), table.Find("A"), kCycle,
                                                    {0, table.Lines()}, LagSamples::kMoving));
    }
    if (row.setting.starts_with("X, cycles")) {
        const auto span = CyclesNamed(row.setting.substr(3));
        const Series series{table.Find("X"), kCycle, 0, {}};
        return StatisticsValue(row,
                               StatisticsBetween(series, static_cast<double>(span->first) * kCycle,
                                                 static_cast<double>(span->end - 1) * kCycle));
    }
    std::vector<ContourAxis> axes;
    for (const std::string axis : {"X", "Y", "Z"}) {
        axes.push_back({table.Find(axis + "_cmd"), table.Find(axis)});
    }
    const auto figures = ContourFiguresOf(axes, *CyclesNamed(row.setting), {.reach = 20});
    return row.figure == "contour error max" ? std::optional(Of(figures.largest))
           : row.figure == "following error max (vector)"
               ? std::optional(Of(figures.largest_following))
               : std::nullopt;
}

std::optional<double> Value(const Row& row, const std::vector<Row>& rows) {
    if (row.data.starts_with("circle_") && !row.setting.starts_with("X, cycles")) {
        static std::map<std::string, CircleFigures> circles;
        auto found = circles.find(row.data);
        if (found == circles.end()) {
            found = circles.emplace(row.data, CircleFigures(row.data, rows)).first;
        }
        return found->second.Value(row);
    }
    if (row.data == "axis_move") {
        return AxisMoveValue(row);
    }
    if (row.data == "axis_step") {
        return AxisStepValue(row);
    }
    if (row.data == "tones") {
        return TonesValue(row);
    }
    if (row.data == "frf") {
        return ResponseValue(row);
    }
    return row.data == "stats" ? StatsValue(row) : RecordingValue(row);
}

void CompareAll(const std::string& file, std::size_t count) {
    const auto rows = ReadRows(file);
    EXPECT_EQ(rows.size(), count);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.data + ", " + row.figure + ", " + row.setting + ", " + row.unit);
        const auto value = Value(row, rows);
        if (!value) {
            ADD_FAILURE() << "not computed";
            continue;
        }
        // Half a unit of the last of ten digits, as they are written there.
        const double digits = std::abs(row.expected) * 5e-10;
        EXPECT_NEAR(*value, row.expected, row.tolerance + digits);
    }
}

TEST(Acceptance, FiguresOfSyntheticMachines) {
    CompareAll("expected.csv", 212);
}

TEST(Acceptance, FiguresOfRecordings) {
    CompareAll("expected_recordings.csv", 106);
}

}  // namespace
}  // namespace wavo::measure

#include "report/circle_report.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "measure/words.h"
#include "report/chart.h"
#include "report/ink.h"
#include "report/page.h"
#include "report/pdf_file.h"

namespace wavo::report {

namespace {

using measure::CircleTurn;
using measure::Decimals;
using measure::NamedFigure;
using measure::Sense;

QString Told(const std::string& text) {
    return QString::fromStdString(text);
}

std::string SenseText(Sense sense) {
    return sense == Sense::kCounterClockwise ? "ccw" : "cw";
}

bool IsSpike(const NamedFigure& figure) {
    return figure.key.starts_with("spike_");
}

std::string Plane(const CircleReport& report) {
    return report.first_axis + report.second_axis;
}

measure::PlaneNames NamesOf(const CircleReport& report) {
    return {report.first_axis, report.second_axis};
}

/// The turns of the evaluation that the page is about.
std::vector<const CircleTurn*> TurnsOf(const CircleReport& report, const CircleVerdict& verdict) {
    std::vector<const CircleTurn*> turns;
    if (verdict.evaluation) {
        for (const std::size_t turn : report.result.evaluations[*verdict.evaluation].turns) {
            turns.push_back(&report.result.turns[turn]);
        }
    }
    return turns;
}

/// Centre and radius that radial errors are drawn about.
measure::Circle DrawnAbout(const CircleReport& report, const CircleVerdict& verdict,
                           const CircleTurn& turn) {
    const auto& common = report.result.evaluations[*verdict.evaluation].common;
    measure::Circle circle = common ? *common : turn.circle;
    circle.radius = turn.nominal_radius.value.value_or(circle.radius);
    return circle;
}

/// Limits on F as a band; else that of G about the mean radius.
std::optional<PolarBand> BandOf(const CircleReport& report) {
    const auto most = [&](const char* key) -> std::optional<double> {
        const auto limit = report.limits.find(key);
        return limit == report.limits.end() ? std::nullopt : limit->second.most;
    };
    const auto least = [&](const char* key) -> std::optional<double> {
        const auto limit = report.limits.find(key);
        return limit == report.limits.end() ? std::nullopt : limit->second.least;
    };
    for (const std::string sense : {"ccw", "cw"}) {
        const auto outer = most(("F_max_" + sense).c_str());
        const auto inner = least(("F_min_" + sense).c_str());
        if (outer && inner) {
            return PolarBand{*inner, *outer};
        }
    }
    for (const char* key : {"G_b", "G_ccw", "G_cw"}) {
        if (const auto width = most(key)) {
            return PolarBand{-*width / 2.0, *width / 2.0};
        }
    }
    return std::nullopt;
}

std::string TurnText(const CircleReport& report, const CircleTurn& turn) {
    const measure::CircleRun& run = report.result.runs[turn.run];
    return measure::Words("lines %zu to %zu of the run %zu to %zu", turn.stretch.first,
                          turn.stretch.end - 1, run.stretch.first, run.stretch.end - 1);
}

std::string FeedText(const CircleReport& report, const std::vector<const CircleTurn*>& turns) {
    std::string text = report.setup.feed ? Decimals(*report.setup.feed * 60.0, 0) + " given, " : "";
    text += "reached ";
    for (const CircleTurn* turn : turns) {
        text += (turn == turns.front() ? "" : " / ") + Decimals(turn->feed * 60.0, 1);
    }
    return text + " mm/min";
}

std::vector<std::pair<QString, QString>> FactsOf(const CircleReport& report,
                                                 const std::vector<const CircleTurn*>& turns) {
    const auto known = [](const QString& text) {
        return text.isEmpty() ? QStringLiteral("not given") : text;
    };
    std::vector<std::pair<QString, QString>> facts{
        {QStringLiteral("Machine"), known(report.header.machine)},
        {QStringLiteral("Program"), known(report.header.program)},
        {QStringLiteral("Date"), known(report.header.date)},
        {QStringLiteral("Data"), report.header.file},
        {QStringLiteral("Lines, cycle"),
         Told(measure::Words("%zu lines, %s ms", report.result.lines,
                             Decimals(report.result.cycle_time * 1000.0, 3).c_str()))},
        {QStringLiteral("Axes"),
         Told(report.first_axis + ", " + report.second_axis +
              (report.result.from_commanded ? "; turns found in commanded values"
                                            : "; actual values only"))}};
    if (turns.empty()) {
        return facts;
    }
    const auto& nominal = turns.front()->nominal_radius;
    facts.emplace_back(
        QStringLiteral("Radius"),
        Told(nominal ? Decimals(*nominal, 4) + " mm, " +
                           (report.setup.radius ? "given" : "of the commanded circle")
                     : "not given"));
    facts.emplace_back(QStringLiteral("Feed"), Told(FeedText(report, turns)));
    for (const CircleTurn* turn : turns) {
        facts.emplace_back(Told("Turn " + SenseText(turn->sense)), Told(TurnText(report, *turn)));
    }
    const auto& run = report.result.runs[turns.front()->run];
    facts.emplace_back(QStringLiteral("Left out"),
                       Told("approach, run-out, " + Decimals(run.margin, 2) + " s at both ends"));
    facts.emplace_back(QStringLiteral("Filter"), QStringLiteral("none"));
    return facts;
}

/// A table of the spikes: a row per reversal, a column per sense.
void PaintSpikes(const Page& page, double left, double top, double width,
                 std::span<const NamedFigure> figures) {
    constexpr double kRow = 4.2;
    constexpr std::array kDegrees{"0", "90", "180", "270"};
    const double column = (width - 16.0) / 2.0;
    page.SetFont(7.0);
    page.Painter().setPen(kFaint);
    page.Text(left, top, 40.0, kRow, QStringLiteral("Reversal spikes"));
    page.Text(left + 16.0, top, column, kRow, QStringLiteral("ccw"), Qt::AlignRight);
    page.Text(left + 16.0 + column, top, column, kRow, QStringLiteral("cw"), Qt::AlignRight);
    page.Line(left, top + kRow, left + width, top + kRow, kText, 0.2);
    for (std::size_t row = 0; row < kDegrees.size(); ++row) {
        const double at = top + static_cast<double>(row + 1) * kRow;
        page.Painter().setPen(kText);
        page.SetFont(7.5);
        page.Text(left, at, 16.0, kRow, QString::fromLatin1(kDegrees[row]) + QStringLiteral("°"));
        for (const char* sense : {"ccw", "cw"}) {
            const std::string end = std::string(kDegrees[row]) + "_" + sense;
            const auto figure = [&](const std::string& key) {
                const auto found = std::ranges::find(figures, key, &NamedFigure::key);
                return found == figures.end() ? QString() : DisplayValue(*found);
            };
            QString text = figure("spike_" + end);
            if (text.isEmpty()) {
                text = QStringLiteral("-");
            } else if (figure("spike_deg_" + end).isEmpty()) {
                text = QStringLiteral("none");
            } else {
                text += QStringLiteral(", ") + figure("spike_deg_" + end) + QStringLiteral(", ") +
                        figure("spike_ms_" + end);
            }
            const bool second = sense[1] == 'w';
            page.Text(left + 16.0 + (second ? column : 0.0), at, column, kRow, text,
                      Qt::AlignRight);
        }
        page.Line(left, at + kRow, left + width, at + kRow, kGrid, 0.08);
    }
}

/// Radial errors over the angle.
Chart ErrorsOverAngle(const PolarPicture& picture) {
    Chart chart;
    chart.x_title = QStringLiteral("angle in °");
    chart.y_title = QStringLiteral("radial error in µm");
    chart.x_last = 360.0;
    chart.x_step = 30.0;
    if (picture.band) {
        chart.levels = {picture.band->inner, picture.band->outer};
    }
    for (const PolarTrace& trace : picture.traces) {
        const bool ccw = trace.sense == Sense::kCounterClockwise;
        ChartCurve curve;
        curve.color = ccw ? kCounterClockwiseInk : kClockwiseInk;
        curve.dashed = !ccw;
        curve.name = ccw ? QStringLiteral("counter-clockwise") : QStringLiteral("clockwise");
        const measure::RadialError* before = nullptr;
        for (const auto& error : trace.errors) {
            if (before != nullptr && std::abs(error.degrees - before->degrees) > 180.0) {
                curve.points.emplace_back(0.0, std::nan(""));
            }
            curve.points.emplace_back(error.degrees, error.error);
            before = &error;
        }
        chart.curves.push_back(std::move(curve));
    }
    return chart;
}

/// Settings that are not the usual ones.
std::string SettingsText(const measure::CircleSetup& setup) {
    const measure::CircleSetup usual;
    std::string text;
    if (setup.shape.zone != usual.shape.zone) {
        text += " reversal zones of " + Decimals(setup.shape.zone, 1) + " deg;";
    }
    if (setup.shape.noise) {
        text += " known noise of " + Decimals(*setup.shape.noise, 2) + " um;";
    }
    if (setup.centre) {
        text += " F about the nominal centre " + Decimals(setup.centre->x, 4) + ", " +
                Decimals(setup.centre->y, 4) + " mm;";
    }
    if (setup.minimum_zone) {
        text += " minimum zone too;";
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

/// Turns that are evaluated, but not on this page.
QStringList OtherTurns(const CircleReport& report, const CircleVerdict& verdict) {
    QStringList sentences;
    for (std::size_t i = 0; i < report.result.evaluations.size(); ++i) {
        if (verdict.evaluation == i) {
            continue;
        }
        for (const std::size_t place : report.result.evaluations[i].turns) {
            const CircleTurn& turn = report.result.turns[place];
            sentences << Told(
                measure::Words("Not on this page: another %s turn at line %zu, %s mm/min, G %s um.",
                               SenseText(turn.sense).c_str(), turn.stretch.first,
                               Decimals(turn.feed * 60.0, 1).c_str(),
                               Decimals(turn.circular_error.value.value_or(0.0), 2).c_str()));
        }
    }
    return sentences;
}

QStringList SentencesOf(const CircleReport& report, const CircleVerdict& verdict) {
    QStringList sentences;
    sentences << Told(std::string(kFeedbackCaveat) + ". Terms of ISO 230-4:2022.");
    const std::string settings = SettingsText(report.setup);
    if (!settings.empty()) {
        sentences << Told("Settings:" + settings + ".");
    }
    if (verdict.evaluation) {
        const auto& shape = report.result.evaluations[*verdict.evaluation].shape;
        if (shape) {
            sentences << Told("Fit: " + Decimals(shape->zone_before, 1) + " deg before and " +
                              Decimals(shape->zone_behind, 1) +
                              " deg behind each reversal left out; condition " +
                              Decimals(shape->condition, 1) + "; residual " +
                              Decimals(shape->residual, 3) + " um rms; +- gives standard errors.");
        }
    }
    if (BandOf(report)) {
        sentences << QStringLiteral("Dash-dotted: limits of the radial error.");
    }
    sentences << ReasonsOf(verdict.figures);
    for (const std::string& key : verdict.judgement.unknown) {
        sentences << Told("There is a limit on \"" + key + "\", but no such figure.");
    }
    sentences << OtherTurns(report, verdict);
    for (const std::string& note : report.result.notes) {
        sentences << Told(note + ".");
    }
    return sentences;
}

void WriteRuns(JsonWriter& json, const measure::CircleResult& result) {
    json.BeginArray("runs");
    for (const measure::CircleRun& run : result.runs) {
        json.BeginObject();
        json.Number("first", static_cast<double>(run.stretch.first));
        json.Number("end", static_cast<double>(run.stretch.end));
        json.Text("sense", SenseText(run.sense));
        json.Number("angle_deg", run.angle);
        json.Number("radius_mm", run.circle.radius);
        if (run.turn) {
            json.Number("margin_s", run.margin);
            json.BeginObject("turn");
            json.Number("first", static_cast<double>(run.turn->first));
            json.Number("end", static_cast<double>(run.turn->end));
            json.EndObject();
        } else {
            json.Text("reason", run.reason);
        }
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace

CircleVerdict JudgeCircle(const CircleReport& report) {
    CircleVerdict verdict;
    verdict.evaluation = measure::ChosenEvaluation(report.result, report.setup.feed);
    if (!verdict.evaluation) {
        verdict.judgement.verdict = measure::Verdict::kNotTold;
        return verdict;
    }
    verdict.figures = measure::FiguresOf(
        report.result, report.result.evaluations[*verdict.evaluation], NamesOf(report));
    verdict.judgement = measure::Judge(verdict.figures, report.limits);
    verdict.exit_code = ExitCodeOf(verdict.judgement.verdict);
    return verdict;
}

PolarPicture PolarOf(const CircleReport& report, const CircleVerdict& verdict, std::size_t most) {
    PolarPicture picture;
    for (const CircleTurn* turn : TurnsOf(report, verdict)) {
        picture.traces.push_back(
            {turn->sense, measure::RadialErrorsOf(report.path, turn->stretch,
                                                  DrawnAbout(report, verdict, *turn), most)});
    }
    picture.band = BandOf(report);
    picture.step = report.polar_step;
    picture.first_axis = Told(report.first_axis);
    picture.second_axis = Told(report.second_axis);
    return picture;
}

void PaintCirclePage(QPainter& painter, const CircleReport& report) {
    const CircleVerdict verdict = JudgeCircle(report);
    const Page page(painter);
    const auto turns = TurnsOf(report, verdict);
    const bool judged = !report.limits.empty() || turns.empty();
    page.Heading(Told("Circle test " + Plane(report)),
                 QStringLiteral("from the control's own position values"),
                 judged ? std::optional(verdict.judgement.verdict) : std::nullopt);
    const double facts_end = page.Facts(Page::kTop + 15.0, FactsOf(report, turns));
    if (turns.empty()) {
        page.Sentences(facts_end + 6.0, Page::kBottom - 10.0, SentencesOf(report, verdict));
        page.Foot(report.header.made_by, 1, 1);
        return;
    }
    constexpr double kPictureSize = 88.0;
    constexpr double kTableLeft = Page::kLeft + kPictureSize + 5.0;
    const double top = facts_end + 3.0;
    const PolarPicture picture = PolarOf(report, verdict);
    page.SetFont(7.0);
    PaintPolar(painter, page.Area(Page::kLeft, top, kPictureSize, kPictureSize), picture,
               page.Millimetre());
    std::vector<NamedFigure> spikes;
    std::vector<NamedFigure> others;
    for (const NamedFigure& figure : verdict.figures) {
        (IsSpike(figure) ? spikes : others).push_back(figure);
    }
    PaintSpikes(page, Page::kLeft, top + kPictureSize + 2.0, kPictureSize, spikes);
    const double table_end = page.Figures(kTableLeft, top, Page::kRight - kTableLeft, 4.7, others,
                                          measure::Judge(others, report.limits));
    constexpr double kChartHeight = 62.0;
    const double chart_top = std::max(top + kPictureSize + 27.0, table_end + 3.0);
    page.SetFont(7.0);
    PaintChart(painter, page.Area(Page::kLeft, chart_top, Page::kRight - Page::kLeft, kChartHeight),
               ErrorsOverAngle(picture), page.Millimetre());
    page.Sentences(chart_top + kChartHeight + 2.0, Page::kBottom - 12.0,
                   SentencesOf(report, verdict));
    page.Foot(report.header.made_by, 1, 1);
}

bool WriteCirclePdf(const QString& path, const CircleReport& report) {
    return WritePdf(path, Told("Circle test " + Plane(report)), 1,
                    [&](QPainter& painter, int) { PaintCirclePage(painter, report); });
}

std::string CircleJson(const CircleReport& report) {
    const CircleVerdict verdict = JudgeCircle(report);
    JsonWriter json;
    json.Text("schema", "wavo-circle/1");
    WriteHeaderJson(json, report.header, report.result.lines, report.result.cycle_time);
    json.BeginArray("axes");
    json.Text("", report.first_axis);
    json.Text("", report.second_axis);
    json.EndArray();
    json.Flag("from_commanded", report.result.from_commanded);
    json.Text("caveat", kFeedbackCaveat);
    json.Text("settings", SettingsText(report.setup));
    WriteRuns(json, report.result);
    json.BeginArray("evaluations");
    for (std::size_t i = 0; i < report.result.evaluations.size(); ++i) {
        const auto& evaluation = report.result.evaluations[i];
        json.BeginObject();
        json.Flag("reported", verdict.evaluation == i);
        json.BeginArray("runs");
        for (const std::size_t turn : evaluation.turns) {
            json.Number("", static_cast<double>(report.result.turns[turn].run));
        }
        json.EndArray();
        CircleVerdict own;
        own.figures = measure::FiguresOf(report.result, evaluation, NamesOf(report));
        if (verdict.evaluation == i) {
            own.judgement = verdict.judgement;
        }
        WriteFiguresJson(json, own.figures, own.judgement);
        json.EndObject();
    }
    json.EndArray();
    WriteNotesJson(json, report.result.notes, verdict.judgement);
    json.Text("verdict", report.limits.empty() && verdict.evaluation
                             ? "no limits"
                             : measure::TextOf(verdict.judgement.verdict));
    return json.Finish();
}

}  // namespace wavo::report

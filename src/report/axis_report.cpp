#include "report/axis_report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "measure/units.h"
#include "measure/words.h"
#include "report/chart.h"
#include "report/ink.h"
#include "report/page.h"
#include "report/pdf_file.h"
#include "report/reduced_points.h"

namespace wavo::report {

namespace {

using measure::Decimals;
using measure::NamedFigure;

constexpr double kNoPoint = std::numeric_limits<double>::quiet_NaN();

QString Words(const std::string& text) {
    return QString::fromStdString(text);
}

/// Which page shows what.
struct PageContent {
    std::size_t part = 0;
    bool response = false;
};

std::vector<PageContent> ContentsOf(const AxisReport& report) {
    std::vector<PageContent> pages;
    for (std::size_t i = 0; i < report.parts.size(); ++i) {
        pages.push_back({i, false});
        if (report.parts[i].result.response) {
            pages.push_back({i, true});
        }
    }
    return pages;
}

std::vector<NamedFigure> FiguresOfPart(const AxisPart& part) {
    auto figures = measure::FiguresOf(part.result);
    for (NamedFigure& figure : figures) {
        figure.key = part.names.axis + "." + figure.key;
    }
    return figures;
}

std::vector<NamedFigure> ContourFigures(const AxisReport& report) {
    if (report.contour_reach == 0) {
        return {};
    }
    const auto figure = [](const char* key, const char* name, const measure::Figure& value) {
        return NamedFigure{key, key, name, "um", 2, value, 0.0};
    };
    return {figure("contour_max", "contour error of the axes together, largest",
                   report.contour.largest),
            figure("contour_rms", "contour error, rms", report.contour.rms),
            figure("following_max", "following error of the axes together, largest",
                   report.contour.largest_following)};
}

/// The lines that the charts show: all, or those about the first step where there are no moves.
measure::Stretch ShownOf(const AxisPart& part) {
    const auto& motion = part.result.motion;
    const measure::Stretch all{0, part.commanded.size()};
    if (motion.steps.empty() || !motion.moves.empty()) {
        return all;
    }
    const auto& step = motion.steps.front();
    const double settled = step.settling.value.value_or(100.0) / measure::kMilliseconds;
    const std::size_t before = measure::CyclesIn(0.02, part.result.cycle_time, 1);
    const std::size_t behind = measure::CyclesIn(settled * 2.0, part.result.cycle_time, 20);
    return {step.place - std::min(step.place, before), std::min(all.end, step.place + behind)};
}

Chart PositionChart(const AxisPart& part) {
    const double cycle = part.result.cycle_time;
    const measure::Stretch shown = ShownOf(part);
    Chart chart;
    chart.x_title = QStringLiteral("time in s");
    chart.y_title = QStringLiteral("position in mm");
    chart.x_first = static_cast<double>(shown.first) * cycle;
    chart.x_last = static_cast<double>(shown.end) * cycle;
    chart.curves.push_back(
        {ReducedPoints(shown, cycle, [&](std::size_t i) { return part.commanded[i]; }),
         kCounterClockwiseInk, false, Words(part.names.commanded)});
    chart.curves.push_back(
        {ReducedPoints(shown, cycle, [&](std::size_t i) { return part.actual[i]; }), kClockwiseInk,
         true, Words(part.names.actual)});
    return chart;
}

Chart FollowingChart(const AxisPart& part) {
    Chart chart = PositionChart(part);
    chart.y_title = QStringLiteral("following error in µm");
    chart.curves = {
        {ReducedPoints(ShownOf(part), part.result.cycle_time,
                       [&](std::size_t i) {
                           return (part.commanded[i] - part.actual[i]) * measure::kMicrometres;
                       }),
         kCounterClockwiseInk, false, Words(part.names.commanded + " - " + part.names.actual)}};
    return chart;
}

/// A curve over the frequency: grey, and in ink where the coherence is enough.
template <typename Value>
Chart ResponseChart(const AxisPart& part, double least_coherence, const QString& title,
                    Value value) {
    const auto& response = *part.result.response;
    Chart chart;
    chart.x_title = QStringLiteral("frequency in Hz");
    chart.y_title = title;
    chart.x_logarithmic = true;
    chart.x_first = response.spacing;
    chart.x_last = response.spacing * static_cast<double>(response.length) / 2.0;
    ChartCurve all{{}, kFaint.lighter(150), false, QStringLiteral("not to be trusted")};
    ChartCurve trusted{{}, kCounterClockwiseInk, false, QStringLiteral("coherence is enough")};
    for (std::size_t line = 1; line < response.response.size(); ++line) {
        const double frequency = static_cast<double>(line) * response.spacing;
        all.points.emplace_back(frequency, value(line));
        trusted.points.emplace_back(
            frequency, response.coherence[line] >= least_coherence ? value(line) : kNoPoint);
    }
    chart.curves = {std::move(all), std::move(trusted)};
    return chart;
}

std::vector<std::pair<QString, QString>> AxisFacts(const AxisReport& report, const AxisPart& part) {
    const auto known = [](const QString& text) {
        return text.isEmpty() ? QStringLiteral("not given") : text;
    };
    return {{QStringLiteral("Machine"), known(report.header.machine)},
            {QStringLiteral("Program"), known(report.header.program)},
            {QStringLiteral("Date"), known(report.header.date)},
            {QStringLiteral("Filter"), QStringLiteral("none")},
            {QStringLiteral("Data"), report.header.file},
            {QStringLiteral("Lines, cycle"),
             Words(measure::Words("%zu lines, %s ms", part.result.lines,
                                  Decimals(part.result.cycle_time * 1000.0, 3).c_str()))},
            {QStringLiteral("Columns"), Words(part.names.commanded + " and " + part.names.actual)},
            {QStringLiteral("Lag taken"),
             Words(measure::NameOf(part.result.following.samples) + ", " +
                   std::to_string(part.result.following.count) + " lines")}};
}

/// Moves, one a row, as many as there is room for.
void PaintMoves(const Page& page, double left, double top, double bottom,
                std::span<const measure::Move> moves) {
    constexpr double kRow = 4.6;
    constexpr std::array<const char*, 6> kNames{"line",       "to mm",   "mm/s",
                                                "settles ms", "over µm", "e max µm"};
    const double column = (Page::kRight - left) / static_cast<double>(kNames.size());
    const auto cell = [&](std::size_t place, double row, const QString& text) {
        page.Text(left + static_cast<double>(place) * column, row, column, kRow, text,
                  Qt::AlignRight);
    };
    page.SetFont(7.0);
    page.Painter().setPen(kFaint);
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        cell(i, top, QString::fromUtf8(kNames[i]));
    }
    page.Line(left, top + kRow, Page::kRight, top + kRow, kText, 0.2);
    const auto room = static_cast<std::size_t>(std::max((bottom - top) / kRow - 2.0, 1.0));
    const std::size_t shown = moves.size() <= room + 1 ? moves.size() : room;
    double row = top + kRow;
    page.Painter().setPen(kText);
    const auto number = [](const measure::Figure& figure, int decimals) {
        return figure ? Words(Decimals(*figure, decimals)) : Words(figure.reason);
    };
    for (const measure::Move& move : moves.first(shown)) {
        page.Painter().setPen(kText);
        cell(0, row, QString::number(move.first));
        cell(1, row, Words(Decimals(move.to, 3)));
        cell(2, row, Words(Decimals(move.speed, 1)));
        cell(3, row, number(move.settling, 2));
        cell(4, row, number(move.overshoot, 1));
        cell(5, row, number(move.following, 1));
        row += kRow;
        page.Line(left, row, Page::kRight, row, kGrid, 0.08);
    }
    page.Painter().setPen(kFaint);
    if (moves.empty()) {
        page.Text(left, row, Page::kRight - left, kRow, QStringLiteral("no moves"));
    } else if (shown < moves.size()) {
        page.Text(left, row, Page::kRight - left, kRow,
                  QStringLiteral("%1 more: see the JSON file").arg(moves.size() - shown));
    }
}

QStringList AxisSentences(const AxisReport& report, const AxisPart& part,
                          std::span<const NamedFigure> figures) {
    QStringList sentences;
    sentences << Words("Definitions: " + measure::DefinitionsOf(report.setup.step) + ".");
    sentences << QStringLiteral(
        "From the control's own values: errors behind the encoder are not seen. An offset between "
        "the "
        "moments at which both columns are taken counts as lag; with velocity feed-forward the "
        "velocity "
        "gain is the apparent one.");
    sentences << ReasonsOf(figures);
    for (const std::string& note : part.result.notes) {
        sentences << Words(note + ".");
    }
    return sentences;
}

void PaintPart(const Page& page, const AxisReport& report, const AxisPart& part, bool first) {
    const double top = page.Facts(Page::kTop + 15.0, AxisFacts(report, part)) + 3.0;
    auto figures = FiguresOfPart(part);
    if (first) {
        const auto contour = ContourFigures(report);
        figures.insert(figures.end(), contour.begin(), contour.end());
    }
    constexpr double kTableWidth = 92.0;
    constexpr double kRow = 4.6;
    const double table_end = page.Figures(Page::kLeft, top, kTableWidth, kRow, figures,
                                          measure::Judge(figures, report.limits));
    const double tables_end = std::max(table_end, top + 60.0);
    PaintMoves(page, Page::kLeft + kTableWidth + 5.0, top, tables_end, part.result.motion.moves);
    constexpr double kNotesHeight = 26.0;
    const double charts = Page::kBottom - 12.0 - kNotesHeight - tables_end - 4.0;
    page.SetFont(7.0);
    page.Painter().setPen(kText);
    PaintChart(page.Painter(),
               page.Area(Page::kLeft, tables_end + 3.0, Page::kRight - Page::kLeft, charts / 2.0),
               AxisChart(part, report.setup, AxisPicture::kPosition), page.Millimetre());
    PaintChart(page.Painter(),
               page.Area(Page::kLeft, tables_end + 3.0 + charts / 2.0, Page::kRight - Page::kLeft,
                         charts / 2.0),
               AxisChart(part, report.setup, AxisPicture::kFollowing), page.Millimetre());
    page.Sentences(Page::kBottom - 12.0 - kNotesHeight, Page::kBottom - 12.0,
                   AxisSentences(report, part, figures));
}

void PaintResponse(const Page& page, const AxisReport& report, const AxisPart& part) {
    const auto& response = *part.result.response;
    const double least = report.setup.response_setup.least_coherence;
    const double top = page.Facts(Page::kTop + 15.0, AxisFacts(report, part)) + 3.0;
    page.SetFont(7.0);
    page.Painter().setPen(kText);
    const double height = (Page::kBottom - 28.0 - top) / 3.0;
    const auto area = [&](int place) {
        return page.Area(Page::kLeft, top + place * height, Page::kRight - Page::kLeft, height);
    };
    int place = 0;
    for (const AxisPicture picture :
         {AxisPicture::kMagnitude, AxisPicture::kPhase, AxisPicture::kCoherence}) {
        PaintChart(page.Painter(), area(place++), AxisChart(part, report.setup, picture),
                   page.Millimetre());
    }
    page.Sentences(
        Page::kBottom - 26.0, Page::kBottom - 12.0,
        {Words(measure::Words(
             "%zu segments of %zu lines, Hann, half of each overlapping; %zu lines "
             "with a coherence of %s or more.",
             response.averages, response.length, response.trusted, Decimals(least, 2).c_str())),
         QStringLiteral(
             "Closed loop from commanded to actual values; neither the open loop nor the "
             "current loop can be told.")});
}

void WriteMoves(JsonWriter& json, const measure::StepsAndMoves& motion) {
    const auto value = [&](const char* key, const measure::Figure& figure) {
        json.Value(key, figure);
    };
    json.BeginArray("moves");
    for (const measure::Move& move : motion.moves) {
        json.BeginObject();
        json.Number("first", static_cast<double>(move.first));
        json.Number("last", static_cast<double>(move.last));
        json.Number("end", static_cast<double>(move.end));
        json.Number("from", move.from);
        json.Number("to", move.to);
        json.Number("speed", move.speed);
        value("following_um", move.following);
        value("settling_ms", move.settling);
        value("overshoot_um", move.overshoot);
        value("steady_um", move.steady_error);
        json.EndObject();
    }
    json.EndArray();
}

void WriteResponse(JsonWriter& json, const measure::Told<measure::FrequencyResponse>& told) {
    if (!told) {
        return;
    }
    json.BeginObject("response");
    json.Number("spacing_hz", told->spacing);
    json.Number("averages", static_cast<double>(told->averages));
    const auto array = [&](const char* key, auto value) {
        json.BeginArray(key);
        for (std::size_t line = 0; line < told->response.size(); ++line) {
            json.Number("", value(line));
        }
        json.EndArray();
    };
    array("magnitude", [&](std::size_t line) { return told->Magnitude(line); });
    array("phase_deg", [&](std::size_t line) { return told->Phase(line); });
    array("coherence", [&](std::size_t line) { return told->coherence[line]; });
    json.EndObject();
}

}  // namespace

Chart AxisChart(const AxisPart& part, const measure::AxisSetup& setup, AxisPicture picture) {
    const double least = setup.response_setup.least_coherence;
    const auto& response = part.result.response;
    Chart chart;
    switch (picture) {
        case AxisPicture::kPosition:
            return PositionChart(part);
        case AxisPicture::kFollowing:
            return FollowingChart(part);
        case AxisPicture::kMagnitude:
            return ResponseChart(
                part, least, QStringLiteral("magnitude in dB"),
                [&](std::size_t k) { return 20.0 * std::log10(response->Magnitude(k)); });
        case AxisPicture::kPhase:
            chart = ResponseChart(part, least, QStringLiteral("phase in °"),
                                  [&](std::size_t k) { return response->Phase(k); });
            chart.y_first = -180.0;
            chart.y_last = 180.0;
            return chart;
        case AxisPicture::kCoherence:
            chart = ResponseChart(part, least, QStringLiteral("coherence"),
                                  [&](std::size_t k) { return response->coherence[k]; });
            chart.y_first = 0.0;
            chart.y_last = 1.0;
            chart.levels = {least};
            return chart;
    }
    return chart;
}

Chart ContourChart(std::span<const double> errors, double cycle_time) {
    Chart chart;
    chart.x_title = QStringLiteral("time in s");
    chart.y_title = QStringLiteral("contour error in µm");
    chart.x_last = static_cast<double>(std::max<std::size_t>(errors.size(), 1)) * cycle_time;
    chart.curves = {
        {ReducedPoints({0, errors.size()}, cycle_time,
                       [&](std::size_t i) { return errors[i] * measure::kMicrometres; }),
         kCounterClockwiseInk, false, QStringLiteral("distance from the path")}};
    return chart;
}

AxisVerdict JudgeAxes(const AxisReport& report) {
    AxisVerdict verdict;
    bool told = false;
    for (const AxisPart& part : report.parts) {
        told = told || part.result.following.lag || !part.result.motion.steps.empty();
        for (NamedFigure& figure : FiguresOfPart(part)) {
            verdict.figures.push_back(std::move(figure));
        }
    }
    for (NamedFigure& figure : ContourFigures(report)) {
        verdict.figures.push_back(std::move(figure));
    }
    verdict.judgement = measure::Judge(verdict.figures, report.limits);
    verdict.exit_code = told ? ExitCodeOf(verdict.judgement.verdict) : 3;
    return verdict;
}

int PagesOf(const AxisReport& report) {
    return static_cast<int>(ContentsOf(report).size());
}

void PaintAxisPage(QPainter& painter, const AxisReport& report, int number) {
    const auto pages = ContentsOf(report);
    const PageContent& content = pages.at(static_cast<std::size_t>(number) - 1);
    const AxisPart& part = report.parts[content.part];
    const Page page(painter);
    const AxisVerdict verdict = JudgeAxes(report);
    page.Heading(part.names.axis == "axis" ? QStringLiteral("Axis test")
                                           : Words("Axis test " + part.names.axis),
                 content.response ? QStringLiteral("closed-loop frequency response")
                                  : QStringLiteral("from commanded and actual values"),
                 report.limits.empty() ? std::nullopt : std::optional(verdict.judgement.verdict));
    if (content.response) {
        PaintResponse(page, report, part);
    } else {
        PaintPart(page, report, part, content.part == 0);
    }
    page.Foot(report.header.made_by, number, static_cast<int>(pages.size()));
}

bool WriteAxisPdf(const QString& path, const AxisReport& report) {
    return WritePdf(path, QStringLiteral("Axis test"), PagesOf(report),
                    [&](QPainter& painter, int page) { PaintAxisPage(painter, report, page); });
}

std::string AxisJson(const AxisReport& report) {
    const AxisVerdict verdict = JudgeAxes(report);
    JsonWriter json;
    json.Text("schema", "wavo-axis/1");
    const bool any = !report.parts.empty();
    WriteHeaderJson(json, report.header, any ? report.parts.front().result.lines : 0,
                    any ? report.parts.front().result.cycle_time : 0.0);
    json.Text("definitions", measure::DefinitionsOf(report.setup.step));
    WriteFiguresJson(json, verdict.figures, verdict.judgement);
    json.BeginArray("axes");
    std::vector<std::string> notes;
    for (const AxisPart& part : report.parts) {
        json.BeginObject();
        json.Text("axis", part.names.axis);
        json.Text("commanded", part.names.commanded);
        json.Text("actual", part.names.actual);
        json.Text("lag_samples", measure::NameOf(part.result.following.samples));
        WriteMoves(json, part.result.motion);
        WriteResponse(json, part.result.response);
        json.EndObject();
        for (const std::string& note : part.result.notes) {
            notes.push_back(part.names.axis + ": " + note);
        }
    }
    json.EndArray();
    WriteNotesJson(json, notes, verdict.judgement);
    json.Text("verdict",
              report.limits.empty() ? "no limits" : measure::TextOf(verdict.judgement.verdict));
    return json.Finish();
}

}  // namespace wavo::report

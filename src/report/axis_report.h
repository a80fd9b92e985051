// The report of an axis test: a page per axis, one more for its frequency response, and JSON.
#pragma once

#include <QPainter>
#include <QString>
#include <span>
#include <string>
#include <vector>

#include "measure/axis_test.h"
#include "measure/contour_error.h"
#include "measure/verdict.h"
#include "report/chart.h"
#include "report/circle_report.h"

namespace wavo::report {

struct AxisPart {
    measure::AxisPair names;
    std::span<const double> commanded;  ///< the values, for the pictures; not owned
    std::span<const double> actual;
    measure::AxisResult result;
};

struct AxisReport {
    ReportHeader header;
    measure::AxisSetup setup;
    std::vector<AxisPart> parts;
    /// Of two or three axes together; without reason and values where there is one axis only.
    measure::ContourFigures contour;
    std::size_t contour_reach = 0;  ///< segments; 0 without
    measure::Limits limits;         ///< keys begin with the axis: "X.lag"; "contour_max"
};

struct AxisVerdict {
    /// Keys with the axis before them, the contour's last.
    std::vector<measure::NamedFigure> figures;
    measure::Judgement judgement;
    int exit_code = 3;  ///< 3 also where no axis moved
};

AxisVerdict JudgeAxes(const AxisReport& report);

/// What the pages show of an axis.
enum class AxisPicture { kPosition, kFollowing, kMagnitude, kPhase, kCoherence };

/// One of them. REQUIRES: the part has what it shows; kMagnitude and the others behind it: the
/// response.
Chart AxisChart(const AxisPart& part, const measure::AxisSetup& setup, AxisPicture picture);
/// Contour errors of successive lines over time, mm; `first`: the line of the first one.
Chart ContourChart(std::span<const double> errors, double cycle_time);

int PagesOf(const AxisReport& report);

/// Paints one page, counted from 1, onto a device of A4's size.
void PaintAxisPage(QPainter& painter, const AxisReport& report, int number);

/// Writes the pages as PDF; false when the file cannot be written.
bool WriteAxisPdf(const QString& path, const AxisReport& report);

/// docs/report-json.md says what it holds.
std::string AxisJson(const AxisReport& report);

}  // namespace wavo::report

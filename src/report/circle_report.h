// The report of a circle test: one page, and the same as JSON.
#pragma once

#include <QPainter>
#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "measure/circle_test.h"
#include "measure/verdict.h"
#include "report/polar_picture.h"

namespace wavo::report {

/// What the heading of a report says of the machine.
struct ReportHeader {
    QString machine;
    QString program;
    QString date;
    QString file;     ///< where the values come from
    QString made_by;  ///< program and version
};

/// What goes with every result.
inline constexpr char kFeedbackCaveat[] =
    "from feedback signals of the control; errors behind the encoders are not seen";

struct CircleReport {
    ReportHeader header;
    std::string first_axis = "X";
    std::string second_axis = "Y";
    measure::PlanePath path;  ///< the values, for the pictures; not owned
    measure::CircleSetup setup;
    measure::CircleResult result;
    measure::Limits limits;
    std::optional<double> polar_step;  ///< um per grid circle; else chosen
};

/// The evaluation that the page is about, its figures, and what becomes of the limits.
struct CircleVerdict {
    std::optional<std::size_t> evaluation;
    std::vector<measure::NamedFigure> figures;
    measure::Judgement judgement;
    /// As a program says it: 0 pass (or no limits), 1 fail, 3 could not be evaluated.
    int exit_code = 3;
};

CircleVerdict JudgeCircle(const CircleReport& report);

/// The polar picture of the evaluation that the page is about, with at most so many points of a
/// turn.
PolarPicture PolarOf(const CircleReport& report, const CircleVerdict& verdict,
                     std::size_t most = 4000);

/// Paints the page onto a device of A4's size.
void PaintCirclePage(QPainter& painter, const CircleReport& report);

/// Writes the page as PDF; false when the file cannot be written. `path` as QFile takes it.
bool WriteCirclePdf(const QString& path, const CircleReport& report);

/// docs/report-json.md says what it holds.
std::string CircleJson(const CircleReport& report);

}  // namespace wavo::report

// The columns of the table of measurements: what each says of a curve.
#pragma once

#include <QString>
#include <span>

#include "view/measurements.h"

namespace wavo {

/// In the order in which they stand. The names are those that settings keep.
enum class MeasureColumn {
    kCurve,  ///< always shown
    kAtA,
    kAtB,
    kDifference,
    kPerSecond,
    kMinimum,
    kMaximum,
    kMean,
    kRms,
    kDeviation,
    kPeakToPeak,
    kSlope,
    kTimeOfMinimum,
    kTimeOfMaximum,
    kValues,
    kLeftOut,
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the table's columns
struct MeasureColumnRow {
    MeasureColumn id;
    const char* name;      ///< in settings
    const char* title;     ///< UTF-8
    const char* tool_tip;  ///< UTF-8
    bool at_first;         ///< shown until the user chooses
};

/// All columns, by their numbers.
std::span<const MeasureColumnRow> MeasureColumns();

/// What stands in a cell: with the digits that the data carries, or why there is nothing.
QString CellText(const MeasuredTable& table, const MeasuredCurve& curve, MeasureColumn column);

/// The same for programs: all digits, empty where there is nothing.
QString ExactText(const MeasuredTable& table, const MeasuredCurve& curve, MeasureColumn column);

/// The line at which a click on the cell jumps; nothing for a cell of another column.
std::optional<std::int64_t> LineOfCell(const MeasuredCurve& curve, MeasureColumn column);

/// Times of the cursors as the pane's first line says them.
QString TimeText(const std::optional<double>& time, int decimals);
QString DifferenceText(const MeasuredTable& table);
QString FrequencyText(const MeasuredTable& table);

/// A number with so many decimals, as far as a double has them.
QString NumberText(double value, int decimals);

}  // namespace wavo

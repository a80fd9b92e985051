#include "ui/panes/measure_columns.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "measure/words.h"

namespace wavo {

namespace {

using measure::Figure;

constexpr MeasureColumnRow kColumns[] = {
    {MeasureColumn::kCurve, "Curve", "Curve", "Graph and curve", true},
    {MeasureColumn::kAtA, "A", "A", "Value at cursor A", true},
    {MeasureColumn::kAtB, "B", "B", "Value at cursor B", true},
    {MeasureColumn::kDifference, "Difference", "B - A", "Value at B less value at A", true},
    {MeasureColumn::kPerSecond, "PerSecond", "(B - A)/s",
     "Value at B less value at A, over the time from A to B", false},
    {MeasureColumn::kMinimum, "Minimum", "Minimum", "Smallest value between the cursors", true},
    {MeasureColumn::kMaximum, "Maximum", "Maximum", "Largest value between the cursors", true},
    {MeasureColumn::kMean, "Mean", "Mean", "Mean of the values between the cursors", true},
    {MeasureColumn::kRms, "RMS", "RMS", "Root of the mean of the squares", false},
    {MeasureColumn::kDeviation, "Deviation", "Std. dev.",
     "Standard deviation from the mean, of n - 1 values", false},
    {MeasureColumn::kPeakToPeak, "PeakToPeak", "Peak-peak", "Maximum less minimum", true},
    {MeasureColumn::kSlope, "Slope", "Slope/s",
     "Slope of the straight line that fits the values best, per second", false},
    {MeasureColumn::kTimeOfMinimum, "TimeOfMinimum", "t of min.",
     "When the minimum was, on the time of the cursors; a click jumps there", false},
    {MeasureColumn::kTimeOfMaximum, "TimeOfMaximum", "t of max.",
     "When the maximum was, on the time of the cursors; a click jumps there", false},
    {MeasureColumn::kValues, "Values", "Values", "Samples between the cursors that take part",
     false},
    {MeasureColumn::kLeftOut, "LeftOut", "Left out",
     "Lines between the cursors without a value, and values that are no finite numbers", false},
};

constexpr int kMostDigits = 16;
constexpr int kMostDecimals = 15;
/// A mean of many values carries more than each of them.
constexpr int kMoreOfMeans = 3;
constexpr int kDigitsOfFrequency = 6;

/// Digits before the point; 1 at least.
int DigitsBefore(double value) {
    const double size = std::abs(value);
    return size < 1.0 ? 1 : static_cast<int>(std::floor(std::log10(size))) + 1;
}

/// Decimals of what is computed: at least six digits that count.
int DecimalsOfComputed(double value, int decimals) {
    const double size = std::abs(value);
    const int behind = size > 0.0 && std::isfinite(size)
                           ? kDigitsOfFrequency - 1 - static_cast<int>(std::floor(std::log10(size)))
                           : 0;
    return std::clamp(std::max(decimals, size < 1.0 ? behind : 0), 0, kMostDecimals);
}

QString ToText(const std::string& text) {
    return QString::fromStdString(text);
}

/// A figure of a column, and how it is written.
struct Content {
    Figure figure;
    int decimals = 0;
    bool is_computed = false;
};

Figure TimeOfExtreme(const MeasuredTable& table, const Figure& extreme, std::int64_t line) {
    return extreme ? Figure(table.TimeOf(line)) : extreme;
}

/// As long as not all is counted, as the mean, which waits for that too.
Figure CountOf(const measure::CurveReading& read, std::int64_t count) {
    return read.is_whole ? Figure(static_cast<double>(count)) : read.between.mean;
}

Content ContentOf(const MeasuredTable& table, const MeasuredCurve& curve, MeasureColumn column) {
    const measure::CurveReading& read = curve.figures;
    const measure::Statistics& between = read.between;
    const int own = curve.decimals;
    const int more = own + kMoreOfMeans;
    switch (column) {
        case MeasureColumn::kAtA:
            return {read.a, own};
        case MeasureColumn::kAtB:
            return {read.b, own};
        case MeasureColumn::kDifference:
            return {read.difference, own};
        case MeasureColumn::kPerSecond:
            return {read.per_second, own, true};
        case MeasureColumn::kMinimum:
            return {between.minimum, own};
        case MeasureColumn::kMaximum:
            return {between.maximum, own};
        case MeasureColumn::kMean:
            return {between.mean, more};
        case MeasureColumn::kRms:
            return {between.rms, more};
        case MeasureColumn::kDeviation:
            return {between.deviation, more, true};
        case MeasureColumn::kPeakToPeak:
            return {between.peak_to_peak, own};
        case MeasureColumn::kSlope:
            return {between.slope, own, true};
        case MeasureColumn::kTimeOfMinimum:
            return {TimeOfExtreme(table, between.minimum, between.minimum_cycle),
                    table.time_decimals};
        case MeasureColumn::kTimeOfMaximum:
            return {TimeOfExtreme(table, between.maximum, between.maximum_cycle),
                    table.time_decimals};
        case MeasureColumn::kValues:
            return {CountOf(read, between.count), 0};
        case MeasureColumn::kLeftOut:
            return {CountOf(read, between.not_finite), 0};
        case MeasureColumn::kCurve:
            break;
    }
    return {};
}

QString CurveText(const MeasuredCurve& curve) {
    return QStringLiteral("%1: %2").arg(curve.id.graph).arg(ToText(curve.label));
}

QString ExactNumber(double value) {
    std::array<char, 40> text;  // NOLINT(cppcoreguidelines-pro-type-member-init): written to
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    return QString::fromLatin1(text.data(), written.ptr - text.data());
}

/// Over an axis the value there of the x axis; null for other cells.
const Figure* XOfCell(const MeasuredCurve& curve, MeasureColumn column) {
    if (curve.x_name.empty()) {
        return nullptr;
    }
    return column == MeasureColumn::kAtA   ? &curve.x_at_a
           : column == MeasureColumn::kAtB ? &curve.x_at_b
                                           : nullptr;
}

}  // namespace

std::span<const MeasureColumnRow> MeasureColumns() {
    return kColumns;
}

QString NumberText(double value, int decimals) {
    if (!std::isfinite(value)) {
        return std::isnan(value) ? QStringLiteral("no number")
               : value > 0.0     ? QStringLiteral("inf")
                                 : QStringLiteral("-inf");
    }
    const int before = DigitsBefore(value);
    if (before > kMostDigits) {
        return ExactNumber(value);
    }
    return ToText(measure::Decimals(value, std::clamp(decimals, 0, kMostDigits - before)));
}

QString CellText(const MeasuredTable& table, const MeasuredCurve& curve, MeasureColumn column) {
    if (column == MeasureColumn::kCurve) {
        return CurveText(curve);
    }
    const Content content = ContentOf(table, curve, column);
    if (!content.figure) {
        return ToText(content.figure.reason);
    }
    const double value = *content.figure;
    QString text =
        NumberText(value, content.is_computed ? DecimalsOfComputed(value, content.decimals)
                                              : content.decimals);
    const Figure* const x = XOfCell(curve, column);
    if (x == nullptr) {
        return text;
    }
    return QStringLiteral("%1 (%2 %3)")
        .arg(text, ToText(curve.x_name), *x ? NumberText(**x, curve.decimals) : ToText(x->reason));
}

QString ExactText(const MeasuredTable& table, const MeasuredCurve& curve, MeasureColumn column) {
    if (column == MeasureColumn::kCurve) {
        return CurveText(curve);
    }
    const Content content = ContentOf(table, curve, column);
    if (!content.figure) {
        return {};
    }
    // Times are multiples of the cycle time: their last digits are those of the multiplication.
    const bool is_time =
        column == MeasureColumn::kTimeOfMinimum || column == MeasureColumn::kTimeOfMaximum;
    return is_time ? NumberText(*content.figure, content.decimals) : ExactNumber(*content.figure);
}

std::optional<std::int64_t> LineOfCell(const MeasuredCurve& curve, MeasureColumn column) {
    const measure::Statistics& between = curve.figures.between;
    if (column == MeasureColumn::kTimeOfMinimum && between.minimum) {
        return between.minimum_cycle;
    }
    if (column == MeasureColumn::kTimeOfMaximum && between.maximum) {
        return between.maximum_cycle;
    }
    return std::nullopt;
}

QString TimeText(const std::optional<double>& time, int decimals) {
    return time ? NumberText(*time, decimals) + QStringLiteral(" s")
                : QStringLiteral("not on the data");
}

QString DifferenceText(const MeasuredTable& table) {
    return table.difference
               ? NumberText(*table.difference, table.time_decimals) + QStringLiteral(" s")
               : ToText(table.difference.reason);
}

QString FrequencyText(const MeasuredTable& table) {
    if (!table.frequency) {
        return ToText(table.frequency.reason);
    }
    const double value = *table.frequency;
    const int decimals = std::max(0, kDigitsOfFrequency - DigitsBefore(value));
    return NumberText(value, DecimalsOfComputed(value, decimals)) + QStringLiteral(" Hz");
}

}  // namespace wavo

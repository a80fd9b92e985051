#include "view/told_graph.h"

#include <QStringList>
#include <cmath>
#include <cstddef>
#include <optional>

#include "graph/draw/frame/scale.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/graph_draw.h"
#include "view/measurements.h"

namespace wavo {

namespace {

QString Number(double value) {
    return QString::fromStdString(FormatNumber(value));
}

/// A figure of an axis with its unit behind it.
QString WithUnit(const QString& text, const std::string& unit) {
    return unit.empty() ? text : text + u' ' + QString::fromStdString(unit);
}

std::string UnitOf(const UnitsOfAxes& units, const std::string& axis, std::int32_t derivation) {
    const auto found = units.find(axis);
    return found == units.end() ? std::string() : DerivedUnit(found->second, derivation);
}

QString RangeInWords(const ScaleDefinition& scale, const std::string& unit) {
    const ScaleRange range = GraphDefineGetMinMaxValue(scale);
    return WithUnit(
        QStringLiteral("from %1 to %2").arg(Number(range.minimum), Number(range.maximum)), unit);
}

QString TimeInWords(const GraphDraw& graph) {
    const TimeWindow window = graph.DisplayedWindow();
    const bool is_whole = !(window.end > window.start);
    return QStringLiteral("over time from %1 to %2 s")
        .arg(Number(is_whole ? 0.0 : window.start),
             Number(is_whole ? graph.Graph().XScale.TimeRange : window.end));
}

QString CursorInWords(const char* name, const std::optional<double>& time) {
    return QStringLiteral("cursor %1 %2")
        .arg(QLatin1String(name), time ? QStringLiteral("at %1 s").arg(Number(*time))
                                       : QStringLiteral("not on the data"));
}

QString FigureInWords(const measure::Figure& figure, const std::string& unit) {
    return figure ? WithUnit(Number(*figure), unit) : QString::fromStdString(figure.reason);
}

}  // namespace

QString NameInWords(const WavoGraph& graph) {
    return QStringLiteral("graph %1").arg(graph.GraphNumber);
}

QString ScalesInWords(const GraphDraw& graph, const UnitsOfAxes& units) {
    const WavoGraph& shown = graph.Graph();
    QStringList axes;
    for (std::size_t i = 0; i < shown.YCoorAxName.size(); ++i) {
        const std::string& name = shown.YCoorAxName[i];
        const std::int32_t derivation = shown.YCoorAxDerivation[i];
        axes << QString::fromStdString(AxisLabel(name, derivation)) + u' ' +
                    RangeInWords(shown.YScales[i], UnitOf(units, name, derivation));
    }
    if (axes.isEmpty()) {
        axes << QStringLiteral("no axes");
    }
    axes << (shown.XCoorType == CoorType::kAxis
                 ? QStringLiteral("over %1 %2")
                       .arg(QString::fromStdString(shown.XCoorAxName),
                            RangeInWords(shown.XScale, UnitOf(units, shown.XCoorAxName, 0)))
                 : TimeInWords(graph));
    return axes.join(QStringLiteral(", "));
}

QString StateInWords(const GraphDraw& graph) {
    const QString state = QString::fromLatin1(StatusText(graph.State())).trimmed();
    if (state.isEmpty()) {
        return {};
    }
    QStringList parts{state};
    const WavoGraph& shown = graph.Graph();
    for (std::size_t i = 0; i < shown.Triggers.size(); ++i) {
        const TriggerEntry& trigger = shown.Triggers[i];
        if (IsTrigger(trigger.TriggerType)) {
            parts << QStringLiteral("%1 %2 %3")
                         .arg(QString::fromStdString(
                                  AxisLabel(shown.YCoorAxName[i], shown.YCoorAxDerivation[i])),
                              FiresAbove(trigger.TriggerType) ? QStringLiteral("above")
                                                              : QStringLiteral("below"),
                              Number(trigger.TriggerValue));
        }
    }
    return parts.join(QStringLiteral(", "));
}

QString CursorsInWords(const GraphDraw& graph, const MeasuredTable& table,
                       const UnitsOfAxes& units) {
    const WavoGraph& shown = graph.Graph();
    QStringList of_a;
    QStringList of_b;
    for (const MeasuredCurve& curve : table.curves) {
        if (curve.id.graph != shown.GraphNumber || curve.id.axis >= shown.YCoorAxName.size()) {
            continue;
        }
        const std::string unit =
            UnitOf(units, shown.YCoorAxName[curve.id.axis], shown.YCoorAxDerivation[curve.id.axis]);
        const QString label = QString::fromStdString(curve.label) + u' ';
        of_a << label + FigureInWords(curve.figures.a, unit);
        of_b << label + FigureInWords(curve.figures.b, unit);
    }
    if (of_a.isEmpty()) {
        return {};
    }
    const auto told = [](const QString& cursor, const std::optional<double>& time,
                         const QStringList& figures) {
        return time ? cursor + QStringLiteral(": ") + figures.join(QStringLiteral(", ")) : cursor;
    };
    return told(CursorInWords("A", table.a), table.a, of_a) + QStringLiteral("; ") +
           told(CursorInWords("B", table.b), table.b, of_b);
}

}  // namespace wavo

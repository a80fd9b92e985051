#include "view/told_graph.h"

#include <cstddef>
#include <optional>

#include "graph/draw/graph_draw.h"
#include "view/measurements.h"

namespace wavo {

namespace {

std::string CursorInWords(const char* name, const std::optional<double>& time,
                          const std::string& figures) {
    std::string text = "cursor ";
    text.append(name);
    return time ? text.append(" at ").append(TimeInWords(*time)).append(":").append(figures)
                : text.append(" not on the data");
}

}  // namespace

std::string CursorsInWords(const GraphDraw& graph, const MeasuredTable& table,
                           const UnitsOfAxes& units) {
    const WavoGraph& shown = graph.Graph();
    std::string of_a;
    std::string of_b;
    for (const MeasuredCurve& curve : table.curves) {
        if (curve.id.graph != shown.GraphNumber || curve.id.axis >= shown.YCoorAxName.size()) {
            continue;
        }
        const auto add = [&](std::string& figures, const measure::Figure& figure) {
            figures.append(figures.empty() ? " " : ", ")
                .append(curve.label)
                .append(" ")
                .append(figure ? ValueInWords(*figure, shown.YCoorAxName[curve.id.axis],
                                              shown.YCoorAxDerivation[curve.id.axis], units)
                               : figure.reason);
        };
        add(of_a, curve.figures.a);
        add(of_b, curve.figures.b);
    }
    return of_a.empty()
               ? std::string()
               : CursorInWords("A", table.a, of_a) + "; " + CursorInWords("B", table.b, of_b);
}

}  // namespace wavo

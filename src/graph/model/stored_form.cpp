#include "graph/model/stored_form.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "support/diagnostics.h"

namespace wavo {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

/// Whether a name is read back from a list, if without its white space.
bool CanStandInAList(const std::string& name) {
    return name.find_first_of(kLineEnds) == std::string::npos &&
           name.find(',') == std::string::npos &&
           !std::all_of(name.begin(), name.end(), IsWhiteSpace);
}

void ReportLeftOut(const WavoGraph& graph, const std::string& name) {
    MERRLOG(
        "CAxSelect::GetGraphAsIniData(): axis [%.40s] of graph %u left out, its name cannot stand "
        "in a file",
        name.c_str(), graph.GraphNumber);
}

}  // namespace

bool IsWhiteSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::size_t RemoveAxesWithoutAForm(WavoGraph& graph) {
    std::size_t removed = 0;
    if (graph.XCoorType == CoorType::kAxis &&
        graph.XCoorAxName.find_first_of(kLineEnds) != std::string::npos) {
        ReportLeftOut(graph, graph.XCoorAxName);
        graph.XCoorAxName.clear();
        ++removed;
    }
    const auto erase = [](auto& list, std::size_t i) {
        if (i < list.size()) {
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        }
    };
    for (std::size_t i = 0; i < graph.YCoorAxName.size();) {
        if (CanStandInAList(graph.YCoorAxName[i])) {
            ++i;
            continue;
        }
        ReportLeftOut(graph, graph.YCoorAxName[i]);
        erase(graph.YCoorAxName, i);
        erase(graph.YCoorAxColor, i);
        erase(graph.YCoorAxDerivation, i);
        erase(graph.Triggers, i);
        erase(graph.YScales, i);
        ++removed;
    }
    return removed;
}

std::pair<double, double> StoredBounds(const ScaleDefinition& scale) {
    static constexpr double kLargest = std::numeric_limits<double>::max();
    const auto finite = [](double bound) {
        return std::isnan(bound) ? 0.0 : std::clamp(bound, -kLargest, kLargest);
    };
    return std::minmax({finite(scale.Minimum), finite(scale.Maximum)});
}

}  // namespace wavo

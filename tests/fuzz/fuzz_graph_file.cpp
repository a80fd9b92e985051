// Any INI text as a graph file: what is read is finite, bounded and unique, and storing it is
// stable after the first time.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "graph/model/graph_ini_data.h"
#include "support/mini_data.h"

namespace wavo {
namespace {

constexpr double kMinFadeOutTime = 0.001;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void RequireFinite(const ScaleDefinition& scale) {
    Require(std::isfinite(scale.TimeRange));
    Require(std::isfinite(scale.Minimum) && std::isfinite(scale.Maximum));
    Require(scale.Minimum <= scale.Maximum);
    Require(scale.ScaleType != ScaleTypeCode::kTime || scale.TimeRange >= kMinTimeRange);
}

void RequireSound(const WavoGraph& graph) {
    const std::size_t axes = graph.YCoorAxName.size();
    Require(graph.YCoorAxColor.size() == axes && graph.YCoorAxDerivation.size() == axes);
    Require(graph.Triggers.size() == axes && graph.YScales.size() == axes);
    Require(graph.XCoorType != CoorType::kAxis || axes <= 1);
    for (std::size_t i = 0; i < axes; ++i) {
        Require(graph.YCoorAxName[i].find_first_of(" \t\n\v\f\r,") == std::string::npos);
        Require(graph.YCoorAxColor[i] <= 0xFFFFFF);
        Require(graph.YCoorAxDerivation[i] >= 0);
        Require(graph.YCoorAxDerivation[i] <= kHighestStoredDerivation);
        Require(std::isfinite(graph.Triggers[i].TriggerValue));
        RequireFinite(graph.YScales[i]);
    }
    RequireFinite(graph.XScale);
    Require(std::isfinite(graph.FadeOutTime));
    Require(std::isfinite(graph.InnerGuidingCircleDX));
    Require(std::isfinite(graph.OuterGuidingCircleDX));
}

void TestOne(std::string_view text) {
    MIniData store;
    std::vector<WavoGraph> graphs;
    std::string error_text;
    std::string add_text;
    if (!store.SetContent(text)) {
        return;
    }
    const bool success =
        CreateGraphsFromIniData(store, graphs, error_text, add_text, kMinFadeOutTime);
    Require(success == error_text.empty());
    std::set<std::uint32_t> numbers;
    for (const WavoGraph& graph : graphs) {
        Require(numbers.insert(graph.GraphNumber).second);
        RequireSound(graph);
    }

    for (WavoGraph& graph : graphs) {
        // One that the file does not hold is 0, and is stored as such; read, it is the minimum.
        graph.FadeOutTime = std::max(graph.FadeOutTime, kMinFadeOutTime);
    }
    MIniData first;
    MIniData second;
    if (!GetGraphAsIniData(first, graphs, add_text)) {
        return;  // a y scale that is a time cannot be stored
    }
    MIniData reread;
    std::vector<WavoGraph> again;
    Require(reread.SetContent(first.Content()));
    Require(CreateGraphsFromIniData(reread, again, error_text, add_text, kMinFadeOutTime));
    Require(again.size() == graphs.size());
    Require(GetGraphAsIniData(second, again, add_text));
    Require(first.Content() == second.Content());
}

}  // namespace
}  // namespace wavo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::TestOne({reinterpret_cast<const char*>(data), size});
    return 0;
}

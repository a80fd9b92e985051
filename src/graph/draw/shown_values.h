// The values that a graph shows of its axes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace wavo {

class GraphDraw;

/// Looks at a graph, which is not owned. GraphDraw::GetAxValues and GetAxRows say what is given.
class ShownValues {
 public:
    explicit ShownValues(const GraphDraw& graph) : m_graph(graph) {}

    bool Of(const std::string& axis_name, std::vector<double>& values) const;
    void RowsOf(const std::vector<std::string>& axis_names,
                std::vector<std::vector<double>>& columns) const;

 private:
    /// Streams count as in the recorder. Nothing, reported, for a name that the graph does not
    /// know.
    [[nodiscard]] std::optional<std::size_t> StreamOf(const std::string& axis_name) const;
    /// What is shown are values that the buffers hold.
    [[nodiscard]] bool AreOfBuffers() const;
    void CurveValues(std::size_t stream, std::vector<double>& values) const;
    /// The values of the lines of the past that are seen. REQUIRES: the past is shown.
    void PastValues(std::size_t stream, std::vector<double>& values) const;

    const GraphDraw& m_graph;
};

}  // namespace wavo

#include "view/graph_board.h"

#include <algorithm>
#include <utility>

namespace wavo {

namespace {

bool HasStopped(const GraphDraw& drawer) {
    return IsStopped(drawer.State());
}

bool LookAlike(const ViewSettings& a, const ViewSettings& b) {
    return a.background == b.background && a.font == b.font && a.scale_lines_x == b.scale_lines_x &&
           a.scale_lines_y == b.scale_lines_y && a.line_styles == b.line_styles;
}

}  // namespace

std::vector<QRect> SplitGraphArea(const QRect& area, std::size_t count) {
    std::vector<QRect> rectangles;
    if (count == 0) {
        return rectangles;
    }
    const int height = std::max(1, area.height() / static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) {
        rectangles.emplace_back(area.left(), area.top() + static_cast<int>(i) * height,
                                area.width(), height);
    }
    return rectangles;
}

GraphBoard::GraphBoard(const GraphList& graphs, ValueStreams& streams,
                       std::function<void()> recording_ended)
    : m_graphs(graphs), m_streams(streams), m_recording_ended(std::move(recording_ended)) {
    m_streams.SetBeforeDrop([this] { DetachValues(); });
}

void GraphBoard::DetachValues() {
    for (const auto& drawer : m_drawers) {
        drawer->DetachValues();
    }
}

GraphDraw* GraphBoard::Find(std::uint32_t graph_number) const {
    const auto found = std::find_if(m_drawers.begin(), m_drawers.end(), [&](const auto& drawer) {
        return drawer->Graph().GraphNumber == graph_number;
    });
    return found == m_drawers.end() ? nullptr : found->get();
}

const GraphDraw* GraphBoard::FindDrawerWithValues(std::uint32_t graph_number) const {
    const GraphDraw* found = nullptr;
    double latest = 0.0;
    for (const auto& drawer : m_drawers) {
        if (drawer->Graph().GraphNumber == graph_number &&
            LatestTime(drawer->Recorder()) > latest) {
            found = drawer.get();
            latest = LatestTime(drawer->Recorder());
        }
    }
    return found;
}

std::vector<std::string> GraphBoard::CreateAllGraphRects(const QRect& area, double cycle_time,
                                                         const std::vector<std::string>& axis_names,
                                                         const ViewSettings& settings) {
    ++m_steps;
    m_drawers.clear();
    m_looks = settings;
    GraphDrawHost& host = *this;
    const std::vector<WavoGraph>& graphs = m_graphs.Graphs();
    const std::vector<QRect> rectangles = SplitGraphArea(area, graphs.size());
    const GraphDisplaySettings display{settings.background, settings.font, m_units,
                                       settings.line_styles};
    for (std::size_t i = 0; i < graphs.size(); ++i) {
        WavoGraph graph = graphs[i];
        if (m_of_recording) {
            graph.Triggers.clear();
        }
        m_drawers.push_back(std::make_unique<GraphDraw>(
            rectangles[i], graph, host, display, cycle_time, settings.scale_lines_x,
            settings.scale_lines_y, StreamsOf(graph, cycle_time)));
    }
    m_streams.ListBuffers(axis_names);
    return m_streams.TakeFaults();
}

GraphStreams GraphBoard::StreamsOf(const WavoGraph& graph, double cycle_time) {
    if (!m_of_recording) {
        return m_streams.StreamsOf(graph, cycle_time);
    }
    GraphStreams none;
    none.y.resize(graph.YCoorAxName.size());
    return none;
}

void GraphBoard::SetAside() {
    m_aside = std::exchange(m_drawers, {});
    m_looks_aside = m_looks;
}

bool GraphBoard::BringBack(const QRect& area, const std::vector<std::string>& axis_names,
                           const ViewSettings& settings) {
    std::vector<std::unique_ptr<GraphDraw>> kept = std::exchange(m_aside, {});
    if (!LookAlike(settings, m_looks_aside)) {
        return false;
    }
    m_drawers = std::move(kept);
    m_looks = m_looks_aside;
    Layout(area);
    m_streams.ListBuffers(axis_names);
    return true;
}

void GraphBoard::Layout(const QRect& area) {
    ++m_steps;
    const std::vector<QRect> rectangles = SplitGraphArea(area, m_drawers.size());
    for (std::size_t i = 0; i < m_drawers.size(); ++i) {
        m_drawers[i]->SetRectangle(rectangles[i]);
    }
}

void GraphBoard::SetLineStyles(bool shown) {
    m_looks.line_styles = m_looks_aside.line_styles = shown;
    for (const auto* const drawers : {&m_drawers, &m_aside}) {
        for (const auto& drawer : *drawers) {
            drawer->SetLineStyles(shown);
        }
    }
}

void GraphBoard::DrawAll(QImage& picture, bool restart, PixelWriting pixels) {
    ++m_steps;
    if (restart) {
        // What curves look at in a buffer they would have to copy.
        for (const auto& drawer : m_drawers) {
            for (const auto& line : drawer->Lines()) {
                line->Empty();
            }
        }
        m_streams.Reset();
    }
    for (const auto& drawer : m_drawers) {
        drawer->DrawGraph(picture, restart, pixels);
    }
    m_streams.EmptyNewValues();
}

bool GraphBoard::IsExact() const {
    return std::ranges::all_of(m_drawers, [](const auto& drawer) { return drawer->IsExact(); });
}

void GraphBoard::PaintAll(QImage& picture) {
    for (const auto& drawer : m_drawers) {
        drawer->Paint(picture);
    }
}

const WavoGraph* GraphBoard::Shown(std::uint32_t number) const {
    const GraphDraw* const drawer = Find(number);
    return drawer == nullptr ? nullptr : &drawer->Graph();
}

bool GraphBoard::IsAnyStopped() const {
    return std::any_of(m_drawers.begin(), m_drawers.end(),
                       [](const auto& drawer) { return HasStopped(*drawer); });
}

bool GraphBoard::IsAnyWithoutValues() const {
    return std::any_of(m_drawers.begin(), m_drawers.end(), [](const auto& drawer) {
        const std::vector<GraphValue*> values = drawer->Recorder().Values();
        return !HasStopped(*drawer) &&
               std::any_of(values.begin(), values.end(),
                           [](const GraphValue* value) { return !value->Enabled(); });
    });
}

void GraphBoard::RestartAfterTrigger() {
    for (const auto& drawer : m_drawers) {
        drawer->RestartAfterTrigger();
    }
}

}  // namespace wavo

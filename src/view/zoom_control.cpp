#include "view/zoom_control.h"

#include <QWidget>
#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "session/acquisition.h"
#include "ui/dialogs/ax_select.h"
#include "view/graph_screen.h"

namespace wavo {

ZoomControl::ZoomControl(GraphBoard& board, CAxSelect& editor, GraphScreen& screen,
                         const Acquisition& acquisition, std::function<void()> zoomed)
    : m_board(board),
      m_editor(editor),
      m_screen(screen),
      m_acquisition(acquisition),
      m_zoomed(std::move(zoomed)) {}

std::vector<GraphDraw*> ZoomControl::ZoomedTogether(const GraphDraw& drawer) const {
    std::vector<GraphDraw*> together;
    for (const auto& other : m_board.Drawers()) {
        const bool over_time = other->Graph().XCoorType == CoorType::kTime;
        if (over_time && (other.get() == &drawer || m_editor.AllGraphs())) {
            together.push_back(other.get());
        }
    }
    return together;
}

void ZoomControl::ZoomGraph(std::size_t index, double start, double end) {
    const GraphDraw& drawer = *m_board.Drawers()[index];
    const TimeWindow span = drawer.ZoomSpanOf({start, end});
    for (GraphDraw* const graph : ZoomedTogether(drawer)) {
        ZoomState before = graph->Zoom();
        before.definition = graph->Graph();
        graph->SetZoomRange(span.start, span.end);
        if (!graph->Zoom().active || graph->Zoom().start != span.start ||
            graph->Zoom().end != span.end) {
            continue;  // refused, and reported
        }
        for (GraphValue* const value : graph->Recorder().Values()) {
            value->MarkFirstRangeRequest();
        }
        m_entries.push_back({graph->Graph().GraphNumber, before});
    }
    TellEditor(drawer);
    m_screen.DrawAndShow();
    m_zoomed();
}

void ZoomControl::ZoomTo(std::uint32_t graph_number, const ZoomSpan& span) {
    const auto& drawers = m_board.Drawers();
    const auto drawer = std::find_if(drawers.begin(), drawers.end(), [&](const auto& graph) {
        return graph->Graph().GraphNumber == graph_number;
    });
    if (drawer != drawers.end()) {
        ZoomGraph(static_cast<std::size_t>(std::distance(drawers.begin(), drawer)), span.from,
                  span.to);
    }
}

void ZoomControl::ZoomOut(std::uint32_t graph_number) {
    const GraphDraw* const drawer = m_board.Find(graph_number);
    if (drawer == nullptr || m_entries.empty()) {
        return;
    }
    for (GraphDraw* const graph : ZoomedTogether(*drawer)) {
        if (const std::optional<ZoomState> before = Pop(graph->Graph().GraphNumber)) {
            graph->RestoreZoom(*before);
        }
    }
    TellEditor(*drawer);
    m_screen.DrawAndShow();
}

void ZoomControl::LeaveAll() {
    for (const auto& drawer : m_board.Drawers()) {
        while (const std::optional<ZoomState> before = Pop(drawer->Graph().GraphNumber)) {
            drawer->RestoreZoom(*before);
        }
    }
    Forget();
}

void ZoomControl::Forget() {
    Clear();
    m_editor.SetZooms({});
}

std::optional<ZoomState> ZoomControl::Pop(std::uint32_t graph_number) {
    const auto last = std::find_if(
        m_entries.rbegin(), m_entries.rend(),
        [graph_number](const Entry& entry) { return entry.graph_number == graph_number; });
    if (last == m_entries.rend()) {
        return std::nullopt;
    }
    const ZoomState before = last->before;
    m_entries.erase(std::next(last).base());
    return before;
}

// The editor shows how long a span is seen; it is not to be edited while that is a zoom.
void ZoomControl::TellEditor(const GraphDraw& drawer) {
    const ZoomState& zoom = drawer.Zoom();
    const GraphAndTime shown{drawer.Graph().GraphNumber,
                             zoom.active ? zoom.end - zoom.start : drawer.Graph().XScale.TimeRange};
    SendAppMessage(&m_editor, AppMessage::kSelectGraphAndTime, 0,
                   reinterpret_cast<std::int64_t>(&shown));
    std::map<std::uint32_t, double> spans;
    for (const auto& other : m_board.Drawers()) {
        if (other->Zoom().active) {
            spans[other->Graph().GraphNumber] = other->Zoom().end - other->Zoom().start;
        }
    }
    m_editor.SetZooms(std::move(spans));
}

void ZoomControl::Select(std::uint32_t graph_number) {
    SendAppMessage(&m_editor, AppMessage::kSelectGraph, 0, graph_number);
}

std::uint32_t ZoomControl::Selected() const {
    return m_editor.SelectedNumber();
}

bool ZoomControl::IsEnabled() const {
    return m_editor.ZoomEnabled();
}

bool ZoomControl::IsBusy() const {
    return m_screen.IsDrawing();
}

double ZoomControl::TimeStep() const {
    return m_acquisition.CycleTime();
}

void ZoomControl::UpdatePart(const QRect& part) {
    m_screen.Widget().update(part);
}

void ZoomControl::RepaintPart(const QRect& part) {
    m_screen.Widget().repaint(part);
}

}  // namespace wavo

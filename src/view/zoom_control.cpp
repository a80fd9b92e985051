#include "view/zoom_control.h"

#include <QWidget>
#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "session/acquisition.h"
#include "ui/graph_editor/ax_select.h"
#include "view/graph_screen.h"
#include "view/past_view.h"

namespace wavo {

namespace {

/// Seconds that a graph shows, if that is not its time range.
std::optional<double> ZoomedLength(const GraphDraw& drawer) {
    if (drawer.Past().has_value() && drawer.Graph().XCoorType != CoorType::kAxis) {
        const TimeWindow window = drawer.DisplayedWindow();
        return window.end - window.start;
    }
    return drawer.Zoom().active ? std::optional(drawer.Zoom().Length()) : std::nullopt;
}

}  // namespace

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
    if (m_past != nullptr && drawer.Past().has_value()) {
        m_past->ZoomTo({start, end});
        return;
    }
    const TimeWindow span = drawer.Places().ZoomSpanOf({start, end});
    m_zooms.Zoom(ZoomedTogether(drawer), span);
    TellEditor(drawer);
    m_screen.DrawAndShow();
    m_zoomed();
}

void ZoomControl::ZoomTo(std::uint32_t graph_number, const TimeWindow& span) {
    const auto& drawers = m_board.Drawers();
    const auto drawer = std::find_if(drawers.begin(), drawers.end(), [&](const auto& graph) {
        return graph->Graph().GraphNumber == graph_number;
    });
    if (drawer != drawers.end()) {
        ZoomGraph(static_cast<std::size_t>(std::distance(drawers.begin(), drawer)), span.start,
                  span.end);
    }
}

void ZoomControl::ZoomOut(std::uint32_t graph_number) {
    const GraphDraw* const drawer = m_board.Find(graph_number);
    if (drawer != nullptr && m_past != nullptr && drawer->Past().has_value()) {
        m_past->StepBack();
        return;
    }
    if (drawer == nullptr || m_zooms.IsEmpty()) {
        return;
    }
    m_zooms.StepBack(ZoomedTogether(*drawer));
    TellEditor(*drawer);
    m_screen.DrawAndShow();
}

void ZoomControl::LeaveAll() {
    std::vector<GraphDraw*> all;
    for (const auto& drawer : m_board.Drawers()) {
        all.push_back(drawer.get());
    }
    m_zooms.LeaveAll(all);
    Forget();
}

void ZoomControl::Forget() {
    Clear();
    m_past_length = 0.0;
    m_editor.SetZooms({});
}

void ZoomControl::SetAside() {
    m_aside = std::exchange(m_zooms, {});
}

void ZoomControl::BringBack(std::uint32_t selected) {
    m_zooms = std::exchange(m_aside, {});
    Select(selected);
    const GraphDraw* const drawer = m_board.Find(selected);
    if (drawer != nullptr && std::ranges::any_of(m_board.Drawers(), [](const auto& each) {
            return ZoomedLength(*each).has_value();
        })) {
        TellEditor(*drawer);
    }
}

// The editor shows how long a span is seen; it is not to be edited while that is a zoom.
void ZoomControl::TellEditor(const GraphDraw& drawer) {
    const GraphAndTime shown{drawer.Graph().GraphNumber,
                             ZoomedLength(drawer).value_or(drawer.Graph().XScale.TimeRange)};
    SendAppMessage(&m_editor, AppMessage::kSelectGraphAndTime, 0,
                   reinterpret_cast<std::int64_t>(&shown));
    std::map<std::uint32_t, double> spans;
    for (const auto& other : m_board.Drawers()) {
        if (const std::optional<double> length = ZoomedLength(*other)) {
            spans[other->Graph().GraphNumber] = *length;
        }
    }
    m_editor.SetZooms(std::move(spans));
}

void ZoomControl::OnPastChanged() {
    const auto& drawers = m_board.Drawers();
    const GraphDraw* drawer = m_board.Find(Selected());
    if (drawer == nullptr && !drawers.empty()) {
        drawer = drawers.front().get();
    }
    if (drawer == nullptr) {
        return;
    }
    const double length = ZoomedLength(*drawer).value_or(0.0);
    if (length != std::exchange(m_past_length, length)) {
        TellEditor(*drawer);
    }
}

void ZoomControl::Select(std::uint32_t graph_number) {
    SendAppMessage(&m_editor, AppMessage::kSelectGraph, 0, graph_number);
    if (m_past != nullptr) {
        m_past->OnSelected();
    }
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

#include "view/view_mouse.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "view/zoom_band.h"

namespace wavo {

void ViewMouse::LeftButtonDown(const QPoint& point) {
    // The editor may change the list of graphs: collected first.
    std::vector<std::uint32_t> numbers;
    for (const auto& drawer : m_board.Drawers()) {
        if (drawer->Rectangle().contains(point)) {
            numbers.push_back(drawer->Graph().GraphNumber);
        }
    }
    for (const std::uint32_t number : numbers) {
        m_zooms.Select(number);
    }
}

bool ViewMouse::RightButtonDown(const QPoint& point) {
    LeftButtonDown(point);
    Cancel();
    if (!m_zooms.IsEnabled()) {
        return true;
    }
    if (m_zooms.IsBusy()) {
        return false;
    }
    const auto& drawers = m_board.Drawers();
    const auto found = std::find_if(drawers.begin(), drawers.end(), [&](const auto& drawer) {
        return drawer->Rectangle().contains(point);
    });
    if (found != drawers.end() && (*found)->Graph().XCoorType == CoorType::kTime) {
        m_selected = static_cast<std::size_t>(std::distance(drawers.begin(), found));
        m_anchor = point;
    }
    return true;
}

void ViewMouse::MouseMove(const QPoint& point) {
    GraphDraw* const drawer = Selected();
    if (drawer == nullptr || m_anchor.x() >= point.x()) {
        return;
    }
    drawer->SetTracker(BandBetween(*drawer, m_anchor.x(), point.x()));
    m_zooms.UpdatePart(drawer->Rectangle());
}

void ViewMouse::RightButtonUp(const QPoint& point) {
    GraphDraw* const drawer = Selected();
    if (drawer == nullptr) {
        return;
    }
    const std::optional<TimeWindow> span = SpanOfBand(*drawer, m_zooms.TimeStep());
    const std::uint32_t number = drawer->Graph().GraphNumber;
    const QRect rectangle = drawer->Rectangle();
    drawer->SetTracker({});
    m_selected.reset();
    if (span.has_value()) {
        m_zooms.ZoomTo(number, *span);
    } else {
        m_zooms.RepaintPart(rectangle);
        LeftButtonDown(point);
    }
}

void ViewMouse::Cancel() {
    if (GraphDraw* const drawer = Selected()) {
        drawer->SetTracker({});
        m_zooms.UpdatePart(drawer->Rectangle());
    }
    m_selected.reset();
}

GraphDraw* ViewMouse::Selected() const {
    return m_selected && *m_selected < m_board.Drawers().size()
               ? m_board.Drawers()[*m_selected].get()
               : nullptr;
}

}  // namespace wavo

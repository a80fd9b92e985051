#include "view/view_keys.h"

#include <algorithm>
#include <iterator>

#include "view/zoom_band.h"

namespace wavo {

namespace {

constexpr int kStepsPerPlot = 50;

}  // namespace

bool ViewKeys::KeyPress(int key, Qt::KeyboardModifiers modifiers) {
    if (Current() == nullptr) {
        return false;
    }
    switch (key) {
        case Qt::Key_Up:
            return Select(-1);
        case Qt::Key_Down:
            return Select(1);
        case Qt::Key_Left:
            return MoveMark(-1, modifiers);
        case Qt::Key_Right:
            return MoveMark(1, modifiers);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return ZoomToBand();
        case Qt::Key_Plus:
            return ZoomToMiddle();
        case Qt::Key_Minus:
        case Qt::Key_Backspace:
            return StepBack();
        case Qt::Key_Escape: {
            const bool marked = m_marked.has_value();
            Cancel();
            return marked;
        }
        default:
            return false;
    }
}

bool ViewKeys::Select(int step) {
    const auto& drawers = m_board.Drawers();
    const auto count = static_cast<int>(drawers.size());
    const auto current = std::find_if(drawers.begin(), drawers.end(), [this](const auto& drawer) {
        return drawer.get() == Current();
    });
    const auto index = static_cast<int>(std::distance(drawers.begin(), current));
    Cancel();
    const auto next = static_cast<std::size_t>(std::clamp(index + step, 0, count - 1));
    m_zooms.Select(drawers[next]->Graph().GraphNumber);
    return true;
}

bool ViewKeys::MoveMark(int direction, Qt::KeyboardModifiers modifiers) {
    GraphDraw* const drawer = Current();
    if (!m_zooms.IsEnabled() || drawer->Graph().XCoorType != CoorType::kTime) {
        return true;
    }
    const QRect& plot = drawer->PlotArea();
    const std::uint32_t number = drawer->Graph().GraphNumber;
    if (m_marked != number) {
        Cancel();
        m_marked = number;
        m_anchor = m_mark = plot.center().x();
    }
    const int step =
        (modifiers & Qt::ControlModifier) != 0 ? 1 : std::max(1, plot.width() / kStepsPerPlot);
    m_mark =
        std::clamp(m_mark + direction * step, plot.left(), std::max(plot.left(), plot.right()));
    if ((modifiers & Qt::ShiftModifier) == 0) {
        m_anchor = m_mark;
    }
    drawer->SetTracker(
        BandBetween(*drawer, std::min(m_anchor, m_mark), std::max(m_anchor, m_mark)));
    m_zooms.UpdatePart(drawer->Rectangle());
    return true;
}

bool ViewKeys::ZoomToBand() {
    const GraphDraw* const drawer = Current();
    const std::uint32_t number = drawer->Graph().GraphNumber;
    const bool may_zoom = m_zooms.IsEnabled() && !m_zooms.IsBusy() && m_marked == number;
    const std::optional<TimeWindow> span =
        may_zoom ? SpanOfBand(*drawer, m_zooms.TimeStep()) : std::nullopt;
    Cancel();
    if (span.has_value()) {
        m_zooms.ZoomTo(number, *span);
    } else {
        m_zooms.Select(number);
    }
    return true;
}

bool ViewKeys::ZoomToMiddle() {
    GraphDraw* const drawer = Current();
    if (!m_zooms.IsEnabled() || drawer->Graph().XCoorType != CoorType::kTime) {
        return true;
    }
    const QRect& plot = drawer->PlotArea();
    Cancel();
    m_marked = drawer->Graph().GraphNumber;
    drawer->SetTracker(
        BandBetween(*drawer, plot.left() + plot.width() / 4, plot.left() + 3 * plot.width() / 4));
    return ZoomToBand();
}

bool ViewKeys::StepBack() {
    const std::uint32_t number = Current()->Graph().GraphNumber;
    Cancel();
    m_zooms.ZoomOut(number);
    return true;
}

void ViewKeys::Cancel() {
    if (GraphDraw* const drawer = m_marked ? m_board.Find(*m_marked) : nullptr) {
        drawer->SetTracker({});
        m_zooms.UpdatePart(drawer->Rectangle());
    }
    m_marked.reset();
}

GraphDraw* ViewKeys::Current() const {
    const auto& drawers = m_board.Drawers();
    GraphDraw* const selected = m_board.Find(m_zooms.Selected());
    return selected != nullptr || drawers.empty() ? selected : drawers.front().get();
}

}  // namespace wavo

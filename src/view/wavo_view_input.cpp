// Mouse and keyboard of the view.
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <iterator>

#include "view/wavo_view.h"

namespace wavo {

void CWavoView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        m_shows_focus = true;
    }
    QWidget::focusInEvent(event);
}

void CWavoView::mousePressEvent(QMouseEvent* event) {
    m_keys.Cancel();
    if (m_shows_focus) {
        m_shows_focus = false;
        update();
    }
    if (event->button() == Qt::LeftButton) {
        m_mouse.LeftButtonDown(event->position().toPoint());
    } else if (event->button() != Qt::RightButton ||
               !m_mouse.RightButtonDown(event->position().toPoint())) {
        QWidget::mousePressEvent(event);
    }
}

void CWavoView::mouseMoveEvent(QMouseEvent* event) {
    m_mouse.MouseMove(event->position().toPoint());
}

void CWavoView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) {
        m_mouse.RightButtonUp(event->position().toPoint());
    } else {
        QWidget::mouseReleaseEvent(event);
    }
}

void CWavoView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_mouse.IsDragging()) {
        m_mouse.Cancel();
    } else if (!m_keys.KeyPress(event->key(), event->modifiers())) {
        QWidget::keyPressEvent(event);
    }
}

void CWavoView::SelectInEditor(std::uint32_t graph_number) {
    SendAppMessage(m_editor.get(), AppMessage::kSelectGraph, 0, graph_number);
}

void CWavoView::ZoomTo(std::uint32_t graph_number, const ZoomSpan& span) {
    const auto& drawers = m_board.Drawers();
    const auto drawer = std::find_if(drawers.begin(), drawers.end(), [&](const auto& graph) {
        return graph->Graph().GraphNumber == graph_number;
    });
    if (drawer != drawers.end()) {
        ZoomGraph(static_cast<std::size_t>(std::distance(drawers.begin(), drawer)), span.from,
                  span.to);
    }
}

}  // namespace wavo

#include "ui/graph_editor/editor_group.h"

#include <QEvent>
#include <QGridLayout>
#include <QResizeEvent>

namespace wavo {

namespace {

constexpr int kGap = 4;
constexpr int kClosedUpGap = 2;
constexpr int kEdge = 3;  ///< above and below the rows
constexpr int kRowGap = 2;

}  // namespace

EditorGroup::EditorGroup(const QString& title, QWidget* parent)
    : QGroupBox(title, parent), m_grid(*new QGridLayout(this)) {
    m_grid.setVerticalSpacing(kRowGap);
    m_is_closed_up = true;
    Arrange(false);
}

void EditorGroup::Arrange(bool closed_up) {
    if (m_is_closed_up == closed_up) {
        return;
    }
    m_is_closed_up = closed_up;
    const int gap = closed_up ? kClosedUpGap : kGap;
    m_grid.setContentsMargins(gap, kEdge, gap, kEdge);
    m_grid.setHorizontalSpacing(gap);
    if (m_arrange) {
        m_arrange(closed_up);
    }
}

void EditorGroup::Measure() {
    const bool was_closed_up = m_is_closed_up;
    Arrange(true);
    m_closed_up_width = PresentWidth();
    Arrange(false);
    m_width = PresentWidth();
    Arrange(was_closed_up);
    updateGeometry();
}

QSize EditorGroup::sizeHint() const {
    return {m_width, QGroupBox::sizeHint().height()};
}

QSize EditorGroup::minimumSizeHint() const {
    return {m_closed_up_width, QGroupBox::minimumSizeHint().height()};
}

bool EditorGroup::event(QEvent* event) {
    // A control has changed, as it does with the look.
    if (event->type() == QEvent::LayoutRequest &&
        PresentWidth() != (m_is_closed_up ? m_closed_up_width : m_width)) {
        Measure();
    }
    return QGroupBox::event(event);
}

void EditorGroup::resizeEvent(QResizeEvent* event) {
    QGroupBox::resizeEvent(event);
    Arrange(event->size().width() < m_width);
    m_grid.activate();
}

}  // namespace wavo

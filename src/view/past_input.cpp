#include "view/past_input.h"

#include <QMouseEvent>
#include <QWheelEvent>
#include <cmath>

#include "view/past_view.h"

namespace wavo {

namespace {

constexpr double kNotch = 120.0;  // of an event's angle
constexpr double kZoomPerNotch = 0.8;
constexpr double kMovePerNotch = 0.1;  // windows
constexpr double kPage = 0.9;          // windows: a part of what was seen stays

}  // namespace

bool TakeWheel(PastView& past, const QWheelEvent& event) {
    const QPoint angle = event.angleDelta();
    const bool moves = (event.modifiers() & Qt::ShiftModifier) != 0;
    // A wheel that turns sideways moves as Shift does, which some systems turn into just that.
    if (moves || angle.y() == 0) {
        const int delta = angle.y() != 0 ? angle.y() : angle.x();
        return delta != 0 && past.MoveBy(-delta / kNotch * kMovePerNotch);
    }
    return past.ZoomAt(event.position().toPoint(), std::pow(kZoomPerNotch, angle.y() / kNotch));
}

bool TakeMousePress(PastView& past, const QMouseEvent& event) {
    return event.button() == Qt::MiddleButton && past.BeginDrag(event.position().toPoint());
}

bool TakeMouseMove(PastView& past, const QMouseEvent& event) {
    return (event.buttons() & Qt::MiddleButton) != 0 && past.DragTo(event.position().toPoint());
}

bool TakeMouseRelease(PastView& past, const QMouseEvent& event) {
    return event.button() == Qt::MiddleButton && past.EndDrag();
}

bool TakeKey(PastView& past, int key, Qt::KeyboardModifiers modifiers) {
    if ((modifiers & ~Qt::KeypadModifier) != Qt::NoModifier) {
        return false;
    }
    switch (key) {
        case Qt::Key_Home:
            return past.MoveToBegin();
        case Qt::Key_End:
            return past.MoveToEnd();
        case Qt::Key_PageUp:
            return past.MoveBy(-kPage);
        case Qt::Key_PageDown:
            return past.MoveBy(kPage);
        default:
            return false;
    }
}

}  // namespace wavo

#include "ui/shell/screen_fit.h"

#include <QEvent>
#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <QWindow>
#include <algorithm>

namespace wavo {

namespace {

/// A child of the window until the window is exposed.
class FitWhenExposed : public QObject {
 public:
    explicit FitWhenExposed(QWidget& window)
        : QObject(&window), m_window(window), m_wanted(window.size()) {
        window.windowHandle()->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        QWindow* const handle = m_window.windowHandle();
        if (event->type() == QEvent::Expose && handle->isExposed()) {
            if ((m_window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) == 0) {
                m_window.setGeometry(FitFrame(m_window.geometry().topLeft(), m_wanted,
                                              handle->frameMargins(),
                                              m_window.screen()->availableGeometry()));
            }
            handle->removeEventFilter(this);
            deleteLater();
        }
        return QObject::eventFilter(watched, event);
    }

 private:
    QWidget& m_window;
    const QSize m_wanted;
};

}  // namespace

QRect FitFrame(const QPoint& place, const QSize& wanted, const QMargins& frame, const QRect& room) {
    const QRect inside = room.marginsRemoved(frame);
    const QSize size = wanted.boundedTo(inside.size());
    return {QPoint(std::clamp(place.x(), inside.left(), inside.right() + 1 - size.width()),
                   std::clamp(place.y(), inside.top(), inside.bottom() + 1 - size.height())),
            size};
}

void FitIntoScreen(QWidget& window) {
    window.winId();  // makes the window of the window system
    new FitWhenExposed(window);
    QMargins frame = window.windowHandle()->frameMargins();
    if (frame.isNull()) {  // it comes when the window is shown
        const int edge = window.style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
        const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight);
        frame = {edge, title, edge, edge};
    }
    const QRect room = window.screen()->availableGeometry();
    window.resize(FitFrame(room.topLeft(), window.size(), frame, room).size());
}

}  // namespace wavo

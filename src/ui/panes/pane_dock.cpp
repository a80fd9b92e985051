#include "ui/panes/pane_dock.h"

#include <QApplication>
#include <QCursor>
#include <QFrame>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/controls/control_table.h"
#include "ui/panes/pane_title.h"

namespace wavo {

namespace {

constexpr QSize kFirstSize(320, 180);
constexpr int kPointerMoved = 20;  // logical pixels

}  // namespace

PaneDock::PaneDock(const QString& title, QWidget* content, QMainWindow& frame)
    : QDockWidget(title, &frame),
      m_frame(frame),
      m_content(content),
      m_title(new PaneTitle(title, false, this)),
      m_strip(new EdgeStrip(title, this)),
      m_out(new QFrame(&frame)),
      m_size(kFirstSize) {
    SetAccessibleTexts(*m_out, title, content->accessibleDescription());
    m_out->setObjectName(QStringLiteral("pane_out"));
    m_out->setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    m_out->setAutoFillBackground(true);
    m_out->hide();
    auto* const layout = new QVBoxLayout(m_out);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    auto* const title_out = new PaneTitle(title, true, m_out);
    layout->addWidget(title_out);
    for (QWidget* const each : {m_title, static_cast<QWidget*>(title_out)}) {
        auto* const shown = static_cast<PaneTitle*>(each);
        connect(shown, &PaneTitle::PinClicked, this, [this] { SetAutoHide(!m_hides); });
        connect(shown, &PaneTitle::FloatClicked, this, [this] {
            SetAutoHide(false);
            setFloating(!isFloating());
        });
        connect(shown, &PaneTitle::CloseClicked, this, &QWidget::close);
    }
    auto* const strip = static_cast<EdgeStrip*>(m_strip);
    strip->hide();
    connect(strip, &EdgeStrip::Pointed, this, &PaneDock::OnPointed);
    connect(strip, &QAbstractButton::clicked, this, [this] {
        ComeOut();
        GiveKeyboard();
    });
    m_out->installEventFilter(this);
    strip->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, &PaneDock::OnFocusChanged);
    connect(this, &QDockWidget::dockLocationChanged, this, [this] { FitToSide(); });
    setAllowedAreas(Qt::AllDockWidgetAreas);
    setTitleBarWidget(m_title);
    setWidget(m_content);
    frame.addDockWidget(Qt::BottomDockWidgetArea, this);
    hide();
}

PaneDock::~PaneDock() {
    disconnect(qApp, nullptr, this, nullptr);
    m_out->removeEventFilter(this);
}

void PaneDock::SetAutoHide(bool hides) {
    if (hides == m_hides) {
        return;
    }
    if (hides) {
        if (isFloating()) {
            setFloating(false);
        }
        if (m_content->isVisible()) {
            m_size = m_content->size();
        }
    }
    m_hides = hides;
    m_pointer_at_hiding = QCursor::pos();
    if (hides) {
        setWidget(nullptr);
        m_out->layout()->addWidget(m_content);
        m_content->show();
        m_title->hide();
        setTitleBarWidget(m_strip);
        m_strip->show();
    } else {
        m_out->hide();
        m_out->layout()->removeWidget(m_content);
        m_strip->hide();
        setTitleBarWidget(m_title);
        m_title->show();
        setWidget(m_content);
        m_content->show();
    }
    FitToSide();
    Q_EMIT AutoHideChanged();
}

bool PaneDock::IsUpright() {
    return Side() == Qt::LeftDockWidgetArea || Side() == Qt::RightDockWidgetArea;
}

void PaneDock::FitToSide() {
    const bool upright = m_hides && IsUpright();
    static_cast<EdgeStrip*>(m_strip)->SetUpright(upright);
    DockWidgetFeatures wanted = DockWidgetClosable | DockWidgetMovable | DockWidgetFloatable;
    wanted.setFlag(DockWidgetVerticalTitleBar, upright);
    setFeatures(wanted);
    const QSize strip = m_strip->sizeHint();
    setMaximumSize(m_hides && upright ? strip.width() : QWIDGETSIZE_MAX,
                   m_hides && !upright ? strip.height() : QWIDGETSIZE_MAX);
}

bool PaneDock::IsOut() const {
    return m_out->isVisible();
}

QRect PaneDock::PlaceOut() {
    const QRect strip = geometry();
    const QRect room = m_frame.centralWidget()->geometry();
    const QSize size = m_size + QSize(0, m_title->sizeHint().height());
    const int width = std::min(size.width(), room.width());
    const int height = std::min(size.height(), room.height());
    switch (Side()) {
        case Qt::LeftDockWidgetArea:
            return {strip.right() + 1, strip.top(), width, strip.height()};
        case Qt::RightDockWidgetArea:
            return {strip.left() - width, strip.top(), width, strip.height()};
        case Qt::TopDockWidgetArea:
            return {strip.left(), strip.bottom() + 1, strip.width(), height};
        default:
            return {strip.left(), strip.top() - height, strip.width(), height};
    }
}

void PaneDock::ComeOut() {
    if (m_hides && !IsOut()) {
        m_out->setGeometry(PlaceOut());
        m_out->show();
        m_out->raise();
    }
}

void PaneDock::OnPointed() {
    // The strip may come to stand below the pointer that has just let the pane hide.
    if ((QCursor::pos() - m_pointer_at_hiding).manhattanLength() > kPointerMoved) {
        ComeOut();
    }
}

void PaneDock::GiveKeyboard() {
    for (QWidget* const child : m_content->findChildren<QWidget*>()) {
        if (child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus)) {
            child->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

void PaneDock::GoIn() {
    if (IsOut()) {
        m_size = m_content->size();
        m_out->hide();
    }
}

bool PaneDock::Holds(const QWidget* widget) const {
    return widget != nullptr &&
           (widget == m_strip || widget == m_out || m_out->isAncestorOf(widget));
}

void PaneDock::GoInUnlessUsed() {
    const QPoint pointer = QCursor::pos();
    const auto is_over = [&](const QWidget* widget) {
        return widget->isVisible() && widget->rect().contains(widget->mapFromGlobal(pointer));
    };
    const QWidget* const focus = QApplication::focusWidget();
    const bool has_keyboard = focus != m_strip && Holds(focus);
    if (!has_keyboard && QApplication::activePopupWidget() == nullptr && !is_over(m_out) &&
        !is_over(m_strip)) {
        GoIn();
    }
}

void PaneDock::OnFocusChanged(QWidget* before, QWidget* now) {
    // Without anybody who has it, the window has gone to the back or asks something.
    if (IsOut() && now != nullptr && now->window() == &m_frame && Holds(before) && !Holds(now)) {
        GoIn();
    }
}

bool PaneDock::event(QEvent* event) {
    const bool handled = QDockWidget::event(event);
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent) {
        if (!IsOpen()) {
            GoIn();
        }
        Q_EMIT OpenChanged();
    } else if (event->type() == QEvent::Resize || event->type() == QEvent::Move) {
        if (IsOut()) {
            m_out->setGeometry(PlaceOut());
        }
    }
    return handled;
}

bool PaneDock::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Leave) {
        GoInUnlessUsed();
    } else if (event->type() == QEvent::KeyPress && IsOut() &&
               static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        m_frame.centralWidget()->setFocus(Qt::OtherFocusReason);
        GoIn();
        return true;
    }
    return QDockWidget::eventFilter(watched, event);
}

}  // namespace wavo

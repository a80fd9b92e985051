#include "view/navigator.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "graph/draw/display_settings.h"
#include "recording/utc_text.h"
#include "view/past_input.h"
#include "view/zoom_band.h"

namespace wavo {

namespace {

using recording::ReadingBudget;

// Logical pixels.
constexpr int kHeight = 48;
constexpr int kGrip = 4;        // beside a border, where it can be dragged
constexpr int kMarkHeight = 7;  // of events, at the top
constexpr int kGapHeight = 4;   // at the bottom

constexpr int kMostTold = 10;  // events, in a tool tip

constexpr std::uint64_t kNavigatorBudget = 60;  // a picture, beside that of the graphs
constexpr double kStep = 0.1;                   // of the window, per key
constexpr double kZoom = 0.8;
constexpr QColor kEventColor(230, 160, 0);
constexpr QColor kGapColor(220, 40, 40);
constexpr int kVeil = 110;  // opacity of what lies beside the window

QString WindowText(const LineRange& seen, OpenRecording& recording) {
    const recording::LineClock& clock = recording.Reader().Clock();
    const auto text = [&clock](std::int64_t line) {
        return QString::fromStdString(
            recording::MomentText(clock.TimeOf(static_cast<std::uint64_t>(line))));
    };
    return text(seen.begin) + QStringLiteral(" to ") + text(std::max(seen.begin, seen.end - 1));
}

}  // namespace

Navigator::Navigator(Session& session, PastView& past, std::function<SelectedCurve()> selected,
                     QWidget* parent)
    : QWidget(parent), m_session(session), m_past(past), m_selected(std::move(selected)) {
    setObjectName(QStringLiteral("navigator"));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(QStringLiteral("Recording"));
    setAccessibleDescription(
        QStringLiteral("The whole recording, with the part that the graphs show"));
    hide();
}

QSize Navigator::sizeHint() const {
    return {200, kHeight};
}

QColor Navigator::Background() const {
    return ToQColor(m_session.Settings().Current().background);
}

void Navigator::Renew() {
    OpenRecording* const recording = m_session.Recording();
    const std::uint64_t number = recording == nullptr ? 0 : recording->Number();
    if (std::exchange(m_recording, number) != number) {
        m_envelope.Clear();  // its stream goes
    }
    if (recording != nullptr) {
        setAccessibleName(QStringLiteral("Recording: ") +
                          WindowText(m_past.Window().Seen(), *recording));
    }
    update();
}

// ---- places ----

int Navigator::ColumnOf(std::int64_t line) const {
    return ColumnOfLine(Held(), width(), line);
}

std::int64_t Navigator::LineAt(int x) const {
    const LineRange held = Held();
    const double part = static_cast<double>(x) / std::max(1, width() - 1);
    return held.begin + std::llround(part * static_cast<double>(held.Count() - 1));
}

Navigator::Part Navigator::PartAt(int x) const {
    const int left = LeftBorder();
    const int right = RightBorder();
    // Of a narrow window the middle third can be dragged, too.
    const int grip = std::min(kGrip, std::max(1, (right - left) / 3));
    if (x >= left - kGrip && x < left + grip) {
        return Part::kLeft;
    }
    if (x > right - grip && x <= right + kGrip) {
        return Part::kRight;
    }
    return x >= left && x <= right ? Part::kWindow : Part::kNone;
}

// ---- mouse and keys ----

void Navigator::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const int x = event->position().toPoint().x();
    m_dragged = PartAt(x);
    if (m_dragged == Part::kNone) {
        const std::int64_t half = m_past.Window().Seen().Count() / 2;
        const std::int64_t begin = LineAt(x) - half;
        m_past.Show({begin, begin + m_past.Window().Seen().Count()});
        m_dragged = Part::kWindow;
    }
    m_drag_from = LineAt(x);
    m_drag_window = m_past.Window().Seen();
}

void Navigator::mouseMoveEvent(QMouseEvent* event) {
    const int x = event->position().toPoint().x();
    if (!event->buttons().testFlag(Qt::LeftButton)) {
        m_dragged = Part::kNone;  // it was released where nobody told of it
    }
    if (m_dragged != Part::kNone) {
        DragTo(x);
        return;
    }
    const Part part = PartAt(x);
    setCursor(part == Part::kWindow ? Qt::OpenHandCursor
              : part == Part::kNone ? Qt::ArrowCursor
                                    : Qt::SizeHorCursor);
}

void Navigator::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        m_dragged = Part::kNone;
    }
}

void Navigator::DragTo(int x) {
    const std::int64_t by = LineAt(x) - m_drag_from;
    LineRange window = m_drag_window;
    switch (m_dragged) {
        case Part::kWindow:
            window = {window.begin + by, window.end + by};
            break;
        case Part::kLeft:
            window.begin = std::clamp(window.begin + by, Held().begin,
                                      std::max(Held().begin, window.end - SeenLines::kFewest));
            break;
        case Part::kRight:
            window.end = std::min(std::max(window.end + by, window.begin + SeenLines::kFewest),
                                  std::max(Held().end, window.end));
            break;
        case Part::kNone:
            return;
    }
    m_past.Show(window);
}

void Navigator::wheelEvent(QWheelEvent* event) {
    const QPoint angle = event->angleDelta();
    if ((event->modifiers() & Qt::ShiftModifier) != 0 || angle.y() == 0) {
        TakeWheel(m_past, *event);
    } else {
        m_past.ZoomInMiddle(std::pow(kZoom, angle.y() / 120.0));
    }
}

bool Navigator::MoveBorder(Qt::KeyboardModifiers modifiers, int direction) {
    LineRange window = m_past.Window().Seen();
    const std::int64_t step =
        direction *
        std::max<std::int64_t>(1, std::llround(kStep * static_cast<double>(window.Count() - 1)));
    if ((modifiers & Qt::ShiftModifier) != 0) {
        window.end = std::clamp(window.end + step, window.begin + SeenLines::kFewest,
                                std::max(Held().end, window.begin + SeenLines::kFewest));
    } else if ((modifiers & Qt::ControlModifier) != 0) {
        window.begin =
            std::clamp(window.begin + step, std::min(Held().begin, window.end - SeenLines::kFewest),
                       window.end - SeenLines::kFewest);
    } else {
        window = {window.begin + step, window.end + step};
    }
    return m_past.Show(window);
}

void Navigator::keyPressEvent(QKeyEvent* event) {
    bool is_taken = false;
    switch (event->key()) {
        case Qt::Key_Left:
            is_taken = MoveBorder(event->modifiers(), -1);
            break;
        case Qt::Key_Right:
            is_taken = MoveBorder(event->modifiers(), 1);
            break;
        case Qt::Key_Up:
        case Qt::Key_Plus:
            is_taken = m_past.ZoomInMiddle(kZoom);
            break;
        case Qt::Key_Down:
        case Qt::Key_Minus:
            is_taken = m_past.ZoomInMiddle(1.0 / kZoom);
            break;
        default:
            is_taken = TakeKey(m_past, event->key(), event->modifiers());
    }
    if (!is_taken) {
        QWidget::keyPressEvent(event);
    }
}

void Navigator::focusInEvent(QFocusEvent* event) {
    update();
    QWidget::focusInEvent(event);
}

void Navigator::focusOutEvent(QFocusEvent* event) {
    update();
    QWidget::focusOutEvent(event);
}

// ---- what it says ----

QString Navigator::TextAt(int x) const {
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        return {};
    }
    const std::vector<recording::Event>& events = recording->Reader().Events();
    const auto from =
        std::ranges::lower_bound(events, x - kGrip, {}, [this](const recording::Event& event) {
            return ColumnOf(static_cast<std::int64_t>(event.line));
        });
    QString text;
    int told = 0;
    auto event = from;
    for (; event != events.end() && told < kMostTold &&
           ColumnOf(static_cast<std::int64_t>(event->line)) <= x + kGrip;
         ++event, ++told) {
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) +
                QString::fromStdString(
                    recording::MomentText(recording->Reader().Clock().TimeOf(event->line)) + "  " +
                    (event->text.empty() ? event->kind : event->text));
    }
    if (event != events.end() && ColumnOf(static_cast<std::int64_t>(event->line)) <= x + kGrip) {
        text += QStringLiteral("\nand others: look more closely, or step through them");
    }
    return text.isEmpty() ? WindowText(m_past.Window().Seen(), *recording) : text;
}

bool Navigator::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto& help = *static_cast<QHelpEvent*>(event);
        QToolTip::showText(help.globalPos(), TextAt(help.pos().x()), this);
        return true;
    }
    return QWidget::event(event);
}

// ---- painting ----

const QImage& Navigator::DrawEnvelope() {
    OpenRecording* const recording = m_session.Recording();
    const SelectedCurve selected = m_selected();
    History* const stream =
        recording == nullptr || selected.graph == nullptr
            ? nullptr
            : recording->StreamOf(selected.graph->YCoorAxName[selected.axis],
                                  std::max(0, selected.graph->YCoorAxDerivation[selected.axis]));
    const QSizeF size(width(), kHeight - kMarkHeight - kGapHeight);
    if (stream == nullptr || width() < 2 || Held().Count() < 2) {
        m_envelope.Clear();
    } else {
        const ReadingBudget of_graphs = recording->Budget();
        recording->Budget().Renew(kNavigatorBudget);
        m_envelope.Draw({stream, Held(), m_session.Values().CycleTime(),
                         (size * devicePixelRatioF()).toSize(),
                         selected.graph->YCoorAxColor[selected.axis],
                         m_session.Settings().Current().background});
        recording->Budget() = of_graphs;
    }
    return m_envelope.Picture();
}

void Navigator::PaintMarks(QPainter& painter) {
    m_marks.Renew(*m_session.Recording(), Held(), width());
    for (const auto& [left, right] : m_marks.Gaps()) {
        painter.fillRect(left, height() - kGapHeight, std::max(2, right - left), kGapHeight,
                         kGapColor);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(kEventColor);
    for (const int x : m_marks.Events()) {
        const QPoint mark[] = {{x - 4, 0}, {x + 4, 0}, {x, kMarkHeight}};
        painter.drawPolygon(mark, 3);
    }
}

void Navigator::PaintWindow(QPainter& painter) const {
    const QColor mark = MarkColor(m_session.Settings().Current().background);
    QColor veil = Background();
    veil.setAlpha(kVeil);
    const int left = LeftBorder();
    const int right = RightBorder();
    painter.fillRect(0, 0, left, height(), veil);
    painter.fillRect(right + 1, 0, width() - right - 1, height(), veil);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(mark, 1, hasFocus() ? Qt::DotLine : Qt::SolidLine));
    painter.drawRect(left, 0, std::max(1, right - left), height() - 1);
}

void Navigator::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), Background());
    if (m_session.Recording() == nullptr) {
        return;
    }
    const QImage& envelope = DrawEnvelope();
    if (!envelope.isNull()) {
        painter.drawImage(QRectF(0, kMarkHeight, width(), kHeight - kMarkHeight - kGapHeight),
                          envelope);
    }
    PaintWindow(painter);
    PaintMarks(painter);  // as bright beside the window as in it
    if (!IsExact()) {
        // Closer with the next painting, when what waits was done.
        QMetaObject::invokeMethod(
            this, [this] { update(); }, Qt::QueuedConnection);
    }
}

}  // namespace wavo

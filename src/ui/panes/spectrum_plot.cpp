#include "ui/panes/spectrum_plot.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace wavo {

namespace {

constexpr double kNotch = 120.0;  // of a wheel's angle
constexpr double kZoomPerNotch = 0.8;
constexpr double kMovePerNotch = 0.1;  // of what is seen
constexpr double kPage = 0.9;
constexpr double kFewestLines = 4.0;
constexpr int kReach = 4;      // pixels beside a cursor that still take it
constexpr int kLeastDrag = 5;  // pixels

}  // namespace

SpectrumPlot::SpectrumPlot(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("spectrum_plot"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
}

// ---- what is seen ----

FrequencyBand SpectrumPlot::All() const {
    return {0.0, m_scene.spectrum ? m_scene.spectrum->nyquist : 0.0};
}

void SpectrumPlot::Show(SpectrumScene scene) {
    scene.band = m_scene.band;
    scene.cursors = m_scene.cursors;
    scene.active = m_scene.active;
    m_scene = std::move(scene);
    if (!m_is_zoomed) {
        m_scene.band = All();
    } else if (m_scene.spectrum) {
        m_scene.band = Fitted(m_scene.band);
    }
    for (auto& cursor : m_scene.cursors) {
        if (cursor && m_scene.spectrum) {
            cursor = m_scene.spectrum->FrequencyOf(LineNear(*m_scene.spectrum, *cursor));
        }
    }
    update();
    Q_EMIT CursorsChanged();
}

FrequencyBand SpectrumPlot::Fitted(FrequencyBand band) const {
    const FrequencyBand all = All();
    const double least =
        m_scene.spectrum ? std::min(all.high, kFewestLines * m_scene.spectrum->spacing) : 0.0;
    const double width = std::clamp(band.Width(), least, all.high);
    const double low = std::clamp(band.low, 0.0, all.high - width);
    return {low, low + width};
}

void SpectrumPlot::SetBand(const FrequencyBand& band) {
    m_scene.band = Fitted(band);
    m_is_zoomed = m_scene.band != All();
    update();
}

void SpectrumPlot::ZoomTo(const FrequencyBand& band) {
    const FrequencyBand before = m_scene.band;
    SetBand(band);
    if (m_scene.band != before) {
        m_steps.push_back(before);
    }
}

void SpectrumPlot::StepBack() {
    if (m_steps.empty()) {
        SetBand(All());
    } else {
        SetBand(m_steps.back());
        m_steps.pop_back();
    }
}

void SpectrumPlot::ZoomAt(double frequency, double factor) {
    const FrequencyBand& band = m_scene.band;
    const double least = m_scene.spectrum ? kFewestLines * m_scene.spectrum->spacing : 0.0;
    const double width = std::clamp(band.Width() * factor, std::min(least, All().high), All().high);
    const double part = band.Width() > 0.0 ? (frequency - band.low) / band.Width() : 0.5;
    SetBand({frequency - part * width, frequency + (1.0 - part) * width});
}

void SpectrumPlot::MoveBy(double bands) {
    const double by = bands * m_scene.band.Width();
    SetBand({m_scene.band.low + by, m_scene.band.high + by});
}

// ---- cursors ----

void SpectrumPlot::PutCursor(CursorName name, double frequency) {
    if (!m_scene.spectrum) {
        return;
    }
    m_scene.cursors[static_cast<std::size_t>(name)] =
        m_scene.spectrum->FrequencyOf(LineNear(*m_scene.spectrum, frequency));
    Activate(name);
}

void SpectrumPlot::JumpTo(CursorName name, double frequency) {
    PutCursor(name, frequency);
    const FrequencyBand& band = m_scene.band;
    if (frequency < band.low || frequency > band.high) {
        const double half = band.Width() / 2.0;
        SetBand({frequency - half, frequency + half});
    }
}

void SpectrumPlot::Activate(std::optional<CursorName> name) {
    m_scene.active = name;
    update();
    Q_EMIT CursorsChanged();
}

std::optional<CursorName> SpectrumPlot::Meets(const QPoint& point) const {
    const SpectrumPlaces places = Places();
    std::optional<CursorName> met;
    double least = kReach + 1.0;
    for (const CursorName name : kCursorNames) {
        const auto frequency = Cursor(name);
        if (!frequency || *frequency < m_scene.band.low || *frequency > m_scene.band.high) {
            continue;
        }
        const bool on_label = SpectrumCursorLabel(places, m_scene, name).contains(point);
        const double distance = on_label ? 0.0 : std::abs(point.x() - places.XOf(*frequency));
        if (distance < least && places.Plot().contains(point)) {
            met = name;
            least = distance;
        }
    }
    return met;
}

bool SpectrumPlot::MoveActive(int direction, Qt::KeyboardModifiers modifiers) {
    if (!m_scene.active || !Cursor(*m_scene.active) || !m_scene.spectrum) {
        return false;
    }
    const double spacing = m_scene.spectrum->spacing;
    double by = m_scene.band.Width() / std::max(1, Places().Plot().width() - 1);
    if ((modifiers & Qt::ControlModifier) != 0) {
        by = spacing;
    } else if ((modifiers & Qt::ShiftModifier) != 0) {
        by = m_scene.band.Width() / 10.0;
    }
    JumpTo(*m_scene.active, std::clamp(*Cursor(*m_scene.active) + direction * std::max(by, spacing),
                                       0.0, All().high));
    return true;
}

bool SpectrumPlot::JumpToPeak(bool forward) {
    if (!m_scene.active || !m_scene.spectrum) {
        return false;
    }
    const double from = Cursor(*m_scene.active).value_or(forward ? -1.0 : All().high + 1.0);
    const double least = 0.75 * m_scene.spectrum->spacing;  // beside the one that it stands on
    std::optional<double> next;
    for (const measure::SpectrumPeak& peak : m_scene.peaks) {
        const double apart = forward ? peak.frequency - from : from - peak.frequency;
        if (apart > least && (!next || apart < std::abs(*next - from))) {
            next = peak.frequency;
        }
    }
    if (next) {
        JumpTo(*m_scene.active, *next);
    }
    return true;
}

// ---- events ----

bool SpectrumPlot::event(QEvent* event) {
    if (event->type() == QEvent::KeyPress && m_scene.active) {
        // Before it takes the keyboard elsewhere.
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            const CursorName other =
                *m_scene.active == CursorName::kA ? CursorName::kB : CursorName::kA;
            if (Cursor(other)) {
                Activate(other);
                event->accept();
                return true;
            }
        }
    }
    return QWidget::event(event);
}

void SpectrumPlot::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    PaintSpectrum(painter, rect(), m_scene);
    if (m_drag && m_drag->button == Qt::RightButton) {
        const QRect plot = Places().Plot();
        const int left = std::clamp(m_drag->from.x(), plot.left(), plot.right());
        const int right = std::clamp(m_drag->to.x(), plot.left(), plot.right());
        painter.setPen(m_scene.ink);
        painter.drawRect(QRect(QPoint(std::min(left, right), plot.top() + 1),
                               QPoint(std::max(left, right), plot.bottom() - 1)));
    }
    if (hasFocus()) {
        painter.setPen(QPen(m_scene.ink, 1, Qt::DotLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

void SpectrumPlot::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    std::optional<CursorName> cursor;
    if (event->button() == Qt::LeftButton) {
        const bool puts = (event->modifiers() & Qt::ControlModifier) != 0;
        cursor = !puts                                           ? Meets(point)
                 : (event->modifiers() & Qt::ShiftModifier) != 0 ? std::optional(CursorName::kB)
                                                                 : std::optional(CursorName::kA);
        if (puts) {
            PutCursor(*cursor, Places().FrequencyAt(point.x()));
        } else if (cursor) {
            Activate(cursor);
        }
    }
    m_drag = Drag{event->button(), point, point, m_scene.band, cursor};
}

void SpectrumPlot::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (!m_drag || event->buttons() == Qt::NoButton) {
        setCursor(Meets(point) ? Qt::SplitHCursor : Qt::ArrowCursor);
        return;
    }
    m_drag->to = point;
    if (m_drag->button == Qt::MiddleButton) {
        const double by = m_drag->band.Width() * (m_drag->from.x() - point.x()) /
                          std::max(1, Places().Plot().width() - 1);
        SetBand({m_drag->band.low + by, m_drag->band.high + by});
    } else if (m_drag->button == Qt::LeftButton && m_drag->cursor) {
        PutCursor(*m_drag->cursor, Places().FrequencyAt(point.x()));
    }
    update();
}

void SpectrumPlot::mouseReleaseEvent(QMouseEvent* event) {
    const std::optional<Drag> drag = std::exchange(m_drag, std::nullopt);
    update();
    if (!drag || drag->button != Qt::RightButton || event->button() != Qt::RightButton) {
        return;
    }
    const int width = event->position().toPoint().x() - drag->from.x();
    if (width >= kLeastDrag) {
        const SpectrumPlaces places = Places();
        ZoomTo({places.FrequencyAt(drag->from.x()), places.FrequencyAt(event->position().x())});
    } else if (width <= -kLeastDrag) {
        StepBack();
    }
}

void SpectrumPlot::wheelEvent(QWheelEvent* event) {
    const QPoint angle = event->angleDelta();
    if ((event->modifiers() & Qt::ShiftModifier) != 0 || angle.y() == 0) {
        const int delta = angle.y() != 0 ? angle.y() : angle.x();
        MoveBy(-delta / kNotch * kMovePerNotch);
    } else {
        ZoomAt(Places().FrequencyAt(event->position().x()),
               std::pow(kZoomPerNotch, angle.y() / kNotch));
    }
    event->accept();
}

bool SpectrumPlot::CursorKey(int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
        case Qt::Key_A:
        case Qt::Key_B: {
            const CursorName name = key == Qt::Key_A ? CursorName::kA : CursorName::kB;
            const double middle = m_scene.band.low + m_scene.band.Width() / 2.0;
            const double first = m_scene.peaks.empty() ? middle : m_scene.peaks.front().frequency;
            JumpTo(name, Cursor(name).value_or(first));
            return true;
        }
        case Qt::Key_Left:
            return MoveActive(-1, modifiers);
        case Qt::Key_Right:
            return MoveActive(1, modifiers);
        case Qt::Key_P:
            return JumpToPeak((modifiers & Qt::ShiftModifier) == 0);
        case Qt::Key_Escape:
            if (m_scene.active) {
                Activate(std::nullopt);
                return true;
            }
            return false;
        case Qt::Key_Delete:
            if (m_scene.active) {
                m_scene.cursors[static_cast<std::size_t>(*m_scene.active)].reset();
                Activate(std::nullopt);
            }
            return true;
        default:
            return false;
    }
}

bool SpectrumPlot::ZoomKey(int key) {
    switch (key) {
        case Qt::Key_Plus: {
            const double quarter = m_scene.band.Width() / 4.0;
            ZoomTo({m_scene.band.low + quarter, m_scene.band.high - quarter});
            return true;
        }
        case Qt::Key_Minus:
        case Qt::Key_Backspace:
            StepBack();
            return true;
        case Qt::Key_Home:
            SetBand({0.0, m_scene.band.Width()});
            return true;
        case Qt::Key_End:
            SetBand({All().high - m_scene.band.Width(), All().high});
            return true;
        case Qt::Key_PageUp:
            MoveBy(-kPage);
            return true;
        case Qt::Key_PageDown:
            MoveBy(kPage);
            return true;
        default:
            return false;
    }
}

void SpectrumPlot::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool is_step = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
    // With Ctrl letters belong to commands.
    const bool is_ours = is_step || (modifiers & (Qt::ControlModifier | Qt::AltModifier)) == 0;
    if (!is_ours || (!CursorKey(event->key(), modifiers) && !ZoomKey(event->key()))) {
        QWidget::keyPressEvent(event);
    }
}

QSize SpectrumPlot::sizeHint() const {
    return {480, 200};
}

QSize SpectrumPlot::minimumSizeHint() const {
    return {160, 100};
}

}  // namespace wavo

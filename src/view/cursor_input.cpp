#include "view/cursor_input.h"

#include <QMetaObject>
#include <QObject>
#include <algorithm>
#include <cstdlib>

#include "view/cursor_overlay.h"
#include "view/past_control.h"
#include "view/recorded_values.h"

namespace wavo {

namespace {

/// Logical pixels beside a line that still take it.
constexpr int kReach = 4;

/// How far a point lies from what takes a cursor; nothing when it is out of reach.
std::optional<int> DistanceTo(const CursorMark& mark, const QPoint& point) {
    if (mark.label.contains(point)) {
        return 0;
    }
    if (!mark.line.adjusted(-kReach, 0, kReach, 0).contains(point)) {
        return std::nullopt;
    }
    return std::abs(point.x() - mark.place.x());
}

}  // namespace

std::optional<CursorInput::Grip> CursorInput::Meets(const QPoint& point) const {
    std::optional<Grip> met;
    int least = 0;
    for (const auto& drawer : m_parts.board.Drawers()) {
        for (const CursorName name : kCursorNames) {
            const auto mark = MarkOf(*drawer, m_parts.cursors, name);
            const auto distance = mark ? DistanceTo(*mark, point) : std::nullopt;
            const bool is_nearer =
                distance && (!met || *distance < least ||
                             (*distance == least && m_parts.cursors.Active() == name));
            if (is_nearer) {
                met = Grip{name, drawer->Graph().GraphNumber};
                least = *distance;
            }
        }
    }
    return met;
}

bool CursorInput::LeftButtonDown(const QPoint& point, Qt::KeyboardModifiers modifiers) {
    if (!m_parts.cursors.IsShown()) {
        return false;
    }
    ++m_turn;
    if ((modifiers & Qt::ControlModifier) == 0) {
        m_dragged = Meets(point);
        if (m_dragged) {
            m_parts.cursors.Activate(m_dragged->name);
        }
        return m_dragged.has_value();
    }
    const auto& drawers = m_parts.board.Drawers();
    const auto found = std::find_if(drawers.begin(), drawers.end(), [&](const auto& drawer) {
        return drawer->Rectangle().contains(point);
    });
    if (found == drawers.end()) {
        return false;
    }
    const auto name = (modifiers & Qt::ShiftModifier) != 0 ? CursorName::kB : CursorName::kA;
    const std::uint32_t number = (*found)->Graph().GraphNumber;
    m_dragged = Grip{name, number};
    m_parts.cursors.Activate(name);
    m_parts.zooms.Select(number);
    return MouseMove(point);
}

bool CursorInput::MouseMove(const QPoint& point) {
    if (!m_dragged) {
        return false;
    }
    if (const GraphDraw* const graph = m_parts.board.Find(m_dragged->graph)) {
        m_parts.cursors.PutAt(m_dragged->name, *graph, point);
    }
    return true;
}

bool CursorInput::LeftButtonUp() {
    const bool was_dragged = m_dragged.has_value();
    m_dragged.reset();
    return was_dragged;
}

bool CursorInput::KeyPress(int key, Qt::KeyboardModifiers modifiers) {
    if (!m_parts.cursors.IsShown() || (modifiers & (Qt::AltModifier | Qt::MetaModifier)) != 0) {
        return false;
    }
    ++m_turn;
    if ((key == Qt::Key_A || key == Qt::Key_B) && (modifiers & Qt::ControlModifier) == 0) {
        m_parts.cursors.Activate(key == Qt::Key_A ? CursorName::kA : CursorName::kB);
        return true;
    }
    const auto active = m_parts.cursors.Active();
    if (!active) {
        return false;
    }
    switch (key) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            m_parts.cursors.Activate(*active == CursorName::kA ? CursorName::kB : CursorName::kA);
            return true;
        case Qt::Key_Escape:
            m_parts.cursors.Activate(std::nullopt);
            return true;
        case Qt::Key_Left:
            return MoveActive(-1, modifiers);
        case Qt::Key_Right:
            return MoveActive(1, modifiers);
        default:
            // With Ctrl letters belong to commands, also to those that cannot be used now.
            return (modifiers & Qt::ControlModifier) == 0 && JumpActive(key, modifiers);
    }
}

bool CursorInput::JumpActive(int key, Qt::KeyboardModifiers modifiers) {
    const bool forward = (modifiers & Qt::ShiftModifier) == 0;
    const auto search = forward ? measure::Search::kForward : measure::Search::kBackward;
    switch (key) {
        case Qt::Key_P:
            return Jump(Landmark::kPeak, search);
        case Qt::Key_V:
            return Jump(Landmark::kValley, search);
        case Qt::Key_Z:
            return Jump(Landmark::kZeroCrossing, search);
        case Qt::Key_0:
            // Where 0 itself is typed with Shift, that says nothing.
            return Jump(Landmark::kZeroCrossing, measure::Search::kForward);
        case Qt::Key_T:
            return JumpToTrigger(forward);
        default:
            return false;
    }
}

bool CursorInput::MoveActive(int direction, Qt::KeyboardModifiers modifiers) {
    const CursorStep step = (modifiers & Qt::ControlModifier) != 0 ? CursorStep::kSample
                            : (modifiers & Qt::ShiftModifier) != 0 ? CursorStep::kTenth
                                                                   : CursorStep::kPixel;
    m_parts.cursors.Move(*m_parts.cursors.Active(), step, direction);
    return true;
}

bool CursorInput::Jump(Landmark landmark, measure::Search search) {
    if (const auto line = m_parts.cursors.LineOf(*m_parts.cursors.Active())) {
        GoOn(landmark, search, *line, m_turn);
    }
    return true;
}

void CursorInput::GoOn(Landmark landmark, measure::Search search, std::int64_t line,
                       std::uint64_t turn) {
    const auto active = m_parts.cursors.Active();
    if (turn != m_turn || !active || m_parts.cursors.LineOf(*active) != line) {
        return;
    }
    const LineFound found = m_parts.measurements.Next(landmark, line, search);
    if (!found.has_ended) {
        QMetaObject::invokeMethod(
            &m_parts.view,
            [this, landmark, search, line, turn] { GoOn(landmark, search, line, turn); },
            Qt::QueuedConnection);
    } else if (found.line) {
        m_parts.cursors.JumpTo(*active, *found.line);
    }
}

bool CursorInput::JumpToTrigger(bool forward) {
    const CursorName active = *m_parts.cursors.Active();
    const GraphDraw* const graph = m_parts.cursors.GraphOf(active);
    std::optional<std::int64_t> line;
    if (graph != nullptr) {
        line = ShowsOpenRecording(*graph) ? m_parts.past.GoToTrigger(forward)
                                          : Measurements::TriggerLine(*graph);
    }
    if (line) {
        m_parts.cursors.JumpTo(active, *line);
    }
    return true;
}

}  // namespace wavo

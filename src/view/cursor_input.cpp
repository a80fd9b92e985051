#include "view/cursor_input.h"

#include <algorithm>
#include <cstdlib>

#include "view/cursor_overlay.h"

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
    for (const auto& drawer : m_board.Drawers()) {
        for (const CursorName name : kCursorNames) {
            const auto mark = MarkOf(*drawer, m_cursors, name);
            const auto distance = mark ? DistanceTo(*mark, point) : std::nullopt;
            const bool is_nearer = distance && (!met || *distance < least ||
                                                (*distance == least && m_cursors.Active() == name));
            if (is_nearer) {
                met = Grip{name, drawer->Graph().GraphNumber};
                least = *distance;
            }
        }
    }
    return met;
}

bool CursorInput::LeftButtonDown(const QPoint& point, Qt::KeyboardModifiers modifiers) {
    if (!m_cursors.IsShown()) {
        return false;
    }
    if ((modifiers & Qt::ControlModifier) == 0) {
        m_dragged = Meets(point);
        if (m_dragged) {
            m_cursors.Activate(m_dragged->name);
        }
        return m_dragged.has_value();
    }
    const auto& drawers = m_board.Drawers();
    const auto found = std::find_if(drawers.begin(), drawers.end(), [&](const auto& drawer) {
        return drawer->Rectangle().contains(point);
    });
    if (found == drawers.end()) {
        return false;
    }
    const auto name = (modifiers & Qt::ShiftModifier) != 0 ? CursorName::kB : CursorName::kA;
    const std::uint32_t number = (*found)->Graph().GraphNumber;
    m_dragged = Grip{name, number};
    m_cursors.Activate(name);
    m_zooms.Select(number);
    return MouseMove(point);
}

bool CursorInput::MouseMove(const QPoint& point) {
    if (!m_dragged) {
        return false;
    }
    if (const GraphDraw* const graph = m_board.Find(m_dragged->graph)) {
        m_cursors.PutAt(m_dragged->name, *graph, point);
    }
    return true;
}

bool CursorInput::LeftButtonUp() {
    const bool was_dragged = m_dragged.has_value();
    m_dragged.reset();
    return was_dragged;
}

bool CursorInput::KeyPress(int key, Qt::KeyboardModifiers modifiers) {
    if (!m_cursors.IsShown() || (modifiers & (Qt::AltModifier | Qt::MetaModifier)) != 0) {
        return false;
    }
    if ((key == Qt::Key_A || key == Qt::Key_B) && (modifiers & Qt::ControlModifier) == 0) {
        m_cursors.Activate(key == Qt::Key_A ? CursorName::kA : CursorName::kB);
        return true;
    }
    const auto active = m_cursors.Active();
    if (!active) {
        return false;
    }
    switch (key) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            m_cursors.Activate(*active == CursorName::kA ? CursorName::kB : CursorName::kA);
            return true;
        case Qt::Key_Escape:
            m_cursors.Activate(std::nullopt);
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
    switch (key) {
        case Qt::Key_P:
            return Jump(Measurements::Target::kPeak, modifiers);
        case Qt::Key_V:
            return Jump(Measurements::Target::kValley, modifiers);
        case Qt::Key_0:
            return Jump(Measurements::Target::kZeroCrossing, modifiers);
        case Qt::Key_T:
            return JumpToTrigger();
        default:
            return false;
    }
}

bool CursorInput::MoveActive(int direction, Qt::KeyboardModifiers modifiers) {
    const CursorStep step = (modifiers & Qt::ControlModifier) != 0 ? CursorStep::kSample
                            : (modifiers & Qt::ShiftModifier) != 0 ? CursorStep::kTenth
                                                                   : CursorStep::kPixel;
    m_cursors.Move(*m_cursors.Active(), step, direction);
    return true;
}

bool CursorInput::Jump(Measurements::Target target, Qt::KeyboardModifiers modifiers) {
    const auto search = (modifiers & Qt::ShiftModifier) != 0 ? measure::Search::kBackward
                                                             : measure::Search::kForward;
    const CursorName active = *m_cursors.Active();
    const auto line = m_cursors.LineOf(active);
    const auto next = line ? m_measurements.Next(target, *line, search) : std::nullopt;
    if (next) {
        m_cursors.PutOn(active, *next);
    }
    return true;
}

bool CursorInput::JumpToTrigger() {
    const CursorName active = *m_cursors.Active();
    const GraphDraw* const graph = m_cursors.GraphOf(active);
    const auto line = graph != nullptr ? Measurements::TriggerLine(*graph) : std::nullopt;
    if (line) {
        m_cursors.PutOn(active, *line);
    }
    return true;
}

}  // namespace wavo

#include "view/past_control.h"

#include <QKeyEvent>
#include <QMetaObject>
#include <QMouseEvent>
#include <QWheelEvent>
#include <utility>

#include "ui/graph_editor/ax_select.h"
#include "ui/graph_editor/graph_editing.h"
#include "view/data_export.h"
#include "view/past_input.h"
#include "view/view_news.h"
#include "view/zoom_control.h"

namespace wavo {

PastControl::PastControl(const Parts& parts)
    : m_parts(parts),
      m_window(
          parts.session, parts.board, parts.screen,
          [this] { return m_parts.editor.SelectedNumber(); }, [this] { OnWindowChanged(); }),
      m_files(parts.session, m_window, parts.prompts, parts.view,
              [this](const std::string& path) {
                  Q_EMIT m_parts.news.RecordingOpened(QString::fromStdString(path));
              }),
      m_search(
          parts.session, m_window, [this] { return m_parts.editor.SelectedNumber(); }, parts.view,
          DataExport::SteadyClock),
      m_overview(new Navigator(
          parts.session, m_window, [this] { return SelectedCurve(); }, &parts.view)) {
    m_parts.screen.SetFooter(m_overview);
}

void PastControl::Execute(CommandId id) {
    if (m_search.IsEnabled(id)) {
        m_search.Execute(id);
    } else {
        m_files.Execute(id);
    }
}

void PastControl::OnWindowChanged() {
    m_parts.zooms.OnPastChanged();
    const bool is_recording = m_parts.session.Recording() != nullptr;
    if (m_overview->isVisibleTo(&m_parts.view) != is_recording) {
        m_overview->setVisible(is_recording);
        m_parts.screen.Resize();
    }
    m_overview->Renew();
    TellOfWindow();
    if (is_recording) {
        Q_EMIT m_parts.news.CommandsChanged();  // another graph has other triggers
    }
}

// The graphs show the window from the drawing on that follows.
void PastControl::TellOfWindow() {
    if (std::exchange(m_tells_of_window, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        &m_parts.view,
        [this] {
            m_tells_of_window = false;
            Q_EMIT m_parts.news.MeasureChanged();
        },
        Qt::QueuedConnection);
}

std::optional<std::int64_t> PastControl::GoToTrigger(bool forward) {
    const CommandId command = forward ? CommandId::kNextTrigger : CommandId::kPreviousTrigger;
    if (!m_search.IsEnabled(command)) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> before = m_window.Mark();
    m_search.Execute(command);
    return m_window.Mark() != before ? m_window.Mark() : std::nullopt;
}

Navigator::SelectedCurve PastControl::SelectedCurve() const {
    const auto& drawers = m_parts.board.Drawers();
    const GraphDraw* const selected = m_parts.board.Find(m_parts.editor.SelectedNumber());
    if (selected == nullptr && drawers.empty()) {
        return {};
    }
    const WavoGraph& graph = selected != nullptr ? selected->Graph() : drawers.front()->Graph();
    const std::size_t axis =
        selected != nullptr ? ChosenAxis(m_parts.editor.Fields(), graph).value_or(0) : 0;
    return axis < graph.YCoorAxName.size() ? Navigator::SelectedCurve{&graph, axis}
                                           : Navigator::SelectedCurve{};
}

bool PastControl::TakeEvent(QEvent& event) {
    switch (event.type()) {
        case QEvent::Wheel:
            return TakeWheel(m_window, static_cast<const QWheelEvent&>(event));
        case QEvent::WindowActivate:
            m_files.Refresh();  // nobody tells of what others write
            return false;
        case QEvent::MouseButtonPress:
            m_overview->update();  // another curve may be selected with it
            return TakeMousePress(m_window, static_cast<const QMouseEvent&>(event));
        case QEvent::MouseMove:
            return TakeMouseMove(m_window, static_cast<const QMouseEvent&>(event));
        case QEvent::MouseButtonRelease:
            return TakeMouseRelease(m_window, static_cast<const QMouseEvent&>(event));
        case QEvent::KeyPress: {
            m_overview->update();
            const auto& key = static_cast<const QKeyEvent&>(event);
            return TakeKey(m_window, key.key(), key.modifiers());
        }
        default:
            return false;
    }
}

}  // namespace wavo

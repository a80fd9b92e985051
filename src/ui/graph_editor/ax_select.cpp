#include "ui/graph_editor/ax_select.h"

#include <QKeyEvent>
#include <utility>

#include "support/diagnostics.h"
#include "ui/controls/control_table.h"
#include "ui/graph_editor/report_texts.h"
#include "ui/graph_editor/strip_layout.h"

namespace wavo {

using enum EditorControl;

CAxSelect::CAxSelect(QObject* view, const Prompts& prompts, QWidget* parent,
                     std::function<void()> graph_shown)
    : QWidget(parent),
      m_graph_shown(std::move(graph_shown)),
      m_fields(*this),
      m_editing(m_fields, view,
                [this](const WavoGraph& graph, std::size_t axis) { Show(graph, axis); }),
      m_graph(m_fields, m_editing, prompts, *this),
      m_axes(m_fields, m_editing, prompts, *this),
      m_scales(m_fields, m_editing),
      m_display(m_fields, m_editing) {
    setAutoFillBackground(true);
    SetAccessibleTexts(*this, QStringLiteral("Graph Editor"),
                       QStringLiteral("What each graph shows, and how"));
    LayOutStrip(*this, m_fields);
    m_fields.OnClick(kClose, *this, [this] { Close(); });
    m_fields.SetEnabled(kSaveValues, false);  // values flow from the start
    m_editing.ShowNoGraph();
}

// The order matters: scales are enabled by what the axes show.
void CAxSelect::Show(const WavoGraph& graph, std::size_t axis) {
    for (EditorPage* const page :
         std::initializer_list<EditorPage*>{&m_graph, &m_axes, &m_scales, &m_display}) {
        page->Show(graph, axis);
    }
    m_graph_shown();
}

bool CAxSelect::Init(GraphList& graphs, const std::vector<std::string>& axis_names) {
    m_editing.Known().axis_names = axis_names;
    m_editing.SetDocument(graphs);
    m_graph.FillLists();
    m_axes.FillLists();
    m_editing.Begin();
    return true;
}

void CAxSelect::ResetSelection() {
    SetZooms({});
    Q_EMIT SelectionReset();
}

void CAxSelect::SetAcquisitionRuns(bool runs) {
    m_fields.SetEnabled(kSaveValues, !runs);
}

void CAxSelect::SetPlotSizes(PlotSizeSource plot_sizes) {
    m_editing.Known().plot_sizes = std::move(plot_sizes);
}

void CAxSelect::SetBackground(ColorRef background) {
    if (background != m_editing.Known().background) {
        m_editing.Known().background = background;
        m_axes.SetBackground(background);
    }
}

bool CAxSelect::SetWindowData(std::uint32_t graph_number, std::size_t axis) {
    const WavoGraph* const graph = m_editing.Find(graph_number);
    if (graph == nullptr) {
        MERRLOG(editor_texts::kUnknownGraph, graph_number);
        return false;
    }
    m_editing.Show(*graph, axis);
    return true;
}

bool CAxSelect::event(QEvent* event) {
    if (event->type() == AppMessageEvent::EventType()) {
        auto* const message = static_cast<AppMessageEvent*>(event);
        message->SetResult(OnMessage(message->number(), message->lParam()));
        return true;
    }
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
        m_shown = isVisible();
    }
    return handled;
}

std::int64_t CAxSelect::OnMessage(AppMessage number, std::int64_t l_param) {
    switch (number) {
        case AppMessage::kCloseEditor:
            Close();
            return 1;
        case AppMessage::kSelectGraph:
            if (m_editing.Document() != nullptr && m_editing.Document()->Graphs().size() >= 2) {
                SelectByMessage(static_cast<std::uint32_t>(l_param));
            }
            return 1;
        case AppMessage::kSelectGraphAndTime: {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): what a message carries is a number
            const auto* const chosen = reinterpret_cast<const GraphAndTime*>(l_param);
            if (chosen != nullptr && m_editing.Find(chosen->graph_number) != nullptr) {
                SelectByMessage(chosen->graph_number);
                m_fields.SetNumber(kTimeRange, chosen->time, 3);
            }
            return 1;
        }
        case AppMessage::kEditorClosed:
        case AppMessage::kGraphChanged:
        case AppMessage::kSaveValues:
        case AppMessage::kZoomOut:
        case AppMessage::kRecordingEnded:
            break;  // not meant for the editor
    }
    return 0;
}

void CAxSelect::SelectByMessage(std::uint32_t graph_number) {
    if (m_editing.Find(graph_number) != nullptr) {
        m_fields.SetText(kGraphNumber, QString::number(graph_number));
        m_editing.SelectGraph();
    }
}

void CAxSelect::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void CAxSelect::Close() {
    m_editing.Send(AppMessage::kEditorClosed, 0);
    m_shown = false;
}

}  // namespace wavo
